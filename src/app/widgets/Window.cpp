#include "app/widgets/Window.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

#include "app/Language.h"
#include "app/widgets/Tooltip.h"
#include "gui/Button.h"
#include "gui/GUI.h"
#include "gui/Layout.h"
#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"
#include "input/KeyCodes.h"
#include "rendering/Renderer.h"

namespace app {
namespace {

// Between the title and the buttons, and between the buttons.
constexpr float kTitleGap = 12;
constexpr float kButtonGap = 4;

const math::Colour kWhite(1, 1, 1, 1);

// The toolbar strip at the left edge is 60 wide, the simulation control at the top 80 high:
// the windows that open beside them keep this far away.
constexpr float kToolbarClearance = 68;
constexpr float kTopClearance = 88;

// A curved arrow turning back to the left over its top, in a square of side s; mirrored it
// turns to the right.
void DrawTurnArrow(float s, bool mirrored) {
    const auto x = [s, mirrored](float fraction) {
        return (mirrored ? 1 - fraction : fraction) * s;
    };
    const float cx = 0.5f;
    const float cy = 0.52f;
    const float r = 0.26f;
    constexpr int kSegments = 12;
    glDisable(GL_TEXTURE_2D);
    glLineWidth(2);
    glBegin(GL_LINE_STRIP);
    glVertex2f(x(cx + r), (cy + 0.2f) * s);
    for (int i = 0; i <= kSegments; ++i) {
        const float angle = 3.14159265f * static_cast<float>(i) / kSegments;
        glVertex2f(x(cx + r * std::cos(angle)), (cy - r * std::sin(angle)) * s);
    }
    glEnd();
    glLineWidth(1);
    // The head at the left end, pointing down.
    glBegin(GL_TRIANGLES);
    glVertex2f(x(cx - r - 0.15f), (cy - 0.03f) * s);
    glVertex2f(x(cx - r + 0.15f), (cy - 0.03f) * s);
    glVertex2f(x(cx - r), (cy + 0.17f) * s);
    glEnd();
}

}  // namespace

gui::BorderPtr WindowStyle::MarginBorder(float thickness) {
    return gui::BorderPtr(
        new gui::SimpleBorder(thickness, math::Colour(0, 0, 0, 0), math::Colour(0, 0, 0, 0)));
}

gui::ComponentPtr WindowStyle::Row(const std::vector<gui::ComponentPtr>& parts, float spacing) {
    const gui::ComponentPtr row(new gui::Component("Row"));
    row->SetLayout(gui::LayoutPtr(new gui::ListLayout(0, spacing)));
    for (const gui::ComponentPtr& part : parts) {
        row->Add(part);
    }
    return row;
}

// TitleButton.

TitleButton::TitleButton(Symbol symbol) : gui::AbstractButton("TitleButton"), m_symbol(symbol) {
    SetSize(WindowStyle::kTitleButton, WindowStyle::kTitleButton);
}

TitleButton::~TitleButton() = default;

void TitleButton::DrawComp() {
    gui::Component::DrawComp();
    gui::ColorScope color(GetColor());
    const gui::LookAndFeel& look = gui::LookAndFeel::Get();
    const math::Vec2 size = GetOuterSize();
    // Closing is the one that loses something: it warns in red under the mouse.
    const math::Colour hover =
        m_symbol == Symbol::Close ? math::Colour(0.8f, 0.25f, 0.2f, 1) : look.GetHoverColor();
    if (IsPressed()) {
        gui::FillRect(0, 0, size.x, size.y, look.GetPressedColor());
    } else if (IsMouseOver()) {
        gui::FillRect(0, 0, size.x, size.y, hover);
    }
    const float s = size.x;
    switch (m_symbol) {
        case Symbol::Minimise:
            gui::FillRect(s * 0.25f, s * 0.62f, s * 0.5f, 2, kWhite);
            break;
        case Symbol::Restore:
            gui::FrameRect(s * 0.25f, s * 0.25f, s * 0.5f, s * 0.5f, 1.5f, kWhite);
            gui::FillRect(s * 0.25f, s * 0.25f, s * 0.5f, 2.5f, kWhite);
            break;
        case Symbol::Close: {
            gui::ColorScope white(kWhite);
            glDisable(GL_TEXTURE_2D);
            glLineWidth(2);
            glBegin(GL_LINES);
            glVertex2f(s * 0.28f, s * 0.28f);
            glVertex2f(s * 0.72f, s * 0.72f);
            glVertex2f(s * 0.72f, s * 0.28f);
            glVertex2f(s * 0.28f, s * 0.72f);
            glEnd();
            glLineWidth(1);
            break;
        }
    }
}

// SymbolButton.

SymbolButton::SymbolButton(Symbol symbol) : gui::Button(""), m_symbol(symbol) {
    const float side = gui::LookAndFeel::Get().GetFont()->GetLineHeight() + 2 * kMarginY;
    SetFixedSize(side + 4, side);
}

SymbolButton::~SymbolButton() = default;

void SymbolButton::DrawComp() {
    gui::Button::DrawComp();
    const gui::LookAndFeel& look = gui::LookAndFeel::Get();
    gui::ColorScope color(GetColor());
    gui::ColorScope ink(IsEnabled() ? look.GetForegroundColor() : look.GetDimTextColor());
    const math::Vec2 size = GetSize();
    const float s = std::min(size.x, size.y);
    glPushMatrix();
    const math::Vec2 inner = GetBorderOffset();
    glTranslatef(inner.x + (size.x - s) / 2, inner.y + (size.y - s) / 2, 0);
    switch (m_symbol) {
        case Symbol::Play:
            glDisable(GL_TEXTURE_2D);
            glBegin(GL_TRIANGLES);
            glVertex2f(s * 0.3f, s * 0.18f);
            glVertex2f(s * 0.3f, s * 0.82f);
            glVertex2f(s * 0.82f, s * 0.5f);
            glEnd();
            break;
        case Symbol::Pause:
            gui::FillRect(s * 0.26f, s * 0.2f, s * 0.17f, s * 0.6f, kWhite);
            gui::FillRect(s * 0.57f, s * 0.2f, s * 0.17f, s * 0.6f, kWhite);
            break;
        case Symbol::Undo:
        case Symbol::Redo:
            DrawTurnArrow(s, m_symbol == Symbol::Redo);
            break;
    }
    glPopMatrix();
}

// TitleBar.

TitleBar::TitleBar(const util::String& title)
    : gui::Component("TitleBar"),
      m_title(new gui::Label(title, gui::LookAndFeel::Get().GetTitleFont())),
      m_minimise(new TitleButton(TitleButton::Symbol::Minimise)),
      m_close(new TitleButton(TitleButton::Symbol::Close)) {
    const Language& language = Language::Get();
    m_minimise->SetTooltip(MakeTooltip(language.Translate("Minimise_Tooltip")));
    m_close->SetTooltip(MakeTooltip(language.Translate("Close_Tooltip")));
    Add(gui::ComponentPtr(m_title));
    Add(gui::ComponentPtr(m_minimise));
    Add(gui::ComponentPtr(m_close));
}

TitleBar::~TitleBar() = default;

void TitleBar::SetMinimisable(bool on) {
    if (on) {
        Add(gui::ComponentPtr(m_minimise));
    } else {
        Remove(gui::ComponentPtr(m_minimise));
    }
}

void TitleBar::SetClosable(bool on) {
    if (on) {
        Add(gui::ComponentPtr(m_close));
    } else {
        Remove(gui::ComponentPtr(m_close));
    }
}

float TitleBar::GetNaturalWidth() const {
    float width = 2 * WindowStyle::kTitlePadding + m_title->GetOuterSize().x;
    float buttons = 0;
    for (const gui::ComponentPtr& child : GetChildren()) {
        if (child != m_title) {
            buttons += child->GetOuterSize().x + (buttons > 0 ? kButtonGap : 0);
        }
    }
    if (buttons > 0) {
        width += buttons + (m_title->GetText().empty() ? 0 : kTitleGap);
    }
    return width;
}

void TitleBar::DoLayout() {
    if (m_inLayout) {
        return;
    }
    m_inLayout = true;
    const math::Vec2 size = GetSize();
    const math::Vec2 title = m_title->GetOuterSize();
    m_title->SetPosition(WindowStyle::kTitlePadding, std::max(0.0f, (size.y - title.y) / 2));
    // The buttons from the right edge inwards: close outermost.
    float right = size.x - WindowStyle::kTitlePadding;
    for (const TitleButtonPtr& button : {m_close, m_minimise}) {
        if (button->GetParent() != this) {
            continue;
        }
        const math::Vec2 outer = button->GetOuterSize();
        right -= outer.x;
        button->SetPosition(right, std::max(0.0f, (size.y - outer.y) / 2));
        right -= kButtonGap;
    }
    m_inLayout = false;
}

void TitleBar::DrawComp() {
    gui::ColorScope color(GetColor());
    const math::Vec2 size = GetOuterSize();
    gui::FillRect(0, 0, size.x, size.y, WindowStyle::TitleColor());
    gui::FillRect(0, size.y - 1, size.x, 1, WindowStyle::TitleLineColor());
    // A bar without a title shows that it can be taken hold of.
    if (m_title->GetText().empty()) {
        const float dot = 2;
        const float left = WindowStyle::kTitlePadding + 1;
        const float top = size.y / 2 - 2 * dot;
        for (int row = 0; row < 2; ++row) {
            for (int column = 0; column < 3; ++column) {
                gui::FillRect(left + static_cast<float>(column) * 2 * dot,
                              top + static_cast<float>(row) * 2 * dot + dot / 2, dot, dot,
                              WindowStyle::TitleLineColor());
            }
        }
    }
    DrawChildren();
}

// ButtonRow.

ButtonRow::ButtonRow(float width) : gui::Component("ButtonRow"), m_width(width) {
    DoLayout();
}

ButtonRow::~ButtonRow() = default;

void ButtonRow::AddButton(const gui::ComponentPtr& button) {
    if (auto* text = dynamic_cast<gui::Button*>(button.Get())) {
        const math::Vec2 size = text->GetSize();
        text->SetFixedSize(std::max(size.x, kMinButtonWidth), size.y);
    }
    Add(button);
}

void ButtonRow::DoLayout() {
    if (m_inLayout) {
        return;
    }
    m_inLayout = true;
    float total = 0;
    float height = 0;
    for (const gui::ComponentPtr& child : GetChildren()) {
        const math::Vec2 outer = child->GetOuterSize();
        total += outer.x + (total > 0 ? WindowStyle::kSpacing : 0);
        height = std::max(height, outer.y);
    }
    const float width = std::max(m_width, total);
    float x = width - total;
    for (const gui::ComponentPtr& child : GetChildren()) {
        const math::Vec2 outer = child->GetOuterSize();
        child->SetPosition(x, (height - outer.y) / 2);
        x += outer.x + WindowStyle::kSpacing;
    }
    SetSize(width, height);
    m_inLayout = false;
}

// Window.

Window::Window(const util::String& name, const util::String& title, Kind kind)
    : Widget(name),
      m_kind(kind),
      m_titleBar(new TitleBar(title)),
      m_body(new gui::Component("Body")) {
    SetUsesLookAndFeel(true);
    m_body->SetBorder(WindowStyle::MarginBorder());
    const util::WeakPtr<util::Pointee> self(this);
    m_titleBar->GetCloseButton()->GetOnClick().Add(self, [this]() { Close(); });
    m_titleBar->GetMinimiseButton()->GetOnClick().Add(self, [this]() { ToggleMinimised(); });
    // A popup is gone when it has done its errand; there is nothing to fold.
    if (IsPopup()) {
        m_titleBar->SetMinimisable(false);
        SetWobble(false);
    }
    Add(gui::ComponentPtr(m_titleBar));
    Add(m_body);
}

Window::~Window() = default;

void Window::SetTitle(const util::String& title) {
    m_titleBar->GetTitleLabel()->SetText(title);
    DoLayout();
}

void Window::DrawBorder() {
    rendering::Renderer& renderer = rendering::Renderer::Get();
    const math::Colour saved = renderer.GetColor();
    renderer.SetColor(math::Colour(saved.x, saved.y, saved.z, 1));
    Widget::DrawBorder();
    renderer.SetColor(saved);
}

gui::BorderPtr Window::GetLookBorder() const {
    return gui::LookAndFeel::Get().GetOpaqueWindowBorder();
}

void Window::DoLayout() {
    if (m_inLayout) {
        return;
    }
    m_inLayout = true;
    const gui::LabelPtr& title = m_titleBar->GetTitleLabel();
    const float titleHeight = std::max(title->GetOuterSize().y, WindowStyle::kTitleButton) +
                              2 * WindowStyle::kTitlePadding;
    const bool folded = IsMinimised();
    const math::Vec2 body = folded ? math::Vec2(0, 0) : m_body->GetOuterSize();
    const float width = std::max(m_titleBar->GetNaturalWidth(), body.x);
    m_titleBar->SetPosition(0, 0);
    m_titleBar->SetSize(width, titleHeight);
    if (!folded) {
        m_body->SetPosition(0, titleHeight);
    }
    SetSize(width, titleHeight + body.y);
    m_inLayout = false;
}

void Window::ChildChanged() {
    DoLayout();
}

bool Window::IsGrip(const math::Vec2& local) const {
    // The title bar and the frame above it.
    const float bottom =
        GetBorderOffset().y + m_titleBar->GetPosition().y + m_titleBar->GetOuterSize().y;
    return local.y < bottom;
}

void Window::MinimisedChanged() {
    if (IsMinimised()) {
        Remove(m_body);
    } else {
        Add(m_body);
    }
    m_titleBar->GetMinimiseButton()->SetSymbol(IsMinimised() ? TitleButton::Symbol::Restore
                                                             : TitleButton::Symbol::Minimise);
    DoLayout();
}

void Window::OnKey(input::KeyEvent& event) {
    Widget::OnKey(event);
    if (IsPopup() && event.down && !event.consumed && event.key == input::key::Escape) {
        event.consumed = true;
        Close();
    }
}

void Window::OnBackgroundClick(const input::ClickEvent& event) {
    // A double click on the title bar folds the window as its button does.
    if (event.clicks == 2 && event.key == input::MouseKey(input::kMouseLeft) &&
        m_titleBar->GetMinimiseButton()->GetParent() == m_titleBar.Get() &&
        IsGrip(ToLocal(event.position))) {
        ToggleMinimised();
    }
}

// Default places.

void PlaceByDefault(Widget& widget, DefaultPlace place) {
    math::Vec2 screen(1024, 768);
    if (gui::GUI::IsAlive()) {
        screen = gui::GUI::Get().GetScreenSize();
    }
    const math::Vec2 free = screen - widget.GetOuterSize();
    math::Vec2 corner;
    switch (place) {
        case DefaultPlace::TopCentre:
            corner = math::Vec2(free.x / 2, 0);
            break;
        case DefaultPlace::TopRight:
            corner = math::Vec2(free.x, 0);
            break;
        case DefaultPlace::BottomRight:
            corner = free;
            break;
        case DefaultPlace::BottomCentre:
            corner = math::Vec2(free.x / 2, free.y);
            break;
        case DefaultPlace::BottomLeft:
            corner = math::Vec2(kToolbarClearance, free.y);
            break;
        case DefaultPlace::UpperLeft:
            corner = math::Vec2(kToolbarClearance, kTopClearance);
            break;
    }
    widget.SetScreenPosition(math::Vec2(std::floor(corner.x), std::floor(corner.y)));
    widget.KeepOnScreen();
}

}  // namespace app
