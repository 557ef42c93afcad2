// Figures shared by the cursors, the tool icons and the entity textures. Each is made in its
// own pixels around the origin, at the size of a 32-pixel cursor; sdf::Placed turns, scales
// and moves it onto a canvas.
#pragma once

#include <functional>
#include <vector>

#include "Canvas.h"

namespace artgen {

// Ink of the line width around the shape, then the fill over it. Parts inked one after the
// other leave a line where a later part overlaps an earlier one, as a drawing would.
void Inked(Canvas& canvas, const Shape& shape, const Paint& fill, float line, Rgba ink);

// Brushed metal lit from the top left: light at the upper left of the radius around the
// centre, dark at the lower right.
Paint Metal(Vec2 centre, float radius, float light, float dark);
// A round wire or tube of the half width seen from the side: the edge colour at its
// silhouette, the core colour along its middle.
Paint Tube(float halfWidth, Rgba core, Rgba edge);

namespace figure {

// An arrow along x, double-headed from -reach to reach.
Shape DoubleArrow(float reach, float shaftHalfWidth, float headLength, float headHalfWidth);
// An arrow along x from tail to its tip at reach.
Shape Arrow(float tail, float reach, float shaftHalfWidth, float headLength, float headHalfWidth);
// Two double-headed arrows crossing at the origin.
Shape FourWayArrow(float reach, float shaftHalfWidth, float headLength, float headHalfWidth);
// A ring around the origin from one angle to the other (clockwise on screen), with a head at
// the second end pointing onward.
Shape CircularArrow(float radius, float halfWidth, float from, float to, float headLength,
                    float headHalfWidth);
// The desktop pointer: its tip at the origin, its body toward the lower right.
Shape Pointer();
// A slimmer pointer for precise work.
Shape SlimPointer();

// A hand seen from the back, the palm around the origin; parts in drawing order.
std::vector<Shape> OpenHand();
std::vector<Shape> ClosedHand();

// A pencil with its tip at the origin, lying along +x.
struct Pencil {
    Shape whole;
    Shape wood;  // the sharpened cone
    Shape lead;
    Shape body;
    Shape band;  // the metal band that holds the eraser
    Shape eraser;
};
Pencil MakePencil();

// A paint brush with the tip of its bristles at the origin, lying along +x.
struct Brush {
    Shape whole;
    Shape bristles;
    Shape ferrule;
    Shape handle;
};
Brush MakeBrush();

// An eraser block whose rubbing end is centred on the origin, lying along +x.
struct Eraser {
    Shape whole;
    Shape rubber;  // the worn end
    Shape sleeve;
};
Eraser MakeEraser();

// A coil spring seen from the side a little off its axis, lying along x through the origin.
// The wire is at the top of a turn at the origin for angle 0, and a turn advances turnLength.
struct Coil {
    // The halves of the turns behind and in front, to be inked one over the other.
    Shape back;
    Shape front;
    // Each half turn by itself, those behind first. Its wire nearest a point has a depth from
    // -1 (behind the axis) to 1 (nearest the viewer), and the point lies `across` from the
    // wire's axis, its ends carried on straight so that shading runs on into the next half.
    struct Sample {
        float depth;
        float across;
    };
    struct Half {
        Shape shape;
        std::function<Sample(Vec2)> sample;
    };
    std::vector<Half> halves;
};
Coil MakeCoil(Vec2 origin, float fromAngle, float toAngle, float turnLength, float radius,
              float lean, float wireHalfWidth);

}  // namespace figure
}  // namespace artgen
