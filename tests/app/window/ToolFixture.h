#pragma once

// Feeds tools the event records a user's mouse would make, given in world coordinates, with
// no window: the application object exists, the camera is fixed, and the clock and the
// modifier keys are the test's.

#include <gtest/gtest.h>

#include <vector>

#include "../SceneFixture.h"
#include "app/App.h"
#include "app/Camera.h"
#include "app/tools/Tool.h"
#include "app/tools/Tools.h"
#include "input/Events.h"
#include "input/KeyCodes.h"
#include "util/Clock.h"

namespace test_app {

class ToolTest : public SceneTest {
protected:
    static void SetUpTestSuite() {
        // The one application of the run: main makes it with new, and so does this.
        if (!app::App::IsAlive()) {
            new app::App();
        }
        if (!app::Tools::IsAlive()) {
            app::Tools::Create();
        }
    }
    void SetUp() override {
        SceneTest::SetUp();
        s_now = 1000;
        util::Clock::SetSource([] { return s_now; });
        s_modifiers = app::Modifiers();
        GetScene().SetModifierSource([] { return s_modifiers; });
        // 100 pixels a world unit, the origin at the window's (400, 300).
        app::Camera& camera = GetScene().GetCamera();
        camera.SetViewport(math::Vec2(0, 0), math::Vec2(800, 600));
        camera.SetZoom(100);
        camera.SetPan(math::Vec2(0, 0));
        app::App::Get().GetAppGUI()->freeDrawing->SetNative(false);
        app::App::Get().GetAppGUI()->autoGlue->SetNative(false);
    }
    void TearDown() override {
        util::Clock::SetSource(nullptr);
        SceneTest::TearDown();
    }

    static math::Vec2 Gui(const math::Vec2& world) {
        return GetScene().GetCamera().WorldToGUI(world);
    }
    static input::SDLKey Left() { return input::MouseKey(input::kMouseLeft); }
    static input::SDLKey Right() { return input::MouseKey(input::kMouseRight); }

    // A whole drag through the points, as the input layer reports it; true when the tool
    // took the first event.
    static bool Drag(app::Tool& tool, const std::vector<math::Vec2>& world,
                     input::SDLKey key = Left()) {
        input::DragEvent begin;
        begin.key = key;
        begin.start = Gui(world.front());
        begin.position = begin.start;
        tool.OnDragBegin(begin);
        math::Vec2 last = begin.position;
        for (size_t i = 1; i + 1 < world.size(); ++i) {
            input::DragEvent drag;
            drag.key = key;
            drag.start = begin.start;
            drag.position = Gui(world[i]);
            drag.offset = drag.position - last;
            last = drag.position;
            tool.OnDrag(drag);
        }
        input::DragEvent end;
        end.key = key;
        end.start = begin.start;
        end.position = Gui(world.back());
        end.offset = end.position - last;
        tool.OnDragEnd(end);
        return begin.consumed;
    }
    static bool Click(app::Tool& tool, const math::Vec2& world, int clicks = 1,
                      input::SDLKey key = Left()) {
        input::ClickEvent click;
        click.key = key;
        click.position = Gui(world);
        click.clicks = clicks;
        tool.OnClick(click);
        return click.consumed;
    }
    static bool Key(input::InputListener& listener, input::SDLKey key, bool down) {
        input::KeyEvent event;
        event.key = key;
        event.down = down;
        event.shift = s_modifiers.shift;
        event.ctrl = s_modifiers.ctrl;
        event.alt = s_modifiers.alt;
        listener.OnKey(event);
        return event.consumed;
    }
    // Points every step along a closed circle, the first repeated at the end.
    static std::vector<math::Vec2> Circle(const math::Vec2& centre, float radius, int count = 40) {
        std::vector<math::Vec2> points;
        for (int i = 0; i <= count; ++i) {
            const float angle = 6.2831853f * static_cast<float>(i) / static_cast<float>(count);
            points.push_back(centre + math::Vec2(std::cos(angle), std::sin(angle)) * radius);
        }
        return points;
    }
    // A straight stroke from a to b in count steps.
    static std::vector<math::Vec2> Line(const math::Vec2& a, const math::Vec2& b, int count = 20) {
        std::vector<math::Vec2> points;
        for (int i = 0; i <= count; ++i) {
            points.push_back(a + (b - a) * (static_cast<float>(i) / static_cast<float>(count)));
        }
        return points;
    }

    static inline double s_now = 0;
    static inline app::Modifiers s_modifiers;
};

}  // namespace test_app
