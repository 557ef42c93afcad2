// Points and colours of the generator. Image coordinates: x to the right, y down, in pixels;
// a positive angle turns clockwise on screen.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace artgen {

constexpr float kPi = 3.14159265358979f;

struct Vec2 {
    float x = 0;
    float y = 0;
};

inline Vec2 operator+(Vec2 a, Vec2 b) {
    return {a.x + b.x, a.y + b.y};
}
inline Vec2 operator-(Vec2 a, Vec2 b) {
    return {a.x - b.x, a.y - b.y};
}
inline Vec2 operator-(Vec2 a) {
    return {-a.x, -a.y};
}
inline Vec2 operator*(Vec2 a, float s) {
    return {a.x * s, a.y * s};
}
inline Vec2 operator*(float s, Vec2 a) {
    return {a.x * s, a.y * s};
}
inline Vec2 operator/(Vec2 a, float s) {
    return {a.x / s, a.y / s};
}
inline float Dot(Vec2 a, Vec2 b) {
    return a.x * b.x + a.y * b.y;
}
inline float Cross(Vec2 a, Vec2 b) {
    return a.x * b.y - a.y * b.x;
}
inline float Length(Vec2 a) {
    return std::sqrt(Dot(a, a));
}
inline Vec2 Normalized(Vec2 a) {
    const float length = Length(a);
    return length > 0 ? a / length : Vec2{};
}
inline Vec2 Rotated(Vec2 a, float angle) {
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    return {a.x * c - a.y * s, a.x * s + a.y * c};
}
inline Vec2 Polar(float angle, float radius = 1) {
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

inline float Clamp01(float v) {
    return std::clamp(v, 0.0f, 1.0f);
}
inline float Lerp(float a, float b, float t) {
    return a + (b - a) * t;
}
inline float Smoothstep(float edge0, float edge1, float x) {
    const float t = Clamp01((x - edge0) / (edge1 - edge0));
    return t * t * (3 - 2 * t);
}

// A straight (not premultiplied) colour with its opacity.
struct Rgba {
    float r = 0;
    float g = 0;
    float b = 0;
    float a = 0;
};

inline Rgba Grey(float v, float a = 1) {
    return {v, v, v, a};
}
inline Rgba Hex(uint32_t rgb, float a = 1) {
    return {((rgb >> 16) & 0xff) / 255.0f, ((rgb >> 8) & 0xff) / 255.0f, (rgb & 0xff) / 255.0f, a};
}
inline Rgba Mix(Rgba a, Rgba b, float t) {
    return {Lerp(a.r, b.r, t), Lerp(a.g, b.g, t), Lerp(a.b, b.b, t), Lerp(a.a, b.a, t)};
}
inline Rgba WithAlpha(Rgba c, float a) {
    return {c.r, c.g, c.b, a};
}
// The colour darkened (below 1) or brightened toward white (above 1), keeping its opacity.
inline Rgba Shade(Rgba c, float k) {
    if (k <= 1) {
        return {c.r * k, c.g * k, c.b * k, c.a};
    }
    return Mix(c, {1, 1, 1, c.a}, std::min(k - 1, 1.0f));
}

}  // namespace artgen
