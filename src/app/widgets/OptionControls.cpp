#include "app/widgets/OptionControls.h"

#include <type_traits>

#include "app/Language.h"
#include "app/Undoer.h"
#include "app/widgets/Tooltip.h"
#include "gui/LookAndFeel.h"

namespace app {

// SceneChange.

void SceneChange::Begin() {
    if (m_recordsUndo && !m_before) {
        m_before = SnapshotPtr(new Snapshot());
    }
}

void SceneChange::Commit(const char* label) {
    if (!m_before) {
        return;
    }
    const SnapshotPtr before = m_before;
    m_before = SnapshotPtr();
    Undoer::Get().AddSnapshotStep(before, label);
}

void SetTooltipFor(gui::Component& component, const util::String& key) {
    component.SetTooltip(MakeTooltip(Language::Get().Translate(key + "_Tooltip")));
}

// OptionSlider.

OptionSlider::OptionSlider(const util::String& key, std::vector<gui::FloatAttribWeakPtr> attribs,
                           double min, double max, bool logarithmic, bool recordsUndo)
    : gui::MultiAttribSlider(Language::Get().Translate(key), std::move(attribs), min, max,
                             logarithmic),
      m_change(recordsUndo) {
    SetTooltipFor(*this, key);
    // A whole drag is one step: the scene before the press, and the scene at the release.
    GetOnRelease().Add(util::WeakPtr<util::Pointee>(this), [this]() { m_change.Commit(); });
}

OptionSlider::~OptionSlider() = default;

void OptionSlider::ValueChanged() {
    if (!HasLiveAttrib()) {
        return;
    }
    m_change.Begin();
    gui::MultiAttribSlider::ValueChanged();
    // A change by key or by SetValue has no release to wait for.
    if (!IsHeld()) {
        m_change.Commit();
    }
}

// ComponentSlider.

template <class V>
ComponentSlider<V>::ComponentSlider(const util::String& key, std::vector<WeakAttrib> attribs,
                                    size_t component, double min, double max, bool recordsUndo)
    : gui::LabeledSlider(Language::Get().Translate(key), min, max),
      m_binding(std::move(attribs)),
      m_component(component),
      m_change(recordsUndo) {
    SetTooltipFor(*this, key);
    GetOnRelease().Add(util::WeakPtr<util::Pointee>(this), [this]() { m_change.Commit(); });
    Refresh();
}

template <class V>
ComponentSlider<V>::~ComponentSlider() = default;

template <class V>
void ComponentSlider<V>::Update(float dt) {
    gui::LabeledSlider::Update(dt);
    Refresh();
}

template <class V>
void ComponentSlider<V>::Refresh() {
    V value{};
    if (m_binding.ReadFirst(value)) {
        ShowValue(value[m_component]);
    }
}

template <class V>
util::String ComponentSlider<V>::GetValueText() const {
    return m_binding.HasLive() ? FormatValue() : util::String("-");
}

template <class V>
void ComponentSlider<V>::ValueChanged() {
    if (!m_binding.HasLive()) {
        return;
    }
    m_change.Begin();
    // Each object keeps its other components: one colour channel changes, not the colour.
    const auto attribs = m_binding.GetAttribs();
    for (const WeakAttrib& attrib : attribs) {
        if (const util::LockPtr<script::TAttrib<V>> live(attrib); live) {
            V value = live->Get();
            value[m_component] = static_cast<std::decay_t<decltype(value[0])>>(GetValue());
            gui::AttribBinding<V>({attrib}).WriteAll(value);
        }
    }
    if (!IsHeld()) {
        m_change.Commit();
    }
}

template class ComponentSlider<math::Vec2>;
template class ComponentSlider<math::Vec4>;

// OptionCheckbox.

OptionCheckbox::OptionCheckbox(const util::String& key, std::vector<gui::BoolAttribWeakPtr> attribs,
                               bool recordsUndo)
    : gui::MultiAttribCheckbox(Language::Get().Translate(key), std::move(attribs)),
      m_change(recordsUndo) {
    SetTooltipFor(*this, key);
}

OptionCheckbox::~OptionCheckbox() = default;

void OptionCheckbox::CheckedChanged() {
    if (!HasLiveAttrib()) {
        return;
    }
    m_change.Begin();
    gui::MultiAttribCheckbox::CheckedChanged();
    m_change.Commit();
}

gui::ButtonPtr MakeOptionButton(const util::String& key, std::function<void()> action) {
    const gui::ButtonPtr button(new gui::Button(Language::Get().Translate(key)));
    SetTooltipFor(*button, key);
    button->GetOnClick().Add(util::WeakPtr<util::Pointee>(button.Get()), std::move(action));
    return button;
}

gui::LabelPtr MakeOptionHeading(const util::String& key) {
    return gui::LabelPtr(
        new gui::Label(Language::Get().Translate(key), gui::LookAndFeel::Get().GetTitleFont()));
}

}  // namespace app
