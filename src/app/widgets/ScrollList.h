#pragma once

#include <vector>

#include "gui/AbstractButton.h"
#include "gui/FontFormater.h"

namespace app {

class ListRow;
using ListRowPtr = util::SharedPtr<ListRow>;
class ScrollList;
using ScrollListPtr = util::SharedPtr<ScrollList>;

// The longest start of the text that fits the width with an ellipsis behind it.
util::String Elide(const gui::FontFormater& font, const util::String& text, float width);

// One line of a list that is a button: its text at the left, lit under the mouse. A text
// too long for the line ends in an ellipsis.
class ListRow : public gui::AbstractButton {
public:
    explicit ListRow(const util::String& text);
    ~ListRow() override;

    const util::String& GetText() const { return m_text; }
    // A marked row stands out: the list's present choice.
    bool IsMarked() const { return m_marked; }
    void SetMarked(bool marked) { m_marked = marked; }
    void DrawComp() override;

    static constexpr float kPaddingX = 6;
    static constexpr float kPaddingY = 4;

protected:
    // What comes before the text, such as a picture; returns where the text begins.
    virtual float DrawLeading() { return kPaddingX; }

private:
    util::String m_text;
    gui::FontFormaterPtr m_font;
    bool m_marked = false;
};

// Rows of equal height, of which a fixed number shows at a time. The wheel over the list
// scrolls it, and a bar at its right side shows where the view lies: its thumb can be
// dragged, and a click beside the thumb turns a page. Only the rows in view are children,
// so only they are drawn and hear events.
class ScrollList : public gui::Component {
public:
    ScrollList(float width, size_t visibleRows);
    ~ScrollList() override;

    // The row takes the list's width, less the bar's.
    void AddRow(const gui::ComponentPtr& row);
    void ClearRows();
    const std::vector<gui::ComponentPtr>& GetRows() const { return m_rows; }

    size_t GetFirstVisible() const { return m_first; }
    size_t GetVisibleRows() const { return m_visible; }
    bool HasScrollBar() const { return m_rows.size() > m_visible; }
    // Scrolling never goes beyond the last page.
    void ScrollTo(size_t first);
    void ScrollBy(int rows);
    // Scrolls the least that brings the row into view.
    void ShowRow(size_t index);

    void OnKey(input::KeyEvent& event) override;
    void OnClick(input::ClickEvent& event) override;
    void OnDragBegin(input::DragEvent& event) override;
    void OnDrag(input::DragEvent& event) override;
    void OnDragEnd(input::DragEvent& event) override;
    void DrawComp() override;

    // Rows a wheel notch scrolls.
    static constexpr int kWheelRows = 3;
    static constexpr float kBarWidth = 10;
    static constexpr float kBarGap = 4;
    static constexpr float kRowGap = 2;

private:
    size_t LastFirst() const;
    float RowHeight() const;
    float RowWidth() const;
    // The bar in the list's inner space: its track, and the thumb on it.
    float TrackLeft() const;
    float TrackHeight() const;
    void ThumbSpan(float& top, float& height) const;
    // Puts the rows in view in place as children, and sizes the list.
    void Arrange();

    float m_width;
    size_t m_visible;
    size_t m_first = 0;
    std::vector<gui::ComponentPtr> m_rows;
    bool m_draggingThumb = false;
    float m_grab = 0;
};

}  // namespace app
