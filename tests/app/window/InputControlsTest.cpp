// The controls of a loaded scene act on the keys that reach the input root: a hinge's
// motor buttons and a shape's direction controller. A text that names no key costs its
// statement only.

#include "app/InputControls.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include "../SceneFixture.h"
#include "app/entities/BoxEntity.h"
#include "input/Input.h"
#include "input/SdlKeyMap.h"
#include "logging/LogCapture.h"

namespace {

class InputControlsTest : public test_app::SceneTest {
protected:
    static void SetUpTestSuite() {
        ASSERT_EQ(SDL_Init(SDL_INIT_EVENTS | SDL_INIT_JOYSTICK), 0) << SDL_GetError();
        input::Input::Get().Start();
    }
    void SetUp() override {
        SceneTest::SetUp();
        app::InputControls::Install();
    }
    void TearDown() override {
        app::InputControls::Uninstall();
        SceneTest::TearDown();
    }
    static void Key(input::SDLKey key, bool down) {
        SDL_Event e{};
        e.type = down ? SDL_KEYDOWN : SDL_KEYUP;
        e.key.keysym.sym = input::SdlKeycodeFromKey(key);
        SDL_PushEvent(&e);
        input::Input::Get().Poll();
    }
};

TEST_F(InputControlsTest, HingeButtonsAndForceControllersFollowTheKeys) {
    AddGround();
    const auto wheel = AddCircle({0, 0.5f}, 0.5f);
    const auto hinge = AddHinge({0, 0.5f}, {0, 0.5f});
    hinge->buttonForward = "right";
    hinge->buttonBrake = "down";
    const auto box = AddBox({5, 0.5f});
    box->SetController("keys right up left down");

    // Written and read back, the controls are those of the file.
    ASSERT_FALSE(Reload(Save())->GetEntities().empty());
    util::SharedPtr<app::HingeEntity> loadedHinge;
    util::SharedPtr<app::BoxEntity> loadedBox;
    util::SharedPtr<app::CircleEntity> loadedWheel;
    for (const auto& entity : GetScene().GetEntities()) {
        if (auto h = util::DynamicPointerCast<app::HingeEntity>(entity))
            loadedHinge = h;
        if (auto b = util::DynamicPointerCast<app::BoxEntity>(entity))
            loadedBox = b;
        if (auto c = util::DynamicPointerCast<app::CircleEntity>(entity))
            loadedWheel = c;
    }
    ASSERT_TRUE(loadedHinge && loadedBox && loadedWheel);
    EXPECT_EQ(loadedHinge->buttonForward, "right");
    EXPECT_EQ(loadedBox->GetController(), "keys right up left down");

    GetScene().RunSteps(20);
    EXPECT_NEAR(loadedWheel->GetBody()->angularVelocity, 0.0f, 1e-3f);
    const float boxAtRest = loadedBox->GetBody()->position.x;

    Key(input::key::Right, true);
    GetScene().RunSteps(50);
    // The motor drives the wheel, and the box is pushed to the right.
    EXPECT_GT(std::abs(loadedWheel->GetBody()->angularVelocity), 0.5f);
    EXPECT_GT(loadedBox->GetBody()->position.x, boxAtRest + 0.05f);

    // Brake beats forward.
    Key(input::key::Down, true);
    GetScene().RunSteps(50);
    EXPECT_NEAR(loadedWheel->GetBody()->angularVelocity, 0.0f, 0.05f);
    Key(input::key::Down, false);
    Key(input::key::Right, false);
}

TEST_F(InputControlsTest, AControlNamingNoKeyCostsItsStatementOnly) {
    AddGround();
    AddCircle({0, 0.5f}, 0.5f);
    const auto hinge = AddHinge({0, 0.5f}, {0, 0.5f});
    hinge->buttonForward = "right";
    const auto box = AddBox({5, 0.5f});
    std::vector<logging::CapturedLine> lines;
    logging::LogCapture capture(lines);
    box->SetController("joy 0 axis 0 1");
    util::String text = Save();
    const size_t at = text.find("buttonForward = \"right\"");
    ASSERT_NE(at, util::String::npos);
    text.replace(at, 23, "buttonForward = \"rigth\"");

    Reload(text);
    GetScene().RunSteps(5);
    // The hinge's line failed with the name it did not know; the rest of the scene
    // loaded, and the box's controller waits for a joystick that is not there.
    size_t hinges = 0;
    size_t boxes = 0;
    for (const auto& entity : GetScene().GetEntities()) {
        hinges += util::DynamicPointerCast<app::HingeEntity>(entity) ? 1 : 0;
        boxes += util::DynamicPointerCast<app::BoxEntity>(entity) ? 1 : 0;
    }
    EXPECT_EQ(hinges, 0u);
    EXPECT_EQ(boxes, 1u);
    util::String log;
    for (const auto& line : lines) {
        log += line.text + "\n";
    }
    EXPECT_NE(log.find("Unknown name of key \"rigth\""), util::String::npos) << log;
    EXPECT_NE(log.find("No joystick connected, cannot find DirInput \"joy 0 axis 0 1\""),
              util::String::npos)
        << log;
    EXPECT_THROW(box->SetController("keys right up left nokey"), BadDataException);
    EXPECT_EQ(box->GetController(), "joy 0 axis 0 1");
}

}  // namespace
