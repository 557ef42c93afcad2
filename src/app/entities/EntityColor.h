#pragma once

#include "math/Vector4.h"
#include "util/Random.h"

namespace app {

// A fill colour for a new shape: a random hue and saturation from a point in the unit disc,
// a lightness biased away from the middle, never near black and never close to the sky.
math::Vec4 RandomEntityColor(util::Random& random, const math::Vec4& skyColor);

// Where new entities take their colour from: the application sets the stream and the sky;
// without it a default stream and a black sky serve.
class EntityColorSource {
public:
    static math::Vec4 Next();
    static void SetRandom(util::Random* random) { s_random = random; }
    static void SetSkyColor(const math::Vec4& sky) { s_sky = sky; }

private:
    static util::Random* s_random;
    static math::Vec4 s_sky;
};

}  // namespace app
