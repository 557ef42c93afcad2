#include "math/MathUtil.h"

#include "util/Assert.h"

namespace math {

Vec2 FindMainAxisSimple(const Vec2* points, size_t nPoints) {
    CODE_ASSERT(nPoints > 1);
    size_t bestI = 0;
    size_t bestJ = 1;
    float bestDistance = -1;
    for (size_t i = 0; i < nPoints; ++i) {
        for (size_t j = i + 1; j < nPoints; ++j) {
            const float distance = (points[j] - points[i]).SquaredLength();
            if (distance > bestDistance) {
                bestDistance = distance;
                bestI = i;
                bestJ = j;
            }
        }
    }
    return Normalized(points[bestJ] - points[bestI]);
}

}  // namespace math
