#include "app/widgets/WidgetFactory.h"

#include <algorithm>

#include "app/Language.h"
#include "app/tools/BoxTool.h"
#include "app/tools/BrushTool.h"
#include "app/tools/ChainTool.h"
#include "app/tools/CircleTool.h"
#include "app/tools/DragTool.h"
#include "app/tools/FixJointTool.h"
#include "app/tools/HingeTool.h"
#include "app/tools/PenTool.h"
#include "app/tools/PlaneTool.h"
#include "app/tools/ScaleTool.h"
#include "app/tools/SketchTool.h"
#include "app/tools/SpringTool.h"
#include "app/tools/ToolIcon.h"
#include "app/tools/Tools.h"
#include "app/widgets/AboutWindow.h"
#include "app/widgets/BackgroundMenus.h"
#include "app/widgets/EntityMenu.h"
#include "app/widgets/FileWindow.h"
#include "app/widgets/HelpWindow.h"
#include "app/widgets/OptionPanels.h"
#include "app/widgets/OptionsWindow.h"
#include "app/widgets/ScenePopups.h"
#include "app/widgets/SimControl.h"
#include "app/widgets/SimInfo.h"
#include "gui/GUI.h"
#include "gui/Layout.h"
#include "logging/Log.h"

namespace app {
namespace {

// The toolbar is a narrow strip: less room around its buttons than a dialog has.
constexpr float kToolbarMargin = 4;
constexpr float kToolbarSpacing = 3;

}  // namespace

WidgetFactory::WidgetFactory() = default;

WidgetFactory::~WidgetFactory() = default;

std::vector<WidgetFactory::ToolEntry> WidgetFactory::GetToolEntries() {
    const Tools& tools = Tools::Get();
    // Drawing first, then the shapes, the joints, and what handles the scene.
    return {
        {tools.Find<SketchTool>(), "sketch", "ToolSketch"},
        {tools.Find<BrushTool>(), "brush", "ToolBrush"},
        {tools.Find<BoxTool>(), "box", "ToolBox"},
        {tools.Find<CircleTool>(), "circle", "ToolCircle"},
        {tools.Find<PlaneTool>(), "plane", "ToolPlane"},
        {tools.Find<ChainTool>(), "chain", "ToolChain"},
        {tools.Find<SpringTool>(), "spring", "ToolSpring"},
        {tools.Find<FixJointTool>(), "fixjoint", "ToolFixJoint"},
        {tools.Find<HingeTool>(), "hinge", "ToolHinge"},
        {tools.Find<PenTool>(), "pen", "ToolPen"},
        {tools.Find<DragTool>(), "drag", "ToolDrag"},
        {tools.Find<ScaleTool>(), "scale", "ToolScale"},
    };
}

WidgetPtr WidgetFactory::Make(const util::String& id, const GroupPtr& group) {
    // The application's windows.
    if (id == kToolbar) {
        return WidgetPtr(MakeToolbar());
    }
    if (id == "SimControl") {
        return WidgetPtr(new SimControl());
    }
    if (id == "SimInfo") {
        return WidgetPtr(new SimInfo());
    }
    if (id == "File") {
        return WidgetPtr(new FileWindow());
    }
    if (id == "Options") {
        return WidgetPtr(new OptionsWindow());
    }
    if (id == "Help") {
        return WidgetPtr(new HelpWindow());
    }
    if (id == "About") {
        return WidgetPtr(new AboutWindow());
    }
    // Popups.
    if (id == kSaveScene) {
        return WidgetPtr(MakeSavePopup());
    }
    if (id == kLoadScene) {
        return WidgetPtr(MakeLoadPopup());
    }
    if (id == kEntityOptions || id == kBackgroundMenu || id == kWaterMenu) {
        return WidgetPtr(MakeMenu(id, group));
    }
    // The panels the menus open.
    if (IsOptionPanel(id)) {
        return WidgetPtr(MakeOptionPanel(id, group));
    }
    Log(logging::Warning, "No widget is made for the id " + id);
    return WidgetPtr();
}

WindowPtr WidgetFactory::MakeToolbar() {
    const WindowPtr toolbar(new Window(kToolbar, "", Window::Kind::Normal));
    toolbar->SetClosable(false);
    const gui::ComponentPtr& body = toolbar->GetBody();
    body->SetBorder(WindowStyle::MarginBorder(kToolbarMargin));
    body->SetLayout(gui::LayoutPtr(new gui::ListLayout(1, kToolbarSpacing)));
    for (const ToolEntry& entry : GetToolEntries()) {
        if (entry.tool) {
            body->Add(gui::ComponentPtr(new ToolIcon(entry.tool, entry.image, entry.labelKey)));
        }
    }
    PlaceAtLeftEdge(*toolbar);
    return toolbar;
}

WindowPtr WidgetFactory::MakeSavePopup() {
    return WindowPtr(new SaveScenePopup());
}

WindowPtr WidgetFactory::MakeLoadPopup() {
    return WindowPtr(new LoadScenePopup());
}

WindowPtr WidgetFactory::MakeMenu(const util::String& menu, const GroupPtr& group) {
    const Language& language = Language::Get();
    util::String title = language.Translate("PopupTitle") + language.Translate(menu);
    if (group && !group->empty()) {
        title += " (" + language.GetTypeName(*group) + ")";
    }
    const WindowPtr popup = MakePopupWindow(menu, title);
    if (menu == kEntityOptions) {
        FillEntityMenu(*popup, group);
    } else if (menu == kBackgroundMenu) {
        FillBackgroundMenu(*popup);
    } else if (menu == kWaterMenu) {
        FillWaterMenu(*popup);
    }
    return popup;
}

void WidgetFactory::PlaceAtLeftEdge(Widget& widget) {
    float top = 0;
    if (gui::GUI::IsAlive()) {
        const math::Vec2 screen = gui::GUI::Get().GetScreenSize();
        top = std::max(0.0f, (screen.y - widget.GetOuterSize().y) / 2);
    }
    widget.SetScreenPosition(math::Vec2(0, top));
}

}  // namespace app
