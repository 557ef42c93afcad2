// Seeded randomness of the generator: the same seed gives the same picture on every run.
#pragma once

#include <cstdint>

#include "Geometry.h"

namespace artgen {

// A small generator of its own, so that no library's distributions can change the output.
class Rng {
public:
    explicit Rng(uint64_t seed) : m_state(seed) {}
    // Uniform in [lo, hi).
    float Uniform(float lo, float hi);

private:
    uint64_t m_state;
};

// Smooth value noise in [0, 1] with features about one unit apart.
float ValueNoise(Vec2 p, uint32_t seed);
// Octaves of value noise, each half the size and half the weight of the one before, in [0, 1].
float FractalNoise(Vec2 p, uint32_t seed, int octaves);

}  // namespace artgen
