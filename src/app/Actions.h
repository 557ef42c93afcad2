#pragma once

#include "app/Action.h"
#include "app/Group.h"
#include "app/Snapshot.h"
#include "util/String.h"

namespace app {

// A checkpoint: doing it changes nothing, undoing and redoing it both go back to the
// scene as it was taken.
class SnapshotAction : public Action {
public:
    SnapshotAction(const char* label, const SnapshotPtr& snapshot);
    void Do() override {}
    void Undo() override;
    void Redo() override;

private:
    SnapshotPtr m_snapshot;
};

// A change already made, as the scene before and after it.
class SnapshotRestorer : public Action {
public:
    SnapshotRestorer(const char* label, const SnapshotPtr& before, const SnapshotPtr& after);
    void Do() override;
    void Undo() override;

private:
    SnapshotPtr m_before;
    SnapshotPtr m_after;
};

// The start of the simulation. Undo goes back to the paused scene, whatever the run did
// since; redo starts afresh from there.
class SimStart : public Action {
public:
    // Takes the snapshot of the scene as it is now.
    explicit SimStart(const char* label);
    void Do() override;
    void Undo() override;
    void Redo() override;

private:
    SnapshotPtr m_snapshot;
};

// Erases a set of entities: joints and pens first, while their geoms are still in their
// bodies, then the shapes.
class EraseEntities : public Action {
public:
    EraseEntities(const char* label, const EntitySet& entities);
    void Do() override;
    void Undo() override;

private:
    EntitySet m_entities;
    SnapshotPtr m_snapshot;
};

// Loads a scene file, or with isImport adds a vorralet's entities to the scene. The step
// stays on the stack whatever happens to the load, and its undo puts back the scene
// before it.
class SceneLoader : public Action {
public:
    SceneLoader(const char* label, bool isImport, const util::String& fileName);
    void Do() override;
    void Undo() override;
    // Whether the latest Do read the file into the scene.
    bool HasLoaded() const { return m_loaded; }

    // A bare name is looked up in the scene folder.
    static util::String ResolvePath(const util::String& fileName);
    // The title a loaded scene shows: the file's name without folder and extension.
    static util::String DisplayName(const util::String& path);

private:
    void Load(const util::String& path);

    bool m_isImport;
    util::String m_fileName;
    SnapshotPtr m_snapshot;
    bool m_loaded = false;
};

}  // namespace app
