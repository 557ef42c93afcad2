#pragma once

#include "gui/AbstractButton.h"
#include "gui/FontFormater.h"

namespace gui {

class AbstractToggleButton;
using AbstractToggleButtonPtr = util::SharedPtr<AbstractToggleButton>;

// A button with a checked state that each click flips. A change of the state, by a click
// or by SetChecked, calls the on-change callbacks (GetOnChange) before the click ones.
// It shows a square mark of the text's height, drawn by the concrete kind, followed by
// its text; the whole of it takes the clicks.
class AbstractToggleButton : public AbstractButton {
public:
    explicit AbstractToggleButton(const util::String& name = "AbstractToggleButton",
                                  const util::String& text = "");
    ~AbstractToggleButton() override;

    bool IsChecked() const { return m_checked; }
    virtual void SetChecked(bool checked);

    const util::String& GetText() const { return m_text; }
    void SetText(const util::String& text);

    // The frame, the mark and the text, from the look's colours for the present state.
    void DrawComp() override;

protected:
    void Clicked() override;
    // The state changed by the user or by SetChecked, not by ShowChecked.
    virtual void CheckedChanged() {}
    // Sets the state and, with notify, tells of it.
    void ApplyChecked(bool checked, bool notify);
    // Shows a state that comes from elsewhere, without telling anybody.
    void ShowChecked(bool checked) { ApplyChecked(checked, false); }

    // The mark in the square of the given side at (x, y), in the frame's colour, with the
    // inside's fill and the ink of a checked mark.
    virtual void DrawMark(float x, float y, float side, const math::Colour& frame,
                          const math::Colour& fill, const math::Colour& ink) = 0;

private:
    void FitContent();

    bool m_checked = false;
    util::String m_text;
    FontFormaterPtr m_font;
};

}  // namespace gui
