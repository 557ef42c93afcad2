#include "core/ResourceManager.h"

#include <algorithm>
#include <limits>

#include "logging/Log.h"
#include "rendering/GraphicsContext.h"
#include "rendering/GraphicsResource.h"
#include "rendering/ImageManager.h"
#include "rendering/ShaderManager.h"
#include "rendering/TextureManager.h"
#include "script/ValueConversions.h"
#include "util/Exception.h"
#include "util/Mentor.h"
#include "util/TypeName.h"

namespace core {

ResourceManager::ResourceManager() : script::Reflected("Resources") {
    AddAttrib(shaders, "shaders", false);
    AddAttrib(force16BitTextures, "force16BitTextures", false);
    rendering::GraphicsContext::SetShadersEnabled(false);
    rendering::GraphicsContext::SetForce16BitTextures(false);
    const util::WeakPtr<util::Pointee> self(this);
    shaders->GetOnChange().Add(self, [this]() { OnShadersChanged(); });
    force16BitTextures->GetOnChange().Add(self, [this]() { OnForce16BitTexturesChanged(); });

    AddMemberCmd("unloadAll", &ResourceManager::UnloadAll);
    AddCommand("loadAll", [this]() { LoadAll(false); });
    AddCommand("reloadAll", [this]() { LoadAll(true); });
    AddCommand("reloadTextures", [this]() { LoadClass(typeid(rendering::Texture), true); });
    AddCommand("reloadShaders", [this]() { LoadClass(typeid(rendering::Shader), true); });
    AddCommand("vramUsage", [this]() -> script::ObjectPtr {
        const size_t bytes = std::min<size_t>(CalcVRamUsage(), std::numeric_limits<int>::max());
        return script::ValueToObject(static_cast<int>(bytes));
    });
}

ResourceManager::~ResourceManager() = default;

void ResourceManager::OnShadersChanged() {
    const bool on = shaders->Get();
    rendering::GraphicsContext::SetShadersEnabled(on);
    Log(logging::Debug,
        util::String("Resources.shaders changed value to ") + (on ? "true" : "false"));
    if (on) {
        Log(logging::Debug, "LoadClass<Shader>");
    }
    // Switched off, the programs give way to the fixed pipeline at once as well. Without a
    // context there is nothing to build yet: the window's creation loads them.
    if (rendering::GraphicsContext::IsLoaded()) {
        LoadClass(typeid(rendering::Shader), true);
    }
}

void ResourceManager::OnForce16BitTexturesChanged() {
    rendering::GraphicsContext::SetForce16BitTextures(force16BitTextures->Get());
    // The uploads change only when the textures are made again.
    if (rendering::GraphicsContext::IsLoaded()) {
        LoadClass(typeid(rendering::Texture), true);
    }
}

void ResourceManager::LoadAll(bool unloadFirst) {
    // Loading may make mentors: the walk goes over the ones there are now.
    const util::VectorPOD<util::AbstractMentor*> mentors =
        util::ClassTracker<util::AbstractMentor>::Snapshot();
    if (unloadFirst) {
        Log(logging::Debug, "Unloading the old");
        for (util::AbstractMentor* mentor : mentors) {
            mentor->Unload();
        }
        if (rendering::ImageManager::IsAlive()) {
            rendering::ImageManager::Get().Flush();
        }
    }
    LoadClass(typeid(rendering::Texture), false);
    if (shaders->Get()) {
        LoadClass(typeid(rendering::Shader), false);
    }
    Log(logging::Debug, "Loading the rest...");
    const util::VectorPOD<util::AbstractMentor*> all =
        util::ClassTracker<util::AbstractMentor>::Snapshot();
    for (util::AbstractMentor* mentor : all) {
        mentor->Load();
    }
    Log(logging::Info, std::to_string(all.size()) + " resources loaded");
}

void ResourceManager::UnloadAll() {
    Log(logging::Debug, "Destroying GL resources");
    for (util::AbstractMentor* mentor : util::ClassTracker<util::AbstractMentor>::Snapshot()) {
        mentor->Unload();
    }
}

void ResourceManager::LoadClass(const std::type_info& type, bool unloadFirst) {
    Log(logging::Debug, "Reloading " + util::TypeName(type));
    for (util::AbstractMentor* mentor : util::ClassTracker<util::AbstractMentor>::Snapshot()) {
        if (mentor->ResourceType() != type) {
            continue;
        }
        if (unloadFirst) {
            mentor->Unload();
        }
        mentor->Load();
    }
}

size_t ResourceManager::CalcVRamUsage() const {
    size_t bytes = 0;
    for (rendering::GraphicsResource* resource :
         util::ClassTracker<rendering::GraphicsResource>::Snapshot()) {
        try {
            bytes += resource->MemoryUsage();
        } catch (const std::exception& e) {
            logging::LogCaughtException(e, VORRA_LOCATION);
        }
    }
    return bytes;
}

void ResourceManager::Prefetch() {
    Log(logging::Info, "Prefetching resources");
    for (const util::String& file : rendering::TextureManager::Get().Preload()) {
        Log(logging::Warning, "Could not preload \"" + file + "\"");
    }
    rendering::ShaderManager::Get().Preload();
}

}  // namespace core
