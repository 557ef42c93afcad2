#include "app/widgets/HelpWindow.h"

#include <algorithm>
#include <cmath>

#include "app/Language.h"
#include "gui/FontFormater.h"
#include "gui/Label.h"
#include "gui/Layout.h"
#include "gui/LookAndFeel.h"
#include "gui/TextFormat.h"

namespace app {
namespace {

// The smallest text that still reads well.
constexpr float kMinTextSize = 13;

// Help files line up their columns with blanks: they read in the fixed-width font, made
// small enough that the longest line fits where it can.
gui::FontFormaterPtr HelpFont(const util::String& text, float width) {
    const gui::FontFormaterPtr fixed = gui::LookAndFeel::Get().GetFixedFont();
    float widest = 0;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\n', start), text.size());
        widest = std::max(widest, fixed->GetWidth(text, start, end));
        start = end + 1;
    }
    if (widest <= width) {
        return fixed;
    }
    const float size = std::max(kMinTextSize, std::floor(fixed->GetSize() * width / widest));
    return gui::FontFormaterPtr(new gui::FontFormater(fixed->GetFont(), size));
}

}  // namespace

HelpWindow::HelpWindow() : Window("Help", Language::Get().Translate("Help")) {
    util::String text = Language::Get().GetHelpText();
    // Files written on any system: no carriage returns, tabs as blanks.
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    std::replace(text.begin(), text.end(), '\t', ' ');
    // Room left for the bar, which a help text of any length needs.
    const float width = kWidth - ScrollList::kBarWidth - ScrollList::kBarGap - 4;
    const gui::FontFormaterPtr font = HelpFont(text, width);
    const gui::TextFormat format(*font, text, width);
    const size_t rows =
        static_cast<size_t>(kListHeight / (font->GetLineHeight() + ScrollList::kRowGap));
    m_list = ScrollListPtr(new ScrollList(kWidth, rows));
    for (const gui::TextFormat::Line& line : format.GetLines()) {
        m_list->AddRow(gui::ComponentPtr(
            new gui::Label(text.substr(line.begin, line.end - line.begin), font)));
    }
    GetBody()->SetLayout(gui::LayoutPtr(new gui::ListLayout(1)));
    GetBody()->Add(gui::ComponentPtr(m_list));
    PlaceByDefault(*this, DefaultPlace::UpperLeft);
}

HelpWindow::~HelpWindow() = default;

}  // namespace app
