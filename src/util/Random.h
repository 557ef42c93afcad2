#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>

#include "util/Assert.h"

namespace util {

// The 32-bit Mersenne Twister MT19937 with its published constants and seeding. Written
// out rather than taken from <random> so that its state can be loaded word by word the
// same way with every standard library.
class MersenneTwister {
public:
    static constexpr size_t StateSize = 624;
    static constexpr uint32_t DefaultSeed = 5489u;

    explicit MersenneTwister(uint32_t seed = DefaultSeed) { Seed(seed); }

    void Seed(uint32_t seed) {
        m_state[0] = seed;
        for (size_t i = 1; i < StateSize; ++i) {
            const uint32_t previous = m_state[i - 1];
            m_state[i] = 1812433253u * (previous ^ (previous >> 30)) + static_cast<uint32_t>(i);
        }
        m_index = StateSize;
    }

    // Takes the words as the state just after seeding: the next output twists them first.
    void SetState(const uint32_t words[StateSize]) {
        for (size_t i = 0; i < StateSize; ++i) {
            m_state[i] = words[i];
        }
        m_index = StateSize;
    }

    uint32_t operator()() {
        if (m_index >= StateSize) {
            Twist();
        }
        uint32_t y = m_state[m_index++];
        y ^= y >> 11;
        y ^= (y << 7) & 0x9D2C5680u;
        y ^= (y << 15) & 0xEFC60000u;
        y ^= y >> 18;
        return y;
    }

private:
    void Twist() {
        constexpr size_t shift = 397;
        constexpr uint32_t upperMask = 0x80000000u;
        constexpr uint32_t lowerMask = 0x7FFFFFFFu;
        constexpr uint32_t matrix = 0x9908B0DFu;
        for (size_t i = 0; i < StateSize; ++i) {
            const uint32_t y =
                (m_state[i] & upperMask) | (m_state[(i + 1) % StateSize] & lowerMask);
            m_state[i] = m_state[(i + shift) % StateSize] ^ (y >> 1) ^ ((y & 1u) ? matrix : 0u);
        }
        m_index = 0;
    }

    uint32_t m_state[StateSize];
    size_t m_index;
};

// A private random stream for each user. Every instance takes a different seed from a
// process-wide counter that starts at the C library's clock, so instances never share a
// stream, and runs differ only by the start-up clock.
class Random {
public:
    Random() : Random(NextSeed()) {}

    // A fixed seed, for users and tests that must repeat themselves.
    explicit Random(uint32_t seed) : m_seed(seed), m_intEngine(seed) {
        // The second engine's state is the first engine's next outputs, drawn from a copy
        // so that the first engine starts its own stream unadvanced.
        MersenneTwister copy = m_intEngine;
        uint32_t words[MersenneTwister::StateSize];
        for (uint32_t& word : words) {
            word = copy();
        }
        m_floatEngine.SetState(words);
    }

    uint32_t GetSeed() const { return m_seed; }

    // Uniform on [min, max]. Formed in extended precision and rounded at the end, so max
    // itself can come out.
    float GetUniform(float min, float max) {
        CODE_ASSERT(min <= max);
        const long double u = static_cast<long double>(m_floatEngine());
        const long double low = min;
        const long double high = max;
        return static_cast<float>(low + (high - low) * u * 0x1p-32L);
    }

    // Uniform on min to max - 1. Draws that would favour the low values are rejected,
    // so there is no modulo bias.
    int GetUniformInt(int min, int max) {
        CODE_ASSERT(min < max);
        const uint32_t range =
            static_cast<uint32_t>(static_cast<int64_t>(max) - static_cast<int64_t>(min));
        // 2^32 mod range: the count of low outputs that would be one too many.
        const uint32_t threshold = (0u - range) % range;
        uint32_t r = m_intEngine();
        while (r < threshold) {
            r = m_intEngine();
        }
        return static_cast<int>(static_cast<int64_t>(min) + static_cast<int64_t>(r % range));
    }

    // The seed the next default-constructed instance will take.
    static uint32_t PeekNextSeed() { return SeedCounter(); }

private:
    static uint32_t& SeedCounter() {
        static uint32_t counter = static_cast<uint32_t>(std::clock());
        return counter;
    }
    static uint32_t NextSeed() { return SeedCounter()++; }

    uint32_t m_seed;
    MersenneTwister m_intEngine;
    MersenneTwister m_floatEngine;
};

}  // namespace util
