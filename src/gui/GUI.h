#pragma once

#include <functional>

#include "gui/Component.h"
#include "input/InputListener.h"
#include "logging/ILogger.h"
#include "rendering/TextureManager.h"
#include "script/Attributes.h"
#include "util/Singleton.h"

namespace gui {

class Console;
using ConsolePtr = util::SharedPtr<Console>;

// What the walk of UpdateMouseOverComp has cost: total and worst seconds, and calls.
struct WalkStatistics {
    double total = 0;
    double worst = 0;
    long calls = 0;
};

// Owner of the interface tree and of the global look: decides what lies under the mouse,
// scales the whole interface, shows tooltips, draws the cursor and the profiler's report.
// In the language it is the object "GUI".
//
// The root holds, from bottom to top: the main layer, which holds the application and
// covers the screen; the console; the tooltip layer.
class GUI : public input::InputListener, public util::Singleton<GUI> {
public:
    GUI();
    ~GUI() override;

    // Pixels to GUI units and back.
    math::Vec2 ToGUI(float x, float y) const;
    math::TVector2<int> ToPixels(float x, float y) const;
    // The window in GUI units.
    math::Vec2 GetScreenSize() const;
    // The window's new size in pixels.
    void OnResize(int width, int height);
    void SetFullscreen(bool fullscreen) { m_fullscreen = fullscreen; }

    // Marks the one chain of components under the mouse, ending at the topmost.
    void UpdateMouseOverComp();
    void Update(float dt);
    void Draw();
    // Runs the drawing with the GUI's projection (one unit a pixel, y down from the top-left
    // corner) and its blending, under the given opacity, and puts GL's state back after.
    void DrawInScreenSpace(float opacity, const std::function<void()>& draw) const;

    void OnMouseMove(input::MouseMoveEvent& event) override;

    const ComponentPtr& GetRoot() const { return m_root; }
    const ComponentPtr& GetMainLayer() const { return m_mainLayer; }
    const ComponentPtr& GetTooltipLayer() const { return m_tooltipLayer; }
    const ConsolePtr& GetConsole() const { return m_console; }

    // A component shows its own cursor while it owns it; null gives the default back.
    void SetCursor(const rendering::TextureHandle& cursor, const ComponentWeakPtr& owner);
    // Gives the default back if the owner still owns the cursor.
    void ResetCursor(const Component* owner);
    const rendering::TextureHandle& GetCursor() const { return m_cursor; }

    float GetScale() const { return m_scale->Get(); }
    bool GetCrispFonts() const { return m_crispFonts->Get(); }
    float GetCrispFontFactor() const { return m_crispFontFactor->Get(); }
    bool GetFontShadow() const { return m_fontShadow->Get(); }
    math::Vec2 GetFontShadowOffset() const { return m_fontShadowOffset->Get(); }
    float GetOpaqueness() const { return m_opaqueness->Get(); }
    bool GetForceOSCursor() const { return m_forceOSCursor->Get(); }
    util::String GetFontName() const { return m_font->Get(); }

    // The clock of hover times and tooltips: the installed time source.
    static double GetTime();
    static constexpr double kTooltipDelay = 0.4;

    // The walk's cost, for the profiler.
    static const WalkStatistics& GetWalkStatistics() { return s_walkStatistics; }

private:
    void SetUpLayers();
    void LayOutRoot();
    void PassLimitsToInput();
    void DrawCursor();
    void DrawProfilerOutput();

    script::AttribPtr<float> m_clickTolerance;
    script::AttribPtr<float> m_clickTimeTolerance;
    script::AttribPtr<bool> m_forceOSCursor;
    script::AttribPtr<util::String> m_font;
    script::AttribPtr<bool> m_crispFonts;
    script::AttribPtr<float> m_crispFontFactor;
    script::AttribPtr<bool> m_fontShadow;
    script::AttribPtr<math::Vec2> m_fontShadowOffset;
    script::AttribPtr<float> m_scale;
    script::AttribPtr<float> m_opaqueness;

    ComponentPtr m_root;
    ComponentPtr m_mainLayer;
    ComponentPtr m_tooltipLayer;
    ConsolePtr m_console;
    rendering::TextureHandle m_cursor;
    rendering::TextureHandle m_defaultCursor;
    ComponentWeakPtr m_cursorOwner;

    logging::ILoggerPtr m_consoleLogger;
    input::InputListenerPtr m_profilerKeys;
    int m_width = 1;
    int m_height = 1;
    bool m_fullscreen = false;

    static inline WalkStatistics s_walkStatistics;
};

}  // namespace gui
