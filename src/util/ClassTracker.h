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
    virtual ~ClassTracker() noexcept(false) {
        if (m_tracked) {
            Instances().erase(this);
        }
    }

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

protected:
    // For a family whose members need visiting only once they hold something, and which
    // are made by the hundred thousand: the member joins the set at Track.
    struct Untracked {};
    explicit ClassTracker(Untracked) : m_tracked(false) {}
    void Track() {
        if (!m_tracked) {
            Instances().insert(this);
            m_tracked = true;
        }
    }

private:
    bool m_tracked = true;
};

}  // namespace util
