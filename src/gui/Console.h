#pragma once

#include <vector>

#include "gui/Component.h"
#include "script/Attributes.h"

namespace gui {

class TextField;
using TextFieldPtr = util::SharedPtr<TextField>;

// The drop-down window through which a user speaks to the language: it keeps the log's
// messages and the typed lines, runs each line through the parser, completes names with
// Tab and walks the history with the arrow keys. In the language it is "Console".
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
    const TextFieldPtr& GetInputLine() const { return m_inputLine; }
    // How far open it is drawn now, 0 to 1.
    float GetFraction() const;
    // Follows the screen's size.
    void OnScreenResized();

    void OnKey(input::KeyEvent& event) override;
    void DrawComp() override;
    void Update(float dt) override;

private:
    script::AttribPtr<bool> m_fade;
    script::AttribPtr<bool> m_scroll;
    script::AttribPtr<float> m_delay;
    script::AttribPtr<float> m_screenSize;
    script::AttribPtr<math::Colour> m_color;

    std::vector<util::String> m_lines;
    std::vector<util::String> m_history;
    int m_scrollPosition = 0;
    int m_historyIndex = -1;
    bool m_open = false;
    double m_toggleTime = -1e9;
    double m_lastKeyTime = 0;
    TextFieldPtr m_inputLine;
};

}  // namespace gui
