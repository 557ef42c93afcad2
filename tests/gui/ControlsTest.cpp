// The controls, driven through the input root as the window system's events would drive
// them: buttons, toggles and radio groups, sliders, the attribute forms, and text.

#include <stdexcept>

#include "GuiFixture.h"
#include "gui/AttribCheckbox.h"
#include "gui/AttribSlider.h"
#include "gui/Button.h"
#include "gui/Checkbox.h"
#include "gui/Label.h"
#include "gui/LookAndFeel.h"
#include "gui/MultiAttribCheckbox.h"
#include "gui/MultiAttribSlider.h"
#include "gui/RadioButton.h"
#include "gui/RadioGroup.h"
#include "gui/Slider.h"
#include "gui/Text.h"
#include "script/Reflected.h"

namespace {

using gui::ComponentPtr;

// Lies under everything and counts what reaches it unconsumed, as the scene would.
class Behind : public gui::Component {
public:
    Behind() : Component("Behind") {}
    void OnClick(input::ClickEvent& event) override {
        if (!event.consumed) {
            ++clicks;
        }
    }
    void OnDragBegin(input::DragEvent& event) override {
        if (!event.consumed) {
            ++drags;
        }
    }
    int clicks = 0;
    int drags = 0;
};

// An object of the program with a number and a switch.
class Shape : public script::Reflected {
public:
    Shape(float d, bool s) : Reflected("Shape") {
        AddAttrib(density, "density", d);
        AddAttrib(sensor, "sensor", s);
    }
    script::AttribPtr<float> density;
    script::AttribPtr<bool> sensor;
};
using ShapePtr = util::SharedPtr<Shape>;

void Counter(util::CallbackSet& set, const util::WeakPtr<util::Pointee>& owner, int& count) {
    set.Add(owner, [&count] { ++count; });
}

class ControlsTest : public test_gui::GuiTest {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        m_behind = util::SharedPtr<Behind>(new Behind());
        m_behind->SetSize(1024, 768);
        Added(m_behind);
    }
    void TearDown() override {
        for (const ComponentPtr& c : m_added) {
            c->RemoveFromParent();
        }
        GuiTest::TearDown();
    }
    template <class T>
    util::SharedPtr<T> Added(util::SharedPtr<T> c, float x = 0, float y = 0) {
        AddToRoot(c);
        c->SetPosition(x, y);
        m_added.push_back(c);
        return c;
    }
    // Where on the screen a slider's knob stands for a value, halfway down.
    static math::Vec2 KnobAt(const gui::Slider& slider, double value) {
        const math::Vec2 origin = slider.GetAbsolutePosition() + slider.GetBorderOffset();
        const float travel = slider.GetSize().x - gui::Slider::kKnobWidth;
        return origin + math::Vec2(gui::Slider::kKnobWidth / 2 +
                                       static_cast<float>(slider.ToFraction(value)) * travel,
                                   slider.GetSize().y - gui::Slider::kTrackHeight / 2);
    }

    util::SharedPtr<Behind> m_behind;
    std::vector<ComponentPtr> m_added;
};

TEST_F(ControlsTest, AClickReachesOneButtonAndNothingBehindIt) {
    gui::ButtonPtr lower = Added(gui::ButtonPtr(new gui::Button("Lower")), 100, 100);
    gui::ButtonPtr upper = Added(gui::ButtonPtr(new gui::Button("Upper")), 130, 105);
    EXPECT_GT(lower->GetSize().x, 2 * gui::Button::kMarginX) << "sized to its text";
    EXPECT_GE(lower->GetSize().y, gui::LookAndFeel::kTextSize * 0.75f);
    int lowerClicks = 0, upperClicks = 0;
    Counter(lower->GetOnClick(), lower, lowerClicks);
    Counter(upper->GetOnClick(), upper, upperClicks);

    Click(135, 110);  // where both lie: the one on top takes it
    EXPECT_EQ(upperClicks, 1);
    EXPECT_EQ(lowerClicks, 0);
    Click(105, 110);  // the lower one alone
    EXPECT_EQ(lowerClicks, 1);
    EXPECT_EQ(upperClicks, 1);
    EXPECT_EQ(m_behind->clicks, 0);
    Click(600, 600);
    EXPECT_EQ(m_behind->clicks, 1) << "a click beside every control goes on";

    // Held down it looks pressed only while the mouse stays over it.
    Press(105, 110);
    EXPECT_TRUE(lower->IsPressed());
    MoveMouse(600, 600);
    EXPECT_FALSE(lower->IsPressed());
    EXPECT_TRUE(lower->IsHeld());
    // Back over it and let go: a click, and the drag it made stayed with the button.
    MoveMouse(106, 111);
    Release(106, 111);
    Advance(1);
    EXPECT_EQ(lowerClicks, 2);
    EXPECT_FALSE(lower->IsHeld());
    EXPECT_EQ(m_behind->drags, 0);
    // Let go elsewhere: no click.
    Drag(math::Vec2(105, 110), math::Vec2(600, 600));
    EXPECT_EQ(lowerClicks, 2);
    EXPECT_EQ(m_behind->drags, 0);

    // Disabled, it still shields what is behind.
    lower->SetEnabled(false);
    Click(105, 110);
    EXPECT_EQ(lowerClicks, 2);
    EXPECT_EQ(m_behind->clicks, 1);
}

TEST_F(ControlsTest, TogglesFlipAndARadioGroupKeepsOneSelected) {
    gui::CheckboxPtr box = Added(gui::CheckboxPtr(new gui::Checkbox("Sensor")), 100, 100);
    int changes = 0;
    Counter(box->GetOnChange(), box, changes);
    const math::Vec2 onBox = box->GetAbsolutePosition() + math::Vec2(3, 5);
    Click(onBox.x, onBox.y);
    EXPECT_TRUE(box->IsChecked());
    Click(onBox.x, onBox.y);
    EXPECT_FALSE(box->IsChecked());
    EXPECT_EQ(changes, 2);

    gui::RadioGroupPtr group = Added(gui::RadioGroupPtr(new gui::RadioGroup()), 300, 100);
    gui::AbstractRadioButtonPtr a = group->AddOption("Box");
    gui::AbstractRadioButtonPtr b = group->AddOption("Circle");
    gui::AbstractRadioButtonPtr c = group->AddOption("Polygon");
    EXPECT_GT(c->GetPosition().y, b->GetPosition().y) << "stacked in a column";
    EXPECT_EQ(group->GetSelected(), gui::RadioGroup::kNone);
    int groupChanges = 0;
    Counter(group->GetOnChange(), group, groupChanges);

    const auto clickOn = [this](const gui::AbstractRadioButtonPtr& button) {
        const math::Vec2 p = button->GetAbsolutePosition() + math::Vec2(4, 5);
        Click(p.x, p.y);
    };
    clickOn(b);
    EXPECT_EQ(group->GetSelected(), 1);
    EXPECT_TRUE(b->IsChecked());
    clickOn(c);
    EXPECT_EQ(group->GetSelected(), 2);
    EXPECT_FALSE(b->IsChecked()) << "selecting one unselects the others";
    EXPECT_TRUE(c->IsChecked());
    clickOn(c);
    EXPECT_TRUE(c->IsChecked()) << "a click never unchecks a radio button";
    EXPECT_EQ(groupChanges, 2);

    a->SetChecked(true);  // from code, through the group
    EXPECT_EQ(group->GetSelected(), 0);
    EXPECT_FALSE(c->IsChecked());
    group->SetSelected(7);
    EXPECT_EQ(group->GetSelected(), gui::RadioGroup::kNone);
    EXPECT_FALSE(a->IsChecked() || b->IsChecked() || c->IsChecked());
    EXPECT_EQ(m_behind->clicks, 0);
}

TEST_F(ControlsTest, SliderFollowsTheMouseClampsAndMapsLogarithmically) {
    EXPECT_THROW(gui::Slider(5, 1), std::invalid_argument);
    EXPECT_THROW(gui::Slider(1, 1), std::invalid_argument);
    EXPECT_THROW(gui::Slider(0, 10, true), std::invalid_argument);
    try {
        gui::Slider(-1, 10, true);
        FAIL() << "a logarithmic slider from -1";
    } catch (const std::invalid_argument& e) {
        EXPECT_NE(util::String(e.what()).find("above 0"), util::String::npos) << e.what();
    }
    gui::Slider linearFromZero(0, 10);
    EXPECT_THROW(linearFromZero.SetLogarithmic(true), std::invalid_argument);

    gui::SliderPtr slider = Added(gui::SliderPtr(new gui::Slider(0, 10)), 100, 100);
    slider->SetValue(-3);
    EXPECT_EQ(slider->GetValue(), 0) << "clamped";
    int changes = 0, releases = 0;
    Counter(slider->GetOnChange(), slider, changes);
    Counter(slider->GetOnRelease(), slider, releases);

    // Taken by the knob, which keeps the spot where it was taken.
    const math::Vec2 knob = KnobAt(*slider, 0) + math::Vec2(2, 0);
    Drag(knob, KnobAt(*slider, 6) + math::Vec2(2, 0));
    EXPECT_NEAR(slider->GetValue(), 6, 1e-4);
    EXPECT_GT(changes, 1) << "every move tells";
    EXPECT_EQ(releases, 1) << "one release for the whole drag";
    EXPECT_EQ(m_behind->drags, 0);

    Drag(KnobAt(*slider, 6), math::Vec2(900, 110));
    EXPECT_EQ(slider->GetValue(), 10) << "past the end";
    EXPECT_EQ(releases, 2);

    // A click on the track brings the knob there.
    const math::Vec2 track = KnobAt(*slider, 2.5);
    Click(track.x, track.y);
    EXPECT_NEAR(slider->GetValue(), 2.5, 1e-4);
    EXPECT_EQ(releases, 3);
    EXPECT_EQ(m_behind->clicks, 0);
    // A click that changes nothing makes no undo step.
    Click(track.x, track.y);
    EXPECT_EQ(releases, 3);

    gui::SliderPtr ratio = Added(gui::SliderPtr(new gui::Slider(1, 100, true)), 100, 200);
    EXPECT_EQ(ratio->FromFraction(0), 1);
    EXPECT_NEAR(ratio->FromFraction(0.5), 10, 1e-9);
    EXPECT_EQ(ratio->FromFraction(1), 100);
    EXPECT_NEAR(ratio->ToFraction(10), 0.5, 1e-9);
    const math::Vec2 middle = KnobAt(*ratio, 10);
    Click(middle.x, middle.y);
    EXPECT_NEAR(ratio->GetValue(), 10, 1e-3);
    Drag(middle, KnobAt(*ratio, 100));
    EXPECT_NEAR(ratio->GetValue(), 100, 1e-3);
    ratio->SetValue(1000);
    EXPECT_EQ(ratio->GetValue(), 100);
}

TEST_F(ControlsTest, AttributeControlsReadAndWriteAllTheirAttributesAndSkipTheDead) {
    ShapePtr first(new Shape(2, false));
    ShapePtr second(new Shape(5, true));

    gui::AttribSliderPtr one =
        Added(gui::AttribSliderPtr(new gui::AttribSlider(first->density, 0, 10)), 100, 100);
    EXPECT_EQ(one->GetCaption(), "density");
    EXPECT_NEAR(one->GetValue(), 2, 1e-6);
    // A change from the console shows at the next frame.
    first->density->SetValue(script::ValueToObject(4.0f));
    Gui().Update(0.016f);
    EXPECT_NEAR(one->GetValue(), 4, 1e-6);
    Drag(KnobAt(*one, 4), KnobAt(*one, 8));
    EXPECT_NEAR(first->density->Get(), 8, 1e-4);

    gui::MultiAttribSliderPtr both =
        Added(gui::MultiAttribSliderPtr(new gui::MultiAttribSlider(
                  "Density", {second->density, first->density}, 0.1, 100, true)),
              100, 200);
    EXPECT_NEAR(both->GetValue(), 5, 1e-6) << "the first one's value";
    const math::Vec2 at20 = KnobAt(*both, 20);
    Click(at20.x, at20.y);
    EXPECT_NEAR(first->density->Get(), 20, 0.01);
    EXPECT_NEAR(second->density->Get(), 20, 0.01);

    gui::MultiAttribCheckboxPtr sensors =
        Added(gui::MultiAttribCheckboxPtr(
                  new gui::MultiAttribCheckbox("Sensor", {second->sensor, first->sensor})),
              100, 300);
    EXPECT_TRUE(sensors->IsChecked()) << "the first one's state";
    const math::Vec2 onSensors = sensors->GetAbsolutePosition() + math::Vec2(3, 5);
    Click(onSensors.x, onSensors.y);
    EXPECT_FALSE(first->sensor->Get());
    EXPECT_FALSE(second->sensor->Get());
    Click(onSensors.x, onSensors.y);
    EXPECT_TRUE(first->sensor->Get());
    EXPECT_TRUE(second->sensor->Get());
    gui::AttribCheckboxPtr single =
        Added(gui::AttribCheckboxPtr(new gui::AttribCheckbox(first->sensor)), 100, 350);
    first->sensor->SetNative(false);
    Gui().Update(0.016f);
    EXPECT_FALSE(single->IsChecked());

    // The second shape is erased: the rest still works on the first.
    util::WeakPtr<script::TAttrib<float>> gone(second->density);
    second.Reset();
    ASSERT_TRUE(gone.Expired());
    Gui().Update(0.016f);
    const math::Vec2 at2 = KnobAt(*both, 2);
    Click(at2.x, at2.y);
    EXPECT_NEAR(first->density->Get(), 2, 0.01);
    EXPECT_NEAR(both->GetValue(), 2, 0.01) << "now the first live one is shown";
    Click(onSensors.x, onSensors.y);
    EXPECT_TRUE(first->sensor->Get() == sensors->IsChecked());

    // And then the first: nothing is left to read or write, and nothing breaks.
    first.Reset();
    Gui().Update(0.016f);
    EXPECT_FALSE(both->HasLiveAttrib());
    EXPECT_EQ(both->GetValueText(), "-");
    EXPECT_EQ(one->GetAttrib(), nullptr);
    Drag(KnobAt(*one, 8), KnobAt(*one, 1));
    Click(at20.x, at20.y);
    Click(onSensors.x, onSensors.y);
    one->SetValue(3);
    single->SetChecked(true);
    Gui().Update(0.016f);
    EXPECT_EQ(m_behind->clicks, 0);
}

TEST_F(ControlsTest, TextControlsTakeTheSizeOfTheirText) {
    const gui::FontFormaterPtr font = gui::LookAndFeel::Get().GetFont();
    gui::LabelPtr label = Added(gui::LabelPtr(new gui::Label("Gravity")), 10, 10);
    EXPECT_FLOAT_EQ(label->GetSize().x, font->GetWidth("Gravity"));
    EXPECT_FLOAT_EQ(label->GetSize().y, gui::LookAndFeel::kTextSize * 0.75f);
    label->SetText("Gravity and air");
    EXPECT_FLOAT_EQ(label->GetSize().x, font->GetWidth("Gravity and air"));

    const util::String words = "Objects fall faster when the gravity is stronger";
    gui::TextPtr text = Added(gui::TextPtr(new gui::Text(words, 1000)), 10, 40);
    EXPECT_FLOAT_EQ(text->GetSize().y, font->GetLineHeight()) << "one line when wide";
    text->SetSize(font->GetWidth("Objects fall faster"), 5);
    EXPECT_GE(text->GetFormat().GetLines().size(), 3u);
    EXPECT_FLOAT_EQ(text->GetSize().y,
                    font->GetLineHeight() * static_cast<float>(text->GetFormat().GetLines().size()))
        << "the height follows the wrapped text";
    text->SetAlign(gui::Align::Right);
    const gui::TextFormat::Line& last = text->GetFormat().GetLines().back();
    EXPECT_NEAR(last.x + last.width, text->GetSize().x, 1e-3) << "right-aligned";
}

}  // namespace
