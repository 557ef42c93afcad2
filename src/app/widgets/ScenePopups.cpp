#include "app/widgets/ScenePopups.h"

#include <algorithm>
#include <exception>

#include "app/App.h"
#include "app/FileInfo.h"
#include "app/Language.h"
#include "app/widgets/Tooltip.h"
#include "gui/Label.h"
#include "gui/Layout.h"
#include "gui/LookAndFeel.h"
#include "input/KeyCodes.h"
#include "util/FileSystem.h"
#include "util/StringUtil.h"

namespace app {
namespace {

const char* const kExtension = ".vra";

// What the user knows a scene file by: its name without folder and extension.
util::String SceneName(const util::String& path) {
    util::String name = path.substr(path.find_last_of("/\\") + 1);
    if (util::EndsWithIgnoreCase(name, kExtension)) {
        name.resize(name.size() - 4);
    }
    return name;
}

util::String Trimmed(const util::String& text) {
    const size_t begin = text.find_first_not_of(' ');
    if (begin == util::String::npos) {
        return "";
    }
    return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

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
        m_name->SetText(SceneName(FileInfo::Get().GetFileName()));
        m_name->SelectAll();
    }
    GetBody()->Add(gui::ComponentPtr(m_name));

    const ButtonRowPtr buttons(new ButtonRow(kWidth));
    m_save->GetOnClick().Add(self, [this]() { Submit(); });
    const gui::ButtonPtr cancel(new gui::Button(language.Translate("Cancel")));
    cancel->GetOnClick().Add(self, [this]() { Close(); });
    buttons->AddButton(gui::ComponentPtr(m_save));
    buttons->AddButton(gui::ComponentPtr(cancel));
    GetBody()->Add(gui::ComponentPtr(buttons));

    m_name->Focus();
}

SaveScenePopup::~SaveScenePopup() = default;

bool SaveScenePopup::Submit() {
    const util::String name = Trimmed(m_name->GetText());
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

    util::FileSystem& files = util::FileSystem::Get();
    const util::String folder = files.GetWorkDirectory() + util::FileSystem::GetScenesFolder();
    try {
        m_files = files.ListFiles(folder, "*.vra");
        // As a person reads a list: "bridge" beside "Bridge2", not after every capital.
        std::stable_sort(m_files.begin(), m_files.end(),
                         [](const util::String& a, const util::String& b) {
                             return util::ToLower(a) < util::ToLower(b);
                         });
    } catch (const std::exception&) {
        // No folder means no scenes: the popup says so.
        m_files.clear();
    }
    const util::String current =
        FileInfo::IsAlive() ? SceneName(FileInfo::Get().GetFileName()) : util::String();
    size_t marked = m_files.size();
    for (size_t i = 0; i < m_files.size(); ++i) {
        const ListRowPtr row(new ListRow(SceneName(m_files[i])));
        row->GetOnClick().Add(self, [this, i]() { Choose(i); });
        if (!current.empty() && SceneName(m_files[i]) == current) {
            row->SetMarked(true);
            marked = i;
        }
        m_list->AddRow(gui::ComponentPtr(row));
    }
    if (marked < m_files.size()) {
        m_list->ShowRow(marked);
    }
    if (m_files.empty()) {
        const gui::LabelPtr none(new gui::Label(language.Translate("NoScenes")));
        none->SetTextColor(gui::LookAndFeel::Get().GetDimTextColor());
        GetBody()->Add(gui::ComponentPtr(none));
    } else {
        GetBody()->Add(gui::ComponentPtr(m_list));
    }

    const ButtonRowPtr buttons(new ButtonRow(kWidth));
    const gui::ButtonPtr cancel(new gui::Button(language.Translate("Cancel")));
    cancel->GetOnClick().Add(self, [this]() { Close(); });
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
