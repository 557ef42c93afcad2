#include "app/Actions.h"

#include <exception>
#include <filesystem>
#include <vector>

#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/Serializer.h"
#include "app/entities/GeomEntity.h"
#include "logging/Log.h"
#include "physics/Simulation.h"
#include "util/FileSystem.h"

namespace app {

SnapshotAction::SnapshotAction(const char* label, const SnapshotPtr& snapshot)
    : Action(label), m_snapshot(snapshot) {}

void SnapshotAction::Undo() {
    m_snapshot->Restore();
}

void SnapshotAction::Redo() {
    m_snapshot->Restore();
}

SnapshotRestorer::SnapshotRestorer(const char* label, const SnapshotPtr& before,
                                   const SnapshotPtr& after)
    : Action(label), m_before(before), m_after(after) {}

void SnapshotRestorer::Do() {
    m_after->Restore();
}

void SnapshotRestorer::Undo() {
    m_before->Restore();
}

// Within an action, Snapshot alone names the class tracker's listing: the class is named in
// full.
SimStart::SimStart(const char* label) : Action(label), m_snapshot(new app::Snapshot()) {}

void SimStart::Do() {
    physics::Simulation::Get().running->SetNative(true);
}

void SimStart::Undo() {
    m_snapshot->Restore();
    physics::Simulation::Get().running->SetNative(false);
}

void SimStart::Redo() {
    m_snapshot->Restore();
    physics::Simulation::Get().running->SetNative(true);
}

EraseEntities::EraseEntities(const char* label, const EntitySet& entities)
    : Action(label), m_entities(entities) {}

void EraseEntities::Do() {
    m_snapshot = SnapshotPtr(new app::Snapshot());
    std::vector<EntityPtr> shapes;
    Scene& scene = Scene::Get();
    for (const EntityPtr& entity : m_entities) {
        if (dynamic_cast<const GeomEntity*>(entity.Get())) {
            shapes.push_back(entity);
        } else {
            scene.RemoveEntity(entity);
        }
    }
    for (const EntityPtr& shape : shapes) {
        scene.RemoveEntity(shape);
    }
}

void EraseEntities::Undo() {
    m_snapshot->Restore();
}

SceneLoader::SceneLoader(const char* label, bool isImport, const util::String& fileName)
    : Action(label), m_isImport(isImport), m_fileName(fileName) {}

util::String SceneLoader::ResolvePath(const util::String& fileName) {
    if (fileName.find_first_of("/\\") != util::String::npos) {
        return fileName;
    }
    return util::String(util::FileSystem::GetScenesFolder()) + fileName;
}

util::String SceneLoader::DisplayName(const util::String& path) {
    return std::filesystem::path(path).stem().string();
}

void SceneLoader::Do() {
    m_snapshot = SnapshotPtr(new app::Snapshot());
    m_loaded = false;
    const util::String path = ResolvePath(m_fileName);
    if (!util::FileSystem::Get().Exists(path)) {
        Log(logging::Warning, "Tried to load non-existing file: " + path);
        return;
    }
    FileInfo& info = FileInfo::Get();
    Descriptions saved;
    saved.Take(info.title, info.author, info.description);
    const util::String fileName = info.GetFileName();
    const auto writeBack = [&] {
        saved.Put(info.title, info.author, info.description);
        info.SetFileName(fileName);
    };
    try {
        Load(path);
        // A vorralet brings its own descriptions; the scene it joins keeps its own.
        if (m_isImport) {
            writeBack();
        }
    } catch (const std::exception& e) {
        Log(logging::Warning, "Exception caught while loading scene: " + util::String(e.what()));
        writeBack();
    } catch (...) {
        Log(logging::Warning, "An unknown error occurred while loading the scene " + path);
        writeBack();
    }
}

void SceneLoader::Load(const util::String& path) {
    Serializer& serializer = Serializer::Get();
    // A file that cannot be read or does not parse changes nothing; the reason is out.
    Serializer::SceneText text;
    if (!serializer.Read(path, text)) {
        return;
    }
    if (!m_isImport) {
        Scene::Get().New();
        FileInfo::Get().SetFileName(path);
        FileInfo::Get().title->SetNative(DisplayName(path));
    }
    m_loaded = true;
    serializer.Deserialize(text);
    Log(logging::Info, (m_isImport ? "Imported vorralet " : "Loaded scene ") + path);
}

void SceneLoader::Undo() {
    if (m_snapshot) {
        m_snapshot->Restore();
    }
}

}  // namespace app
