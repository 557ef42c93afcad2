#include "app/widgets/Tooltip.h"

#include <algorithm>

#include "gui/LookAndFeel.h"
#include "gui/Text.h"
#include "gui/TextFormat.h"

namespace app {
namespace {

// Wider notes are hard to read at a glance.
constexpr float kMaxWidth = 340;

}  // namespace

gui::ComponentPtr MakeTooltip(const util::String& text) {
    const gui::LookAndFeel& look = gui::LookAndFeel::Get();
    const gui::FontFormaterPtr font = look.GetSmallFont();
    const size_t lines = gui::TextFormat(*font, text, kMaxWidth).GetLines().size();
    // The narrowest width that needs no more lines: the lines come out even, with no lone
    // word left on the last one.
    float narrow = kMaxWidth / 2;
    float wide = kMaxWidth;
    for (int i = 0; i < 12 && lines > 1; ++i) {
        const float middle = (narrow + wide) / 2;
        if (gui::TextFormat(*font, text, middle).GetLines().size() > lines) {
            narrow = middle;
        } else {
            wide = middle;
        }
    }
    const gui::TextFormat format(*font, text, wide);
    // A little slack, so that rounding never wraps the widest line once more.
    const float width = std::min(kMaxWidth, format.GetWidth() + 1);
    const gui::TextPtr note(new gui::Text(text, width, gui::Align::Left, font));
    note->SetBorder(look.GetTooltipBorder());
    return gui::ComponentPtr(note);
}

}  // namespace app
