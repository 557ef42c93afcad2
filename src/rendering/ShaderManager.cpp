#include "rendering/ShaderManager.h"

#include "logging/Log.h"
#include "rendering/GraphicsContext.h"
#include "util/FileSystem.h"

namespace rendering {
namespace {

// A missing stage is an empty one.
util::String ReadStage(const util::String& path) {
    const util::FileSystem& fileSystem = util::FileSystem::Get();
    return fileSystem.Exists(path) ? fileSystem.ReadTextFile(path) : util::String();
}

ShaderPtr LoadProgram(const util::String& name) {
    if (!GraphicsContext::GetShadersEnabled()) {
        return ShaderPtr();
    }
    const util::String stem = ShaderManager::GetFolder() + name;
    const util::String vertex = ReadStage(stem + ".vert");
    const util::String fragment = ReadStage(stem + ".frag");
    if (vertex.empty() && fragment.empty()) {
        Log(logging::Warning, "Shader \"" + name + "\" has no program text in \"" +
                                  ShaderManager::GetFolder() + "\"");
        return ShaderPtr();
    }
    return ShaderPtr(new Shader(vertex, fragment, name));
}

}  // namespace

ShaderManager::ShaderManager() {
    util::Mentor<Shader>::SetDefault(
        ShaderHandle(new util::Mentor<Shader>([]() { return MakeNullProgram(); })));
}

ShaderManager::~ShaderManager() {
    util::Mentor<Shader>::SetDefault(ShaderHandle());
}

util::String ShaderManager::GetFolder() {
    return util::FileSystem::Get().GetWorkDirectory() + util::FileSystem::GetShadersFolder() +
           "default/";
}

ShaderPtr ShaderManager::MakeNullProgram() {
    return ShaderPtr(new Shader("", "", "[NAME MISSING]"));
}

bool ShaderManager::IsUsable(const ShaderHandle& handle) {
    return handle && handle->Get() && handle->Get()->GetHandle() != 0;
}

ShaderHandle ShaderManager::Load(const util::String& name) {
    ShaderHandle& handle = m_shaders[name];
    if (!handle) {
        handle = ShaderHandle(new util::Mentor<Shader>([name]() { return LoadProgram(name); }));
    }
    // Programs live in a context; without one the window's creation loads them.
    if (GraphicsContext::IsLoaded()) {
        handle->Load();
    }
    return handle;
}

void ShaderManager::Preload() {
    const util::String folder = GetFolder();
    if (!util::FileSystem::Get().Exists(folder)) {
        Log(logging::Warning, "The shader folder \"" + folder + "\" is missing");
        return;
    }
    for (const util::String& file : util::FileSystem::Get().ListFiles(folder, "*.frag")) {
        Load(file.substr(0, file.size() - 5));
    }
}

}  // namespace rendering
