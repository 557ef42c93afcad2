#pragma once

#include <vector>

#include "util/HashSet.h"
#include "util/Pointee.h"
#include "util/VectorPOD.h"

namespace physics {

class AbstractBody;
class Body;
class Geom;
class Circular;
class Circle;
class Box;
class Plane;
class WorldGeom;
class Polygon;
class Particle;
class Constraint;
class Contact;
class Hinge;
class Joint;
class Simulation;

using AbstractBodyPtr = util::SharedPtr<AbstractBody>;
using BodyPtr = util::SharedPtr<Body>;
using GeomPtr = util::SharedPtr<Geom>;
using CirclePtr = util::SharedPtr<Circle>;
using BoxPtr = util::SharedPtr<Box>;
using PlanePtr = util::SharedPtr<Plane>;
using PolygonPtr = util::SharedPtr<Polygon>;
using ParticlePtr = util::SharedPtr<Particle>;
using HingePtr = util::SharedPtr<Hinge>;
using JointPtr = util::SharedPtr<Joint>;

using GeomSet = util::HashSet<GeomPtr>;
using BodyList = std::vector<BodyPtr>;
using ParticleList = std::vector<ParticlePtr>;
using ConstraintList = util::VectorPOD<Constraint*>;
// A step's contacts are plain values, made and dropped by the thousand every step.
using ContactList = std::vector<Contact>;

}  // namespace physics
