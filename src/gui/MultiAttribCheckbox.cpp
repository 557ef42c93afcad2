#include "gui/MultiAttribCheckbox.h"

#include <exception>

#include "logging/Log.h"

namespace gui {

MultiAttribCheckbox::MultiAttribCheckbox(const util::String& text,
                                         std::vector<BoolAttribWeakPtr> attribs)
    : Checkbox(text), m_attribs(std::move(attribs)) {
    Refresh();
}

MultiAttribCheckbox::~MultiAttribCheckbox() = default;

void MultiAttribCheckbox::SetAttribs(std::vector<BoolAttribWeakPtr> attribs) {
    m_attribs = std::move(attribs);
    Refresh();
}

bool MultiAttribCheckbox::HasLiveAttrib() const {
    for (const BoolAttribWeakPtr& attrib : m_attribs) {
        if (!attrib.Expired()) {
            return true;
        }
    }
    return false;
}

void MultiAttribCheckbox::Update(float dt) {
    Checkbox::Update(dt);
    Refresh();
}

void MultiAttribCheckbox::Refresh() {
    for (const BoolAttribWeakPtr& attrib : m_attribs) {
        const util::LockPtr<script::TAttrib<bool>> live(attrib);
        if (live) {
            ShowChecked(live->Get());
            return;
        }
    }
}

void MultiAttribCheckbox::CheckedChanged() {
    const bool checked = IsChecked();
    // A copy: an attribute's callbacks may rebind this checkbox.
    const std::vector<BoolAttribWeakPtr> attribs = m_attribs;
    for (const BoolAttribWeakPtr& attrib : attribs) {
        const util::LockPtr<script::TAttrib<bool>> live(attrib);
        if (!live) {
            continue;
        }
        try {
            live->SetNative(checked);
        } catch (const std::exception& e) {
            Log(logging::Warning, e.what());
        }
    }
}

}  // namespace gui
