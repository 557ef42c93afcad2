#pragma once

#include <array>
#include <vector>

#include "math/Vector2.h"
#include "math/Vector3.h"
#include "math/Vector4.h"
#include "rendering/Shader.h"
#include "util/Mentor.h"

namespace rendering {

using ShaderHandle = util::SharedPtr<util::Mentor<Shader>>;

// A named variable of a program. Its location is asked for at the first use and again
// after the program was rebuilt, when the old one means nothing.
class ShaderVariable : public util::Pointee {
public:
    ShaderVariable(const ShaderHandle& shader, const util::String& name);
    ~ShaderVariable() override;

    // The location, asked of the driver if not known; -1 if the program has none.
    virtual int GetLocation();
    virtual int QueryLocation() = 0;
    // The program was dropped or rebuilt.
    virtual void OnShaderEvent();
    virtual void ClearLocation() { m_location = -1; }

    const util::String& GetName() const { return m_name; }

protected:
    // The program as it is now; null while it is not loaded.
    const Shader* GetShader() const { return m_shader->Get().Get(); }

private:
    ShaderHandle m_shader;
    util::String m_name;
    int m_location = -1;
};

class Uniform : public ShaderVariable {
public:
    using ShaderVariable::ShaderVariable;
    int QueryLocation() override;
    virtual void Apply() = 0;

    // One driver call each; a location of -1 is ignored by the driver.
    static void SetUniform(int location, int value);
    static void SetUniform(int location, bool value);
    static void SetUniform(int location, const math::Vec2& value);
    static void SetUniform(int location, const math::Vec4& value);
    // Row after row; the driver is told to transpose it.
    static void SetUniform(int location, const std::array<float, 16>& matrix);
    static void SetUniform(int location, const std::vector<float>& values);
    static void SetUniform(int location, const std::vector<math::Vec2>& values);
    static void SetUniform(int location, const std::vector<math::Vec3>& values);
    static void SetUniform(int location, const std::vector<math::Vec4>& values);
};

class Attribute : public ShaderVariable {
public:
    using ShaderVariable::ShaderVariable;
    int QueryLocation() override;
};

}  // namespace rendering
