#pragma once

#include <functional>
#include <map>
#include <vector>

#include "app/EntitySerializer.h"
#include "app/Group.h"
#include "physics/Forward.h"
#include "script/Expressions.h"
#include "script/Forward.h"
#include "util/Pointee.h"
#include "util/Singleton.h"
#include "util/String.h"

namespace app {

class Chain;
class GeomEntity;
class JointEntity;

// Scene files in both directions. A file is script text: loading executes it, and each
// entity's line calls one of the scene's creator commands, which land here. While a file
// loads, tables tie the file's numbers to what was made of them.
class Serializer : public util::Pointee, public util::Singleton<Serializer> {
public:
    // Where the notice about files of a newer version sends the user.
    static constexpr const char* kProductAddress = "https://vorra.org";

    // Publishes FileInfo and gives the scene its creator commands.
    Serializer();
    ~Serializer() override;
    Serializer(const Serializer&) = delete;
    Serializer& operator=(const Serializer&) = delete;

    // The whole scene as text.
    util::String Serialize() const;
    // A vorralet: the group's members alone.
    util::String Serialize(const Group& group) const;
    // Loads a text into the present scene; the entities it made, as a group. Old files are
    // told apart by their first characters.
    GroupPtr Deserialize(const util::String& text);
    // The same for a text of the present kind that is parsed already.
    GroupPtr Deserialize(const script::CodeBlockPtr& tree);
    // Files from before the creator commands: blocks with a "type".
    void DeserializeOld(const util::String& text);

    // A scene file as read and checked: its parsed tree, or for a file of the old kind its
    // text alone.
    struct SceneText {
        util::String text;
        script::CodeBlockPtr tree;
    };
    // False, with the reason reported, for a file that cannot be read or does not parse.
    bool Read(const util::String& path, SceneText& out) const;
    GroupPtr Deserialize(const SceneText& scene);
    // The program's save, the autosave's and the exit save's: a text that would not load
    // again never replaces the file (see script::Parser::WriteChecked).
    bool Save(const util::String& path) const;

    // The creators behind Scene.addPlane and the rest.
    script::ObjectPtr AddPlane(const EntitySerializer& keys);
    script::ObjectPtr AddCircle(const EntitySerializer& keys);
    script::ObjectPtr AddPolygon(const EntitySerializer& keys);
    script::ObjectPtr AddBox(const EntitySerializer& keys);
    script::ObjectPtr AddFixjoint(const EntitySerializer& keys);
    script::ObjectPtr AddHinge(const EntitySerializer& keys);
    script::ObjectPtr AddSpring(const EntitySerializer& keys);
    script::ObjectPtr AddPen(const EntitySerializer& keys);
    script::ObjectPtr AddWater(const EntitySerializer& keys);
    script::ObjectPtr AddGroup(const EntitySerializer& keys);
    script::ObjectPtr AddWidget(const EntitySerializer& keys);

    // Statements as a whole-scene file has them, for snapshots too: the settings of the
    // camera and the simulation, and one "Scene.addGroup" per group with members, naming
    // them by the numbers idOf gives (a member without one, -1, is left out).
    void WriteSceneSettings(std::vector<util::String>& statements) const;
    void WriteGroups(const std::function<int(const Entity*)>& idOf,
                     std::vector<util::String>& statements) const;

    // A restore puts entities back without a file: the tables start empty, and each entity
    // is entered under its own id, so that statements naming entities by id find them.
    void BeginRestoring();
    void RegisterRestored(const EntityPtr& entity);

    // The entities the latest load made.
    const GroupPtr& GetCreated() const { return m_created; }

private:
    using Creator = script::ObjectPtr (Serializer::*)(const EntitySerializer&);

    void ClearTables();
    // What every load does before and after running its text.
    void BeginReading();
    GroupPtr EndReading();
    // Builds the bodies whose shapes joined later (see AddGeom); every line that is not a
    // shape's does so first, since joints, pens and water may move bodies.
    void PlaceBodies();
    // A body of the file takes this many shapes one by one, the rest in one pass.
    static constexpr size_t kBodyBuiltOneByOne = 1024;
    util::String Write(const std::vector<EntityPtr>& entities, bool wholeScene) const;
    // The parts every geom line shares, once the entity exists.
    script::ObjectPtr AddGeom(const util::SharedPtr<GeomEntity>& entity,
                              const EntitySerializer& keys);
    // Attaches the joint's ends from the file's ids and points, then reads its keys.
    script::ObjectPtr AddJoint(const util::SharedPtr<JointEntity>& joint,
                               const EntitySerializer& keys);
    // Into the scene, the entity table, its chain and the created group.
    void RegisterEntity(const EntityPtr& entity, const EntitySerializer& keys);
    // Runs the creator of an old file's block by its type, in the given phase; false for
    // a type of another phase.
    bool CreateOld(const EntitySerializer& keys, int phase);

    std::map<int, physics::GeomPtr> m_geomTable;
    std::map<int, EntityPtr> m_entityTable;
    std::map<int, physics::BodyPtr> m_bodyTable;
    std::map<int, util::SharedPtr<Chain>> m_chainTable;
    std::vector<physics::BodyPtr> m_bodiesToPlace;
    GroupPtr m_created;
};

// The adapter behind every creator command: the argument must be an inline function of no
// arguments; its assignments become the keys.
script::ObjectPtr Helper(script::ObjectPtr (Serializer::*creator)(const EntitySerializer&),
                         script::ObjectPtr argument);

}  // namespace app
