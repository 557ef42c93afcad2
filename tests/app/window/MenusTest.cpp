// The popup menus and their option panels as a user meets them: a right click on a shape
// offers what fits it, a panel opens in the menu's place and is found by its name, a whole
// drag of a panel's slider is one undo step, and the menu's actions are steps of their own.

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "../../util/LogCapture.h"
#include "AppFixture.h"
#include "app/App.h"
#include "app/AppGUI.h"
#include "app/Camera.h"
#include "app/Language.h"
#include "app/PopupActions.h"
#include "app/Scene.h"
#include "app/Undoer.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/SpringEntity.h"
#include "app/tools/Tools.h"
#include "app/widgets/OptionControls.h"
#include "app/widgets/OptionPanels.h"
#include "app/widgets/WidgetFactory.h"
#include "gui/Checkbox.h"
#include "gui/LookAndFeel.h"
#include "physics/Body.h"
#include "physics/Shapes.h"
#include "physics/Simulation.h"

namespace {

using math::Vec2;
using util::String;

class MenusTest : public test_app::AppTest {
protected:
    void SetUp() override {
        AppTest::SetUp();
        Interface().ClosePopups();
        // 100 pixels a world unit, the origin at (400, 300).
        app::Camera& camera = Scene().GetCamera();
        camera.SetViewport(Vec2(0, 0), Vec2(800, 600));
        camera.SetZoom(100);
        camera.SetPan(Vec2(0, 0));
    }
    void TearDown() override {
        Interface().ClosePopups();
        AppTest::TearDown();
    }

    static app::Scene& Scene() { return app::Scene::Get(); }
    static size_t Steps() { return app::Undoer::Get().GetUndoStack().size(); }
    static String UndoLabel() {
        const char* label = app::Undoer::Get().GetUndoLabel();
        return label ? label : "";
    }

    static util::SharedPtr<app::BoxEntity> AddBox(const Vec2& at) {
        util::SharedPtr<physics::Box> box(new physics::Box(Vec2(0.5f, 0.5f)));
        box->SetTransform(physics::Transform::FromAngle(0, at));
        util::SharedPtr<app::BoxEntity> entity(new app::BoxEntity(box));
        Scene().AddEntity(entity);
        return entity;
    }
    static app::GeomEntity& ShapeAt(size_t index) {
        return dynamic_cast<app::GeomEntity&>(*Scene().GetEntities().at(index));
    }

    // A right click on the world point, as the interface gets it; the menu it opened.
    static gui::ComponentPtr RightClick(const Vec2& world) {
        input::ClickEvent click;
        click.key = input::MouseKey(input::kMouseRight);
        click.clicks = 1;
        click.position = Scene().GetCamera().WorldToGUI(world);
        Interface().OnClick(click);
        return Interface().GetPopupLayer()->GetChildren().empty()
                   ? gui::ComponentPtr()
                   : Interface().GetPopupLayer()->GetChildren().back();
    }

    // Every component of a kind below the root, in the order of the tree.
    template <class T>
    static std::vector<T*> All(gui::Component& root) {
        std::vector<T*> found;
        const std::function<void(gui::Component&)> walk = [&](gui::Component& component) {
            if (auto* match = dynamic_cast<T*>(&component)) {
                found.push_back(match);
            }
            for (const gui::ComponentPtr& child : component.GetChildren()) {
                walk(*child);
            }
        };
        walk(root);
        return found;
    }
    static gui::ButtonPtr ButtonOf(gui::Component& root, const char* key) {
        for (gui::Button* button : All<gui::Button>(root)) {
            if (button->GetText() == Text(key)) {
                return gui::ButtonPtr(button);
            }
        }
        return gui::ButtonPtr();
    }
};

TEST_F(MenusTest, ABoxsMenuOffersThePanelsThatFitAndEachOpensInItsPlaceByName) {
    AddBox({0, 0});
    for (const char* id : {"ColorOptions", "GeomOptions", "CollisionOptions", "EntityInfo"}) {
        const gui::ComponentPtr menu = RightClick({0, 0});
        ASSERT_TRUE(menu);
        EXPECT_EQ(menu->GetReflectedName(), "EntityOptions");
        EXPECT_EQ(Scene().GetSelection()->size(), 1u);
        for (const char* absent : {"HingeOptions", "SpringOptions", "PenOptions", "MenuCenterHinge",
                                   "MenuToCircle", "MenuNoChain"}) {
            EXPECT_FALSE(ButtonOf(*menu, absent)) << absent;
        }
        EXPECT_TRUE(ButtonOf(*menu, "MenuLiquify"));
        const Vec2 place = dynamic_cast<app::Widget&>(*menu).GetScreenPosition();

        const gui::ButtonPtr open = ButtonOf(*menu, id);
        ASSERT_TRUE(open) << id;
        open->DoClick();
        EXPECT_FALSE(app::FindPopup("EntityOptions"));
        const auto* panel = dynamic_cast<app::Window*>(app::FindPopup(id).Get());
        ASSERT_TRUE(panel) << id;
        EXPECT_TRUE(panel->IsPopup());
        EXPECT_EQ(panel->GetTitle(), Text("PopupTitle") + Text(id));
        EXPECT_EQ(panel->GetScreenPosition(), place);
        Interface().ClosePopups();
    }

    // Every menu and panel, over every kind they serve: each text and each control's tooltip
    // comes from the language, and none is missing there.
    const auto box = AddBox({3, 0});
    const util::SharedPtr<app::HingeEntity> hinge(new app::HingeEntity(0.3f));
    const util::SharedPtr<app::SpringEntity> spring(new app::SpringEntity(0.3f));
    const Vec2 ends[2] = {{0, 0}, {3, 0}};
    hinge->Attach(ends);
    spring->Attach(ends);
    const util::SharedPtr<app::PenEntity> pen(new app::PenEntity(0.1f));
    pen->SetGeom(box->GetGeom(), Vec2(0, 0));
    for (const app::EntityPtr& entity :
         {app::EntityPtr(hinge), app::EntityPtr(spring), app::EntityPtr(pen)}) {
        Scene().AddEntity(entity);
    }
    const app::GroupPtr all(new app::Group());
    for (const app::EntityPtr& entity : Scene().GetEntities()) {
        all->Add(entity);
    }
    test::LogCapture problems(test::LogCapture::kProblems);
    std::vector<app::WidgetPtr> windows;
    for (const char* id : {"EntityOptions", "BackgroundMenu", "WaterMenu", "ColorOptions",
                           "GeomOptions", "CollisionOptions", "SpringOptions", "HingeOptions",
                           "PenOptions", "EntityInfo", "BackgroundOptions"}) {
        windows.push_back(app::WidgetFactory::Get().Make(id, all));
        ASSERT_TRUE(windows.back()) << id;
    }
    size_t controls = 0;
    for (const app::WidgetPtr& window : windows) {
        gui::Component& body = *dynamic_cast<app::Window&>(*window).GetBody();
        for (gui::Component* control : All<gui::Component>(body)) {
            if (dynamic_cast<gui::AbstractButton*>(control) ||
                dynamic_cast<gui::Slider*>(control)) {
                EXPECT_TRUE(control->GetTooltip()) << window->GetReflectedName();
                ++controls;
            }
        }
    }
    EXPECT_GT(controls, 60u);
    EXPECT_TRUE(problems.Lines().empty()) << problems.Lines().front();
}

TEST_F(MenusTest, APanelsSliderWritesEverySelectedShapeAndAWholeDragIsOneUndoStep) {
    AddBox({-2, 0})->friction->SetNative(0.2f);
    AddBox({2, 0})->friction->SetNative(0.9f);
    for (const app::EntityPtr& entity : Scene().GetEntities()) {
        Scene().GetSelection()->Add(entity);
    }
    const app::WidgetPtr panel =
        app::WidgetFactory::Get().Make("GeomOptions", Scene().GetSelection());
    ASSERT_TRUE(panel);
    panel->Show(*m_host);
    panel->SetScreenPosition(Vec2(100, 100));
    app::OptionSlider* friction = nullptr;
    for (app::OptionSlider* slider : All<app::OptionSlider>(*panel)) {
        if (slider->GetCaption() == Text("PanelFriction")) {
            friction = slider;
        }
    }
    ASSERT_TRUE(friction);
    ASSERT_EQ(friction->GetAttribs().size(), 2u);

    // Pressed a quarter along the track, dragged in steps to three quarters, released.
    const Vec2 at = friction->GetAbsolutePosition();
    const Vec2 size = friction->GetSize();
    const float y = at.y + size.y - 5;
    Drag(Vec2(at.x + size.x * 0.25f, y), Vec2(at.x + size.x * 0.75f, y), 6);
    const float value = static_cast<float>(friction->GetValue());
    EXPECT_GT(value, 1.2f);
    EXPECT_LT(value, 1.8f);
    EXPECT_FLOAT_EQ(ShapeAt(0).friction->Get(), value);
    EXPECT_FLOAT_EQ(ShapeAt(1).friction->Get(), value);
    EXPECT_EQ(Steps(), 1u);
    EXPECT_EQ(UndoLabel(), "UndoSliderChange");

    app::Undoer::Get().Undo();
    EXPECT_FLOAT_EQ(ShapeAt(0).friction->Get(), 0.2f);
    EXPECT_FLOAT_EQ(ShapeAt(1).friction->Get(), 0.9f);
}

TEST_F(MenusTest, LiquifyGlueAndEraseAreStepsThatUndoBringsBack) {
    physics::Simulation& sim = physics::Simulation::Get();
    AddBox({0, 1});

    // Liquify from the menu: water at rest where the box was, and the menu gone.
    const gui::ComponentPtr menu = RightClick({0, 1});
    ASSERT_TRUE(menu);
    ButtonOf(*menu, "MenuLiquify")->DoClick();
    EXPECT_TRUE(Interface().GetPopupLayer()->GetChildren().empty());
    EXPECT_TRUE(Scene().GetEntities().empty());
    ASSERT_GT(sim.GetParticles().size(), 10u);
    for (const physics::ParticlePtr& particle : sim.GetParticles()) {
        EXPECT_EQ(particle->velocity, Vec2(0, 0));
        EXPECT_LT((particle->position - Vec2(0, 1)).Length(), 0.75f);
    }
    EXPECT_EQ(UndoLabel(), "UndoLiquify");
    app::Undoer::Get().Undo();
    ASSERT_EQ(Scene().GetEntities().size(), 1u);
    EXPECT_TRUE(dynamic_cast<app::BoxEntity*>(Scene().GetEntities()[0].Get()));
    EXPECT_TRUE(sim.GetParticles().empty());

    // Glue is a step when it fixes something, and none when all was fixed already.
    const app::Group box(Scene().GetEntities()[0]);
    const size_t before = Steps();
    EXPECT_TRUE(app::GlueToBackground(box));
    EXPECT_EQ(ShapeAt(0).GetBody(), sim.GetWorldBody());
    EXPECT_EQ(Steps(), before + 1);
    EXPECT_EQ(UndoLabel(), "UndoGlue");
    EXPECT_FALSE(app::GlueToBackground(box));
    EXPECT_EQ(Steps(), before + 1);

    // Erase from the menu, undone.
    ButtonOf(*RightClick({0, 1}), "MenuErase")->DoClick();
    EXPECT_TRUE(Scene().GetEntities().empty());
    EXPECT_EQ(UndoLabel(), "UndoErase");
    app::Undoer::Get().Undo();
    ASSERT_EQ(Scene().GetEntities().size(), 1u);
    EXPECT_EQ(ShapeAt(0).GetBody(), sim.GetWorldBody());
}

}  // namespace
