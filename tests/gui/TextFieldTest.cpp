// Text boxes: typing, the cursor, selection, the clipboard, focus, and undo of edits.

#include "gui/TextField.h"

#include "GuiFixture.h"
#include "app/Undoer.h"
#include "gui/TextEditUndoer.h"

namespace {

namespace key = input::key;
using util::String;

class TextFieldTest : public test_gui::GuiTest {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        app::Undoer::Get().Clear();
        m_field = gui::TextFieldPtr(new gui::TextField());
        m_field->SetPosition(100, 500);
        m_field->SetSize(300, m_field->GetSize().y);
        AddToRoot(gui::ComponentPtr(m_field));
    }
    void TearDown() override {
        m_field->RemoveFromParent();
        m_field = nullptr;
        GuiTest::TearDown();
    }
    // A point on the field's text, and one off it.
    void ClickField() { Click(105, 505); }
    static void ClickAway() { Click(700, 700); }
    void Key(input::SDLKey code, bool ctrl = false, bool shift = false) {
        input::KeyEvent event = KeyPress(code, 0, ctrl, shift);
        m_field->OnKey(event);
    }

    gui::TextFieldPtr m_field;
};

TEST_F(TextFieldTest, TypingAndMovingTheCursor) {
    Type("ignored");
    EXPECT_EQ(m_field->GetText(), "") << "keys go to a field only while it has the focus";
    ClickField();
    ASSERT_TRUE(m_field->HasFocus());
    EXPECT_TRUE(input::Input::Get().GetTextMode());
    Type("Hello world");
    EXPECT_EQ(m_field->GetText(), "Hello world");
    EXPECT_EQ(m_field->GetCursor(), 11u);
    Key(key::Left, true);
    EXPECT_EQ(m_field->GetCursor(), 6u);
    Tap(key::Backspace);
    Tap(key::Left);
    Tap(key::Delete);
    EXPECT_EQ(m_field->GetText(), "Hellworld");
    Tap(key::Home);
    Type("\xe9!");  // Latin-1 letters type as they are
    EXPECT_EQ(m_field->GetText(), "\xe9!Hellworld");
    Tap(key::End);
    EXPECT_EQ(m_field->GetCursor(), m_field->GetText().size());
    Key(key::Backspace, true);
    EXPECT_EQ(m_field->GetText(), "\xe9!");

    // A long line scrolls so that the cursor stays in view.
    m_field->SetText(String(5000, 'm'));
    m_field->SetCursor(5000);
    m_field->DrawComp();
    EXPECT_GT(m_field->GetFirstVisible(), 4000u);
    Tap(key::Home);
    m_field->DrawComp();
    EXPECT_EQ(m_field->GetFirstVisible(), 0u);

    ClickAway();
    EXPECT_FALSE(m_field->HasFocus());
    EXPECT_FALSE(input::Input::Get().GetTextMode()) << "text mode as it was before";
    Type("x");
    EXPECT_EQ(m_field->GetText(), String(5000, 'm'));
}

TEST_F(TextFieldTest, SelectionCopyCutAndPaste) {
    ClickField();
    Type("copy this");
    for (int i = 0; i < 4; ++i) {
        Key(key::Left, false, true);
    }
    EXPECT_EQ(m_field->GetSelectedText(), "this");
    Key('c', true);
    Tap(key::End);
    Key('v', true);
    EXPECT_EQ(m_field->GetText(), "copy thisthis");
    Key('a', true);
    Key('x', true);
    EXPECT_EQ(m_field->GetText(), "");
    Key('v', true);
    Key('v', true);
    EXPECT_EQ(m_field->GetText(), "copy thisthiscopy thisthis");
    Type("!");
    EXPECT_EQ(m_field->GetText(), "copy thisthiscopy thisthis!");

    // Dragging over the text selects it.
    Drag(math::Vec2(102, 505), math::Vec2(399, 505));
    EXPECT_EQ(m_field->GetSelectionStart(), 0u);
    EXPECT_GT(m_field->GetSelectionEnd(), 5u);
    // Two quick presses on one place take the word.
    for (int i = 0; i < 2; ++i) {
        Press(105, 505);
        Release(105, 505);
    }
    EXPECT_EQ(m_field->GetSelectedText(), "copy");
    Advance(1);

    // Pasted line feeds become blanks in one line; junk is dropped, never typed.
    gui::TextBox box(true);
    String junk;
    for (int c = 0; c < 256; ++c) {
        junk += static_cast<char>(c);
    }
    box.SetText("two\r\nlines" + junk);
    box.SelectAll();
    box.Copy();
    m_field->SetText("");
    Key('v', true);
    const String& pasted = m_field->GetText();
    EXPECT_EQ(pasted.substr(0, 10), "two lines ");
    EXPECT_EQ(pasted.size(), 9u + 3 + 95 + 96) << "printable Latin-1, and blanks for controls";
    for (char c : pasted) {
        const auto u = static_cast<unsigned char>(c);
        EXPECT_TRUE((u >= 32 && u < 127) || u >= 160) << int(u);
    }
    box.Paste();
    EXPECT_NE(box.GetText().find("two\nlines"), String::npos) << "a box of lines keeps them";
}

TEST_F(TextFieldTest, UndoTakesBackABurstOfTyping) {
    ClickField();
    Type("abc");
    ClickAway();  // the end of an edit
    ClickField();
    Tap(key::End);
    Type("def");
    Key(key::Left);
    Key('z', true);
    EXPECT_EQ(m_field->GetText(), "abc");
    EXPECT_EQ(m_field->GetCursor(), 3u);
    ASSERT_EQ(app::Undoer::Get().GetRedoStack().size(), 1u);
    EXPECT_STREQ(app::Undoer::Get().GetRedoLabel(), "UndoTextEdit");
    Key('z', true);
    EXPECT_EQ(m_field->GetText(), "");
    Key('y', true);
    Key('y', true);
    EXPECT_EQ(m_field->GetText(), "abcdef");
    EXPECT_EQ(m_field->GetCursor(), 5u);
    m_field->SetText("set by the program");
    EXPECT_EQ(app::Undoer::Get().GetUndoStack().size(), 2u) << "only the user's edits";

    // A step whose box is gone does nothing.
    gui::TextFieldPtr gone(new gui::TextField());
    gone->Focus();
    gone->InsertText("soon gone");
    gone->Blur();
    ASSERT_EQ(app::Undoer::Get().GetUndoStack().size(), 3u);
    const app::ActionPtr step = app::Undoer::Get().GetUndoStack().back();
    gone = nullptr;
    EXPECT_NO_THROW(step->Undo());
    EXPECT_NO_THROW(app::Undoer::Get().Undo());
    EXPECT_NO_THROW(app::Undoer::Get().Redo());
    EXPECT_EQ(m_field->GetText(), "set by the program");
}

}  // namespace
