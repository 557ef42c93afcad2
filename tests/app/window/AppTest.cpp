// The application root's frame: arrow keys pan the view at a fixed speed, only while this
// component saw them go down, and time reaches the simulation and the scene.

#include "app/App.h"

#include <gtest/gtest.h>

#include "../SceneFixture.h"
#include "app/Camera.h"
#include "input/KeyCodes.h"
#include "physics/Simulation.h"

namespace {

class AppTest : public test_app::SceneTest {
protected:
    static void SetUpTestSuite() {
        // The one application of the run: main makes it with new, and so does this.
        if (!app::App::IsAlive()) {
            new app::App();
        }
    }
    void TearDown() override {
        for (input::SDLKey key :
             {input::key::Left, input::key::Right, input::key::Up, input::key::Down}) {
            Key(key, false);
        }
        SceneTest::TearDown();
    }
    static app::App& App() { return app::App::Get(); }
    static void Key(input::SDLKey key, bool down, bool consumed = false) {
        input::KeyEvent event;
        event.key = key;
        event.down = down;
        event.consumed = consumed;
        App().OnKey(event);
    }
    // Where the world's origin lies in the window.
    static math::Vec2 Origin() { return GetScene().GetCamera().WorldToGUI(math::Vec2(0, 0)); }
};

TEST_F(AppTest, ArrowKeysPanFourHundredPixelsASecond) {
    const math::Vec2 start = Origin();
    Key(input::key::Left, true);
    App().Update(0.25f);
    const math::Vec2 moved = Origin() - start;
    EXPECT_NEAR(std::abs(moved.x), 100, 1e-3);
    EXPECT_NEAR(moved.y, 0, 1e-3);

    // The opposite arrow cancels it; a frame of no time pans nothing.
    Key(input::key::Right, true);
    math::Vec2 before = Origin();
    App().Update(0.25f);
    EXPECT_NEAR((Origin() - before).Length(), 0, 1e-3);
    Key(input::key::Left, false);
    Key(input::key::Right, false);
    Key(input::key::Down, true);
    before = Origin();
    App().Update(0);
    EXPECT_NEAR((Origin() - before).Length(), 0, 1e-3);
    App().Update(0.5f);
    EXPECT_NEAR(std::abs((Origin() - before).y), 200, 1e-3);
}

TEST_F(AppTest, AKeyTakenByAnotherListenerNeverPans) {
    Key(input::key::Up, true, /*consumed=*/true);
    const math::Vec2 before = Origin();
    App().Update(0.5f);
    EXPECT_NEAR((Origin() - before).Length(), 0, 1e-3);
}

TEST_F(AppTest, TheFrameAdvancesTheSimulation) {
    AddGround();
    AddBox({0, 3});
    physics::Simulation& sim = physics::Simulation::Get();
    sim.running->SetNative(true);
    const double before = sim.GetSimulatedTime();
    for (int i = 0; i < 25; ++i) {
        App().Update(0.02f);
    }
    EXPECT_NEAR(sim.GetSimulatedTime() - before, 0.5, 0.02);
    // Until the box lands: the overlay draws the last step's contacts.
    for (int i = 0; i < 200 && App().GetContacts().empty(); ++i) {
        App().Update(0.02f);
    }
    EXPECT_FALSE(App().GetContacts().empty());
    EXPECT_EQ(&App().GetContacts(), &sim.GetContacts());
    sim.running->SetNative(false);
}

}  // namespace
