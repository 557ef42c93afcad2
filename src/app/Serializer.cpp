#include "app/Serializer.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <type_traits>

#include "app/Chain.h"
#include "app/FileInfo.h"
#include "app/Scene.h"
#include "app/entities/BoxEntity.h"
#include "app/entities/CircleEntity.h"
#include "app/entities/FixJointEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/PlaneEntity.h"
#include "app/entities/PolyEntity.h"
#include "app/entities/SpringEntity.h"
#include "logging/Log.h"
#include "physics/BackgroundMapBuilds.h"
#include "physics/Body.h"
#include "physics/Geom.h"
#include "physics/Particle.h"
#include "physics/Simulation.h"
#include "script/Closure.h"
#include "script/Exceptions.h"
#include "script/Expressions.h"
#include "script/Parser.h"
#include "script/ValueConversions.h"
#include "script/Variable.h"
#include "util/Exception.h"
#include "util/FileSystem.h"
#include "util/Version.h"

namespace app {

namespace {

const char* const kBadCreatorArgument =
    "Bad argument to scene creator function, must be an inline function with zero arguments "
    "(i.e.: {...} )";

// The value as source text; empty for one that cannot be written.
util::String Code(const script::ObjectPtr& value) {
    const script::ExpressionPtr expression = value ? value->ToExpression() : nullptr;
    return expression ? expression->ToCode() : util::String();
}

// "{a = 1; b = [2.0, 3.0]}": the keys in the order of their names.
util::String InlineFunction(const AttributeMap& keys) {
    std::vector<std::pair<util::String, util::String>> lines;
    lines.reserve(keys.size());
    for (const auto& [key, value] : keys) {
        util::String code = Code(value);
        if (!code.empty()) {
            lines.emplace_back(key, std::move(code));
        }
    }
    std::sort(lines.begin(), lines.end());
    util::String text = "{";
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i > 0) {
            text += "; ";
        }
        text += lines[i].first;
        text += " = ";
        text += lines[i].second;
    }
    text += "}";
    return text;
}

// "Path.name = value" for every attribute of the object but the one left out.
void WriteSettings(const script::ClassObject& object, const util::String& path,
                   std::vector<util::String>& statements, const char* leftOut = "") {
    for (const script::VariablePtr& variable : object.GetVariables()) {
        if (!dynamic_cast<const script::AbstractAttrib*>(variable.Get()) ||
            variable->GetName() == leftOut) {
            continue;
        }
        const util::String code = Code(variable->GetValue());
        if (!code.empty()) {
            statements.push_back(path + "." + variable->GetName() + " = " + code);
        }
    }
}

// "Path.name = value" for the named attributes of the object published at the root under
// the path, when it is there: the window side publishes the background, the shell not.
void WriteNamedSettings(const util::String& path, std::initializer_list<const char*> names,
                        std::vector<util::String>& statements) {
    const script::ClassObject* object = script::FindInRoot(path);
    if (!object) {
        return;
    }
    for (const char* name : names) {
        const script::VariablePtr variable = object->GetVariable(name);
        const util::String code = variable ? Code(variable->GetValue()) : util::String();
        if (!code.empty()) {
            statements.push_back(path + "." + name + " = " + code);
        }
    }
}

// The creator command that makes an entity of this kind.
const char* CommandOf(const Entity& entity) {
    if (dynamic_cast<const PlaneEntity*>(&entity)) {
        return "addPlane";
    }
    if (dynamic_cast<const CircleEntity*>(&entity)) {
        return "addCircle";
    }
    if (dynamic_cast<const PolyEntity*>(&entity)) {
        return "addPolygon";
    }
    if (dynamic_cast<const BoxEntity*>(&entity)) {
        return "addBox";
    }
    if (dynamic_cast<const FixJointEntity*>(&entity)) {
        return "addFixjoint";
    }
    if (dynamic_cast<const HingeEntity*>(&entity)) {
        return "addHinge";
    }
    if (dynamic_cast<const SpringEntity*>(&entity)) {
        return "addSpring";
    }
    if (dynamic_cast<const PenEntity*>(&entity)) {
        return "addPen";
    }
    VORRA_THROW(BadCoderException, "Bad Entity");
}

// Numbers handed out in the order things are first met.
template <class Key>
int NumberOf(std::map<Key, int>& numbers, const std::type_identity_t<Key>& key) {
    const auto found = numbers.find(key);
    if (found != numbers.end()) {
        return found->second;
    }
    const int next = static_cast<int>(numbers.size());
    numbers.emplace(key, next);
    return next;
}

float JointSize() {
    return Scene::Get().GetCamera().GetDefaultJointSize();
}

}  // namespace

script::ObjectPtr Helper(script::ObjectPtr (Serializer::*creator)(const EntitySerializer&),
                         script::ObjectPtr argument) {
    const script::FunctionPtr function = util::DynamicPointerCast<script::Function>(argument);
    if (!function || function->GetArgCount() != 0) {
        throw script::ScriptException(kBadCreatorArgument);
    }
    function->Call(script::ObjectList());
    const EntitySerializer keys = EntitySerializer::FromClosure(function->GetLastCallClosure());
    return (Serializer::Get().*creator)(keys);
}

Serializer::Serializer() : m_created(new Group()) {
    FileInfo& info = FileInfo::Get();
    script::AddToRoot(script::ReflectedPtr(&info));
    info.version->GetOnChange().Add(util::WeakPtr<util::Pointee>(this), [&info]() {
        if (info.version->Get() > FileInfo::kCurrentVersion) {
            Log(logging::Error,
                util::String("Loading scene from a newer version of Vorra. Go to ") +
                    kProductAddress + " and download the latest version!");
        }
    });
    const std::pair<const char*, Creator> creators[] = {
        {"addPlane", &Serializer::AddPlane},       {"addCircle", &Serializer::AddCircle},
        {"addPolygon", &Serializer::AddPolygon},   {"addBox", &Serializer::AddBox},
        {"addFixjoint", &Serializer::AddFixjoint}, {"addHinge", &Serializer::AddHinge},
        {"addSpring", &Serializer::AddSpring},     {"addPen", &Serializer::AddPen},
        {"addWater", &Serializer::AddWater},       {"addGroup", &Serializer::AddGroup},
        {"addWidget", &Serializer::AddWidget}};
    Scene& scene = Scene::Get();
    for (const auto& [name, creator] : creators) {
        scene.AddCommand(name, [creator = creator](script::ObjectPtr argument) {
            return Helper(creator, std::move(argument));
        });
    }
}

Serializer::~Serializer() = default;

// Writing.

util::String Serializer::Serialize() const {
    // Depths as places, as a load will make them: a file read and written again is the same.
    Scene& scene = Scene::Get();
    scene.SortByZ();
    scene.RenumberZ();
    return Write(scene.GetEntities(), true);
}

util::String Serializer::Serialize(const Group& group) const {
    return Write(group.InOrder(Scene::Get().GetEntities()), false);
}

util::String Serializer::Write(const std::vector<EntityPtr>& entities, bool wholeScene) const {
    Scene& scene = Scene::Get();
    physics::Simulation& sim = physics::Simulation::Get();
    std::vector<util::String> statements;

    // What is written now is the present format, whatever the file read had.
    WriteSettings(FileInfo::Get(), "FileInfo", statements, "version");
    statements.push_back("FileInfo.version = " + std::to_string(FileInfo::kCurrentVersion));
    if (wholeScene) {
        WriteSceneSettings(statements);
    }

    // Geometry first, so that joints find their geoms when the file is read.
    std::vector<EntityPtr> ordered;
    for (int pass = 0; pass < 2; ++pass) {
        for (const EntityPtr& entity : entities) {
            if ((dynamic_cast<const GeomEntity*>(entity.Get()) != nullptr) == (pass == 0)) {
                ordered.push_back(entity);
            }
        }
    }
    // The file's own numbers: ids by place in the file, bodies and chains as first met, the ground
    // 0.
    std::map<const Entity*, int> entityIDs;
    std::map<const physics::Geom*, int> geomIDs;
    std::map<const physics::AbstractBody*, int> bodyIDs{{sim.GetWorldBody().Get(), 0}};
    std::map<const Chain*, int> chainIDs;
    for (const EntityPtr& entity : ordered) {
        entityIDs.emplace(entity.Get(), static_cast<int>(entityIDs.size()));
        if (const auto* shape = dynamic_cast<const GeomEntity*>(entity.Get())) {
            geomIDs.emplace(shape->GetGeom().Get(), static_cast<int>(geomIDs.size()));
        }
    }
    const auto geomNumber = [&geomIDs](const physics::GeomPtr& geom) {
        const auto found = geomIDs.find(geom.Get());
        return found == geomIDs.end() ? -1 : found->second;
    };
    const GroupPtr& tracked = scene.GetCamera().GetTrackedGroup();

    for (const EntityPtr& entity : ordered) {
        const util::String command = CommandOf(*entity);
        AttributeMap keys;
        if (const auto* joint = dynamic_cast<const JointEntity*>(entity.Get())) {
            for (int end = 0; end < 2; ++end) {
                const util::String index = std::to_string(end);
                const int number = geomNumber(joint->GetGeom(end));
                keys["geom" + index] = script::ValueToObject(number);
                if (number < 0) {
                    keys["world" + index + "pos"] = script::ValueToObject(joint->GetWorld(end));
                } else {
                    keys["geom" + index + "pos"] = script::ValueToObject(joint->GetLocal(end));
                }
            }
        } else if (const auto* pen = dynamic_cast<const PenEntity*>(entity.Get())) {
            const int number = geomNumber(pen->GetGeom());
            keys["geom"] = script::ValueToObject(number);
            if (number < 0) {
                keys["pos"] = script::ValueToObject(pen->GetWorldPoint());
            } else {
                keys["relPoint"] = script::ValueToObject(pen->GetLocalPoint());
            }
        }
        entity->Serialize(keys);
        keys["entityID"] = script::ValueToObject(entityIDs[entity.Get()]);
        if (const auto* shape = dynamic_cast<const GeomEntity*>(entity.Get())) {
            keys["geomID"] = script::ValueToObject(geomNumber(shape->GetGeom()));
            if (keys.find("body") != keys.end()) {
                keys["body"] =
                    script::ValueToObject(NumberOf(bodyIDs, shape->GetGeom()->GetBody()));
            }
        }
        if (const ChainPtr& chain = entity->GetChain()) {
            keys["chain"] = script::ValueToObject(NumberOf(chainIDs, chain.Get()));
        }
        if (wholeScene && tracked && tracked->size() == 1 && tracked->Contains(entity)) {
            keys["tracked"] = script::ValueToObject(true);
        }
        statements.push_back("Scene." + command + "(" + InlineFunction(keys) + ")");
    }

    script::ObjectList positions;
    if (wholeScene) {
        positions.reserve(sim.GetParticles().size());
        // A particle whose numbers broke in the last step leaves at the next; the file
        // never holds it, since a "nan" would not read back.
        for (const physics::ParticlePtr& particle : sim.GetParticles()) {
            if (!particle->IsBad()) {
                positions.push_back(script::ValueToObject(particle->position));
            }
        }
    }
    if (!positions.empty()) {
        AttributeMap keys;
        keys["vecs"] = script::ObjectPtr(new script::List(std::move(positions)));
        statements.push_back("Scene.addWater(" + InlineFunction(keys) + ")");
    }

    if (wholeScene) {
        WriteGroups(
            [&entityIDs](const Entity* entity) {
                const auto found = entityIDs.find(entity);
                return found == entityIDs.end() ? -1 : found->second;
            },
            statements);
    }

    util::String text = wholeScene ? "// Vorra scene created by " : "// Vorralet created by ";
    text += util::GetVersionString();
    text += "\n\n";
    for (size_t i = 0; i < statements.size(); ++i) {
        text += statements[i];
        text += i + 1 < statements.size() ? ";\n" : "\n";
    }
    return text;
}

void Serializer::WriteSceneSettings(std::vector<util::String>& statements) const {
    const Scene& scene = Scene::Get();
    WriteSettings(scene.GetCamera(), "Scene." + scene.GetCamera().GetReflectedName(), statements);
    WriteNamedSettings("App", {"waterColor", "borders"}, statements);
    WriteSettings(physics::Simulation::Get(), "Sim", statements);
    WriteNamedSettings("Background", {"skyColor", "cloudOpacity", "drawClouds"}, statements);
    WriteNamedSettings("App", {"fadeColor"}, statements);
}

void Serializer::WriteGroups(const std::function<int(const Entity*)>& idOf,
                             std::vector<util::String>& statements) const {
    const Scene& scene = Scene::Get();
    const GroupPtr& tracked = scene.GetCamera().GetTrackedGroup();
    // Named groups by name, then unnamed ones by their first member.
    std::vector<std::pair<util::String, std::vector<int>>> groups;
    for (const GroupPtr& group : scene.GetGroups()) {
        if (group == scene.GetSelection() || group == tracked) {
            continue;
        }
        std::vector<int> ids;
        for (const EntityPtr& member : group->GetEntities()) {
            const int id = idOf(member.Get());
            if (id >= 0) {
                ids.push_back(id);
            }
        }
        if (!ids.empty()) {
            std::sort(ids.begin(), ids.end());
            groups.emplace_back(group->GetName(), std::move(ids));
        }
    }
    std::sort(groups.begin(), groups.end());
    for (const auto& [name, ids] : groups) {
        AttributeMap keys;
        script::ObjectList list;
        for (int id : ids) {
            list.push_back(script::ValueToObject(id));
        }
        keys["entityIDs"] = script::ObjectPtr(new script::List(std::move(list)));
        if (!name.empty()) {
            keys["name"] = script::ValueToObject(name);
        }
        statements.push_back("Scene.addGroup(" + InlineFunction(keys) + ")");
    }
}

bool Serializer::Save(const util::String& path) const {
    if (!script::Parser::Get().WriteChecked(path, Serialize())) {
        return false;
    }
    FileInfo::Get().SetFileName(path);
    return true;
}

// Reading.

void Serializer::ClearTables() {
    m_geomTable.clear();
    m_entityTable.clear();
    m_bodyTable.clear();
    m_chainTable.clear();
    // A new group: the caller may still hold the last one.
    m_created = GroupPtr(new Group());
}

namespace {

bool IsOldFormat(const util::String& text) {
    return text.rfind("version = ", 0) == 0 || text.rfind("{", 0) == 0;
}

}  // namespace

void Serializer::BeginReading() {
    ClearTables();
    const physics::BodyPtr& ground = physics::Simulation::Get().GetWorldBody();
    m_bodyTable[static_cast<int>(ground->GetID())] = ground;
    // Each file says its own version; one that says none is of the oldest kind.
    FileInfo::Get().version->SetNative(0);
}

void Serializer::PlaceBodies() {
    for (const physics::BodyPtr& body : m_bodiesToPlace) {
        body->PlaceAddedGeoms();
    }
    m_bodiesToPlace.clear();
}

GroupPtr Serializer::EndReading() {
    PlaceBodies();
    Scene::Get().FinishLoading();
    return m_created;
}

GroupPtr Serializer::Deserialize(const util::String& text) {
    // Polygon maps are the costly part of a load: they build beside the rest.
    const physics::BackgroundMapBuilds mapBuilds;
    BeginReading();
    if (IsOldFormat(text)) {
        Log(logging::Info, "Old (pre beta 4) file type detected");
        DeserializeOld(text);
    } else {
        script::Parser::Get().Execute(text);
    }
    return EndReading();
}

GroupPtr Serializer::Deserialize(const script::CodeBlockPtr& tree) {
    const physics::BackgroundMapBuilds mapBuilds;
    BeginReading();
    script::Parser::Get().Execute(script::ExpressionPtr(tree));
    return EndReading();
}

bool Serializer::Read(const util::String& path, SceneText& out) const {
    try {
        out.text = util::FileSystem::Get().ReadTextFile(path);
    } catch (const std::exception& e) {
        Log(logging::Error, "Couldn't load scene " + path + ": " + util::String(e.what()));
        return false;
    }
    // The tree parsed for the check is the one that runs.
    out.tree = script::CodeBlockPtr();
    if (!IsOldFormat(out.text)) {
        out.tree = script::Parser::Get().Parse(out.text);
        if (!out.tree) {
            return false;
        }
    }
    return true;
}

GroupPtr Serializer::Deserialize(const SceneText& scene) {
    return scene.tree ? Deserialize(scene.tree) : Deserialize(scene.text);
}

void Serializer::BeginRestoring() {
    ClearTables();
}

void Serializer::RegisterRestored(const EntityPtr& entity) {
    m_entityTable[entity->entityID->Get()] = entity;
}

void Serializer::RegisterEntity(const EntityPtr& entity, const EntitySerializer& keys) {
    // Everything that can fail is read before the entity joins the scene.
    ChainPtr chain;
    int chainNr = 0;
    if (keys.Has("chain")) {
        const int number = keys.GetInt("chain");
        chainNr = keys.GetInt("chainNr");
        DATA_ASSERT(chainNr >= 0 && chainNr < 100000);
        ChainPtr& slot = m_chainTable[number];
        if (!slot) {
            slot = ChainPtr(new Chain());
        }
        chain = slot;
    }
    const bool hasGroup = keys.Has("group");
    const int group = hasGroup ? keys.GetInt("group") : 0;
    const bool tracked = keys.Has("tracked") && keys.GetBool("tracked");

    Scene& scene = Scene::Get();
    scene.AddEntity(entity);
    if (keys.Has("entityID")) {
        m_entityTable[keys.GetInt("entityID")] = entity;
    }
    if (chain) {
        chain->AddEntity(static_cast<size_t>(chainNr), entity);
    }
    if (hasGroup) {
        scene.GetOrCreateGroup("group_" + std::to_string(group))->Add(entity);
    }
    if (tracked) {
        scene.GetCamera().SetTrackedGroup(GroupPtr(new Group(entity)));
    }
    m_created->Add(entity);
}

script::ObjectPtr Serializer::AddGeom(const util::SharedPtr<GeomEntity>& entity,
                                      const EntitySerializer& keys) {
    if (keys.Has("collide") && !keys.GetBool("collide")) {
        entity->collideSet->SetNative(0);
    }
    const bool hasID = keys.Has("geomID") || keys.Has("id");
    const int id = hasID ? keys.GetInt(keys.Has("geomID") ? "geomID" : "id") : 0;
    entity->Deserialize(keys.GetKeys());
    physics::BodyPtr body;
    if (keys.Has("body")) {
        physics::BodyPtr& slot = m_bodyTable[keys.GetInt("body")];
        if (!slot) {
            slot = physics::BodyPtr(new physics::Body());
        }
        body = slot;
    }
    if (body) {
        // The first shapes of a body join one by one, as they always have; a body that goes
        // on to thousands is built once, before anything that may move it.
        if (body->GetGeoms().size() < kBodyBuiltOneByOne) {
            body->AddGeom(entity->GetGeom());
        } else {
            body->AddGeomLater(entity->GetGeom());
            m_bodiesToPlace.push_back(body);
        }
    }
    if (hasID) {
        m_geomTable[id] = entity->GetGeom();
    }
    RegisterEntity(entity, keys);
    return entity;
}

script::ObjectPtr Serializer::AddPlane(const EntitySerializer& keys) {
    return AddGeom(util::SharedPtr<GeomEntity>(
                       new PlaneEntity(util::SharedPtr<physics::Plane>(new physics::Plane()))),
                   keys);
}

script::ObjectPtr Serializer::AddCircle(const EntitySerializer& keys) {
    // The entity's reader checks the value; the key must be there.
    const float radius = keys.GetFloat("radius");
    return AddGeom(util::SharedPtr<GeomEntity>(new CircleEntity(
                       util::SharedPtr<physics::Circle>(new physics::Circle(radius)))),
                   keys);
}

script::ObjectPtr Serializer::AddPolygon(const EntitySerializer& keys) {
    const physics::PolygonPtr polygon(
        new physics::Polygon(keys.GetVec2s("vecs"), physics::Polygon::KeepLocal()));
    return AddGeom(util::SharedPtr<GeomEntity>(new PolyEntity(polygon)), keys);
}

script::ObjectPtr Serializer::AddBox(const EntitySerializer& keys) {
    // The entity's reader checks the value; the key must be there.
    const math::Vec2 size = keys.GetVec2("size");
    return AddGeom(util::SharedPtr<GeomEntity>(
                       new BoxEntity(util::SharedPtr<physics::Box>(new physics::Box(size * 0.5f)))),
                   keys);
}

script::ObjectPtr Serializer::AddJoint(const util::SharedPtr<JointEntity>& joint,
                                       const EntitySerializer& keys) {
    PlaceBodies();
    const physics::GeomPtr& ground = physics::Simulation::Get().GetWorldGeom();
    physics::GeomPtr geoms[2];
    math::Vec2 locals[2];
    int attached = 0;
    for (int end = 0; end < 2; ++end) {
        const util::String index = std::to_string(end);
        const util::String geomKey = "geom" + index;
        if (keys.Has(geomKey)) {
            const int id = keys.GetInt(geomKey);
            const auto found = m_geomTable.find(id);
            if (found != m_geomTable.end()) {
                geoms[end] = found->second;
                locals[end] = keys.GetVec2(geomKey + "pos");
                ++attached;
                continue;
            }
            if (id != -1) {
                Log(logging::Warning, "Couldn't find geom with ID " + std::to_string(id));
            }
        }
        // A free end holds on to the ground at its world point.
        const util::String worldKey = "world" + index + "pos";
        if (keys.Has(worldKey) || keys.Has("pos")) {
            geoms[end] = ground;
            locals[end] = keys.GetVec2(keys.Has(worldKey) ? worldKey : "pos");
            ++attached;
        } else {
            Log(logging::Error, "Joint connected to unknown geometry");
        }
    }
    if (attached == 0) {
        Log(logging::Error, "Failed to attach joint to any geometry");
    }
    if (attached < 2) {
        return script::ObjectPtr(new script::Void());
    }
    joint->SetEnds(geoms[0], locals[0], geoms[1], locals[1]);
    joint->Deserialize(keys.GetKeys());
    RegisterEntity(joint, keys);
    return joint;
}

script::ObjectPtr Serializer::AddFixjoint(const EntitySerializer& keys) {
    return AddJoint(util::SharedPtr<JointEntity>(new FixJointEntity(JointSize())), keys);
}

script::ObjectPtr Serializer::AddHinge(const EntitySerializer& keys) {
    return AddJoint(util::SharedPtr<JointEntity>(new HingeEntity(JointSize())), keys);
}

script::ObjectPtr Serializer::AddSpring(const EntitySerializer& keys) {
    return AddJoint(util::SharedPtr<JointEntity>(new SpringEntity(JointSize())), keys);
}

script::ObjectPtr Serializer::AddPen(const EntitySerializer& keys) {
    PlaceBodies();
    const PenEntityPtr pen(new PenEntity(JointSize()));
    const auto found = keys.Has("geom") ? m_geomTable.find(keys.GetInt("geom")) : m_geomTable.end();
    if (found != m_geomTable.end()) {
        pen->SetGeom(found->second, keys.GetVec2("relPoint"));
    } else {
        pen->SetGeom(physics::Simulation::Get().GetWorldGeom(), keys.GetVec2("pos"));
    }
    pen->Deserialize(keys.GetKeys());
    RegisterEntity(pen, keys);
    return pen;
}

script::ObjectPtr Serializer::AddWater(const EntitySerializer& keys) {
    PlaceBodies();
    const math::Vec2List positions = keys.GetVec2s("vecs");
    physics::Simulation& sim = physics::Simulation::Get();
    for (const math::Vec2& position : positions) {
        if (math::IsFinite(position)) {
            sim.AddParticle(
                physics::ParticlePtr(new physics::Particle(position, math::Vec2(0, 0))));
        }
    }
    return script::ObjectPtr(new script::Void());
}

script::ObjectPtr Serializer::AddGroup(const EntitySerializer& keys) {
    PlaceBodies();
    const std::vector<int> ids = keys.GetInts("entityIDs");
    Scene& scene = Scene::Get();
    GroupPtr group;
    if (keys.Has("name")) {
        group = scene.GetOrCreateGroup(keys.GetString("name"));
    } else {
        group = GroupPtr(new Group());
        scene.AddGroup(group);
    }
    for (int id : ids) {
        const auto found = m_entityTable.find(id);
        if (found != m_entityTable.end()) {
            group->Add(found->second);
        } else {
            Log(logging::Warning, "Couldn't find entity with ID " + std::to_string(id));
        }
    }
    return script::ObjectPtr(new script::Void());
}

script::ObjectPtr Serializer::AddWidget(const EntitySerializer& keys) {
    PlaceBodies();
    // Windows belong to the interface, which a scene without one does without.
    const util::String name = keys.Has("widgetID") ? keys.GetString("widgetID") : "";
    Log(logging::Warning, "Couldn't open window \"" + name + "\" of the scene");
    return script::ObjectPtr(new script::Void());
}

// The old format.

namespace {

struct OldType {
    const char* type;
    int phase;
    script::ObjectPtr (Serializer::*creator)(const EntitySerializer&);
};

const OldType kOldTypes[] = {
    {"plane", 1, &Serializer::AddPlane},       {"circle", 1, &Serializer::AddCircle},
    {"polygon", 1, &Serializer::AddPolygon},   {"box", 1, &Serializer::AddBox},
    {"fixjoint", 2, &Serializer::AddFixjoint}, {"hinge", 2, &Serializer::AddHinge},
    {"spring", 2, &Serializer::AddSpring},     {"pen", 2, &Serializer::AddPen},
    {"water", 3, &Serializer::AddWater},       {"group", 3, &Serializer::AddGroup}};

}  // namespace

bool Serializer::CreateOld(const EntitySerializer& keys, int phase) {
    const util::String type = keys.GetString("type");
    for (const OldType& entry : kOldTypes) {
        if (type != entry.type) {
            continue;
        }
        if (entry.phase != phase) {
            return false;
        }
        // Old joints and pens were drawn small.
        if (type == "spring") {
            AddJoint(util::SharedPtr<JointEntity>(new SpringEntity(0.1f)), keys);
        } else if (type == "fixjoint") {
            AddJoint(util::SharedPtr<JointEntity>(new FixJointEntity(0.1f)), keys);
        } else {
            (this->*entry.creator)(keys);
        }
        return true;
    }
    if (phase == 1) {
        Log(logging::Warning, "Unknown type: " + type);
    }
    return false;
}

void Serializer::DeserializeOld(const util::String& text) {
    script::Parser& parser = script::Parser::Get();
    const script::ClosurePtr closure(
        new script::Closure("Deserialize_closure", parser.GetRootClosure()));
    const script::CodeBlockPtr tree = parser.Parse(text);
    if (!tree) {
        return;
    }
    std::vector<EntitySerializer> blocks;
    try {
        for (const script::ExpressionPtr& statement : tree->GetElements()) {
            if (const auto* assignment = dynamic_cast<const script::Assignment*>(statement.Get())) {
                const script::IdentifierPtr& target = assignment->GetTarget();
                if (!target->GetOwnerExpression() && target->GetName() == "version") {
                    FileInfo::Get().version->SetNative(
                        script::ObjectToValue<int>(assignment->GetSource()->Evaluate(closure)));
                } else {
                    Log(logging::Warning,
                        "Unknown constant declared in scene file: " + statement->ToCode());
                }
            } else if (dynamic_cast<const script::FunctionDeclaration*>(statement.Get())) {
                const script::FunctionPtr function =
                    util::DynamicPointerCast<script::Function>(statement->Evaluate(closure));
                function->Call(script::ObjectList());
                blocks.push_back(EntitySerializer::FromClosure(function->GetLastCallClosure()));
            } else {
                Log(logging::Warning,
                    "Unknown garbage found in scene file: " + statement->ToCode());
            }
        }
    } catch (const std::exception& e) {
        Log(logging::Warning, "An error occurred while deserializing: " + util::String(e.what()));
    }
    const char* const failures[] = {
        "Exception caught when loading geometry: ", "Exception caught when loading non-geometry: ",
        "Exception caught when loading water or group: "};
    for (int phase = 1; phase <= 3; ++phase) {
        for (const EntitySerializer& keys : blocks) {
            try {
                CreateOld(keys, phase);
            } catch (const std::exception& e) {
                Log(logging::Warning, failures[phase - 1] + util::String(e.what()));
            }
        }
    }
}

}  // namespace app
