#pragma once

#include "gui/MultiAttribCheckbox.h"

namespace gui {

class AttribCheckbox;
using AttribCheckboxPtr = util::SharedPtr<AttribCheckbox>;

// A checkbox for one switch attribute: the shared case of MultiAttribCheckbox. The text
// is the attribute's name unless one is given.
class AttribCheckbox : public MultiAttribCheckbox {
public:
    explicit AttribCheckbox(const script::TAttribPtr<bool>& attrib, const util::String& text = "");
    ~AttribCheckbox() override;

    // Null once the attribute has died.
    script::TAttrib<bool>* GetAttrib() const;
};

}  // namespace gui
