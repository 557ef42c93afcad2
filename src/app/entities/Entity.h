#pragma once

#include <utility>
#include <vector>

#include "math/BoundingBox2.h"
#include "math/Matrix3.h"
#include "math/Real.h"
#include "math/Vector2.h"
#include "math/Vector4.h"
#include "physics/Polygon.h"
#include "physics/Transform.h"
#include "script/Attributes.h"
#include "script/Objects.h"
#include "script/Reflected.h"
#include "util/HashMap.h"
#include "util/String.h"

namespace app {

class Entity;
using EntityPtr = util::SharedPtr<Entity>;
class Chain;
using ChainPtr = util::SharedPtr<Chain>;
// An entity's file keys and their values.
using AttributeMap = util::HashMap<util::String, script::ObjectPtr>;
// The variables of an entity that a map sets, each with its value from the map, in the
// order Deserialize sets them. An entity never drops a variable, so the plain pointers
// stay good for as long as the entity lives.
using AttributeValues = std::vector<std::pair<script::Variable*, script::ObjectPtr>>;
class Painter;

// What the user sees, selects and edits: a shape, a joint or a pen. It keeps the
// attributes that scripts, scene files and panels read and write, and can be put into and
// taken out of the physics world.
class Entity : public script::Reflected {
public:
    explicit Entity(const util::String& reflectedName);
    ~Entity() override;
    Entity(const Entity&) = delete;
    Entity& operator=(const Entity&) = delete;

    // Once a frame while in the simulation.
    virtual void Update(math::real /*dt*/) {}
    // Once a frame, in world units, in the frame the caller set on the painter.
    virtual void Draw(Painter& painter) const = 0;
    // The point lies on the entity.
    virtual bool Contains(const math::Vec2& point) const = 0;
    // The stroke, a list of segments, passes through the entity: the erase gesture.
    virtual bool IntersectsLines(const physics::LineList& stroke) const = 0;
    // The whole entity lies inside the polygon: the encircle gesture.
    virtual bool IsInside(const physics::Polygon& polygon) const = 0;
    virtual void AddToSimulation() = 0;
    virtual void RemoveFromSimulation() = 0;
    virtual bool IsInSimulation() const { return true; }
    virtual void BeginTransform() { m_transforming = true; }
    // Rotates and translates the entity in the world.
    virtual void Transform(const physics::Transform& transform) = 0;
    virtual void EndTransform() { m_transforming = false; }
    // The file keys: every attribute, and more in each kind.
    virtual void Serialize(AttributeMap& out) const;
    // Every attribute with a key first, then what needs more than a plain assignment.
    virtual void Deserialize(const AttributeMap& in);
    // Serialize, and beside the map the variables it sets, found once; for snapshots,
    // which restore each entity twice and many times over.
    void Capture(AttributeMap& out, AttributeValues& values) const;
    // Deserialize from what Capture took, without finding each variable by its name.
    void Restore(const AttributeMap& in, const AttributeValues& values);
    virtual math::BoundingBox2f GetBoundingBox() const = 0;
    // Kinetic plus potential energy.
    virtual math::real GetEnergy() const { return 0; }
    bool Intersects(const math::BoundingBox2f& box) const { return GetBoundingBox().Overlaps(box); }
    // Every attribute the source's kind shares with this one (colour and depth always), as
    // the script holds it; not the id.
    virtual void CopyAttributes(const Entity& source);

    bool IsTransforming() const { return m_transforming; }
    // The colour of a shape's border and of the ring or outline around a selected joint or
    // pen: it tells selected and under the mouse apart, and otherwise darkens the fill.
    math::Vec4 GetBorderColor() const;
    // The next id to be drawn, for tests of the running counter.
    static int PeekNextID();

    // The chain the entity is a link of, or null.
    const ChainPtr& GetChain() const { return m_chain; }
    void SetChain(const ChainPtr& chain);

    script::AttribPtr<int> entityID;
    script::AttribPtr<math::Vec4> color;
    script::AttribPtr<float> zDepth;

    // Set every frame by the drawing pass.
    bool selected = false;
    bool mouseOver = false;
    // Applied only when drawing, in world coordinates: a tool shows where the entity would
    // go before it moves it. Identity when there is none.
    math::Mat3 previewTransform = math::Mat3::Identity();

private:
    // Whether Deserialize sets the variable from the key of its name.
    bool IsSetByKey(const script::Variable* variable) const;

    bool m_transforming = false;
    ChainPtr m_chain;
    // The values Deserialize takes its variables from while Restore runs.
    const AttributeValues* m_restoring = nullptr;
};

// Some segment of the stroke passes within the radius of the point: the erase test of
// everything small and round.
bool StrokePassesNear(const physics::LineList& stroke, const math::Vec2& point, float radius);

// Reads a key that is there; false if it is missing. Conversion failures throw.
template <class T>
bool ReadKey(const AttributeMap& in, const util::String& key, T& out) {
    const auto found = in.find(key);
    if (found == in.end()) {
        return false;
    }
    out = script::ObjectToValue<T>(found->second);
    return true;
}

}  // namespace app
