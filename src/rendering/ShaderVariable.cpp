#include "rendering/ShaderVariable.h"

#include <GL/glew.h>

#include "rendering/GraphicsContext.h"

namespace rendering {

ShaderVariable::ShaderVariable(const ShaderHandle& shader, const util::String& name)
    : m_shader(shader), m_name(name) {
    m_shader->OnUnload().Add(util::WeakPtr<util::Pointee>(this), [this]() { OnShaderEvent(); });
}

ShaderVariable::~ShaderVariable() = default;

int ShaderVariable::GetLocation() {
    if (m_location == -1) {
        m_location = QueryLocation();
    }
    return m_location;
}

void ShaderVariable::OnShaderEvent() {
    ClearLocation();
}

int Uniform::QueryLocation() {
    const Shader* shader = GetShader();
    return shader ? shader->GetUniformLocation(GetName()) : -1;
}

int Attribute::QueryLocation() {
    const Shader* shader = GetShader();
    return shader ? shader->GetAttributeLocation(GetName()) : -1;
}

void Uniform::SetUniform(int location, int value) {
    glUniform1iARB(location, value);
}

void Uniform::SetUniform(int location, bool value) {
    glUniform1iARB(location, static_cast<unsigned char>(value));
}

void Uniform::SetUniform(int location, const math::Vec2& value) {
    glUniform2fvARB(location, 1, &value.x);
}

void Uniform::SetUniform(int location, const math::Vec4& value) {
    glUniform4fvARB(location, 1, &value.x);
}

void Uniform::SetUniform(int location, const std::array<float, 16>& matrix) {
    glUniformMatrix4fvARB(location, 1, GL_TRUE, matrix.data());
}

void Uniform::SetUniform(int location, const std::vector<float>& values) {
    glUniform1fvARB(location, static_cast<GLsizei>(values.size()), values.data());
}

void Uniform::SetUniform(int location, const std::vector<math::Vec2>& values) {
    glUniform2fvARB(location, static_cast<GLsizei>(values.size()), &values.data()->x);
}

void Uniform::SetUniform(int location, const std::vector<math::Vec3>& values) {
    glUniform3fvARB(location, static_cast<GLsizei>(values.size()), &values.data()->x);
}

void Uniform::SetUniform(int location, const std::vector<math::Vec4>& values) {
    glUniform4fvARB(location, static_cast<GLsizei>(values.size()), &values.data()->x);
}

}  // namespace rendering
