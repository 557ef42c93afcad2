#include "app/widgets/FileWindow.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <exception>

#include "app/Actions.h"
#include "app/App.h"
#include "app/FileInfo.h"
#include "app/Language.h"
#include "app/PopupActions.h"
#include "app/Scene.h"
#include "app/Snapshot.h"
#include "app/Thumbnail.h"
#include "app/Undoer.h"
#include "app/widgets/OptionControls.h"
#include "app/widgets/WidgetFactory.h"
#include "gui/Layout.h"
#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"
#include "gui/RadioButton.h"
#include "input/KeyCodes.h"
#include "rendering/ImageManager.h"
#include "util/Clock.h"
#include "util/FileSystem.h"
#include "util/StringUtil.h"

namespace app {
namespace {

// Updates stop while the window is closed: a gap this long means it has opened again.
constexpr double kReopenGap = 0.5;

const math::Colour kStandInFill(0.08f, 0.1f, 0.14f, 1);
const math::Colour kStandInInk(0.32f, 0.38f, 0.48f, 1);

// The picture saved beside the scene, or null.
rendering::TexturePtr LoadPicture(const util::String& scenePath) {
    const util::String path = Thumbnail::PathFor(scenePath);
    if (!util::FileSystem::Get().Exists(path)) {
        return rendering::TexturePtr();
    }
    const rendering::ImgPtr image = rendering::TryLoad(path);
    if (!image) {
        return rendering::TexturePtr();
    }
    const rendering::Texture::ImageType type{GL_RGBA, false, 1, 1, 1, 1, 0};
    return rendering::TexturePtr(new rendering::Texture(image, type));
}

}  // namespace

// SceneRow.

SceneRow::SceneRow(const util::String& name, const util::String& scenePath)
    : ListRow(name), m_picture(LoadPicture(scenePath)) {
    SetSize(FileWindow::kWidth, kPictureHeight + 2 * kPadding);
}

SceneRow::~SceneRow() = default;

void SceneRow::DrawStandIn(float x, float y, float width, float height) const {
    gui::FillRect(x, y, width, height, kStandInFill);
    // A ground, a ball and a box: a scene, whichever.
    gui::FillRect(x + 3, y + height * 0.78f, width - 6, 1.5f, kStandInInk);
    gui::FrameRect(x + width * 0.58f, y + height * 0.42f, height * 0.36f, height * 0.36f, 1.5f,
                   kStandInInk);
    gui::ColorScope ink(kStandInInk);
    const float cx = x + width * 0.32f;
    const float cy = y + height * 0.57f;
    const float r = height * 0.2f;
    constexpr int kSegments = 16;
    glLineWidth(1.5f);
    glBegin(GL_LINE_LOOP);
    for (int i = 0; i < kSegments; ++i) {
        const float angle = 6.2831853f * static_cast<float>(i) / kSegments;
        glVertex2f(cx + r * std::cos(angle), cy + r * std::sin(angle));
    }
    glEnd();
    glLineWidth(1);
    gui::FrameRect(x, y, width, height, 1, kStandInInk);
}

float SceneRow::DrawLeading() {
    if (m_picture && m_picture->GetName() != 0) {
        m_picture->Bind();
        gui::DrawTexturedRect(kPadding, kPadding, kPictureWidth, kPictureHeight);
        rendering::Texture::Unbind();
    } else {
        DrawStandIn(kPadding, kPadding, kPictureWidth, kPictureHeight);
    }
    return kPictureWidth + 3 * kPadding;
}

// FileWindow.

FileWindow::FileWindow()
    : Window("File", Language::Get().Translate("File")),
      m_listings(new gui::RadioGroup(0, 12)),
      m_list(new ScrollList(kWidth, kRows)),
      m_none(new gui::Label()),
      m_listHolder(new gui::Component("ListHolder")),
      m_name(new gui::TextField("SceneFileName")) {
    const util::WeakPtr<util::Pointee> self(this);
    const gui::ComponentPtr& body = GetBody();
    body->SetLayout(gui::LayoutPtr(new gui::ListLayout(1, WindowStyle::kSpacing)));

    // Three buttons of one width across the window.
    std::vector<gui::ComponentPtr> buttons = {
        gui::ComponentPtr(MakeOptionButton("File_New", []() { app::NewScene(); })),
        gui::ComponentPtr(MakeOptionButton("File_Save", []() { Save(); })),
        gui::ComponentPtr(MakeOptionButton("File_SaveAs", []() { SaveAs(); })),
    };
    for (const gui::ComponentPtr& button : buttons) {
        auto& push = static_cast<gui::Button&>(*button);
        const math::Vec2 border = push.GetOuterSize() - push.GetSize();
        push.SetFixedSize((kWidth - 2 * WindowStyle::kSpacing) / 3 - border.x, push.GetSize().y);
    }
    body->Add(WindowStyle::Row(buttons));

    for (const char* key : {"File_Scenes", "File_Vorralets"}) {
        SetTooltipFor(*m_listings->AddOption(Language::Get().Translate(key)), key);
    }
    m_listings->SetSelected(0);
    m_listings->GetOnChange().Add(self, [this]() {
        ShowListing(m_listings->GetSelected() == 1 ? Listing::Vorralets : Listing::Scenes);
    });
    body->Add(gui::ComponentPtr(m_listings));

    // The list keeps its place and size whatever it holds.
    const float rowHeight = SceneRow::kPictureHeight + 2 * SceneRow::kPadding;
    m_listHolder->SetSize(kWidth, static_cast<float>(kRows) * (rowHeight + ScrollList::kRowGap) -
                                      ScrollList::kRowGap);
    m_none->SetTextColor(gui::LookAndFeel::Get().GetDimTextColor());
    m_none->SetPosition(SceneRow::kPadding, SceneRow::kPadding);
    body->Add(m_listHolder);

    const gui::ButtonPtr open = MakeOptionButton("File_Open", [this]() { OpenTyped(); });
    const math::Vec2 fieldBorder = m_name->GetOuterSize() - m_name->GetSize();
    m_name->SetSize(kWidth - open->GetOuterSize().x - WindowStyle::kSpacing - fieldBorder.x,
                    m_name->GetSize().y);
    // A name typed here is no step of the scene's history.
    m_name->SetRecordsUndo(false);
    SetTooltipFor(*m_name, "File_Name");
    body->Add(WindowStyle::Row({gui::ComponentPtr(m_name), gui::ComponentPtr(open)}));

    FillList();
    m_lastUpdate = util::Clock::Seconds();
    PlaceByDefault(*this, DefaultPlace::BottomRight);
}

FileWindow::~FileWindow() = default;

std::vector<util::String> FileWindow::ListSceneFiles(const util::String& folder) {
    std::vector<util::String> files;
    try {
        files = util::FileSystem::Get().ListFiles(folder, "*.vra");
    } catch (const std::exception&) {
        // No folder means no scenes: the list says so.
        return files;
    }
    // As a person reads a list: "bridge" beside "Bridge2", not after every capital.
    std::stable_sort(files.begin(), files.end(), [](const util::String& a, const util::String& b) {
        return util::ToLower(a) < util::ToLower(b);
    });
    return files;
}

util::String FileWindow::Folder() const {
    return util::FileSystem::Get().GetWorkDirectory() +
           (m_listing == Listing::Scenes ? util::FileSystem::GetScenesFolder()
                                         : util::FileSystem::GetVorraletsFolder());
}

void FileWindow::ShowListing(Listing listing) {
    if (listing == m_listing) {
        return;
    }
    m_listing = listing;
    m_listings->SetSelected(listing == Listing::Vorralets ? 1 : 0);
    FillList();
}

void FileWindow::FillRows(ScrollList& list, const std::vector<util::String>& files,
                          const std::function<ListRowPtr(const util::String& file)>& makeRow,
                          const std::function<void(size_t)>& choose) {
    const util::String current = FileInfo::IsAlive()
                                     ? SceneLoader::DisplayName(FileInfo::Get().GetFileName())
                                     : util::String();
    const util::WeakPtr<util::Pointee> owner(&list);
    size_t marked = files.size();
    for (size_t i = 0; i < files.size(); ++i) {
        const ListRowPtr row = makeRow(files[i]);
        row->GetOnClick().Add(owner, [choose, i]() { choose(i); });
        if (!current.empty() && row->GetText() == current) {
            row->SetMarked(true);
            marked = i;
        }
        list.AddRow(gui::ComponentPtr(row));
    }
    if (marked < files.size()) {
        list.ShowRow(marked);
    }
}

void FileWindow::FillList() {
    const util::String folder = Folder();
    m_files = ListSceneFiles(folder);
    m_list->ClearRows();
    m_listHolder->RemoveAllChildren();
    FillRows(
        *m_list, m_files,
        [&folder](const util::String& file) {
            return ListRowPtr(new SceneRow(SceneLoader::DisplayName(file), folder + file));
        },
        [this](size_t index) { Choose(index); });
    if (m_files.empty()) {
        m_none->SetText(Language::Get().Translate(
            m_listing == Listing::Scenes ? "NoScenes" : "File_NoVorralets"));
        m_listHolder->Add(gui::ComponentPtr(m_none));
    } else {
        m_listHolder->Add(gui::ComponentPtr(m_list));
    }
}

void FileWindow::Update(float dt) {
    Window::Update(dt);
    const double now = util::Clock::Seconds();
    if (now - m_lastUpdate > kReopenGap) {
        FillList();
    }
    m_lastUpdate = now;
}

void FileWindow::OnKey(input::KeyEvent& event) {
    Window::OnKey(event);
    // The field leaves Enter to its owner.
    if (event.down && !event.consumed && m_name->HasFocus() &&
        (event.key == input::key::Return || event.key == input::key::KPEnter)) {
        event.consumed = true;
        OpenTyped();
    }
}

void FileWindow::Choose(size_t index) {
    if (index >= m_files.size()) {
        return;
    }
    // Opening closes this window, which may hold the last reference.
    const gui::ComponentPtr keep(this);
    if (m_listing == Listing::Vorralets) {
        Import(Folder() + m_files[index]);
    } else if (App::IsAlive()) {
        App::Get().GetAppGUI()->LoadScene(m_files[index], false);
    }
}

bool FileWindow::OpenTyped() {
    const util::String name = util::TrimBlanks(m_name->GetText());
    if (name.empty() || !App::IsAlive()) {
        return false;
    }
    const gui::ComponentPtr keep(this);
    m_name->Blur();
    App::Get().GetAppGUI()->LoadScene(name, false);
    return true;
}

void FileWindow::Save() {
    const util::String& file = FileInfo::Get().GetFileName();
    if (file.empty() || file == "unnamed" || !App::IsAlive()) {
        SaveAs();
        return;
    }
    App::Get().GetAppGUI()->SaveSceneAs(file, false);
}

void FileWindow::SaveAs() {
    if (!App::IsAlive()) {
        return;
    }
    const WindowPtr popup = WidgetFactory::Get().MakeSavePopup();
    const AppGUIPtr& appGUI = App::Get().GetAppGUI();
    popup->PlaceNear((appGUI->GetSize() - popup->GetOuterSize()) * 0.5f);
    appGUI->ShowPopup(gui::ComponentPtr(popup));
}

void FileWindow::Import(const util::String& path) {
    Undoer::Get().Do(ActionPtr(new SceneLoader("UndoImportVorralet", true, path)));
    if (App::IsAlive()) {
        App::Get().GetAppGUI()->ClosePopups();
    }
}

}  // namespace app
