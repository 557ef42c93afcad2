#include "app/widgets/EntityMenu.h"

#include <algorithm>
#include <vector>

#include "app/PopupActions.h"
#include "app/Scene.h"
#include "app/entities/FiniteGeomEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/widgets/OptionPanels.h"

namespace app {
namespace {

constexpr size_t kColumns = 2;

bool AnyChained(const Group& group) {
    for (const EntityPtr& entity : LiveMembers(group)) {
        if (entity->GetChain()) {
            return true;
        }
    }
    return false;
}

template <class T>
bool Any(const Group& group) {
    return !MembersOfKind<T>(group, Scene::Get().GetEntities()).empty();
}

}  // namespace

void FillEntityMenu(Window& menu, const GroupPtr& selection) {
    const GroupPtr group(new Group(selection ? selection->GetEntities() : EntitySet()));
    struct Entry {
        const char* key;
        bool (*act)(const Group&);
        bool fits;
    };
    const Entry entries[] = {
        {"MenuErase", EraseMembers, true},
        {"MenuClone", CloneBeside, true},
        {"MenuFront", BringToFront, true},
        {"MenuBack", SendToBack, true},
        {"MenuGlue", GlueToBackground, Any<GeomEntity>(*group)},
        {"MenuLiquify", Liquify, Any<FiniteGeomEntity>(*group)},
        {"MenuLoosen", Loosen, CanLoosen(*group)},
        {"MenuNoChain", DissolveChains, AnyChained(*group)},
        {"MenuCenterHinge", CenterHinges, Any<HingeEntity>(*group)},
        {"MenuToCircle", TurnIntoCircles, Any<PolyEntity>(*group)},
    };
    std::vector<gui::ButtonPtr> actions;
    for (const Entry& entry : entries) {
        if (entry.fits) {
            const auto act = entry.act;
            actions.push_back(MakeMenuButton(entry.key, [act, group]() { act(*group); }));
        }
    }
    std::vector<gui::ButtonPtr> panels;
    for (const util::String& id : PanelsFor(*group)) {
        panels.push_back(MakePanelButton(id, group, menu));
    }
    // Both grids in one column width, so that the menu reads as one table.
    const float width = std::max(WidestButton(actions), WidestButton(panels));
    const gui::ComponentPtr& body = menu.GetBody();
    body->Add(MakeButtonGrid(actions, kColumns, width));
    if (!panels.empty()) {
        body->Add(gui::ComponentPtr(MakeOptionHeading("MenuSettings")));
        body->Add(MakeButtonGrid(panels, kColumns, width));
    }
}

}  // namespace app
