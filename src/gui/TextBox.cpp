#include "gui/TextBox.h"

#include <cctype>
#include <cmath>

#include "app/Undoer.h"
#include "gui/GUI.h"
#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"
#include "gui/TextEditUndoer.h"
#include "input/Input.h"
#include "os/OS.h"

namespace gui {
namespace {

// The cursor blinks once a second.
constexpr double kBlinkPeriod = 1.0;
// Two presses on the same place within this many seconds select a word.
constexpr double kDoubleClick = 0.3;

bool IsPrintable(unsigned char c) {
    return (c >= 32 && c < 127) || c >= 160;
}

bool IsWordCharacter(char c) {
    const auto u = static_cast<unsigned char>(c);
    return std::isalnum(u) || c == '_' || u >= 192;
}

// The system's clipboard speaks UTF-8, the boxes Latin-1.
util::String ToUtf8(const util::String& latin1) {
    util::String out;
    out.reserve(latin1.size());
    for (char c : latin1) {
        const auto u = static_cast<unsigned char>(c);
        if (u < 128) {
            out += c;
        } else {
            out += static_cast<char>(0xc0 | (u >> 6));
            out += static_cast<char>(0x80 | (u & 0x3f));
        }
    }
    return out;
}

// Characters beyond Latin-1 become '?'. Bytes that are no UTF-8 are taken as Latin-1, so
// that junk stays junk of the same length instead of vanishing.
util::String FromUtf8(const util::String& utf8) {
    util::String out;
    out.reserve(utf8.size());
    size_t i = 0;
    while (i < utf8.size()) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        size_t length = 0;
        unsigned code = 0;
        if (lead >= 0xc2 && lead <= 0xdf) {
            length = 2;
            code = lead & 0x1f;
        } else if (lead >= 0xe0 && lead <= 0xef) {
            length = 3;
            code = lead & 0x0f;
        } else if (lead >= 0xf0 && lead <= 0xf4) {
            length = 4;
            code = lead & 0x07;
        }
        bool valid = length > 0 && i + length <= utf8.size();
        for (size_t k = 1; valid && k < length; ++k) {
            const auto next = static_cast<unsigned char>(utf8[i + k]);
            valid = (next & 0xc0) == 0x80;
            code = (code << 6) | (next & 0x3f);
        }
        if (!valid) {
            out += utf8[i];
            ++i;
            continue;
        }
        out += code <= 0xff ? static_cast<char>(code) : '?';
        i += length;
    }
    return out;
}

// Kept beside the system's clipboard: where there is none (no display), copy and paste
// still work within the program.
util::String& InternalClipboard() {
    static util::String text;
    return text;
}

}  // namespace

TextBox::TextBox(bool multiLine, const util::String& name)
    : Component(name), m_multiLine(multiLine), m_font(LookAndFeel::Get().GetFont()) {
    SetUsesLookAndFeel(true);
    const float line = m_font->GetLineHeight();
    SetSize(150, multiLine ? 4 * line + 2 * kMargin : line + 2 * kMargin);
}

TextBox::~TextBox() {
    if (s_focused == this) {
        s_focused = nullptr;
        if (input::Input::IsAlive()) {
            input::Input::Get().SetTextMode(s_savedTextMode);
        }
    }
}

void TextBox::SetText(const util::String& text) {
    m_editOpen = false;
    m_text = text;
    m_cursor = std::min(m_cursor, m_text.size());
    m_anchor = m_cursor;
    Changed();
}

void TextBox::SetCursor(size_t cursor) {
    MoveCursor(std::min(cursor, m_text.size()), false);
}

void TextBox::RestoreEdit(const util::String& text, size_t cursor) {
    m_editOpen = false;
    m_text = text;
    m_cursor = m_anchor = std::min(cursor, m_text.size());
    Changed();
}

util::String TextBox::GetSelectedText() const {
    return m_text.substr(GetSelectionStart(), GetSelectionEnd() - GetSelectionStart());
}

void TextBox::Select(size_t anchor, size_t cursor) {
    m_anchor = std::min(anchor, m_text.size());
    m_cursor = std::min(cursor, m_text.size());
    m_changeTime = GUI::GetTime();
}

void TextBox::SetRecordsUndo(bool on) {
    if (!on) {
        m_editOpen = false;
    }
    m_recordsUndo = on;
}

void TextBox::CommitEdit() {
    if (!m_editOpen) {
        return;
    }
    m_editOpen = false;
    if (m_editText == m_text) {
        return;
    }
    app::Undoer::Get().Do(app::ActionPtr(
        new TextEditUndoer(*this, std::move(m_editText), m_editCursor, m_text, m_cursor)));
    m_editText.clear();
}

void TextBox::BeginEdit() {
    if (m_editOpen || !m_recordsUndo) {
        return;
    }
    m_editOpen = true;
    m_editText = m_text;
    m_editCursor = m_cursor;
}

void TextBox::InsertText(const util::String& text) {
    BeginEdit();
    ReplaceSelection(Sanitize(text, m_multiLine));
}

void TextBox::ReplaceSelection(const util::String& text) {
    const size_t start = GetSelectionStart();
    m_text.replace(start, GetSelectionEnd() - start, text);
    m_cursor = m_anchor = start + text.size();
    Changed();
}

void TextBox::DeleteRange(size_t begin, size_t end) {
    if (begin >= end) {
        return;
    }
    BeginEdit();
    m_anchor = begin;
    m_cursor = end;
    ReplaceSelection(util::String());
}

void TextBox::Copy() const {
    if (!HasSelection()) {
        return;
    }
    InternalClipboard() = GetSelectedText();
    os::SetClipboardText(ToUtf8(InternalClipboard()));
}

void TextBox::Cut() {
    if (!HasSelection()) {
        return;
    }
    Copy();
    // A cut is a step of its own, apart from the typing before it.
    CommitEdit();
    BeginEdit();
    ReplaceSelection(util::String());
    CommitEdit();
}

void TextBox::Paste() {
    util::String text = FromUtf8(os::GetClipboardText());
    if (text.empty()) {
        text = InternalClipboard();
    }
    text = Sanitize(text, m_multiLine);
    if (text.empty() && !HasSelection()) {
        return;
    }
    CommitEdit();
    BeginEdit();
    ReplaceSelection(text);
    CommitEdit();
}

util::String TextBox::Sanitize(const util::String& text, bool multiLine) {
    util::String out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c == '\r') {
            // A lone carriage return ends a line as a line feed does; before one it is
            // part of that line feed.
            if (i + 1 < text.size() && text[i + 1] == '\n') {
                continue;
            }
            out += multiLine ? '\n' : ' ';
        } else if (c == '\n') {
            out += multiLine ? '\n' : ' ';
        } else if (c == '\t') {
            out += ' ';
        } else if (IsPrintable(c)) {
            out += static_cast<char>(c);
        }
    }
    return out;
}

void TextBox::Focus() {
    if (s_focused == this) {
        return;
    }
    if (s_focused) {
        s_focused->Blur();
    }
    input::Input& input = input::Input::Get();
    s_savedTextMode = input.GetTextMode();
    input.SetTextMode(true);
    s_focused = this;
    m_changeTime = GUI::GetTime();
    LookChanged();
}

void TextBox::Blur() {
    if (s_focused != this) {
        return;
    }
    CommitEdit();
    s_focused = nullptr;
    m_selecting = false;
    input::Input::Get().SetTextMode(s_savedTextMode);
    LookChanged();
}

void TextBox::SetFont(FontFormaterPtr font) {
    if (font) {
        m_font = std::move(font);
    }
}

BorderPtr TextBox::GetLookBorder() const {
    return HasFocus() ? LookAndFeel::Get().GetTextFieldFocusBorder()
                      : LookAndFeel::Get().GetTextFieldBorder();
}

void TextBox::Changed() {
    m_changeTime = GUI::GetTime();
    if (m_multiLine) {
        UpdateLineStarts();
    }
    GetOnChange().CallAll();
}

void TextBox::UpdateLineStarts() {
    m_lineStarts.assign(1, 0);
    for (size_t i = 0; i < m_text.size(); ++i) {
        if (m_text[i] == '\n') {
            m_lineStarts.push_back(i + 1);
        }
    }
}

void TextBox::MoveCursor(size_t cursor, bool extend) {
    m_cursor = std::min(cursor, m_text.size());
    if (!extend) {
        m_anchor = m_cursor;
    }
    m_changeTime = GUI::GetTime();
}

size_t TextBox::WordLeft(size_t from) const {
    while (from > 0 && !IsWordCharacter(m_text[from - 1])) {
        --from;
    }
    while (from > 0 && IsWordCharacter(m_text[from - 1])) {
        --from;
    }
    return from;
}

size_t TextBox::WordRight(size_t from) const {
    while (from < m_text.size() && IsWordCharacter(m_text[from])) {
        ++from;
    }
    while (from < m_text.size() && !IsWordCharacter(m_text[from])) {
        ++from;
    }
    return from;
}

size_t TextBox::LineStart(size_t from) const {
    return m_multiLine ? m_lineStarts[LineOf(from)] : 0;
}

size_t TextBox::LineEnd(size_t from) const {
    if (!m_multiLine) {
        return m_text.size();
    }
    const size_t line = LineOf(from);
    return line + 1 < m_lineStarts.size() ? m_lineStarts[line + 1] - 1 : m_text.size();
}

size_t TextBox::LineOf(size_t index) const {
    const auto it = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), index);
    return static_cast<size_t>(it - m_lineStarts.begin()) - 1;
}

size_t TextBox::VerticalMove(size_t from, int lines) const {
    const size_t line = LineOf(from);
    const long target = static_cast<long>(line) + lines;
    if (target < 0) {
        return 0;
    }
    if (static_cast<size_t>(target) >= m_lineStarts.size()) {
        return m_text.size();
    }
    const float x = m_font->GetWidth(m_text, m_lineStarts[line], from);
    const size_t start = m_lineStarts[static_cast<size_t>(target)];
    const size_t end = LineEnd(start);
    return start + m_font->HitTest(m_text.substr(start, end - start), x);
}

math::Vec2 TextBox::InnerPoint(const math::Vec2& guiPoint) const {
    return ToLocal(guiPoint) - GetBorderOffset();
}

size_t TextBox::CursorAt(const math::Vec2& inner) const {
    const float lineHeight = m_font->GetLineHeight();
    size_t line = 0;
    if (m_multiLine && inner.y > kMargin) {
        line = std::min(static_cast<size_t>((inner.y - kMargin) / lineHeight),
                        m_lineStarts.size() - 1);
    }
    const size_t start = m_multiLine ? m_lineStarts[line] : 0;
    const size_t end = LineEnd(start);
    return start + m_font->HitTest(m_text.substr(start, end - start), inner.x - kMargin);
}

bool TextBox::CursorLit() const {
    return HasFocus() && std::fmod(GUI::GetTime() - m_changeTime, kBlinkPeriod) < kBlinkPeriod / 2;
}

void TextBox::OnKey(input::KeyEvent& event) {
    Component::OnKey(event);
    const input::SDLKey mouseLeft = input::MouseKey(input::kMouseLeft);
    if (event.key == mouseLeft && !event.down) {
        m_selecting = false;
    }
    // A press anywhere else takes the focus away, whoever uses it.
    if (event.key == mouseLeft && event.down && !IsMouseOver()) {
        Blur();
    }
    if (event.consumed || !event.down) {
        return;
    }
    if (event.key == mouseLeft) {
        if (IsMouseOver()) {
            // The press is used here, so the input makes no click or drag of it: the box
            // follows the held button and tells a double click itself.
            Focus();
            const size_t at = CursorAt(InnerPoint(event.position));
            const double now = GUI::GetTime();
            if (!event.shift && at == m_lastPressCursor && now - m_lastPressTime < kDoubleClick) {
                SelectWordAt(at);
            } else {
                MoveCursor(at, event.shift);
                m_selecting = true;
            }
            m_lastPressTime = now;
            m_lastPressCursor = at;
            event.consumed = true;
        }
        return;
    }
    if (HasFocus() && HandleKey(event)) {
        event.consumed = true;
    }
}

void TextBox::OnMouseMove(input::MouseMoveEvent& event) {
    Component::OnMouseMove(event);
    if (m_selecting && HasFocus()) {
        MoveCursor(CursorAt(InnerPoint(event.position)), true);
    }
}

void TextBox::SelectWordAt(size_t at) {
    size_t begin = std::min(at, m_text.size());
    size_t end = begin;
    while (begin > 0 && IsWordCharacter(m_text[begin - 1])) {
        --begin;
    }
    while (end < m_text.size() && IsWordCharacter(m_text[end])) {
        ++end;
    }
    Select(begin, end);
}

bool TextBox::HandleKey(const input::KeyEvent& event) {
    namespace key = input::key;
    const bool shift = event.shift;
    if (event.ctrl && !event.alt) {
        switch (event.key) {
            case 'a':
                SelectAll();
                return true;
            case 'c':
                Copy();
                return true;
            case 'x':
                Cut();
                return true;
            case 'v':
                Paste();
                return true;
            case 'z':
            case 'y':
                if (!m_recordsUndo) {
                    return false;
                }
                CommitEdit();
                if (event.key == 'z') {
                    app::Undoer::Get().Undo();
                } else {
                    app::Undoer::Get().Redo();
                }
                return true;
            default:
                break;
        }
    }
    switch (event.key) {
        case key::Left:
            if (HasSelection() && !shift) {
                MoveCursor(GetSelectionStart(), false);
            } else if (m_cursor > 0) {
                MoveCursor(event.ctrl ? WordLeft(m_cursor) : m_cursor - 1, shift);
            }
            return true;
        case key::Right:
            if (HasSelection() && !shift) {
                MoveCursor(GetSelectionEnd(), false);
            } else {
                MoveCursor(event.ctrl ? WordRight(m_cursor) : m_cursor + 1, shift);
            }
            return true;
        case key::Home:
            MoveCursor(event.ctrl ? 0 : LineStart(m_cursor), shift);
            return true;
        case key::End:
            MoveCursor(event.ctrl ? m_text.size() : LineEnd(m_cursor), shift);
            return true;
        case key::Up:
        case key::Down:
            if (!m_multiLine) {
                return false;
            }
            MoveCursor(VerticalMove(m_cursor, event.key == key::Up ? -1 : 1), shift);
            return true;
        case key::Backspace:
            if (HasSelection()) {
                DeleteRange(GetSelectionStart(), GetSelectionEnd());
            } else if (m_cursor > 0) {
                DeleteRange(event.ctrl ? WordLeft(m_cursor) : m_cursor - 1, m_cursor);
            }
            return true;
        case key::Delete:
            if (HasSelection()) {
                DeleteRange(GetSelectionStart(), GetSelectionEnd());
            } else if (m_cursor < m_text.size()) {
                DeleteRange(m_cursor, event.ctrl ? WordRight(m_cursor) : m_cursor + 1);
            }
            return true;
        case key::Return:
        case key::KPEnter:
            if (!m_multiLine) {
                // The end of a line is the end of an edit; what Enter means is the owner's.
                CommitEdit();
                return false;
            }
            InsertText("\n");
            return true;
        default:
            break;
    }
    if (event.ctrl && !event.alt) {
        return false;
    }
    const auto c = static_cast<unsigned char>(event.character);
    if (!IsPrintable(c)) {
        return false;
    }
    InsertText(util::String(1, static_cast<char>(c)));
    return true;
}

void TextBox::DrawComp() {
    ColorScope color(GetColor());
    DrawBorder();
    const math::Vec2 offset = GetBorderOffset();
    const math::Vec2 size = GetSize();
    const float lineHeight = m_font->GetLineHeight();
    const size_t selectionStart = GetSelectionStart();
    const size_t selectionEnd = GetSelectionEnd();
    const math::Colour selection = LookAndFeel::Get().GetSelectionColor();
    for (size_t line = 0; line < m_lineStarts.size(); ++line) {
        const float y = offset.y + kMargin + static_cast<float>(line) * lineHeight;
        if (y + lineHeight > offset.y + size.y) {
            break;
        }
        const size_t start = m_lineStarts[line];
        const size_t end = LineEnd(start);
        const float x = offset.x + kMargin;
        if (selectionStart < end + 1 && selectionEnd > start) {
            const size_t from = std::max(selectionStart, start);
            const size_t to = std::min(selectionEnd, end);
            const float left = x + m_font->GetWidth(m_text, start, from);
            FillRect(left, y, m_font->GetWidth(m_text, from, to) + (selectionEnd > end ? 2 : 0),
                     lineHeight, selection);
        }
        m_font->DrawRange(m_text, start, end, x, y);
        if (CursorLit() && m_cursor >= start && m_cursor <= end) {
            FillRect(x + m_font->GetWidth(m_text, start, m_cursor), y, 1.5f, lineHeight,
                     LookAndFeel::Get().GetForegroundColor());
        }
    }
    DrawChildren();
}

}  // namespace gui
