#pragma once

#include <typeinfo>

#include "script/Attributes.h"
#include "script/Reflected.h"
#include "util/Singleton.h"

namespace core {

// Moves every graphics resource between loaded and unloaded at once: the context dies
// with the window, and all that lived in it stands behind a mentor that can rebuild it.
// In the language it is "Resources".
class ResourceManager : public script::Reflected, public util::Singleton<ResourceManager> {
public:
    ResourceManager();
    ResourceManager(const ResourceManager&) = delete;
    ResourceManager& operator=(const ResourceManager&) = delete;
    ~ResourceManager() override;

    // Textures first, then programs (which may use them), then everything else.
    void LoadAll(bool unloadFirst);
    void UnloadAll();
    // Only the mentors of one resource class.
    void LoadClass(const std::type_info& type, bool unloadFirst);
    // Bytes of all graphics resources alive, as their formats reckon them.
    size_t CalcVRamUsage() const;
    // After the first window: every texture and program of the data tree, so that the
    // first frames need no disk.
    void Prefetch();

    script::AttribPtr<bool> shaders;
    script::AttribPtr<bool> force16BitTextures;

private:
    void OnShadersChanged();
    void OnForce16BitTexturesChanged();
};

}  // namespace core
