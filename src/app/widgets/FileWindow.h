#pragma once

#include <functional>
#include <vector>

#include "app/widgets/ScrollList.h"
#include "app/widgets/Window.h"
#include "gui/RadioGroup.h"
#include "gui/TextField.h"
#include "rendering/Texture.h"

namespace app {

// One file of a list of scenes: its picture, or a plain stand-in where it has none, and
// its name. A click chooses it.
class SceneRow : public ListRow {
public:
    // The picture is the PNG file of the same name beside the scene file.
    SceneRow(const util::String& name, const util::String& scenePath);
    ~SceneRow() override;

    bool HasPicture() const { return static_cast<bool>(m_picture); }

    static constexpr float kPictureWidth = 48;
    static constexpr float kPictureHeight = 36;
    static constexpr float kPadding = 4;

protected:
    float DrawLeading() override;

private:
    void DrawStandIn(float x, float y, float width, float height) const;

    rendering::TexturePtr m_picture;
};
using SceneRowPtr = util::SharedPtr<SceneRow>;

// The scene's files: a new scene, saving, the scenes of the scenes folder to open and the
// vorralets to bring into the scene, each with its picture, and a field to open a scene by
// its name. Opening, saving or importing closes it.
class FileWindow : public Window {
public:
    enum class Listing { Scenes, Vorralets };

    FileWindow();
    ~FileWindow() override;

    // Lists the folder again when the window opens after it was closed.
    void Update(float dt) override;
    void OnKey(input::KeyEvent& event) override;

    Listing GetListing() const { return m_listing; }
    void ShowListing(Listing listing);
    const ScrollListPtr& GetList() const { return m_list; }
    // The files of the rows, in their order, as they lie in the listed folder.
    const std::vector<util::String>& GetFiles() const { return m_files; }
    const gui::TextFieldPtr& GetNameField() const { return m_name; }
    // Opens the scene of a row, or brings the vorralet into the scene.
    void Choose(size_t index);
    // Opens the scene named in the field; false, and nothing done, for an empty name.
    bool OpenTyped();

    // Over the present file, or under a name that the save popup asks for.
    static void Save();
    static void SaveAs();
    // The vorralet's shapes join the scene, as one undo step.
    static void Import(const util::String& path);

    // The scene files of a folder, sorted as a person reads ("bridge" beside "Bridge2");
    // none where the folder is missing.
    static std::vector<util::String> ListSceneFiles(const util::String& folder);
    // A row a file, made by makeRow, whose click chooses the file's index. The row of the
    // current scene, if listed, is marked and scrolled into view.
    static void FillRows(ScrollList& list, const std::vector<util::String>& files,
                         const std::function<ListRowPtr(const util::String& file)>& makeRow,
                         const std::function<void(size_t)>& choose);

    static constexpr float kWidth = 280;
    static constexpr size_t kRows = 5;

private:
    util::String Folder() const;
    void FillList();

    Listing m_listing = Listing::Scenes;
    gui::RadioGroupPtr m_listings;
    ScrollListPtr m_list;
    gui::LabelPtr m_none;
    gui::ComponentPtr m_listHolder;
    gui::TextFieldPtr m_name;
    std::vector<util::String> m_files;
    double m_lastUpdate = 0;
};

}  // namespace app
