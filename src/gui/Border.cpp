#include "gui/Border.h"

#include "gui/Primitives.h"

namespace gui {
namespace {

class EmptyBorder : public Border {
public:
    void Draw(float, float) override {}
    float GetLeft() const override { return 0; }
    float GetRight() const override { return 0; }
    float GetTop() const override { return 0; }
    float GetBottom() const override { return 0; }
};

}  // namespace

BorderPtr Border::MakeEmpty() {
    return BorderPtr(new EmptyBorder());
}

SimpleBorder::SimpleBorder(float thickness, const math::Colour& background,
                           const math::Colour& line)
    : m_thickness(thickness), m_background(background), m_line(line) {}

void SimpleBorder::Draw(float width, float height) {
    const float outerWidth = width + 2 * m_thickness;
    const float outerHeight = height + 2 * m_thickness;
    FillRect(0, 0, outerWidth, outerHeight, m_background);
    // The line takes one unit of the thickness at most; the rest shows the background.
    FrameRect(0, 0, outerWidth, outerHeight, m_thickness > 1 ? 1.0f : m_thickness, m_line);
}

}  // namespace gui
