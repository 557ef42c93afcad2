#include "app/widgets/ScenePopups.h"

#include <algorithm>
#include <exception>

#include "app/Actions.h"
#include "app/App.h"
#include "app/FileInfo.h"
#include "app/Language.h"
#include "app/widgets/FileWindow.h"
#include "app/widgets/OptionControls.h"
#include "app/widgets/Tooltip.h"
#include "gui/Label.h"
#include "gui/Layout.h"
#include "gui/LookAndFeel.h"
#include "input/KeyCodes.h"
#include "util/FileSystem.h"
#include "util/StringUtil.h"

namespace app {
namespace {

gui::LayoutPtr Column() {
    return gui::LayoutPtr(new gui::ListLayout(1, WindowStyle::kSpacing));
}

}  // namespace

// SaveScenePopup.

SaveScenePopup::SaveScenePopup()
    : Window("SaveScene", Language::Get().Translate("SaveAsWhat"), Kind::Popup),
      m_name(new gui::TextField("SceneName")),
      m_save(new gui::Button(Language::Get().Translate("Save"))) {
    const Language& language = Language::Get();
    const util::WeakPtr<util::Pointee> self(this);
    GetBody()->SetLayout(Column());

    m_name->SetSize(kWidth, m_name->GetSize().y);
    // A name typed here is no step of the scene's history.
    m_name->SetRecordsUndo(false);
    m_name->SetTooltip(MakeTooltip(language.Translate("SaveSceneName_Tooltip")));
    // The scene's present name, all selected: Enter saves over it, typing replaces it.
    if (FileInfo::IsAlive()) {
        m_name->SetText(SceneLoader::DisplayName(FileInfo::Get().GetFileName()));
        m_name->SelectAll();
    }
    GetBody()->Add(gui::ComponentPtr(m_name));

    const ButtonRowPtr buttons(new ButtonRow(kWidth));
    m_save->GetOnClick().Add(self, [this]() { Submit(); });
    SetTooltipFor(*m_save, "Save");
    const gui::ButtonPtr cancel(MakeOptionButton("Cancel", [this]() { Close(); }));
    buttons->AddButton(gui::ComponentPtr(m_save));
    buttons->AddButton(gui::ComponentPtr(cancel));
    GetBody()->Add(gui::ComponentPtr(buttons));

    m_name->Focus();
}

SaveScenePopup::~SaveScenePopup() = default;

bool SaveScenePopup::Submit() {
    const util::String name = util::TrimBlanks(m_name->GetText());
    if (name.empty() || !App::IsAlive()) {
        return false;
    }
    // Saving closes the popups, this one among them.
    const gui::ComponentPtr keep(this);
    m_name->Blur();
    App::Get().GetAppGUI()->SaveSceneAs(name, false);
    if (IsShown()) {
        Close();
    }
    return true;
}

void SaveScenePopup::OnKey(input::KeyEvent& event) {
    Window::OnKey(event);
    // The field leaves Enter to its owner.
    if (event.down && !event.consumed && m_name->HasFocus() &&
        (event.key == input::key::Return || event.key == input::key::KPEnter)) {
        event.consumed = true;
        Submit();
    }
}

// LoadScenePopup.

LoadScenePopup::LoadScenePopup()
    : Window("LoadScene", Language::Get().Translate("LoadSceneMenu"), Kind::Popup),
      m_list(new ScrollList(kWidth, kRows)) {
    const Language& language = Language::Get();
    const util::WeakPtr<util::Pointee> self(this);
    GetBody()->SetLayout(Column());

    m_files = FileWindow::ListSceneFiles(util::FileSystem::Get().GetWorkDirectory() +
                                         util::FileSystem::GetScenesFolder());
    FileWindow::FillRows(
        *m_list, m_files,
        [](const util::String& file) {
            return ListRowPtr(new ListRow(SceneLoader::DisplayName(file)));
        },
        [this](size_t index) { Choose(index); });
    if (m_files.empty()) {
        const gui::LabelPtr none(new gui::Label(language.Translate("NoScenes")));
        none->SetTextColor(gui::LookAndFeel::Get().GetDimTextColor());
        GetBody()->Add(gui::ComponentPtr(none));
    } else {
        GetBody()->Add(gui::ComponentPtr(m_list));
    }

    const ButtonRowPtr buttons(new ButtonRow(kWidth));
    const gui::ButtonPtr cancel(MakeOptionButton("Cancel", [this]() { Close(); }));
    buttons->AddButton(gui::ComponentPtr(cancel));
    GetBody()->Add(gui::ComponentPtr(buttons));
}

LoadScenePopup::~LoadScenePopup() = default;

void LoadScenePopup::Choose(size_t index) {
    if (index >= m_files.size() || !App::IsAlive()) {
        return;
    }
    // Loading closes the popups, this one among them.
    const gui::ComponentPtr keep(this);
    App::Get().GetAppGUI()->LoadScene(m_files[index], false);
    if (IsShown()) {
        Close();
    }
}

}  // namespace app
