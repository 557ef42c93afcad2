#include "gui/Console.h"

#include "gui/GUI.h"
#include "gui/TextField.h"

namespace gui {

Console::Console() : Component("Console") {
    AddAttrib(m_fade, "fade", false);
    AddAttrib(m_scroll, "scroll", true);
    AddAttrib(m_delay, "delay", 0.3f);
    AddAttrib(m_screenSize, "screenSize", 0.35f);
    AddAttrib(m_color, "color", math::Colour(0.1f, 0.1f, 0.1f, 0.8f));
    AddCommand("clear", [this]() { Clear(); });
    SetFixedPosition(true);
}

Console::~Console() = default;

void Console::Toggle() {
    m_open = !m_open;
}

void Console::Print(const util::String& text, bool) {
    m_lines.push_back(text);
}

void Console::Clear() {
    m_lines.clear();
}

float Console::GetFraction() const {
    return m_open ? 1.0f : 0.0f;
}

void Console::OnScreenResized() {}

void Console::OnKey(input::KeyEvent& event) {
    Component::OnKey(event);
}

void Console::DrawComp() {}

void Console::Update(float dt) {
    Component::Update(dt);
}

}  // namespace gui
