#pragma once

#include "math/Vector4.h"
#include "util/Pointee.h"

namespace gui {

class Border;
using BorderPtr = util::SharedPtr<Border>;

// What surrounds a component's inner area: its thickness on each side, and how it draws
// itself behind the component's children. Sizes are in GUI units.
class Border : public util::Pointee {
public:
    ~Border() override = default;

    virtual void Draw(float width, float height) = 0;
    virtual float GetLeft() const = 0;
    virtual float GetRight() const = 0;
    virtual float GetTop() const = 0;
    virtual float GetBottom() const = 0;

    // The border of a component that has none of its own.
    static BorderPtr MakeEmpty();
};

// A frame of uniform thickness around a filled area. Either colour may be fully
// transparent to leave that part out.
class SimpleBorder : public Border {
public:
    SimpleBorder(float thickness, const math::Colour& background, const math::Colour& line);

    void Draw(float width, float height) override;
    float GetLeft() const override { return m_thickness; }
    float GetRight() const override { return m_thickness; }
    float GetTop() const override { return m_thickness; }
    float GetBottom() const override { return m_thickness; }

    const math::Colour& GetBackground() const { return m_background; }
    const math::Colour& GetLine() const { return m_line; }

private:
    float m_thickness;
    math::Colour m_background;
    math::Colour m_line;
};

}  // namespace gui
