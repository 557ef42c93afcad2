#pragma once

#include "input/Events.h"
#include "input/InputListener.h"
#include "input/KeyCodes.h"
#include "math/Vector2.h"
#include "util/Pointee.h"
#include "util/String.h"

namespace app {

// How far from the origin a new entity may go. Beyond it a float cannot tell apart the points
// of a shape of on-screen size, and the world drops whatever falls that far anyway.
constexpr float kMaxCoordinate = 1e6f;

// A world point a tool may build on: finite and within reach. The window system may report
// anything, and a NaN that reached a geom would spread through the whole simulation.
bool IsUsablePoint(const math::Vec2& point);

class Painter;
class Tool;
using ToolPtr = util::SharedPtr<Tool>;

// Turns mouse gestures on the canvas into scene changes. Events arrive in GUI units; a tool
// converts them to the world itself. Handled events are left alone, and gestures begin with
// the tool's own button only.
class Tool : public input::InputListener {
public:
    explicit Tool(const util::String& name);
    ~Tool() override;

    // Escape, pressed and not yet handled, cancels the gesture in progress.
    void OnKey(input::KeyEvent& event) override;

    // Once a frame while in force.
    virtual void Update(float /*dt*/) {}
    // The overlay, in world coordinates, after all entities.
    virtual void Draw(Painter& /*painter*/) {}
    // Drops the gesture in progress; true if there was one.
    virtual bool Cancel() { return false; }
    // The cursor's file in "cursors/", without extension; empty for the default cursor.
    virtual util::String GetCursorName() const { return ""; }

    bool IsDrawing() const { return m_drawing; }
    void SetDrawing(bool drawing) { m_drawing = drawing; }

protected:
    // The start of a left-button gesture that no one took: drops what an unfinished one
    // left and gives the start in the world, or false, also where the start is no usable
    // point.
    bool BeginGesture(const input::DragEvent& event, math::Vec2& start);
    // The end of the gesture in progress, taken here; a gesture whose end someone else took
    // is cancelled. False when there is nothing to finish.
    bool EndGesture(input::DragEvent& event);
    // A GUI position in the world, through the scene's camera.
    static math::Vec2 ToWorld(const math::Vec2& gui);
    static bool IsLeft(input::SDLKey key) { return key == input::MouseKey(input::kMouseLeft); }
    static bool IsRight(input::SDLKey key) { return key == input::MouseKey(input::kMouseRight); }
    static bool ShiftHeld();
    static bool CtrlHeld();
    // Seconds on the program's clock.
    static double Now();
    // The world size of an inch of the screen at the present zoom.
    static float InchInWorld();
    // Settings of the application that the drawing tools read.
    static bool FreeDrawing();
    static bool AutoGlue();

private:
    bool m_drawing = false;
};

}  // namespace app
