#include "app/widgets/ScrollList.h"

#include <algorithm>
#include <cmath>

#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"
#include "input/KeyCodes.h"

namespace app {
namespace {

const char* const kEllipsis = "...";
const math::Colour kTrack(0.05f, 0.05f, 0.07f, 1);
const math::Colour kThumb(0.4f, 0.45f, 0.55f, 1);
const math::Colour kMarkLine(0.85f, 0.92f, 1, 1);

bool IsLeft(input::SDLKey key) {
    return key == input::MouseKey(input::kMouseLeft);
}

}  // namespace

util::String Elide(const gui::FontFormater& font, const util::String& text, float width) {
    if (font.GetWidth(text) <= width) {
        return text;
    }
    const float room = width - font.GetWidth(kEllipsis);
    size_t length = 0;
    float used = 0;
    while (length < text.size()) {
        const float advance = font.GetCharWidth(static_cast<unsigned char>(text[length]));
        if (used + advance > room) {
            break;
        }
        used += advance;
        ++length;
    }
    return text.substr(0, length) + kEllipsis;
}

// ListRow.

ListRow::ListRow(const util::String& text)
    : gui::AbstractButton("ListRow"), m_text(text), m_font(gui::LookAndFeel::Get().GetFont()) {
    SetSize(m_font->GetWidth(text) + 2 * kPaddingX, m_font->GetLineHeight() + 2 * kPaddingY);
}

ListRow::~ListRow() = default;

void ListRow::DrawComp() {
    gui::Component::DrawComp();
    gui::ColorScope color(GetColor());
    const gui::LookAndFeel& look = gui::LookAndFeel::Get();
    const math::Vec2 size = GetOuterSize();
    if (IsPressed()) {
        gui::FillRect(0, 0, size.x, size.y, look.GetPressedColor());
    } else if (IsMouseOver()) {
        gui::FillRect(0, 0, size.x, size.y, look.GetHoverColor());
    }
    const float left = DrawLeading();
    if (m_marked) {
        gui::FrameRect(0, 0, size.x, size.y, 1, kMarkLine);
    }
    gui::ColorScope text(IsEnabled() ? look.GetForegroundColor() : look.GetDimTextColor());
    m_font->Draw(Elide(*m_font, m_text, size.x - left - kPaddingX), left,
                 (size.y - m_font->GetLineHeight()) / 2);
}

// ScrollList.

ScrollList::ScrollList(float width, size_t visibleRows)
    : gui::Component("ScrollList"), m_width(width), m_visible(std::max<size_t>(1, visibleRows)) {
    Arrange();
}

ScrollList::~ScrollList() = default;

float ScrollList::RowHeight() const {
    float height = 0;
    for (const gui::ComponentPtr& row : m_rows) {
        height = std::max(height, row->GetOuterSize().y);
    }
    return height;
}

float ScrollList::RowWidth() const {
    return HasScrollBar() ? m_width - kBarWidth - kBarGap : m_width;
}

void ScrollList::AddRow(const gui::ComponentPtr& row) {
    m_rows.push_back(row);
    Arrange();
}

void ScrollList::ClearRows() {
    m_rows.clear();
    m_first = 0;
    Arrange();
}

size_t ScrollList::LastFirst() const {
    return m_rows.size() > m_visible ? m_rows.size() - m_visible : 0;
}

void ScrollList::ScrollTo(size_t first) {
    first = std::min(first, LastFirst());
    if (first == m_first) {
        return;
    }
    m_first = first;
    Arrange();
}

void ScrollList::ScrollBy(int rows) {
    const long first = static_cast<long>(m_first) + rows;
    ScrollTo(static_cast<size_t>(std::max(0L, first)));
}

void ScrollList::ShowRow(size_t index) {
    if (index < m_first) {
        ScrollTo(index);
    } else if (index >= m_first + m_visible) {
        ScrollTo(index + 1 - m_visible);
    }
}

void ScrollList::Arrange() {
    RemoveAllChildren();
    const float height = RowHeight();
    const float width = RowWidth();
    const size_t end = std::min(m_rows.size(), m_first + m_visible);
    for (size_t i = m_first; i < end; ++i) {
        const gui::ComponentPtr& row = m_rows[i];
        const math::Vec2 border = row->GetOuterSize() - row->GetSize();
        row->SetSize(width - border.x, height - border.y);
        row->SetPosition(0, static_cast<float>(i - m_first) * (height + kRowGap));
        Add(row);
    }
    const size_t shown = end - std::min(end, m_first);
    const float total = shown > 0 ? static_cast<float>(shown) * (height + kRowGap) - kRowGap : 0.0f;
    SetSize(m_width, total);
}

float ScrollList::TrackLeft() const {
    return m_width - kBarWidth;
}

float ScrollList::TrackHeight() const {
    return GetSize().y;
}

void ScrollList::ThumbSpan(float& top, float& height) const {
    const float track = TrackHeight();
    const float count = static_cast<float>(std::max<size_t>(1, m_rows.size()));
    // Never so small that it can't be caught.
    height = std::max(track * static_cast<float>(m_visible) / count, std::min(track, 16.0f));
    const size_t last = LastFirst();
    top =
        last > 0 ? (track - height) * static_cast<float>(m_first) / static_cast<float>(last) : 0.0f;
}

void ScrollList::OnKey(input::KeyEvent& event) {
    gui::Component::OnKey(event);
    if (event.consumed || !event.down || !IsMouseOver()) {
        return;
    }
    if (event.key == input::MouseKey(input::kMouseWheelUp)) {
        ScrollBy(-kWheelRows);
        event.consumed = true;
    } else if (event.key == input::MouseKey(input::kMouseWheelDown)) {
        ScrollBy(kWheelRows);
        event.consumed = true;
    }
}

void ScrollList::OnClick(input::ClickEvent& event) {
    gui::Component::OnClick(event);
    if (event.consumed || !IsLeft(event.key) || !HasScrollBar()) {
        return;
    }
    const math::Vec2 inner = ToLocal(event.position) - GetBorderOffset();
    if (inner.x < TrackLeft() || inner.x >= m_width || inner.y < 0 || inner.y >= TrackHeight()) {
        return;
    }
    float top = 0;
    float height = 0;
    ThumbSpan(top, height);
    const int page = static_cast<int>(m_visible) - 1;
    if (inner.y < top) {
        ScrollBy(-std::max(1, page));
    } else if (inner.y >= top + height) {
        ScrollBy(std::max(1, page));
    }
    event.consumed = true;
}

void ScrollList::OnDragBegin(input::DragEvent& event) {
    gui::Component::OnDragBegin(event);
    if (event.consumed || !IsLeft(event.key) || !HasScrollBar()) {
        return;
    }
    const math::Vec2 inner = ToLocal(event.start) - GetBorderOffset();
    float top = 0;
    float height = 0;
    ThumbSpan(top, height);
    if (inner.x >= TrackLeft() && inner.x < m_width && inner.y >= top && inner.y < top + height) {
        m_draggingThumb = true;
        m_grab = inner.y - top;
        event.consumed = true;
    }
}

void ScrollList::OnDrag(input::DragEvent& event) {
    gui::Component::OnDrag(event);
    if (!m_draggingThumb) {
        return;
    }
    event.consumed = true;
    float top = 0;
    float height = 0;
    ThumbSpan(top, height);
    const float travel = TrackHeight() - height;
    if (travel <= 0) {
        return;
    }
    const float wanted = ToLocal(event.position).y - GetBorderOffset().y - m_grab;
    const float fraction = std::clamp(wanted / travel, 0.0f, 1.0f);
    ScrollTo(static_cast<size_t>(std::lround(fraction * static_cast<float>(LastFirst()))));
}

void ScrollList::OnDragEnd(input::DragEvent& event) {
    gui::Component::OnDragEnd(event);
    if (m_draggingThumb) {
        m_draggingThumb = false;
        event.consumed = true;
    }
}

void ScrollList::DrawComp() {
    gui::Component::DrawComp();
    if (!HasScrollBar()) {
        return;
    }
    gui::ColorScope color(GetColor());
    const math::Vec2 inner = GetBorderOffset();
    const float left = inner.x + TrackLeft();
    gui::FillRect(left, inner.y, kBarWidth, TrackHeight(), kTrack);
    float top = 0;
    float height = 0;
    ThumbSpan(top, height);
    const math::Colour thumb = m_draggingThumb ? gui::LookAndFeel::Get().GetHoverColor() : kThumb;
    gui::FillRect(left + 1, inner.y + top + 1, kBarWidth - 2, height - 2, thumb);
}

}  // namespace app
