#include "gui/Console.h"

#include <algorithm>
#include <cmath>

#include "gui/GUI.h"
#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"
#include "gui/TextField.h"
#include "input/KeyCodes.h"
#include "logging/Log.h"
#include "script/Parser.h"
#include "util/StringUtil.h"

namespace gui {
namespace {

// Key codes that open the console besides F11 and the backquote: where keyboards put the
// section sign or the key left of 1.
constexpr input::SDLKey kSectionKey = 167;
constexpr input::SDLKey kOtherOpeningKey = 189;
constexpr unsigned char kSectionSign = 167;
// Room between the text and the console's edges.
constexpr float kTextMargin = 4;
// The pattern of the row that says newer lines lie below.
constexpr const char* kScrollMark = "^   ";

}  // namespace

Console::Console() : Component("Console") {
    AddAttrib(m_fade, "fade", false);
    AddAttrib(m_scroll, "scroll", true);
    AddAttrib(m_delay, "delay", 0.3f);
    AddAttrib(m_screenSize, "screenSize", 0.35f);
    AddAttrib(m_color, "color", math::Colour(0.1f, 0.1f, 0.1f, 0.8f));
    AddCommand("clear", [this]() { Clear(); });
    SetFixedPosition(true);

    m_inputLine = TextFieldPtr(new TextField("inputLine"));
    m_inputLine->SetFont(LookAndFeel::Get().GetFixedFont());
    // The console keeps its own history: typing here is no step of the scene's.
    m_inputLine->SetRecordsUndo(false);
    Add(ComponentPtr(m_inputLine));

    // Errors of typed lines become lines of their own here, instead of passing the log's
    // filter for repeated messages. The log file still keeps them, below what the console
    // shows of the log, so that a broken configuration can be read about afterwards.
    script::Parser::Get().SetErrorHandler(
        [console = util::WeakPtr<Console>(this)](const util::String& message) {
            if (util::LockPtr<Console> locked = console.Lock()) {
                locked->Print(message, false);
                Log(logging::Debug, message);
            } else {
                Log(logging::Warning, message);
            }
        });
}

Console::~Console() {
    if (script::Parser::IsAlive()) {
        script::Parser::Get().SetErrorHandler(
            [](const util::String& message) { Log(logging::Warning, message); });
    }
}

void Console::Toggle() {
    m_open = !m_open;
    const double now = GUI::GetTime();
    const double delay = m_delay->Get();
    const double since = now - m_toggleTime;
    // Mid-slide the animation turns round from where it stands.
    m_toggleTime = since >= delay ? now : now - (delay - since);
    if (!m_inputLine->GetText().empty()) {
        AddToHistory(m_inputLine->GetText());
    }
    m_inputLine->SetText(util::String());
    m_scrollPosition = 0;
    m_historyIndex = -1;
    if (m_open) {
        m_inputLine->Focus();
    } else {
        m_inputLine->Blur();
    }
}

void Console::Print(const util::String& text, bool isInput) {
    PrintLines(text, isInput);
    m_scrollPosition = 0;
    m_historyIndex = -1;
    if (!isInput) {
        return;
    }
    AddToHistory(text);
    Run(text);
}

void Console::PrintLines(const util::String& text, bool isInput) {
    size_t begin = 0;
    while (true) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        util::String line = isInput ? "> " : "";
        // Typed lines are the fonts' Latin-1 already; the log's may carry UTF-8.
        const util::String piece = text.substr(begin, end - begin);
        line += isInput ? piece : util::Utf8ToLatin1(piece);
        m_lines.push_back(std::move(line));
        m_wraps.emplace_back();
        if (end >= text.size()) {
            break;
        }
        begin = end + 1;
    }
}

void Console::Run(const util::String& text) {
    util::String result;
    try {
        result = script::Parser::Get().ExecuteToString(text);
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        PrintLines(e.what(), false);
        return;
    } catch (...) {
        logging::LogCaughtUnknownException(VORRA_LOCATION);
        return;
    }
    if (!result.empty()) {
        Print(result, false);
    }
}

void Console::Clear() {
    m_lines.clear();
    m_wraps.clear();
    m_scrollPosition = 0;
}

void Console::AddToHistory(const util::String& text) {
    if (m_history.empty() || m_history.back() != text) {
        m_history.push_back(text);
    }
}

void Console::SetInput(const util::String& text) {
    m_inputLine->SetText(text);
    m_inputLine->SetCursor(text.size());
}

float Console::GetFraction() const {
    const float delay = m_delay->Get();
    if ((!m_scroll->Get() && !m_fade->Get()) || delay <= 0) {
        return m_open ? 1.0f : 0.0f;
    }
    const float part = static_cast<float>((GUI::GetTime() - m_toggleTime) / delay);
    return std::clamp(m_open ? part : 1 - part, 0.0f, 1.0f);
}

void Console::OnScreenResized() {
    LayOut();
}

void Console::LayOut() {
    const math::Vec2 screen = GUI::Get().GetScreenSize();
    const float height = std::max(0.0f, std::round(m_screenSize->Get() * screen.y));
    SetSize(screen.x, height);
    const Border& border = m_inputLine->GetBorder();
    const float fieldHeight = m_inputLine->GetFont()->GetLineHeight() + 2 * TextBox::kMargin;
    m_inputLine->SetSize(std::max(0.0f, screen.x - border.GetLeft() - border.GetRight()),
                         fieldHeight);
    m_inputLine->SetPosition(0, height - m_inputLine->GetOuterSize().y);
    // Closed, it lies wholly above the screen, where the mouse cannot find it.
    const float f = GetFraction();
    const float y = f <= 0 ? -(height + 1) : (m_scroll->Get() ? -(1 - f) * height : 0);
    SetPosition(0, y);
}

void Console::Update(float dt) {
    Component::Update(dt);
    LayOut();
}

bool Console::IsOpeningKey(const input::KeyEvent& event) const {
    return event.key == input::key::F1 + 10 || event.key == input::key::Backquote ||
           event.key == kSectionKey || event.key == kOtherOpeningKey ||
           static_cast<unsigned char>(event.character) == kSectionSign;
}

void Console::OnKey(input::KeyEvent& event) {
    // Nothing typed may end the program.
    try {
        HandleKey(event);
    } catch (const std::exception& e) {
        logging::LogCaughtException(e, VORRA_LOCATION);
        Print(e.what(), false);
    } catch (...) {
        logging::LogCaughtUnknownException(VORRA_LOCATION);
    }
}

void Console::HandleKey(input::KeyEvent& event) {
    namespace key = input::key;
    if (!event.down || event.consumed || event.key >= input::SDLK_LAST) {
        Component::OnKey(event);
        // A click on the open console is not one on what lies below it.
        if (event.down && !event.consumed && event.key == input::MouseKey(input::kMouseLeft) &&
            IsMouseOver()) {
            event.consumed = true;
        }
        return;
    }
    m_lastKeyTime = GUI::GetTime();
    if (IsOpeningKey(event)) {
        Toggle();
        event.consumed = true;
        return;
    }
    if (event.key == key::Escape) {
        if (m_open) {
            Toggle();
            event.consumed = true;
        }
        return;
    }
    if (!m_open) {
        return;
    }
    event.consumed = true;
    const int lineCount = static_cast<int>(m_lines.size());
    switch (event.key) {
        case key::Return:
        case key::KPEnter:
            Enter();
            return;
        case key::Tab:
            if (!event.shift) {
                Complete();
                return;
            }
            break;
        case key::PageUp:
            if (lineCount > 0) {
                m_scrollPosition = std::min(m_scrollPosition + 1, lineCount - 1);
            }
            return;
        case key::PageDown:
            m_scrollPosition = std::max(m_scrollPosition - 1, 0);
            return;
        case key::Home:
            if (event.ctrl) {
                m_scrollPosition = std::max(lineCount - 1, 0);
                return;
            }
            break;
        case key::End:
            if (event.ctrl) {
                m_scrollPosition = 0;
                return;
            }
            break;
        case key::Up:
            HistoryUp();
            return;
        case key::Down:
            HistoryDown();
            return;
        default:
            break;
    }
    // Everything else is the input line's, which may have lost the focus to a click.
    event.consumed = false;
    m_inputLine->Focus();
    Component::OnKey(event);
}

void Console::Enter() {
    const util::String text = m_inputLine->GetText();
    if (text.empty()) {
        return;
    }
    m_inputLine->SetText(util::String());
    Print(text, true);
    m_scrollPosition = 0;
    m_historyIndex = -1;
}

void Console::Complete() {
    const util::String& text = m_inputLine->GetText();
    const size_t cursor = std::min(m_inputLine->GetCursor(), text.size());
    util::String before = text.substr(0, cursor);
    const util::String after = text.substr(cursor);
    const std::vector<util::String> candidates = script::Parser::Get().Complete(before);
    m_inputLine->SetText(before + after);
    m_inputLine->SetCursor(before.size());
    if (candidates.empty()) {
        return;
    }
    Print(util::String(), false);
    for (const util::String& candidate : candidates) {
        Print(candidate, false);
    }
    m_scrollPosition = 0;
}

void Console::HistoryUp() {
    if (m_historyIndex == -1) {
        if (!m_history.empty()) {
            // A half-typed line is kept as the newest entry rather than lost.
            if (!m_inputLine->GetText().empty()) {
                AddToHistory(m_inputLine->GetText());
            }
            m_historyIndex = static_cast<int>(m_history.size()) - 1;
        }
    } else if (m_historyIndex > 0) {
        --m_historyIndex;
    }
    if (m_historyIndex >= 0) {
        SetInput(m_history[static_cast<size_t>(m_historyIndex)]);
    }
    m_scrollPosition = 0;
}

void Console::HistoryDown() {
    const int newest = static_cast<int>(m_history.size()) - 1;
    if (m_historyIndex == -1) {
        if (!m_inputLine->GetText().empty()) {
            AddToHistory(m_inputLine->GetText());
            m_inputLine->SetText(util::String());
        }
    } else if (m_historyIndex >= newest) {
        m_historyIndex = -1;
        m_inputLine->SetText(util::String());
    } else {
        ++m_historyIndex;
        SetInput(m_history[static_cast<size_t>(m_historyIndex)]);
    }
    m_scrollPosition = 0;
}

const Console::Wrap& Console::WrapLine(size_t index, float width) {
    Wrap& wrap = m_wraps[index];
    const FontFormater& font = *LookAndFeel::Get().GetFixedFont();
    if (wrap.width == width && wrap.fontSize == font.GetSize()) {
        return wrap;
    }
    wrap.width = width;
    wrap.fontSize = font.GetSize();
    wrap.rowStarts.assign(1, 0);
    const util::String& line = m_lines[index];
    size_t rowStart = 0;
    size_t lastBlank = util::String::npos;
    float x = 0;
    for (size_t i = 0; i < line.size(); ++i) {
        const float advance = font.GetCharWidth(static_cast<unsigned char>(line[i]));
        if (x + advance > width && i > rowStart && width > 0) {
            // At the last blank of the row if there is one, else inside the word.
            const size_t next =
                lastBlank != util::String::npos && lastBlank >= rowStart ? lastBlank + 1 : i;
            wrap.rowStarts.push_back(static_cast<uint32_t>(next));
            rowStart = next;
            lastBlank = util::String::npos;
            x = font.GetWidth(line, next, i);
        }
        if (line[i] == ' ') {
            lastBlank = i;
        }
        x += advance;
    }
    return wrap;
}

void Console::DrawComp() {
    const float f = GetFraction();
    if (!m_open && f <= 0) {
        return;
    }
    ColorScope fade(math::Colour(1, 1, 1, m_fade->Get() ? f : 1.0f));
    ColorScope color(GetColor());
    const math::Vec2 size = GetSize();
    FillRect(0, 0, size.x, size.y, m_color->Get());
    DrawLines(m_inputLine->GetPosition().y - 1, size.x - 2 * kTextMargin);
    DrawChildren();
}

void Console::DrawLines(float bottom, float width) {
    const FontFormater& font = *LookAndFeel::Get().GetFixedFont();
    const float rowHeight = font.GetLineHeight();
    float y = bottom;
    if (m_scrollPosition > 0) {
        // Newer lines lie below: a row of marks says so.
        y -= rowHeight;
        m_row.clear();
        const float markWidth = font.GetWidth(kScrollMark);
        for (float x = 0; markWidth > 0 && x + markWidth <= width; x += markWidth) {
            m_row += kScrollMark;
        }
        ColorScope dim(LookAndFeel::Get().GetDimTextColor());
        font.Draw(m_row, kTextMargin, y);
    }
    for (long index = static_cast<long>(m_lines.size()) - 1 - m_scrollPosition; index >= 0 && y > 0;
         --index) {
        const util::String& line = m_lines[static_cast<size_t>(index)];
        const std::vector<uint32_t>& rows = WrapLine(static_cast<size_t>(index), width).rowStarts;
        size_t end = line.size();
        for (size_t row = rows.size(); row-- > 0 && y > 0;) {
            y -= rowHeight;
            font.DrawRange(line, rows[row], end, kTextMargin, y);
            end = rows[row];
        }
    }
}

}  // namespace gui
