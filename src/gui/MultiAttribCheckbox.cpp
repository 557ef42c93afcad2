#include "gui/MultiAttribCheckbox.h"

namespace gui {

MultiAttribCheckbox::MultiAttribCheckbox(const util::String& text,
                                         std::vector<BoolAttribWeakPtr> attribs)
    : Checkbox(text), m_binding(std::move(attribs)) {
    Refresh();
}

MultiAttribCheckbox::~MultiAttribCheckbox() = default;

void MultiAttribCheckbox::SetAttribs(std::vector<BoolAttribWeakPtr> attribs) {
    m_binding.SetAttribs(std::move(attribs));
    Refresh();
}

void MultiAttribCheckbox::Update(float dt) {
    Checkbox::Update(dt);
    Refresh();
}

void MultiAttribCheckbox::Refresh() {
    bool value{};
    if (m_binding.ReadFirst(value)) {
        ShowChecked(value);
    }
}

void MultiAttribCheckbox::CheckedChanged() {
    m_binding.WriteAll(IsChecked());
}

}  // namespace gui
