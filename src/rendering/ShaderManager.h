#pragma once

#include <map>

#include "rendering/ShaderVariable.h"
#include "util/Singleton.h"

namespace rendering {

// Programs by name, from "shaders/default/NAME.vert" and ".frag". While shaders are off
// nothing is read, and every handle holds the null program: the fixed pipeline.
class ShaderManager : public util::Pointee, public util::Singleton<ShaderManager> {
public:
    ShaderManager();
    ~ShaderManager() override;

    // The handle of a program, made at the first request; loaded now if a context exists.
    ShaderHandle Load(const util::String& name);
    // Every program of the shader folder.
    void Preload();

    // The folder of the programs, below the work directory.
    static util::String GetFolder();
    // The program that stands in for any that cannot be had.
    static ShaderPtr MakeNullProgram();
    // True if the handle holds a program that runs, not the fixed pipeline.
    static bool IsUsable(const ShaderHandle& handle);

private:
    std::map<util::String, ShaderHandle> m_shaders;
};

}  // namespace rendering
