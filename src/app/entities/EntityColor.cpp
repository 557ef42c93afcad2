#include "app/entities/EntityColor.h"

#include <cmath>

namespace app {

namespace {

// Hue in degrees, saturation and lightness in [0, 1].
math::Vec4 FromHSL(float hue, float saturation, float lightness) {
    const float chroma = (1 - std::fabs(2 * lightness - 1)) * saturation;
    const float sector = std::fmod(hue / 60.0f, 6.0f);
    const float x = chroma * (1 - std::fabs(std::fmod(sector, 2.0f) - 1));
    float r = 0;
    float g = 0;
    float b = 0;
    if (sector < 1) {
        r = chroma, g = x;
    } else if (sector < 2) {
        r = x, g = chroma;
    } else if (sector < 3) {
        g = chroma, b = x;
    } else if (sector < 4) {
        g = x, b = chroma;
    } else if (sector < 5) {
        r = x, b = chroma;
    } else {
        r = chroma, b = x;
    }
    const float m = lightness - chroma / 2;
    return {r + m, g + m, b + m, 1};
}

}  // namespace

util::Random* EntityColorSource::s_random = nullptr;
math::Vec4 EntityColorSource::s_sky{0, 0, 0, 1};

math::Vec4 RandomEntityColor(util::Random& random, const math::Vec4& sky) {
    while (true) {
        float value = std::cbrt(random.GetUniform(0, 1)) / 2;
        if (random.GetUniform(0, 1) < 0.5f) {
            value = 1 - value;
        }
        float x = 0;
        float y = 0;
        do {
            x = random.GetUniform(-1, 1);
            y = random.GetUniform(-1, 1);
        } while (x * x + y * y > 1);
        float hue = std::atan2(x, y) * 180.0f / 3.1415927f;
        if (hue < 0) {
            hue += 360;
        }
        const math::Vec4 c = FromHSL(hue, std::sqrt(x * x + y * y), value);
        const float luminance = 0.3f * c.x + 0.59f * c.y + 0.11f * c.z;
        const float dr = c.x - sky.x;
        const float dg = c.y - sky.y;
        const float db = c.z - sky.z;
        if (luminance >= 0.05f && std::sqrt(dr * dr + dg * dg + db * db) >= 0.1f) {
            return c;
        }
    }
}

math::Vec4 EntityColorSource::Next() {
    static util::Random fallback;
    return RandomEntityColor(s_random ? *s_random : fallback, s_sky);
}

}  // namespace app
