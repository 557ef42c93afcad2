#pragma once

#include <vector>

#include "util/String.h"

namespace gui {

class FontFormater;

enum class Align { Left, Center, Right };

// Text broken into lines for a width: at line feeds, at blanks where a line would grow too
// wide, and inside a word only where the word alone is wider than a line. Positions are
// in GUI units relative to the block's top-left corner.
class TextFormat {
public:
    struct Line {
        size_t begin = 0;  // first character
        size_t end = 0;    // one past the last, blanks at a break excluded
        float x = 0;       // where the line starts, after alignment
        float width = 0;
    };

    // A maximum width of 0 or less never wraps.
    TextFormat(const FontFormater& font, const util::String& text, float maxWidth = 0,
               Align align = Align::Left);

    const std::vector<Line>& GetLines() const { return m_lines; }
    const util::String& GetText() const { return m_text; }
    // The widest line, and all lines' height.
    float GetWidth() const { return m_width; }
    float GetHeight() const;
    float GetLineHeight() const { return m_lineHeight; }

private:
    void AddLine(const FontFormater& font, size_t begin, size_t end);

    util::String m_text;
    std::vector<Line> m_lines;
    float m_width = 0;
    float m_lineHeight = 0;
};

}  // namespace gui
