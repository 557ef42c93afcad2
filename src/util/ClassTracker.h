#pragma once

#include "util/HashSet.h"
#include "util/VectorPOD.h"

namespace util {

// Mix-in that keeps a static set of all live instances of T's family.
template <class T>
class ClassTracker {
public:
    ClassTracker() { Instances().insert(this); }
    ClassTracker(const ClassTracker&) : ClassTracker() {}
    ClassTracker& operator=(const ClassTracker&) { return *this; }
    virtual ~ClassTracker() noexcept(false) { Instances().erase(this); }

    static HashSet<ClassTracker*>& Instances() {
        static HashSet<ClassTracker*>* instances = new HashSet<ClassTracker*>();
        return *instances;
    }

    // Visitors walk a copy: a visited object may create or destroy tracked objects.
    static VectorPOD<T*> Snapshot() {
        VectorPOD<T*> members;
        members.reserve(Instances().size());
        for (ClassTracker* tracker : Instances()) {
            members.push_back(static_cast<T*>(tracker));
        }
        return members;
    }
};

}  // namespace util
