#pragma once

// A GUI without a window: the tree, its layers and the console exist, events arrive
// through the input root as the window system's translation would hand them over, and
// time is a fake clock that the test moves on.

#include <gtest/gtest.h>

#include "gui/GUI.h"
#include "input/Input.h"
#include "input/KeyCodes.h"
#include "util/Clock.h"
#include "util/FileSystem.h"

namespace test_gui {

inline double s_now = 1000;
inline double FakeSeconds() {
    return s_now;
}

class GuiTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        util::FileSystem::Get().SetWorkDirectory(VORRA_DATA_DIR);
        util::Clock::SetSource(&FakeSeconds);
    }
    static void TearDownTestSuite() { util::Clock::SetSource(nullptr); }

    void SetUp() override {
        gui::GUI::Get().OnResize(1024, 768);
        input::Input::Get().Reset();
    }
    void TearDown() override {
        // Leave the mouse away from everything so that the next test starts clean.
        MoveMouse(-100, -100);
    }

    static gui::GUI& Gui() { return gui::GUI::Get(); }
    // A component added to the main layer's place, on top of the application.
    static void AddToRoot(const gui::ComponentPtr& component) { Gui().GetRoot()->Add(component); }
    static void Advance(double seconds) { s_now += seconds; }

    static void MoveMouse(float x, float y) {
        const math::Vec2 old = input::Input::Get().GetMousePos();
        input::Input::Get().HandleMouseMotion(math::Vec2(x, y), math::Vec2(x, y) - old);
    }
    static void Press(float x, float y, int button = input::kMouseLeft) {
        MoveMouse(x, y);
        input::Input::Get().HandleMouseButton(button, true, math::Vec2(x, y));
    }
    static void Release(float x, float y, int button = input::kMouseLeft) {
        MoveMouse(x, y);
        input::Input::Get().HandleMouseButton(button, false, math::Vec2(x, y));
    }
    static void Click(float x, float y, int button = input::kMouseLeft) {
        Press(x, y, button);
        Release(x, y, button);
        // Far enough apart that the next click is not taken for a double click.
        Advance(1);
    }
    // Press, move in steps, release: a drag as the input root makes it.
    static void Drag(math::Vec2 from, math::Vec2 to, int steps = 4) {
        Press(from.x, from.y);
        for (int i = 1; i <= steps; ++i) {
            MoveMouse(from.x + (to.x - from.x) * i / steps, from.y + (to.y - from.y) * i / steps);
        }
        Release(to.x, to.y);
        Advance(1);
    }
    // A key press and release with the character it types.
    static void Tap(input::SDLKey key, unsigned character = 0) {
        input::Input::Get().HandleKey(key, true, character);
        input::Input::Get().HandleKey(key, false, 0);
    }
    static void Type(const util::String& text) {
        for (unsigned char c : text) {
            Tap(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c, c);
        }
    }
    // A key event handed straight to one listener, with modifiers.
    static input::KeyEvent KeyPress(input::SDLKey key, char character = 0, bool ctrl = false,
                                    bool shift = false) {
        input::KeyEvent event;
        event.key = key;
        event.character = character;
        event.down = true;
        event.ctrl = ctrl;
        event.shift = shift;
        return event;
    }
};

}  // namespace test_gui
