#pragma once

// The large scenes the scene benchmarks share: shapes on a grid, hinges between each shape
// and the one above it, and a block of water beside them.

namespace bench {

struct SceneSize {
    int shapes;  // boxes, circles and polygons together
    int circles;
    int polygons;  // irregular pentagons, each with its own distance map
    int hinges;    // the first shapes, each hinged to the one above
    int particles;
};

// The singletons a scene needs, published to the script root as the program does; once.
void MakeServices();
// Clears the scene and the world and builds one of that size.
void BuildScene(const SceneSize& size);

}  // namespace bench
