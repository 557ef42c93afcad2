#include "physics/Geom.h"

#include "physics/AbstractBody.h"
#include "physics/Body.h"
#include "physics/MaterialDefaults.h"

namespace physics {

namespace {

// The world geom, made first, is 0.
size_t s_nextID = 0;

}  // namespace

Geom::Geom()
    : density(MaterialDefaults::Current().density),
      friction(MaterialDefaults::Current().friction),
      restitution(MaterialDefaults::Current().restitution),
      m_id(s_nextID++) {}

// A copy has the same shape and material but is loose: no owner, no hinge partners.
Geom::Geom(const Geom& other)
    : util::Pointee(other),
      density(other.density),
      friction(other.friction),
      restitution(other.restitution),
      airFrictionMult(other.airFrictionMult),
      collideWater(other.collideWater),
      collideSet(other.collideSet),
      m_id(s_nextID++),
      m_worldToLocal(other.m_worldToLocal),
      m_localToWorld(other.m_localToWorld),
      m_position(other.m_position) {}

Geom::~Geom() = default;

void Geom::SetTransform(const Transform& localToWorld) {
    m_localToWorld = localToWorld;
    m_worldToLocal = localToWorld.Inverted();
    m_position = localToWorld.translation;
}

void Geom::AddNoCollide(Geom* other) {
    ++m_noCollide[other];
}

void Geom::RemoveNoCollide(Geom* other) {
    auto it = m_noCollide.find(other);
    if (it == m_noCollide.end()) {
        return;
    }
    if (--it->second <= 0) {
        m_noCollide.erase(other);
    }
}

void Geom::RecalcGeoms() {
    // Held for the call: the owner's rebuild detaches this geom, which may hold its only
    // reference.
    const AbstractBodyPtr owner = m_body;
    if (Body* body = dynamic_cast<Body*>(owner.Get())) {
        body->RecalcGeoms();
    }
}

size_t Geom::PeekNextID() {
    return s_nextID;
}

bool CanCollide(const AbstractBody* bodyA, Geom* geomA, const AbstractBody* bodyB, Geom* geomB) {
    if ((geomA->collideSet & geomB->collideSet & 0x1F) == 0) {
        return false;
    }
    if (!bodyA || !bodyB || bodyA == bodyB) {
        return false;
    }
    const bool aMoves = !bodyA->IsStatic() && bodyA->GetMassInv() != 0;
    const bool bMoves = !bodyB->IsStatic() && bodyB->GetMassInv() != 0;
    if (!aMoves && !bMoves) {
        return false;
    }
    return !geomA->IsNoCollide(geomB);
}

}  // namespace physics
