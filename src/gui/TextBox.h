#pragma once

#include <algorithm>
#include <vector>

#include "gui/Component.h"
#include "gui/FontFormater.h"

namespace gui {

class TextBox;
using TextBoxPtr = util::SharedPtr<TextBox>;

// Editable text: a cursor, a selection, typing, the clipboard and undo. One box at a time
// has the keyboard focus; it takes the keys it uses and keeps the input in text mode
// while it has it. A click focuses a box, a click elsewhere takes the focus away.
//
// Text is Latin-1. What is typed or pasted keeps only printable characters; a one-line
// box turns line feeds into blanks. Edits become undo steps of the history
// (TextEditUndoer), one for each burst of typing, unless the box's recording is off.
class TextBox : public Component {
public:
    explicit TextBox(bool multiLine = true, const util::String& name = "TextBox");
    ~TextBox() override;

    const util::String& GetText() const { return m_text; }
    // Text and cursor set by the program: no undo step, no selection.
    void SetText(const util::String& text);
    size_t GetCursor() const { return m_cursor; }
    void SetCursor(size_t cursor);
    // Both at once, as an undo step puts them back.
    void RestoreEdit(const util::String& text, size_t cursor);

    bool HasSelection() const { return m_anchor != m_cursor; }
    size_t GetSelectionStart() const { return std::min(m_anchor, m_cursor); }
    size_t GetSelectionEnd() const { return std::max(m_anchor, m_cursor); }
    util::String GetSelectedText() const;
    // From the anchor to the cursor, which is where typing goes on.
    void Select(size_t anchor, size_t cursor);
    void SelectAll() { Select(0, m_text.size()); }

    bool IsMultiLine() const { return m_multiLine; }
    // Off: edits make no undo steps, and the undo keys are left to others.
    void SetRecordsUndo(bool on);
    bool RecordsUndo() const { return m_recordsUndo; }
    // Ends the present burst of typing: if it changed the text, it becomes one undo step.
    void CommitEdit();

    // Typing as the user does it: replaces the selection, and is an edit.
    void InsertText(const util::String& text);
    void Copy() const;
    void Cut();
    void Paste();

    void Focus();
    void Blur();
    bool HasFocus() const { return s_focused == this; }
    // Null when no box has the focus.
    static TextBox* GetFocused() { return s_focused; }

    const FontFormaterPtr& GetFont() const { return m_font; }
    void SetFont(FontFormaterPtr font);

    // What typing and pasting keep of a text: printable Latin-1; line feeds only in a box
    // of several lines, blanks for them in a box of one.
    static util::String Sanitize(const util::String& text, bool multiLine);

    void OnKey(input::KeyEvent& event) override;
    void OnMouseMove(input::MouseMoveEvent& event) override;
    void DrawComp() override;

    static constexpr float kMargin = 3;

protected:
    BorderPtr GetLookBorder() const override;
    // The character boundary at a point of the inner area.
    virtual size_t CursorAt(const math::Vec2& inner) const;
    // Whether the cursor is drawn now: focused, and in the lit half of the blink.
    bool CursorLit() const;
    // The time of the last change of text or cursor; the cursor stays lit after one.
    double GetChangeTime() const { return m_changeTime; }

private:
    // A key of a focused box; returns whether the box used it.
    bool HandleKey(const input::KeyEvent& event);
    // Puts the cursor at a place, extending the selection if asked.
    void MoveCursor(size_t cursor, bool extend);
    // Replaces the selection by text that is already sanitized.
    void ReplaceSelection(const util::String& text);
    void DeleteRange(size_t begin, size_t end);
    void SelectWordAt(size_t at);
    // Starts a burst of typing, remembering how the text was before it.
    void BeginEdit();
    void Changed();
    void UpdateLineStarts();
    size_t WordLeft(size_t from) const;
    size_t WordRight(size_t from) const;
    size_t LineStart(size_t from) const;
    size_t LineEnd(size_t from) const;
    // The line the character index lies on, counted from 0.
    size_t LineOf(size_t index) const;
    // Up or down by lines, keeping the horizontal position.
    size_t VerticalMove(size_t from, int lines) const;
    math::Vec2 InnerPoint(const math::Vec2& guiPoint) const;

    util::String m_text;
    size_t m_cursor = 0;
    size_t m_anchor = 0;
    bool m_multiLine;
    bool m_recordsUndo = true;
    FontFormaterPtr m_font;
    // Where each line begins, for boxes of several lines.
    std::vector<size_t> m_lineStarts{0};
    // The burst of typing under way: the text and cursor before it.
    bool m_editOpen = false;
    util::String m_editText;
    size_t m_editCursor = 0;
    // Between a press on the box and the release: the mouse moves the cursor.
    bool m_selecting = false;
    double m_lastPressTime = -1;
    size_t m_lastPressCursor = 0;
    double m_changeTime = 0;

    static inline TextBox* s_focused = nullptr;
    // The input's text mode before a box took the focus, given back when none has it.
    static inline bool s_savedTextMode = false;
};

}  // namespace gui
