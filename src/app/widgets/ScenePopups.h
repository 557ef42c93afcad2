#pragma once

#include "app/widgets/ScrollList.h"
#include "app/widgets/Window.h"
#include "gui/Button.h"
#include "gui/TextField.h"

namespace app {

// Asks for a name and saves the scene under it in the scenes folder (or at the path typed).
// The name field has the keyboard focus; Enter or the save button saves, an empty name
// does nothing, Escape or the cancel button leaves.
class SaveScenePopup : public Window {
public:
    SaveScenePopup();
    ~SaveScenePopup() override;

    const gui::TextFieldPtr& GetNameField() const { return m_name; }
    const gui::ButtonPtr& GetSaveButton() const { return m_save; }
    // Saves under the name in the field; false, and nothing done, for an empty name.
    bool Submit();

    void OnKey(input::KeyEvent& event) override;

    static constexpr float kWidth = 300;

private:
    gui::TextFieldPtr m_name;
    gui::ButtonPtr m_save;
};

// The scene files of the scenes folder, one row each; a click loads that scene.
class LoadScenePopup : public Window {
public:
    LoadScenePopup();
    ~LoadScenePopup() override;

    const ScrollListPtr& GetList() const { return m_list; }
    // The files shown, in the order of the rows.
    const std::vector<util::String>& GetFiles() const { return m_files; }
    // Loads the file of a row.
    void Choose(size_t index);

    static constexpr float kWidth = 300;
    static constexpr size_t kRows = 12;

private:
    ScrollListPtr m_list;
    std::vector<util::String> m_files;
};

}  // namespace app
