#include "physics/Body.h"

#include <algorithm>
#include <cmath>

#include "logging/Log.h"
#include "math/MathUtil.h"
#include "physics/Shapes.h"
#include "util/Assert.h"
#include "util/Pointee.h"

namespace physics {

Body::~Body() = default;

void Body::UpdateTransforms() {
    angle = WrappedAngle(angle);
    m_transform = Transform::FromAngle(angle, position);
    m_inverseTransform = m_transform.Inverted();
    PlaceGeoms();
}

void Body::PlaceGeoms() {
    for (const PlacedGeom& bp : m_placedGeoms) {
        bp.geom->SetTransform(m_transform * bp.placed);
    }
}

Body::State Body::GetState() const {
    return State{m_placedGeoms,   m_transform, m_inverseTransform, m_mass,   m_massInv, m_inertia,
                 m_inertiaInv,    m_area,      position,           velocity, force,     angle,
                 angularVelocity, torque,      IsStatic()};
}

bool Body::SetState(const State& state) {
    if (state.placedGeoms.size() != m_geoms.size()) {
        return false;
    }
    for (const PlacedGeom& placed : state.placedGeoms) {
        if (!m_geoms.Contains(placed.geom) || placed.geom->GetBodyPtr().Get() != this) {
            return false;
        }
    }
    m_placedGeoms = state.placedGeoms;
    m_transform = state.transform;
    m_inverseTransform = state.inverseTransform;
    m_mass = state.mass;
    m_massInv = state.massInv;
    m_inertia = state.inertia;
    m_inertiaInv = state.inertiaInv;
    m_area = state.area;
    position = state.position;
    velocity = state.velocity;
    force = state.force;
    angle = state.angle;
    angularVelocity = state.angularVelocity;
    torque = state.torque;
    SetStatic(state.isStatic);
    PlaceGeoms();
    return true;
}

bool Body::IsBad() const {
    for (const PlacedGeom& placed : m_placedGeoms) {
        const PlacedGeom* bp = &placed;
        if (bp->geom->GetBodyPtr().Get() != this) {
            ::AssertionFailed("bp->geom->GetBodyPtr() == this", true, true, __PRETTY_FUNCTION__,
                              __FILE__, __LINE__);
        }
    }
    return AbstractBody::IsBad() || m_placedGeoms.empty();
}

void Body::SetUnitMass() {
    m_inertia = 1;
    m_inertiaInv = 1;
    m_mass = 1;
    m_massInv = 1;
}

void Body::SetGeoms(const GeomSet& newGeoms) {
    using math::IsFinite;

    // Our own copy: the argument may be our own set, which is emptied below, and the copy
    // keeps every geom alive while it changes hands. It is sorted by ID, because the set's
    // order follows addresses: sums over geoms, and all later walks of the placed list,
    // must come out the same in every run.
    std::vector<GeomPtr> geoms(newGeoms.begin(), newGeoms.end());
    std::sort(geoms.begin(), geoms.end(),
              [](const GeomPtr& a, const GeomPtr& b) { return a->GetID() < b->GetID(); });
    // Detaching the present geoms drops their references to this body, which may have been
    // the only ones. The lock keeps it alive to the end, yet never deletes a body that
    // nobody owned to begin with.
    const util::WeakPtr<Body> weakSelf(this);
    const util::LockPtr<Body> keepAlive = weakSelf.Lock();

    if (GetID() == 0) {
        int worldGeomCount = 0;
        for (auto g = geoms.begin(); g != geoms.end(); ++g) {
            if (dynamic_cast<WorldGeom*>(g->Get())) {
                CODE_ASSERT((*g)->GetID() == 0);
                ++worldGeomCount;
            }
        }
        CODE_ASSERT(worldGeomCount == 1);
    }

    for (const GeomPtr& geom : m_geoms) {
        if (geom->GetBody() == this) {
            geom->SetBody(nullptr);
        }
    }
    m_placedGeoms.clear();
    m_geoms.clear();
    m_geomsToPlace = false;

    if (geoms.empty()) {
        SetUnitMass();
        return;
    }

    angle = 0;
    position = math::Vec2(0, 0);
    m_area = 0;
    m_inertia = 0;
    m_mass = 0;

    struct Accepted {
        GeomPtr geom;
        math::real mass;
        math::Vec2 position;
    };
    std::vector<Accepted> accepted;
    accepted.reserve(geoms.size());
    for (const GeomPtr& geom : geoms) {
        const math::real area = geom->Area();
        const math::real m = geom->density * area;
        const math::Vec2 p = geom->GetPosition();
        // Written as "not above 0" so that NaN is turned away as well.
        if (!(m > 0) || !(area > 0) || !(geom->InertiaPerMass() * m > 0) || !IsFinite(p)) {
            Log(logging::Warning, "Bad geometry in Body::AddGeoms");
            continue;
        }
        m_mass += m;
        m_area += area;
        if (IsFinite(m)) {
            position += p * m;
        }
        accepted.push_back({geom, m, p});
    }

    if (accepted.empty()) {
        SetUnitMass();
        return;
    }

    // An infinite body has its centre at the origin.
    if (!IsFinite(m_mass) || m_mass == 0 || !IsFinite(position)) {
        position = math::Vec2(0, 0);
    } else {
        position /= m_mass;
    }

    m_transform = Transform{{1, 0}, position};
    m_inverseTransform = m_transform.Inverted();
    m_massInv = 1 / m_mass;
    m_inertia = 0;

    for (const Accepted& entry : accepted) {
        const GeomPtr& geom = entry.geom;
        // Parallel axis theorem: own inertia about its centre plus m d^2.
        m_inertia += geom->InertiaPerMass() * entry.mass +
                     entry.mass * (position - entry.position).SquaredLength();
        const Transform placed = m_inverseTransform * geom->GetTransform();
        m_placedGeoms.push_back({geom, placed, placed.Inverted()});
        // Held for the call: the other body may live only through this geom's reference.
        const AbstractBodyPtr previous = geom->GetBodyPtr();
        if (Body* other = dynamic_cast<Body*>(previous.Get())) {
            other->RemoveGeom(geom);
        }
        geom->SetBody(AbstractBodyPtr(this));
        m_geoms.insert(geom);
    }

    if (!IsFinite(m_mass)) {
        m_inertia = math::Infinity();
    }
    m_inertiaInv = 1 / m_inertia;

    if (!(IsFinite(m_massInv) && m_massInv >= 0)) {
        ::AssertionFailed("IsFinite(m_massInv) && m_massInv>=0", true, true, __PRETTY_FUNCTION__,
                          __FILE__, __LINE__);
    }
    if (!(IsFinite(m_inertiaInv) && m_inertiaInv >= 0)) {
        ::AssertionFailed("IsFinite(m_inertiaInv) && m_inertiaInv>=0", true, true,
                          __PRETTY_FUNCTION__, __FILE__, __LINE__);
    }
    for (const PlacedGeom& placed : m_placedGeoms) {
        const PlacedGeom* bp = &placed;
        if (bp->geom->GetBodyPtr().Get() != this) {
            ::AssertionFailed("bp->geom->GetBodyPtr() == this", true, true, __PRETTY_FUNCTION__,
                              __FILE__, __LINE__);
        }
    }

    UpdateTransforms();
}

void Body::AddGeom(GeomPtr geom) {
    GeomSet geoms = m_geoms;
    geoms.insert(geom);
    SetGeoms(geoms);
}

void Body::AddGeomLater(const GeomPtr& geom) {
    if (m_geoms.Contains(geom)) {
        return;
    }
    if (Body* owner = dynamic_cast<Body*>(geom->GetBody()); owner && owner != this) {
        owner->RemoveGeom(geom);
    }
    m_geoms.insert(geom);
    geom->SetBody(AbstractBodyPtr(this));
    m_geomsToPlace = true;
}

void Body::PlaceAddedGeoms() {
    if (m_geomsToPlace) {
        m_geomsToPlace = false;
        SetGeoms(GeomSet(m_geoms));
    }
}

void Body::AddGeoms(const GeomSet& more) {
    GeomSet geoms = m_geoms;
    for (const GeomPtr& geom : more) {
        geoms.insert(geom);
    }
    SetGeoms(geoms);
}

void Body::SetGeom(GeomPtr geom) {
    GeomSet geoms;
    geoms.insert(geom);
    SetGeoms(geoms);
}

void Body::RemoveGeom(GeomPtr geom) {
    CODE_ASSERT(geom->GetID() != 0);
    GeomSet geoms = m_geoms;
    geoms.erase(geom);
    SetGeoms(geoms);
}

void Body::RecalcGeoms() {
    SetGeoms(m_geoms);
}

}  // namespace physics
