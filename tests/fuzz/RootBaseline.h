#pragma once

// The language's root as it stood after a fuzz target's setup, and the way back to it, so
// that every input starts from the same state and a finding reproduces from its own bytes.
// Shared by the script and the scene targets; it needs the language alone.

#include <cstddef>
#include <map>
#include <vector>

#include "script/ClassObject.h"
#include "script/Forward.h"
#include "util/String.h"

namespace fuzz {

class RootBaseline {
public:
    // Takes in the root closure's variables, every class object reached from them through
    // the members it owns (math, Sim, SPH, FileInfo, the scene and its camera...) with
    // the values of all their members, and how many infix functions the root declares.
    void Capture();

    // Takes out what an input added to the root and to those objects, gives every captured
    // variable its captured value back (an attribute's native side follows at once, a
    // formula is replaced) and drops the infix functions declared since.
    void Restore() const;

    // The infix functions of the root scope alone: a parse declares them there, before
    // anything runs.
    void TruncateScopeInfixes() const;

private:
    struct ObjectState {
        script::ClassObjectPtr object;
        std::map<util::String, script::ObjectPtr> members;
    };

    void CaptureObject(const script::ClassObjectPtr& object);

    std::map<util::String, script::ObjectPtr> m_rootValues;
    std::vector<ObjectState> m_objects;
    size_t m_scopeInfixes = 0;
    size_t m_closureInfixes = 0;
};

// What the program does between frames, done twice so that the logger's repeat suppression
// forgets this input's texts; then the profiler starts afresh and released handles go.
void EndFrames();

}  // namespace fuzz
