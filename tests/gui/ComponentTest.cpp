// The component tree: what lies under the mouse, layouts, scale, tooltips and the wobble.

#include "gui/Component.h"

#include "GuiFixture.h"
#include "gui/Layout.h"
#include "gui/WobbleComponent.h"

namespace {

using gui::Component;
using gui::ComponentPtr;

ComponentPtr Box(float x, float y, float w, float h) {
    ComponentPtr c(new Component("box"));
    c->SetPosition(x, y);
    c->SetSize(w, h);
    return c;
}

class ComponentTest : public test_gui::GuiTest {
protected:
    void TearDown() override {
        for (const ComponentPtr& c : m_added) {
            c->RemoveFromParent();
        }
        GuiTest::TearDown();
    }
    ComponentPtr Added(ComponentPtr c) {
        AddToRoot(c);
        m_added.push_back(c);
        return c;
    }
    std::vector<ComponentPtr> m_added;
};

TEST_F(ComponentTest, OnlyTheTopmostChainUnderTheMouseIsMarked) {
    ComponentPtr panel = Added(Box(100, 100, 300, 200));
    ComponentPtr lower = Box(10, 10, 100, 100);
    ComponentPtr upper = Box(50, 50, 100, 100);
    panel->Add(lower);
    panel->Add(upper);

    MoveMouse(180, 180);  // over both children: inner (80, 80)
    EXPECT_TRUE(panel->IsMouseOver());
    EXPECT_TRUE(upper->IsMouseOver());
    EXPECT_FALSE(lower->IsMouseOver());
    EXPECT_FALSE(Gui().GetMainLayer()->IsMouseOver()) << "the panel covers the main layer";

    MoveMouse(125, 125);  // lower only
    EXPECT_TRUE(lower->IsMouseOver());
    EXPECT_FALSE(upper->IsMouseOver());

    // A component that moves under a still mouse is found at the next update.
    upper->SetPosition(0, 0);
    Gui().Update(0.01f);
    EXPECT_TRUE(upper->IsMouseOver());
    EXPECT_FALSE(lower->IsMouseOver());

    MoveMouse(50, 50);  // off the panel
    EXPECT_FALSE(panel->IsMouseOver());
    EXPECT_FALSE(upper->IsMouseOver());
}

TEST_F(ComponentTest, ListLayoutStacksChildrenAndSizesTheParent) {
    ComponentPtr list = Added(Box(0, 0, 50, 50));
    list->SetLayout(gui::LayoutPtr(new gui::ListLayout(1, 5)));
    EXPECT_EQ(list->GetSize(), math::Vec2(0, 0)) << "an empty list has no size";

    ComponentPtr a = Box(0, 0, 40, 20);
    ComponentPtr b = Box(0, 0, 60, 10);
    b->SetBorder(gui::BorderPtr(new gui::SimpleBorder(2, {0, 0, 0, 1}, {1, 1, 1, 1})));
    ComponentPtr fixed = Box(300, 300, 10, 10);
    fixed->SetFixedPosition(true);
    list->Add(a);
    list->Add(fixed);
    list->Add(b);
    EXPECT_EQ(a->GetPosition(), math::Vec2(0, 0));
    EXPECT_EQ(b->GetPosition(), math::Vec2(0, 25));
    EXPECT_EQ(fixed->GetPosition(), math::Vec2(300, 300)) << "a fixed child stays put";
    EXPECT_EQ(list->GetSize(), math::Vec2(64, 39)) << "b is 64 by 14 with its border";

    // A child that grows lays the list out again.
    a->SetSize(40, 30);
    EXPECT_EQ(b->GetPosition(), math::Vec2(0, 35));
    list->Remove(a);
    list->Remove(b);
    EXPECT_EQ(list->GetSize(), math::Vec2(0, 0));
}

TEST_F(ComponentTest, BorderLayoutFillsTheParentInOrder) {
    ComponentPtr row = Added(Box(0, 0, 300, 40));
    ComponentPtr a = Box(0, 0, 10, 5);
    ComponentPtr b = Box(0, 0, 20, 5);
    row->Add(a);
    row->Add(b);
    row->SetLayout(gui::LayoutPtr(new gui::BorderLayout(0, 0)));
    EXPECT_EQ(a->GetPosition().x, 0);
    EXPECT_FLOAT_EQ(a->GetSize().x + b->GetSize().x, 300);
    EXPECT_FLOAT_EQ(b->GetPosition().x, a->GetSize().x);
    EXPECT_FLOAT_EQ(a->GetSize().y, 40);
    EXPECT_NEAR(b->GetSize().x, 2 * a->GetSize().x, 1e-3) << "shares follow the sizes";
}

TEST_F(ComponentTest, ScaleTwoHalvesPositions) {
    Gui().GetScale();
    ComponentPtr box = Added(Box(100, 100, 50, 50));
    script::VariablePtr scale = Gui().GetVariable("scale");
    scale->SetValue(script::ValueToObject(2.0f));
    EXPECT_EQ(Gui().GetScreenSize(), math::Vec2(512, 384));
    EXPECT_EQ(Gui().GetRoot()->GetSize(), math::Vec2(512, 384));
    EXPECT_EQ(Gui().ToGUI(300, 300), math::Vec2(150, 150));
    // The window system's pixels arrive in GUI units.
    input::Input::Get().HandleMouseMotion(math::Vec2(250, 250), math::Vec2(0, 0));
    EXPECT_TRUE(box->IsMouseOver());
    input::Input::Get().HandleMouseMotion(math::Vec2(180, 180), math::Vec2(0, 0));
    EXPECT_FALSE(box->IsMouseOver());
    scale->SetValue(script::ValueToObject(1.0f));
    EXPECT_EQ(Gui().GetScreenSize(), math::Vec2(1024, 768));
}

TEST_F(ComponentTest, TooltipAppearsAfterTheDelayOncePerVisit) {
    ComponentPtr button = Added(Box(200, 200, 100, 30));
    ComponentPtr tip = Box(0, 0, 80, 20);
    button->SetTooltip(tip);

    MoveMouse(210, 210);
    Advance(0.3);
    Gui().Update(0.3f);
    EXPECT_EQ(tip->GetParent(), nullptr) << "not before 0.4 seconds";
    Advance(0.2);
    Gui().Update(0.2f);
    ASSERT_EQ(tip->GetParent(), Gui().GetTooltipLayer().Get());
    EXPECT_EQ(tip->GetPosition(), math::Vec2(218, 218));

    MoveMouse(250, 215);  // still inside: it stays
    EXPECT_EQ(tip->GetParent(), Gui().GetTooltipLayer().Get());
    MoveMouse(500, 500);
    EXPECT_EQ(tip->GetParent(), nullptr) << "leaving takes it away";

    // Near the screen's corner it is kept inside.
    button->SetPosition(990, 750);
    MoveMouse(1000, 760);
    Advance(1);
    Gui().Update(0.1f);
    EXPECT_EQ(tip->GetPosition(), math::Vec2(1024 - 80, 768 - 20));
}

TEST_F(ComponentTest, WobbleTakesEqualStepsAndSettles) {
    EXPECT_EQ(gui::WobbleComponent::StepCount(0.12f), 2);
    EXPECT_EQ(gui::WobbleComponent::StepCount(0.01f), 1);
    EXPECT_EQ(gui::WobbleComponent::StepCount(0), 1);

    util::SharedPtr<gui::WobbleComponent> window(new gui::WobbleComponent());
    Added(window);
    window->SetSize(100, 100);
    window->Update(0.016f);
    window->SetPosition(100, 0);
    // One frame of 0.12 s in two steps of 0.06 s, by hand.
    float v = 0, p = 0;
    for (int i = 0; i < 2; ++i) {
        v += 0.06f * (300 * (100 - p) - 20 * v);
        p += 0.06f * v;
    }
    window->Update(0.12f);
    EXPECT_FLOAT_EQ(window->GetApparentPosition().x, p);
    EXPECT_FLOAT_EQ(window->GetVelocity().x, v);
    for (int i = 0; i < 200; ++i) {
        window->Update(0.016f);
    }
    EXPECT_NEAR(window->GetApparentPosition().x, 100, 0.01);

    window->SetWobble(false);
    window->SetPosition(0, 0);
    window->Update(0.016f);
    EXPECT_EQ(window->GetApparentPosition(), math::Vec2(0, 0));
}

}  // namespace
