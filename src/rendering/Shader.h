#pragma once

#include <cstdint>

#include "util/Pointee.h"
#include "util/StackedBind.h"
#include "util/String.h"

namespace rendering {

class Shader;
using ShaderPtr = util::SharedPtr<Shader>;

// One GLSL program of the shader-object era. Handle 0 is the fixed pipeline: binding it
// draws as if there were no shader, which is what the null program is for.
class Shader : public util::Pointee, public util::StackedBind<Shader> {
public:
    // Either source may be empty. Throws BadDataException when the program cannot be
    // built, with the driver's log written out before.
    Shader(const util::String& vertexSource, const util::String& fragmentSource,
           const util::String& name);
    ~Shader() override;

    // -1 for the fixed pipeline, silently; -1 from the driver is logged.
    int GetUniformLocation(const util::String& name) const;
    int GetAttributeLocation(const util::String& name) const;

    unsigned int GetHandle() const { return m_handle; }
    const util::String& GetName() const { return m_name; }

protected:
    void DoBind() override;
    void DoUnbind() override;

private:
    unsigned int m_handle = 0;
    util::String m_name;
    uint32_t m_contextGeneration = 0;
};

// Compiles one stage; type is the driver's stage enum. Throws on failure.
unsigned int LoadShader(int type, const util::String& source, const util::String& name);

// Throws unless the driver has shader objects and every entry point this program calls.
void AssertShaderSupport();

// An entry point by the name that a failure reports, and whether the driver has it.
struct ShaderEntryPoint {
    const char* name;
    bool present;
};
// The check behind AssertShaderSupport, for any list of entry points.
void CheckShaderSupport(bool hasShaderObjects, const ShaderEntryPoint* entryPoints, size_t count);

}  // namespace rendering
