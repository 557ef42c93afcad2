#pragma once

#include <cmath>
#include <cstddef>

namespace math {

// Three components, x, y, z.
template <class T>
struct TVector3 {
    T x{};
    T y{};
    T z{};

    constexpr TVector3() = default;
    constexpr TVector3(T x_, T y_, T z_) : x(x_), y(y_), z(z_) {}
    template <class U>
    constexpr explicit TVector3(const TVector3<U>& other)
        : x(static_cast<T>(other.x)), y(static_cast<T>(other.y)), z(static_cast<T>(other.z)) {}

    constexpr T& operator[](size_t i) { return i == 0 ? x : (i == 1 ? y : z); }
    constexpr const T& operator[](size_t i) const { return i == 0 ? x : (i == 1 ? y : z); }

    constexpr TVector3 operator-() const { return TVector3(-x, -y, -z); }
    constexpr TVector3 operator+(const TVector3& o) const {
        return TVector3(x + o.x, y + o.y, z + o.z);
    }
    constexpr TVector3 operator-(const TVector3& o) const {
        return TVector3(x - o.x, y - o.y, z - o.z);
    }
    constexpr TVector3 operator*(T s) const { return TVector3(x * s, y * s, z * s); }
    constexpr TVector3 operator/(T s) const { return TVector3(x / s, y / s, z / s); }

    constexpr TVector3& operator+=(const TVector3& o) {
        x += o.x;
        y += o.y;
        z += o.z;
        return *this;
    }
    constexpr TVector3& operator-=(const TVector3& o) {
        x -= o.x;
        y -= o.y;
        z -= o.z;
        return *this;
    }
    constexpr TVector3& operator*=(T s) {
        x *= s;
        y *= s;
        z *= s;
        return *this;
    }
    constexpr TVector3& operator/=(T s) {
        x /= s;
        y /= s;
        z /= s;
        return *this;
    }

    constexpr bool operator==(const TVector3& o) const { return x == o.x && y == o.y && z == o.z; }
    constexpr bool operator!=(const TVector3& o) const { return !(*this == o); }

    constexpr T SquaredLength() const { return x * x + y * y + z * z; }
    auto Length() const { return std::sqrt(SquaredLength()); }
};

template <class T>
constexpr TVector3<T> operator*(T s, const TVector3<T>& v) {
    return v * s;
}

template <class T>
constexpr T Dot(const TVector3<T>& a, const TVector3<T>& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

template <class T>
constexpr TVector3<T> Cross(const TVector3<T>& a, const TVector3<T>& b) {
    return TVector3<T>(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

using Vec3 = TVector3<float>;

}  // namespace math
