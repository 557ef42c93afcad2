#pragma once

#include <functional>
#include <vector>

#include "app/Snapshot.h"
#include "gui/Button.h"
#include "gui/Label.h"
#include "gui/MultiAttribCheckbox.h"
#include "gui/MultiAttribSlider.h"

namespace app {

// The controls of the option panels. Each is named and explained by the language: its
// caption is the translation of a key and its tooltip that of the key with "_Tooltip".
// They write attributes as the console would, through the attributes' own setters. A
// control over the scene's attributes makes each change one step of the undo history: a
// whole drag of a slider is one step, labelled "UndoSliderChange".

// The scene as it was before a change made through a control, until the change is done.
class SceneChange {
public:
    explicit SceneChange(bool recordsUndo) : m_recordsUndo(recordsUndo) {}

    // Before the first write of a change; later calls of the same change do nothing.
    void Begin();
    // The change is complete: one undo step from the scene before it to the scene now.
    void Commit(const char* label = "UndoSliderChange");
    bool IsPending() const { return static_cast<bool>(m_before); }

private:
    bool m_recordsUndo;
    SnapshotPtr m_before;
};

// A slider over a number that one or several objects have.
class OptionSlider : public gui::MultiAttribSlider {
public:
    // Throws as gui::Slider does.
    OptionSlider(const util::String& key, std::vector<gui::FloatAttribWeakPtr> attribs, double min,
                 double max, bool logarithmic, bool recordsUndo);
    ~OptionSlider() override;

protected:
    void ValueChanged() override;

private:
    SceneChange m_change;
};
using OptionSliderPtr = util::SharedPtr<OptionSlider>;

// A slider over one component of a vector attribute: a channel of a colour, the vertical
// part of the gravity.
template <class V>
class ComponentSlider : public gui::LabeledSlider {
public:
    using WeakAttrib = util::WeakPtr<script::TAttrib<V>>;

    // Throws as gui::Slider does.
    ComponentSlider(const util::String& key, std::vector<WeakAttrib> attribs, size_t component,
                    double min, double max, bool recordsUndo);
    ~ComponentSlider() override;

    void Update(float dt) override;
    util::String GetValueText() const override;
    // Shows the first live attribute's component.
    void Refresh();

protected:
    void ValueChanged() override;

private:
    gui::AttribBinding<V> m_binding;
    size_t m_component;
    SceneChange m_change;
};

// A checkbox over a switch that one or several objects have.
class OptionCheckbox : public gui::MultiAttribCheckbox {
public:
    OptionCheckbox(const util::String& key, std::vector<gui::BoolAttribWeakPtr> attribs,
                   bool recordsUndo);
    ~OptionCheckbox() override;

protected:
    void CheckedChanged() override;

private:
    SceneChange m_change;
};
using OptionCheckboxPtr = util::SharedPtr<OptionCheckbox>;

// A push button with the key's text and tooltip, calling the action when clicked.
gui::ButtonPtr MakeOptionButton(const util::String& key, std::function<void()> action);
// A caption over a group of controls, in the title font.
gui::LabelPtr MakeOptionHeading(const util::String& key);
// The key's tooltip on any component.
void SetTooltipFor(gui::Component& component, const util::String& key);

// The weak references the controls take, from the attributes of several objects.
// AttribsOf<float>(shapes, &GeomEntity::friction).
template <class T, class Object, class Member>
std::vector<util::WeakPtr<script::TAttrib<T>>> AttribsOf(const std::vector<Object*>& objects,
                                                         Member Object::*member) {
    std::vector<util::WeakPtr<script::TAttrib<T>>> attribs;
    for (Object* object : objects) {
        if (object && object->*member) {
            attribs.emplace_back(object->*member);
        }
    }
    return attribs;
}

}  // namespace app
