#pragma once

#include <cmath>
#include <cstddef>

#include "util/VectorPOD.h"

namespace math {

// Two components, x then y. Plain data: copied by value, safe in VectorPOD.
template <class T>
struct TVector2 {
    T x{};
    T y{};

    constexpr TVector2() = default;
    constexpr TVector2(T x_, T y_) : x(x_), y(y_) {}
    // Between element types only on request, since it may lose precision.
    template <class U>
    constexpr explicit TVector2(const TVector2<U>& other)
        : x(static_cast<T>(other.x)), y(static_cast<T>(other.y)) {}

    constexpr T& operator[](size_t i) { return i == 0 ? x : y; }
    constexpr const T& operator[](size_t i) const { return i == 0 ? x : y; }

    constexpr TVector2 operator-() const { return TVector2(-x, -y); }
    constexpr TVector2 operator+(const TVector2& o) const { return TVector2(x + o.x, y + o.y); }
    constexpr TVector2 operator-(const TVector2& o) const { return TVector2(x - o.x, y - o.y); }
    constexpr TVector2 operator*(T s) const { return TVector2(x * s, y * s); }
    constexpr TVector2 operator/(T s) const { return TVector2(x / s, y / s); }

    constexpr TVector2& operator+=(const TVector2& o) {
        x += o.x;
        y += o.y;
        return *this;
    }
    constexpr TVector2& operator-=(const TVector2& o) {
        x -= o.x;
        y -= o.y;
        return *this;
    }
    constexpr TVector2& operator*=(T s) {
        x *= s;
        y *= s;
        return *this;
    }
    constexpr TVector2& operator/=(T s) {
        x /= s;
        y /= s;
        return *this;
    }

    constexpr bool operator==(const TVector2& o) const { return x == o.x && y == o.y; }
    constexpr bool operator!=(const TVector2& o) const { return !(*this == o); }

    constexpr T SquaredLength() const { return x * x + y * y; }
    auto Length() const { return std::sqrt(SquaredLength()); }
};

template <class T>
constexpr TVector2<T> operator*(T s, const TVector2<T>& v) {
    return v * s;
}

template <class T>
constexpr T Dot(const TVector2<T>& a, const TVector2<T>& b) {
    return a.x * b.x + a.y * b.y;
}

// The z of the 3-D cross product: positive when b lies counter-clockwise of a.
template <class T>
constexpr T Cross(const TVector2<T>& a, const TVector2<T>& b) {
    return a.x * b.y - a.y * b.x;
}

// v crossed with (0, 0, s), and (0, 0, s) crossed with v: the planar forms that turn an
// angular quantity into a linear one.
template <class T>
constexpr TVector2<T> Cross(const TVector2<T>& v, T s) {
    return TVector2<T>(s * v.y, -s * v.x);
}
template <class T>
constexpr TVector2<T> Cross(T s, const TVector2<T>& v) {
    return TVector2<T>(-s * v.y, s * v.x);
}

// A quarter turn counter-clockwise.
template <class T>
constexpr TVector2<T> Perpendicular(const TVector2<T>& v) {
    return TVector2<T>(-v.y, v.x);
}

using Vec2 = TVector2<float>;
using Vec2i = TVector2<int>;
// The points of a polygon or a stroke.
using Vec2List = util::VectorPOD<Vec2>;

}  // namespace math
