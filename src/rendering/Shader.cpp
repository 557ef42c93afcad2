#include "rendering/Shader.h"

#include <GL/glew.h>

#include "logging/Log.h"
#include "rendering/GraphicsContext.h"
#include "util/Exception.h"

namespace rendering {
namespace {

util::String InfoLog(GLhandleARB object) {
    GLint length = 0;
    glGetObjectParameterivARB(object, GL_OBJECT_INFO_LOG_LENGTH_ARB, &length);
    if (length <= 1) {
        return util::String();
    }
    util::String log(static_cast<size_t>(length), '\0');
    GLsizei written = 0;
    glGetInfoLogARB(object, length, &written, log.data());
    log.resize(static_cast<size_t>(written));
    return log;
}

// The status of a compile or link; the driver's log, warnings too, goes out under the
// heading.
GLint BuildStatus(GLhandleARB object, GLenum statusName, GLint initial,
                  const util::String& heading) {
    GLint status = initial;
    glGetObjectParameterivARB(object, statusName, &status);
    const util::String log = InfoLog(object);
    if (!log.empty()) {
        Log(logging::Info, heading + "\n" + log + "\n\n");
    }
    return status;
}

// A variable the driver does not know is worth a line: often a misspelt name, or one the
// compiler dropped as unused.
int ReportMissing(int location, const util::String& message) {
    if (location == -1) {
        Log(logging::Error, message);
    }
    return location;
}

template <class F>
bool Present(F* entryPoint) {
    return entryPoint != nullptr;
}

}  // namespace

void CheckShaderSupport(bool hasShaderObjects, const ShaderEntryPoint* entryPoints, size_t count) {
    if (!hasShaderObjects) {
        VORRA_THROW(BadDataException,
                    "This system doesn't support shaders. Please update your graphics driver "
                    "and try again");
    }
    for (size_t i = 0; i < count; ++i) {
        if (!entryPoints[i].present) {
            VORRA_THROW(BadDataException,
                        util::String("Unsupported shader function: ") + entryPoints[i].name);
        }
    }
}

void AssertShaderSupport() {
    const ShaderEntryPoint entryPoints[] = {
        {"gl_CreateProgram", Present(glCreateProgramObjectARB)},
        {"gl_GetShaderiv", Present(glGetObjectParameterivARB)},
        {"gl_GetShaderInfoLog", Present(glGetInfoLogARB)},
        {"gl_CreateShader", Present(glCreateShaderObjectARB)},
        {"gl_ShaderSource", Present(glShaderSourceARB)},
        {"gl_CompileShader", Present(glCompileShaderARB)},
        {"gl_AttachShader", Present(glAttachObjectARB)},
        {"gl_LinkProgram", Present(glLinkProgramARB)},
        {"gl_DeleteShader", Present(glDeleteObjectARB)},
        {"gl_GetUniformLocation", Present(glGetUniformLocationARB)},
        {"gl_GetAttribLocation", Present(glGetAttribLocationARB)},
        {"gl_UseProgram", Present(glUseProgramObjectARB)},
        {"gl_Uniform1i", Present(glUniform1iARB)},
        {"gl_Uniform2fv", Present(glUniform2fvARB)},
        {"gl_UniformMatrix4fv", Present(glUniformMatrix4fvARB)},
        {"gl_Uniform1fv", Present(glUniform1fvARB)},
        {"gl_Uniform3fv", Present(glUniform3fvARB)},
        {"gl_Uniform4fv", Present(glUniform4fvARB)},
    };
    CheckShaderSupport(GLEW_ARB_shader_objects, entryPoints,
                       sizeof(entryPoints) / sizeof(entryPoints[0]));
}

unsigned int LoadShader(int type, const util::String& source, const util::String& name) {
    const GLhandleARB shader = glCreateShaderObjectARB(static_cast<GLenum>(type));
    if (shader == 0) {
        VORRA_THROW(BadDataException, "CreateShader returned 0");
    }
    const GLcharARB* text = source.c_str();
    glShaderSourceARB(shader, 1, &text, nullptr);
    glCompileShaderARB(shader);
    const GLint status = BuildStatus(shader, GL_OBJECT_COMPILE_STATUS_ARB, 0,
                                     "-- Compilation results for shader: " + name);
    if (status == 0) {
        glDeleteObjectARB(shader);
        VORRA_THROW(BadDataException, "Failed to compile shader");
    }
    return shader;
}

Shader::Shader(const util::String& vertexSource, const util::String& fragmentSource,
               const util::String& name)
    : m_name(name) {
    if (!GraphicsContext::IsLoaded()) {
        VORRA_THROW(BadCoderException, "Tried to create shader when GL wasn't loaded");
    }
    m_contextGeneration = GraphicsContext::GetGeneration();
    if (vertexSource.empty() && fragmentSource.empty()) {
        return;
    }
    AssertShaderSupport();
    m_handle = glCreateProgramObjectARB();
    if (m_handle == 0) {
        VORRA_THROW(BadDataException, "CreateProgram returned 0");
    }
    try {
        const struct {
            const util::String& source;
            GLenum type;
        } stages[] = {{vertexSource, GL_VERTEX_SHADER_ARB},
                      {fragmentSource, GL_FRAGMENT_SHADER_ARB}};
        for (const auto& stage : stages) {
            if (!stage.source.empty()) {
                const unsigned int object = LoadShader(stage.type, stage.source, name);
                glAttachObjectARB(m_handle, object);
                // The program keeps the stage alive while it is attached.
                glDeleteObjectARB(object);
            }
        }
        glLinkProgramARB(m_handle);
        if (BuildStatus(m_handle, GL_OBJECT_LINK_STATUS_ARB, 1,
                        "-- Linking results for program: " + name) != 1) {
            VORRA_THROW(BadDataException, "Failed to link shader");
        }
    } catch (...) {
        glDeleteObjectARB(m_handle);
        m_handle = 0;
        throw;
    }
}

Shader::~Shader() {
    if (m_handle != 0 && GraphicsContext::IsLoaded() &&
        m_contextGeneration == GraphicsContext::GetGeneration()) {
        glDeleteObjectARB(m_handle);
    }
}

int Shader::GetUniformLocation(const util::String& name) const {
    if (m_handle == 0) {
        return -1;
    }
    return ReportMissing(glGetUniformLocationARB(m_handle, name.c_str()),
                         "Uniform \"" + name + "\" not found in shader");
}

int Shader::GetAttributeLocation(const util::String& name) const {
    if (m_handle == 0) {
        return -1;
    }
    return ReportMissing(glGetAttribLocationARB(m_handle, name.c_str()),
                         "Attribute \"" + name + "\" not found.");
}

void Shader::DoBind() {
    if (GraphicsContext::IsLoaded()) {
        glUseProgramObjectARB(m_handle);
    }
}

void Shader::DoUnbind() {
    if (GraphicsContext::IsLoaded()) {
        glUseProgramObjectARB(0);
    }
}

}  // namespace rendering
