// Signed-distance shapes: the building blocks every picture is drawn from.
#pragma once

#include <vector>

#include "Canvas.h"

namespace artgen::sdf {

Shape Circle(Vec2 centre, float radius);
// The band of the half width around a circle.
Shape Ring(Vec2 centre, float radius, float halfWidth);
// A box of the half size with corners rounded by the radius, turned by the angle.
Shape Box(Vec2 centre, Vec2 halfSize, float radius = 0, float angle = 0);
// A segment with round ends: a stroke of the pen.
Shape Capsule(Vec2 a, Vec2 b, float radius);
// An open line through the points, stroked with the radius.
Shape Polyline(std::vector<Vec2> points, float radius);
// A closed polygon; either winding.
Shape Polygon(std::vector<Vec2> points);
// The part of a ring from one angle to the other (clockwise on screen), with round ends.
Shape Arc(Vec2 centre, float radius, float from, float to, float halfWidth);
// A regular polygon with a corner at the angle.
Shape RegularPolygon(Vec2 centre, float radius, int corners, float angle = 0);

Shape Union(std::vector<Shape> shapes);
// A union whose seams are rounded over about k pixels: puffs of a cloud.
Shape SmoothUnion(std::vector<Shape> shapes, float k);
Shape Intersect(Shape a, Shape b);
Shape Subtract(Shape from, Shape cut);
// The shape grown outward (or shrunk, when negative) by the distance.
Shape Grow(Shape shape, float by);
// The band of the half width around the shape's edge.
Shape Outline(Shape shape, float halfWidth);
// A shape made around the origin in its own units, turned by the angle, scaled and moved to
// the point.
Shape Placed(Shape shape, Vec2 at, float angle = 0, float scale = 1);

}  // namespace artgen::sdf
