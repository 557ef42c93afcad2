#pragma once

#include <functional>
#include <vector>

#include "app/Group.h"
#include "gui/Component.h"
#include "math/Vector2.h"
#include "math/Vector4.h"

namespace app {

class PolyEntity;
using PolyEntityPtr = util::SharedPtr<PolyEntity>;

// What the popup menus do to the scene. Each acts on the members of the group that are
// still in the scene, and is one step of the undo history; an action that changes nothing
// leaves no step. The menus close themselves before they call one.

// The scene before, the change, then the step when the change answers true.
bool RecordStep(const char* label, const std::function<bool()>& change);

// The members of the group that are still in the scene, in the scene's order.
std::vector<EntityPtr> LiveMembers(const Group& group);
// Those of them of one kind.
template <class T>
std::vector<T*> MembersOfKind(const Group& group, const std::vector<EntityPtr>& scene) {
    std::vector<T*> found;
    for (const EntityPtr& entity : group.InOrder(scene)) {
        if (auto* member = dynamic_cast<T*>(entity.Get())) {
            found.push_back(member);
        }
    }
    return found;
}

bool EraseMembers(const Group& group);
// Copies beside the originals, which become the selection.
bool CloneBeside(const Group& group);
// Every finite shape becomes water at rest where it was.
bool Liquify(const Group& group);
bool GlueToBackground(const Group& group);
bool BringToFront(const Group& group);
bool SendToBack(const Group& group);
// Every chain a member belongs to comes apart into loose links and joints.
bool DissolveChains(const Group& group);
// Each hinge's two ends go to the centre of the shape it turns.
bool CenterHinges(const Group& group);
// Each polygon becomes a circle of its area.
bool TurnIntoCircles(const Group& group);
// The first of these that frees anything: off the ground, out of shared bodies, without
// their fix joints.
bool Loosen(const Group& group);
bool CanLoosen(const Group& group);
// A new random colour for each member; the step is named for one or for many.
bool RandomColors(const Group& group);
// Every member's colour to the swatch's, each keeping its own opacity.
bool SetColors(const Group& group, const math::Vec4& color);

// A circle of the polygon's area at its centre of mass, with its attributes, its joints and
// its pens; the polygon leaves the scene.
EntityPtr TransformIntoCircle(const PolyEntityPtr& polyEnt);

// The scene emptied and every setting back to its default, as Ctrl+N.
void NewScene();
// The clipboard's scene code, centred on the world point, as the new selection.
void PasteSceneCode(const math::Vec2& world);
// All the water, as one step.
bool EraseAllWater();

// Closes the open popups and shows this one near a point of the screen.
void ShowPopupAt(const gui::ComponentPtr& popup, const math::Vec2& guiPoint);
// The open popup of that name, or null.
gui::ComponentPtr FindPopup(const util::String& name);
void CloseAllPopups();

}  // namespace app
