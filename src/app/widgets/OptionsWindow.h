#pragma once

#include <vector>

#include "app/widgets/Window.h"
#include "gui/RadioGroup.h"

namespace app {

// The program's settings: the language, the screen, the interface's behaviour, the
// autosave and the screen's resolution. Each control writes its attribute as the console
// would; none of them is a step of the scene's history.
class OptionsWindow : public Window {
public:
    OptionsWindow();
    ~OptionsWindow() override;

    // The languages whose files lie in the language folder, by name, sorted.
    static std::vector<util::String> FindLanguages();
    // Makes it the application's language and remakes every window in it.
    void ChooseLanguage(const util::String& language);
    // Goes to the whole desktop, without a frame, or back to a window of at most 1024 by
    // 768.
    static void SetFullscreen(bool on);

    const gui::RadioGroupPtr& GetLanguages() const { return m_languages; }
    // A language chosen by its button takes effect here: remaking the windows from inside
    // the button's own click would pull the button from under it.
    void Update(float dt) override;

    static constexpr float kWidth = 240;

private:
    gui::RadioGroupPtr m_languages;
    util::String m_chosenLanguage;
    std::vector<util::String> m_languageNames;
};

}  // namespace app
