#pragma once

#include <cstdint>
#include <vector>

#include "gui/Component.h"
#include "script/Attributes.h"

namespace gui {

class TextField;
using TextFieldPtr = util::SharedPtr<TextField>;

// The drop-down window through which a user speaks to the language: it keeps the log's
// messages and the typed lines, runs each line through the parser, completes names with
// Tab and walks the history with the arrow keys. In the language it is "Console".
//
// Long lines wrap to the width. Each line's wrapping is worked out when it first comes
// into view and kept, so a frame touches only the lines it shows.
class Console : public Component {
public:
    Console();
    ~Console() override;

    // Opens or closes; in the middle of a slide it turns round from where it stands.
    void Toggle();
    // Appends the text's lines; a typed line is also run, and its result printed.
    void Print(const util::String& text, bool isInput);
    // Empties the lines.
    void Clear();

    bool IsOpen() const { return m_open; }
    const std::vector<util::String>& GetLines() const { return m_lines; }
    const std::vector<util::String>& GetHistory() const { return m_history; }
    int GetScrollPosition() const { return m_scrollPosition; }
    int GetHistoryIndex() const { return m_historyIndex; }
    double GetToggleTime() const { return m_toggleTime; }
    double GetLastKeyTime() const { return m_lastKeyTime; }
    const TextFieldPtr& GetInputLine() const { return m_inputLine; }
    // How far open it is drawn now, 0 to 1.
    float GetFraction() const;
    // Follows the screen's size.
    void OnScreenResized();

    void OnKey(input::KeyEvent& event) override;
    void DrawComp() override;
    void Update(float dt) override;

private:
    // Where each row of a wrapped line begins, for the width it was wrapped to.
    struct Wrap {
        float width = -1;
        float fontSize = 0;
        std::vector<uint32_t> rowStarts;
    };

    void HandleKey(input::KeyEvent& event);
    bool IsOpeningKey(const input::KeyEvent& event) const;
    void Enter();
    void Complete();
    void HistoryUp();
    void HistoryDown();
    // Appends unless the newest entry is the same text.
    void AddToHistory(const util::String& text);
    // Puts a text into the input line with the cursor at its end.
    void SetInput(const util::String& text);
    void PrintLines(const util::String& text, bool isInput);
    void Run(const util::String& text);
    void LayOut();
    const Wrap& WrapLine(size_t index, float width);
    void DrawLines(float bottom, float width);

    script::AttribPtr<bool> m_fade;
    script::AttribPtr<bool> m_scroll;
    script::AttribPtr<float> m_delay;
    script::AttribPtr<float> m_screenSize;
    script::AttribPtr<math::Colour> m_color;

    std::vector<util::String> m_lines;
    // One for each line, filled when the line is first drawn.
    std::vector<Wrap> m_wraps;
    std::vector<util::String> m_history;
    int m_scrollPosition = 0;
    int m_historyIndex = -1;
    bool m_open = false;
    double m_toggleTime = -1e9;
    double m_lastKeyTime = 0;
    TextFieldPtr m_inputLine;
    // One row of text while drawing, kept so that frames do not allocate.
    util::String m_row;
};

}  // namespace gui
