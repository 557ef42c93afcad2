// Background clouds, 256x256: soft white puffs over a flat base, lit from above with a cool
// shade underneath, drawn by the program at 0.9 opacity over a blue sky.
#include "Artwork.h"
#include "Noise.h"
#include "Sdf.h"

namespace artgen {

namespace {

struct Puff {
    Vec2 centre;
    float radius;
};

struct CloudStyle {
    uint32_t seed;
    int basePuffs;    // along the flat base
    int heapedPuffs;  // piled on top
    float width;      // of the base
    float radius;     // of the largest puffs
    float spread;     // of the heap, as a share of the base's width
    float size;       // the share of the room inside the margin that the cloud fills
};

constexpr float kSide = 256;
constexpr float kMargin = 30;  // kept clear of puffs, so the cloud fades out well inside
constexpr float kFringe = 16;  // the width of the soft edge

// The highest point of the puffs above x, or 0 (the base) where none reaches.
float TopAt(const std::vector<Puff>& puffs, float x) {
    float top = 0;
    for (const Puff& puff : puffs) {
        const float dx = x - puff.centre.x;
        if (std::abs(dx) < puff.radius) {
            top = std::min(top, puff.centre.y - std::sqrt(puff.radius * puff.radius - dx * dx));
        }
    }
    return top;
}

std::vector<Puff> Layout(const CloudStyle& style) {
    Rng rng(style.seed);
    std::vector<Puff> puffs;
    for (int i = 0; i < style.basePuffs; ++i) {
        const float t = (i + 0.5f) / style.basePuffs;
        const float r =
            style.radius * (0.55f + 0.3f * std::sin(kPi * t)) * rng.Uniform(0.85f, 1.1f);
        puffs.push_back({{(t - 0.5f) * style.width + rng.Uniform(-3, 3), -0.45f * r}, r});
    }
    // Each heaped puff sits on what is already there, rising partly out of it; the mean of two
    // draws keeps the heap toward the middle.
    for (int i = 0; i < style.heapedPuffs; ++i) {
        const float x =
            (rng.Uniform(-0.5f, 0.5f) + rng.Uniform(-0.5f, 0.5f)) * style.spread * style.width;
        const float r =
            style.radius * rng.Uniform(0.6f, 1.0f) * (1 - 0.5f * std::abs(x) / style.width);
        puffs.push_back({{x, TopAt(puffs, x) + r * rng.Uniform(0.5f, 0.7f)}, r});
    }
    // Scales and centres the heap to fit inside the margin.
    float left = 1e9f, right = -1e9f, top = 1e9f;
    for (const Puff& puff : puffs) {
        left = std::min(left, puff.centre.x - puff.radius);
        right = std::max(right, puff.centre.x + puff.radius);
        top = std::min(top, puff.centre.y - puff.radius);
    }
    const float room = (kSide - 2 * kMargin) * style.size;
    const float scale = std::min({room / (right - left), room / -top});
    const Vec2 shift{kSide / 2 - scale * (left + right) / 2, kSide / 2 - scale * top / 2};
    for (Puff& puff : puffs) {
        puff = {shift + puff.centre * scale, puff.radius * scale};
    }
    return puffs;
}

Canvas Cloud(const CloudStyle& style) {
    const std::vector<Puff> puffs = Layout(style);
    float base = 0;
    float top = kSide;
    std::vector<Shape> discs;
    for (const Puff& puff : puffs) {
        discs.push_back(sdf::Circle(puff.centre, puff.radius));
        base = std::max(base, puff.centre.y);
        top = std::min(top, puff.centre.y - puff.radius);
    }
    const Shape heap = sdf::SmoothUnion(std::move(discs), 12);
    // Lit from above, a little from the left and toward the viewer.
    const float light[3] = {-0.3f, -0.75f, 0.6f};
    const Rgba shadow{0.66f, 0.71f, 0.84f, 1};

    Canvas canvas(static_cast<int>(kSide), static_cast<int>(kSide));
    canvas.Layer([&](Vec2 p) {
        // The outline: the puffs cut flat along the base, frayed by broad noise and fluff.
        const float fray = (FractalNoise(p / 34.0f, style.seed, 2) - 0.5f) * 18 +
                           (FractalNoise(p / 9.0f, style.seed + 5, 2) - 0.5f) * 6;
        const float d = std::max(heap(p), 0.9f * (p.y - base)) + fray;
        // Whatever the noise does, nothing reaches the image's edges.
        const float edge = std::min({p.x, p.y, kSide - p.x, kSide - p.y});
        const float density = Smoothstep(kFringe * 0.4f, -kFringe, d) * Smoothstep(4, 16, edge);
        if (density <= 0) {
            return Rgba{};
        }
        // Each puff is a dome; the nearest dome's surface, blended where they meet, gives the
        // normal.
        std::vector<float> heights;
        float best = -1e9f;
        for (const Puff& puff : puffs) {
            const float dist = Length(p - puff.centre);
            heights.push_back(dist < puff.radius
                                  ? std::sqrt(puff.radius * puff.radius - dist * dist)
                                  : puff.radius - dist);
            best = std::max(best, heights.back());
        }
        float normal[3] = {0, 0, 0};
        for (size_t i = 0; i < puffs.size(); ++i) {
            const float w = std::exp((heights[i] - best) / 8);
            const Vec2 v = (p - puffs[i].centre) / puffs[i].radius;
            normal[0] += w * v.x;
            normal[1] += w * v.y;
            normal[2] += w * std::max(heights[i], 0.0f) / puffs[i].radius;
        }
        const float length =
            std::sqrt(normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2]) +
            1e-6f;
        const float lit = std::max(
            0.0f, (normal[0] * light[0] + normal[1] * light[1] + normal[2] * light[2]) / length);
        // Soft domes, a cloud that darkens toward its base, and a little texture.
        const float height = Clamp01((p.y - top) / (base - top));
        float brightness = (0.5f + 0.58f * lit) * Lerp(1.1f, 0.8f, height * height);
        brightness += (FractalNoise(p / 14.0f, style.seed + 11, 3) - 0.5f) * 0.12f;
        return WithAlpha(Mix(shadow, Grey(1), Clamp01(brightness)), density * 0.97f);
    });
    return canvas;
}

}  // namespace

std::vector<Artwork> Clouds() {
    const CloudStyle styles[] = {
        {11, 6, 7, 160, 34, 0.5f, 1.0f},    // a broad heap
        {23, 4, 9, 100, 34, 0.4f, 1.0f},    // a tall tower
        {37, 7, 6, 190, 26, 0.6f, 1.0f},    // a long low bank
        {41, 5, 6, 150, 30, 0.8f, 0.95f},   // a lumpy one with two tops
        {59, 4, 5, 100, 30, 0.45f, 0.75f},  // a small round one
    };
    std::vector<Artwork> clouds;
    for (int i = 0; i < 5; ++i) {
        const CloudStyle style = styles[i];
        clouds.push_back({"background/cloud" + std::to_string(i + 1) + ".png",
                          [style] { return Cloud(style); }});
    }
    return clouds;
}

}  // namespace artgen
