#include "gui/AttribCheckbox.h"

namespace gui {

AttribCheckbox::AttribCheckbox(const script::TAttribPtr<bool>& attrib, const util::String& text)
    : MultiAttribCheckbox(text.empty() && attrib ? attrib->GetName() : text,
                          {BoolAttribWeakPtr(attrib)}) {}

AttribCheckbox::~AttribCheckbox() = default;

script::TAttrib<bool>* AttribCheckbox::GetAttrib() const {
    return GetAttribs().empty() ? nullptr : GetAttribs().front().Get();
}

}  // namespace gui
