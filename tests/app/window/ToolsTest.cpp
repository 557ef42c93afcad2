// Choosing the tool in force: a tool key tapped switches, held it lends its tool.

#include <gtest/gtest.h>

#include "ToolFixture.h"
#include "app/tools/BoxTool.h"
#include "app/tools/HingeTool.h"
#include "app/tools/SketchTool.h"

namespace {

class ToolsTest : public test_app::ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        Tools().SetBaseTool(Tools().Find<app::SketchTool>());
    }
    static app::Tools& Tools() { return app::Tools::Get(); }
    // The clock of the tap and hold test is the GUI's.
    static void Press(input::SDLKey key, double heldFor) {
        Key(Tools(), key, true);
        s_now += heldFor;
        Key(Tools(), key, false);
    }
};

TEST_F(ToolsTest, TapSwitchesHoldBorrowsAndOtherKeysWait) {
    const app::ToolPtr sketch = Tools().Find<app::SketchTool>();
    const app::ToolPtr hinge = Tools().Find<app::HingeTool>();
    const app::ToolPtr box = Tools().Find<app::BoxTool>();
    ASSERT_EQ(Tools().GetAll().size(), 15u);
    EXPECT_EQ(Tools().GetTool(), sketch);

    // Held: the hinge tool is in force only while the key is down.
    EXPECT_TRUE(Key(Tools(), 'h', true));
    EXPECT_EQ(Tools().GetTool(), hinge);
    // Another tool key meanwhile, or the repeat of the first, changes nothing.
    EXPECT_FALSE(Key(Tools(), 'x', true));
    EXPECT_FALSE(Key(Tools(), 'h', true));
    EXPECT_EQ(Tools().GetTool(), hinge);
    s_now += 1.0;
    EXPECT_TRUE(Key(Tools(), 'h', false));
    EXPECT_EQ(Tools().GetTool(), sketch);

    // Tapped: the box tool stays.
    Press('x', 0.1);
    EXPECT_EQ(Tools().GetTool(), box);
    EXPECT_EQ(Tools().GetBaseTool(), box);
    // The key of the tool in force, or one with Ctrl, is no tool key.
    EXPECT_FALSE(Key(Tools(), 'x', true));
    Key(Tools(), 'x', false);
    s_modifiers.ctrl = true;
    EXPECT_FALSE(Key(Tools(), 'k', true));
    s_modifiers.ctrl = false;
    Key(Tools(), 'k', false);
    EXPECT_EQ(Tools().GetTool(), box);
    Press('k', 0.2);
    EXPECT_EQ(Tools().GetTool(), sketch);
}

}  // namespace
