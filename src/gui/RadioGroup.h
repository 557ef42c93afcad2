#pragma once

#include <vector>

#include "gui/AbstractRadioButton.h"

namespace gui {

class RadioGroup;
using RadioGroupPtr = util::SharedPtr<RadioGroup>;

// A column (or row) of radio buttons of which at most one is checked. The selection is
// an index into the buttons in the order they were added, kNone for none; a change of it
// calls the on-change callbacks (GetOnChange) once, after the buttons have changed.
class RadioGroup : public Component {
public:
    static constexpr int kNone = -1;

    // axis 1 stacks the buttons in a column, 0 in a row.
    explicit RadioGroup(int axis = 1, float spacing = 2);
    ~RadioGroup() override;

    // Adds the button as a child and a member. A checked button becomes the selection.
    void AddButton(const AbstractRadioButtonPtr& button);
    // A RadioButton with the text, added and returned.
    AbstractRadioButtonPtr AddOption(const util::String& text);
    // Drops the button from the group and from the children; the selection follows.
    void RemoveButton(const AbstractRadioButtonPtr& button);

    int GetSelected() const { return m_selected; }
    // An index out of range selects none.
    void SetSelected(int index);
    void Select(const AbstractRadioButton& button);
    // The selected button, or null.
    AbstractRadioButtonPtr GetSelectedButton() const;
    const std::vector<AbstractRadioButtonPtr>& GetButtons() const { return m_buttons; }

private:
    std::vector<AbstractRadioButtonPtr> m_buttons;
    int m_selected = kNone;
};

}  // namespace gui
