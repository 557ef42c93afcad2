#include "Noise.h"

namespace artgen {

float Rng::Uniform(float lo, float hi) {
    // splitmix64
    m_state += 0x9e3779b97f4a7c15ull;
    uint64_t z = m_state;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
    z ^= z >> 31;
    return lo + (hi - lo) * static_cast<float>((z >> 40) * (1.0 / 16777216.0));
}

namespace {

float Lattice(int32_t x, int32_t y, uint32_t seed) {
    uint32_t h = static_cast<uint32_t>(x) * 0x8da6b343u ^ static_cast<uint32_t>(y) * 0xd8163841u ^
                 seed * 0xcb1ab31fu;
    h ^= h >> 15;
    h *= 0x2c1b3c6du;
    h ^= h >> 12;
    h *= 0x297a2d39u;
    h ^= h >> 15;
    return static_cast<float>(h & 0xffffff) / 16777215.0f;
}

}  // namespace

float ValueNoise(Vec2 p, uint32_t seed) {
    const float fx = std::floor(p.x);
    const float fy = std::floor(p.y);
    const int32_t x = static_cast<int32_t>(fx);
    const int32_t y = static_cast<int32_t>(fy);
    const float tx = Smoothstep(0, 1, p.x - fx);
    const float ty = Smoothstep(0, 1, p.y - fy);
    const float top = Lerp(Lattice(x, y, seed), Lattice(x + 1, y, seed), tx);
    const float bottom = Lerp(Lattice(x, y + 1, seed), Lattice(x + 1, y + 1, seed), tx);
    return Lerp(top, bottom, ty);
}

float FractalNoise(Vec2 p, uint32_t seed, int octaves) {
    float sum = 0;
    float weight = 1;
    float total = 0;
    for (int i = 0; i < octaves; ++i) {
        sum += weight * ValueNoise(p, seed + i);
        total += weight;
        weight *= 0.5f;
        p = p * 2.0f;
    }
    return sum / total;
}

}  // namespace artgen
