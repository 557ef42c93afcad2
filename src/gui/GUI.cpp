#include "gui/GUI.h"

#include <GL/glew.h>

#include <cmath>

#include "gui/Console.h"
#include "gui/Layout.h"
#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"
#include "gui/ProfilerKeys.h"
#include "input/Input.h"
#include "logging/FunctionLogger.h"
#include "logging/Logger.h"
#include "rendering/Renderer.h"
#include "util/Clock.h"
#include "util/Profiler.h"
#include "util/Profiler2.h"
#include "util/StringUtil.h"

namespace gui {
namespace {

// Warnings, failed checks, errors and information; debugging chatter stays in the file.
constexpr unsigned kConsoleLogMask = 23;
constexpr float kCursorSize = 32;

}  // namespace

GUI::GUI() : input::InputListener("GUI") {
    AddAttrib(m_clickTolerance, "clickTolerance", 3.5f);
    AddAttrib(m_clickTimeTolerance, "clickTimeTolerance", 0.3f);
    AddAttrib(m_forceOSCursor, "forceOSCursor", false);
    AddAttrib(m_font, "font", util::String("arial_black"));
    AddAttrib(m_crispFonts, "crispFonts", false);
    AddAttrib(m_crispFontFactor, "crispFontFactor", 0.5f);
    AddAttrib(m_fontShadow, "fontShadow", true);
    AddAttrib(m_fontShadowOffset, "fontShadowOffset", math::Vec2(0.0625f, 0.0625f));
    AddAttrib(m_scale, "scale", 1.0f);
    AddAttrib(m_opaqueness, "opaqueness", 0.9f);
    SetReflectedName("GUI");

    const util::WeakPtr<util::Pointee> self(this);
    m_font->GetOnChange().Add(
        util::MakeCallback(self, [this]() { LookAndFeel::Get().SetFontName(m_font->Get()); }));
    m_scale->GetOnChange().Add(util::MakeCallback(self, [this]() {
        PassLimitsToInput();
        LayOutRoot();
    }));
    m_clickTolerance->GetOnChange().Add(util::MakeCallback(this, &GUI::PassLimitsToInput));
    m_clickTimeTolerance->GetOnChange().Add(util::MakeCallback(this, &GUI::PassLimitsToInput));

    SetUpLayers();

    m_consoleLogger = logging::ILoggerPtr(new logging::FunctionLogger(
        kConsoleLogMask, [console = util::WeakPtr<Console>(m_console)](const util::String& text) {
            if (util::LockPtr<Console> locked = console.Lock()) {
                locked->Print(text, false);
            }
        }));
    logging::Logger::Get().Add(m_consoleLogger);

    input::Input& input = input::Input::Get();
    m_profilerKeys = input::InputListenerPtr(new ProfilerKeys());
    input.Add(input::InputListenerWeakPtr(m_profilerKeys.Get()));
    input.Add(input::InputListenerWeakPtr(m_root.Get()));
    SetPriority(100);
    input.Add(input::InputListenerWeakPtr(this));
    PassLimitsToInput();

    m_defaultCursor = rendering::TextureManager::Get().Load("cursors/mouse", GL_RGBA);
    m_cursor = m_defaultCursor;
}

GUI::~GUI() {
    if (logging::Logger::IsAlive()) {
        logging::Logger::Get().Remove(m_consoleLogger);
    }
    if (input::Input::IsAlive()) {
        input::Input& input = input::Input::Get();
        input.Remove(input::InputListenerWeakPtr(this));
        input.Remove(input::InputListenerWeakPtr(m_root.Get()));
        input.Remove(input::InputListenerWeakPtr(m_profilerKeys.Get()));
    }
}

void GUI::SetUpLayers() {
    m_root = ComponentPtr(new Component("root"));
    m_mainLayer = ComponentPtr(new Component("mainLayer"));
    // Whatever the application puts here fills the screen.
    m_mainLayer->SetLayout(LayoutPtr(new BorderLayout(0)));
    m_console = ConsolePtr(new Console());
    m_tooltipLayer = ComponentPtr(new Component("tooltipLayer"));
    m_tooltipLayer->SetFixedPosition(true);
    m_tooltipLayer->SetPassesMouseThrough(true);
    m_root->Add(m_mainLayer);
    m_root->Add(ComponentPtr(m_console));
    m_root->Add(m_tooltipLayer);
    LayOutRoot();
}

void GUI::PassLimitsToInput() {
    input::GestureLimits& limits = input::Input::Get().GetGestureLimits();
    limits.clickTolerance = m_clickTolerance->Get();
    limits.clickTimeTolerance = m_clickTimeTolerance->Get();
    limits.scale = GetScale();
}

math::Vec2 GUI::ToGUI(float x, float y) const {
    return math::Vec2(x / GetScale(), y / GetScale());
}

math::TVector2<int> GUI::ToPixels(float x, float y) const {
    const float scale = GetScale();
    return math::TVector2<int>(static_cast<int>(std::round(scale * x + 0.5f)),
                               static_cast<int>(std::round(scale * y + 0.5f)));
}

math::Vec2 GUI::GetScreenSize() const {
    return ToGUI(static_cast<float>(m_width), static_cast<float>(m_height));
}

void GUI::OnResize(int width, int height) {
    m_width = width;
    m_height = height;
    LayOutRoot();
}

void GUI::LayOutRoot() {
    const math::Vec2 screen = GetScreenSize();
    const Border& border = m_root->GetBorder();
    m_root->SetSize(screen.x - border.GetLeft() - border.GetRight(),
                    screen.y - border.GetTop() - border.GetBottom());
    m_mainLayer->SetSize(m_root->GetSize());
    m_tooltipLayer->SetSize(m_root->GetSize());
    m_console->OnScreenResized();
}

double GUI::GetTime() {
    return util::Clock::Seconds();
}

namespace {

// Marks the component if the point (in its parent's inner space) lies on it, then its
// topmost child under the point. Returns whether this chain holds the mouse.
bool MarkMouseOver(Component& component, const math::Vec2& point, bool parentOver) {
    if (!parentOver) {
        component.ClearMouseOver();
        return false;
    }
    component.SetMouseOver(component.Contains(point));
    const math::Vec2 inner = point - component.GetPosition() - component.GetBorderOffset();
    bool childOver = false;
    const std::vector<ComponentPtr>& children = component.GetChildren();
    // The walk may call handlers that change the tree: index, and recheck the bounds.
    for (size_t i = children.size(); i-- > 0;) {
        if (i >= children.size()) {
            continue;
        }
        const ComponentPtr child = children[i];
        if (MarkMouseOver(*child, inner, !childOver && component.IsMouseOver())) {
            childOver = true;
        }
    }
    // A layer that only holds others keeps the mouse only where one of them lies.
    return (component.IsMouseOver() && !component.PassesMouseThrough()) || childOver;
}

}  // namespace

void GUI::UpdateMouseOverComp() {
    const double start = util::Clock::PreciseSeconds();
    MarkMouseOver(*m_root, input::Input::Get().GetMousePos(), true);
    const double spent = util::Clock::PreciseSeconds() - start;
    s_walkStatistics.total += spent;
    s_walkStatistics.worst = std::max(s_walkStatistics.worst, spent);
    ++s_walkStatistics.calls;
}

void GUI::OnMouseMove(input::MouseMoveEvent&) {
    UpdateMouseOverComp();
}

void GUI::Update(float dt) {
    {
        VORRA_PROFILE("GUI::UpdateMouseOverComp");
        UpdateMouseOverComp();
    }
    VORRA_PROFILE("Comp-updates");
    m_root->Update(dt);
}

void GUI::Draw() {
    VORRA_PROFILE("GUI::Draw");
    DrawInScreenSpace(GetOpaqueness(), [this]() {
        m_root->DrawComp();
        DrawCursor();
        DrawProfilerOutput();
    });
}

void GUI::DrawInScreenSpace(float opacity, const std::function<void()>& draw) const {
    const math::Vec2 screen = GetScreenSize();
    rendering::Renderer& renderer = rendering::Renderer::Get();
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glOrtho(0, screen.x, screen.y, 0, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    renderer.ForgetState();
    renderer.SetColor(math::Colour(1, 1, 1, opacity));

    draw();

    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopAttrib();
    renderer.ForgetState();
    renderer.SetColor(math::Colour(1, 1, 1, 1));
}

void GUI::DrawCursor() {
    rendering::Renderer::Get().SetColor(math::Colour(1, 1, 1, 1));
    const bool isDefault = m_cursor == m_defaultCursor;
    const rendering::TexturePtr texture =
        m_cursor && !rendering::TextureManager::IsDefault(m_cursor) ? m_cursor->Get()
                                                                    : rendering::TexturePtr();
    input::Input& input = input::Input::Get();
    if ((isDefault && GetForceOSCursor()) || !texture) {
        input.ShowCursor(true);
        return;
    }
    if (!m_fullscreen) {
        input.ShowCursor(false);
    }
    VORRA_PROFILE("Drawing cursor");
    const math::Vec2 mouse = input.GetMousePos();
    texture->Bind();
    DrawTexturedRect(mouse.x - kCursorSize / 2, mouse.y - kCursorSize / 2, kCursorSize,
                     kCursorSize);
}

void GUI::DrawProfilerOutput() {
    const util::Profiler& profiler = util::Profiler::Get();
    const util::Profiler2& flat = util::Profiler2::Get();
    if (!profiler.IsOutputOn() && !flat.IsOutputOn()) {
        return;
    }
    VORRA_PROFILE("Profiler output");
    const math::Vec2 screen = GetScreenSize();
    rendering::Renderer& renderer = rendering::Renderer::Get();
    renderer.SetColor(math::Colour(1, 1, 1, 1));
    FillRect(0, 0, screen.x, screen.y, math::Colour(0, 0, 0, 0.5f));
    const FontFormaterPtr font = LookAndFeel::Get().GetFixedFont();
    util::String text;
    if (profiler.IsOutputOn()) {
        text += profiler.GetOutput();
    }
    if (flat.IsOutputOn()) {
        text += (text.empty() ? "" : "\n") + flat.GetOutput();
    }
    const float size = font->GetSize();
    // The report is wide: a smaller size keeps its columns on the screen.
    FontFormater small(font->GetFont(), size * 0.75f);
    small.SetShadow(false);
    // The report's micro sign is written in UTF-8.
    small.Draw(TextFormat(small, util::Utf8ToLatin1(text)), 4, 4);
}

void GUI::SetCursor(const rendering::TextureHandle& cursor, const ComponentWeakPtr& owner) {
    m_cursor = cursor ? cursor : m_defaultCursor;
    m_cursorOwner = owner;
}

void GUI::ResetCursor(const Component* owner) {
    if (m_cursorOwner.Get() == owner) {
        m_cursor = m_defaultCursor;
        m_cursorOwner = nullptr;
    }
}

}  // namespace gui
