#include "gui/TextFormat.h"

#include <algorithm>

#include "gui/FontFormater.h"

namespace gui {
namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

}  // namespace

TextFormat::TextFormat(const FontFormater& font, const util::String& text, float maxWidth,
                       Align align)
    : m_text(text), m_lineHeight(font.GetLineHeight()) {
    size_t lineBegin = 0;
    size_t lastBreak = util::String::npos;  // blank after which the line may end
    float lineWidth = 0;
    for (size_t i = 0; i <= text.size(); ++i) {
        if (i == text.size() || text[i] == '\n') {
            AddLine(font, lineBegin, i);
            lineBegin = i + 1;
            lastBreak = util::String::npos;
            lineWidth = 0;
            continue;
        }
        const float advance = font.GetCharWidth(static_cast<unsigned char>(text[i]));
        if (maxWidth > 0 && lineWidth + advance > maxWidth && !IsBlank(text[i]) && i > lineBegin) {
            size_t next;
            if (lastBreak != util::String::npos) {
                AddLine(font, lineBegin, lastBreak);
                next = lastBreak + 1;
            } else {
                AddLine(font, lineBegin, i);
                next = i;
            }
            while (next < i && IsBlank(text[next])) {
                ++next;
            }
            lineBegin = next;
            lastBreak = util::String::npos;
            lineWidth = font.GetWidth(text, lineBegin, i);
        }
        if (IsBlank(text[i])) {
            lastBreak = i;
        }
        lineWidth += advance;
    }
    for (Line& line : m_lines) {
        m_width = std::max(m_width, line.width);
    }
    const float box = maxWidth > 0 ? maxWidth : m_width;
    for (Line& line : m_lines) {
        if (align == Align::Center) {
            line.x = (box - line.width) / 2;
        } else if (align == Align::Right) {
            line.x = box - line.width;
        }
    }
}

void TextFormat::AddLine(const FontFormater& font, size_t begin, size_t end) {
    while (end > begin && IsBlank(m_text[end - 1])) {
        --end;
    }
    Line line;
    line.begin = begin;
    line.end = end;
    line.width = font.GetWidth(m_text, begin, end);
    m_lines.push_back(line);
}

float TextFormat::GetHeight() const {
    return m_lineHeight * static_cast<float>(m_lines.size());
}

}  // namespace gui
