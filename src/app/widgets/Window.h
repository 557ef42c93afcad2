#pragma once

#include <vector>

#include "app/widgets/Widget.h"
#include "gui/AbstractButton.h"
#include "gui/Button.h"
#include "gui/Label.h"

namespace app {

class Window;
using WindowPtr = util::SharedPtr<Window>;

// The measures every window shares, so that all of them look alike.
struct WindowStyle {
    // Between the window's frame and its contents, and between the rows of the contents.
    static constexpr float kMargin = 8;
    static constexpr float kSpacing = 6;
    // Room around the title text, and the side of the title bar's buttons.
    static constexpr float kTitlePadding = 5;
    static constexpr float kTitleButton = 16;

    static math::Colour TitleColor() { return math::Colour(0.18f, 0.26f, 0.4f, 1); }
    static math::Colour TitleLineColor() { return math::Colour(0.45f, 0.55f, 0.75f, 1); }
    // An empty frame of the margin's thickness: room around a component's contents.
    static gui::BorderPtr MarginBorder(float thickness = kMargin);
    // Components side by side.
    static gui::ComponentPtr Row(const std::vector<gui::ComponentPtr>& parts,
                                 float spacing = kSpacing);
};

// One of the two buttons of a title bar, drawn as its symbol.
class TitleButton : public gui::AbstractButton {
public:
    enum class Symbol { Minimise, Restore, Close };

    explicit TitleButton(Symbol symbol);
    ~TitleButton() override;

    Symbol GetSymbol() const { return m_symbol; }
    void SetSymbol(Symbol symbol) { m_symbol = symbol; }
    void DrawComp() override;

private:
    Symbol m_symbol;
};
using TitleButtonPtr = util::SharedPtr<TitleButton>;

// A push button that shows a symbol where others show a text, in the same look and at
// the height of a text button: a row of both stays even.
class SymbolButton : public gui::Button {
public:
    enum class Symbol { Play, Pause, Undo, Redo };

    explicit SymbolButton(Symbol symbol);
    ~SymbolButton() override;

    Symbol GetSymbol() const { return m_symbol; }
    void SetSymbol(Symbol symbol) { m_symbol = symbol; }
    void DrawComp() override;

private:
    Symbol m_symbol;
};
using SymbolButtonPtr = util::SharedPtr<SymbolButton>;

// The bar across the top of a window: its title at the left, its buttons at the right. It
// is as wide as the window makes it, and never narrower than what it shows.
class TitleBar : public gui::Component {
public:
    explicit TitleBar(const util::String& title);
    ~TitleBar() override;

    void DrawComp() override;
    void DoLayout() override;
    // The narrowest width that shows the title and the buttons.
    float GetNaturalWidth() const;

    const gui::LabelPtr& GetTitleLabel() const { return m_title; }
    const TitleButtonPtr& GetMinimiseButton() const { return m_minimise; }
    const TitleButtonPtr& GetCloseButton() const { return m_close; }
    void SetMinimisable(bool on);
    void SetClosable(bool on);

private:
    gui::LabelPtr m_title;
    TitleButtonPtr m_minimise;
    TitleButtonPtr m_close;
    bool m_inLayout = false;
};
using TitleBarPtr = util::SharedPtr<TitleBar>;

// The foot of a dialog: its buttons side by side, at the right end of a given width.
class ButtonRow : public gui::Component {
public:
    explicit ButtonRow(float width);
    ~ButtonRow() override;

    // Buttons of a row are alike: each at least as wide as kMinButtonWidth.
    void AddButton(const gui::ComponentPtr& button);
    void DoLayout() override;

    static constexpr float kMinButtonWidth = 84;

private:
    float m_width;
    bool m_inLayout = false;
};
using ButtonRowPtr = util::SharedPtr<ButtonRow>;

// A widget with a title bar, over a body that holds its contents. The title bar moves it,
// and its buttons fold it up and close it. A popup is a window for one errand: it can be
// closed, not folded, and Escape closes it.
class Window : public Widget {
public:
    enum class Kind { Normal, Popup };

    Window(const util::String& name, const util::String& title, Kind kind = Kind::Normal);
    ~Window() override;

    Kind GetKind() const { return m_kind; }
    bool IsPopup() const { return m_kind == Kind::Popup; }
    const util::String& GetTitle() const { return m_titleBar->GetTitleLabel()->GetText(); }
    void SetTitle(const util::String& title);

    // The contents go here. It has no layout of its own until one is given; the window
    // takes the size of the title bar and the body together.
    const gui::ComponentPtr& GetBody() const { return m_body; }
    const TitleBarPtr& GetTitleBar() const { return m_titleBar; }
    void SetClosable(bool on) { m_titleBar->SetClosable(on); }
    void SetMinimisable(bool on) { m_titleBar->SetMinimisable(on); }

    void DoLayout() override;
    void ChildChanged() override;
    void OnKey(input::KeyEvent& event) override;
    // The ground hides what lies behind it, whatever the interface's opacity: text over a
    // running scene stays readable.
    void DrawBorder() override;

protected:
    void OnBackgroundClick(const input::ClickEvent& event) override;
    gui::BorderPtr GetLookBorder() const override;
    bool IsGrip(const math::Vec2& local) const override;
    void MinimisedChanged() override;

private:
    Kind m_kind;
    TitleBarPtr m_titleBar;
    gui::ComponentPtr m_body;
    bool m_inLayout = false;
};

// Where the application's windows open by default. The toolbar holds the middle of the left
// edge and the simulation control the top centre; the others keep clear of both, and of
// each other, on a screen of 1024 by 768 or more.
enum class DefaultPlace {
    TopCentre,
    TopRight,
    BottomRight,
    BottomCentre,
    // Beside the toolbar: at the bottom, and below the simulation control.
    BottomLeft,
    UpperLeft,
};
void PlaceByDefault(Widget& widget, DefaultPlace place);

}  // namespace app
