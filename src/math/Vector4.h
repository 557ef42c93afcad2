#pragma once

#include <cmath>
#include <cstddef>

namespace math {

// Four components, x, y, z, w. Colours use it as red, green, blue, alpha.
template <class T>
struct TVector4 {
    T x{};
    T y{};
    T z{};
    T w{};

    constexpr TVector4() = default;
    constexpr TVector4(T x_, T y_, T z_, T w_) : x(x_), y(y_), z(z_), w(w_) {}
    template <class U>
    constexpr explicit TVector4(const TVector4<U>& other)
        : x(static_cast<T>(other.x)),
          y(static_cast<T>(other.y)),
          z(static_cast<T>(other.z)),
          w(static_cast<T>(other.w)) {}

    constexpr T& operator[](size_t i) { return i == 0 ? x : (i == 1 ? y : (i == 2 ? z : w)); }
    constexpr const T& operator[](size_t i) const {
        return i == 0 ? x : (i == 1 ? y : (i == 2 ? z : w));
    }

    // The arithmetic is spelled out with casts so that small element types (one byte a
    // channel) stay in their own type instead of being promoted to int.
    constexpr TVector4 operator-() const {
        return TVector4(static_cast<T>(-x), static_cast<T>(-y), static_cast<T>(-z),
                        static_cast<T>(-w));
    }
    constexpr TVector4 operator+(const TVector4& o) const {
        return TVector4(static_cast<T>(x + o.x), static_cast<T>(y + o.y), static_cast<T>(z + o.z),
                        static_cast<T>(w + o.w));
    }
    constexpr TVector4 operator-(const TVector4& o) const {
        return TVector4(static_cast<T>(x - o.x), static_cast<T>(y - o.y), static_cast<T>(z - o.z),
                        static_cast<T>(w - o.w));
    }
    constexpr TVector4 operator*(T s) const {
        return TVector4(static_cast<T>(x * s), static_cast<T>(y * s), static_cast<T>(z * s),
                        static_cast<T>(w * s));
    }
    constexpr TVector4 operator/(T s) const {
        return TVector4(static_cast<T>(x / s), static_cast<T>(y / s), static_cast<T>(z / s),
                        static_cast<T>(w / s));
    }

    constexpr TVector4& operator+=(const TVector4& o) { return *this = *this + o; }
    constexpr TVector4& operator-=(const TVector4& o) { return *this = *this - o; }
    constexpr TVector4& operator*=(T s) { return *this = *this * s; }
    constexpr TVector4& operator/=(T s) { return *this = *this / s; }

    constexpr bool operator==(const TVector4& o) const {
        return x == o.x && y == o.y && z == o.z && w == o.w;
    }
    constexpr bool operator!=(const TVector4& o) const { return !(*this == o); }

    constexpr T SquaredLength() const { return x * x + y * y + z * z + w * w; }
    auto Length() const { return std::sqrt(SquaredLength()); }
};

template <class T>
constexpr TVector4<T> operator*(T s, const TVector4<T>& v) {
    return v * s;
}

template <class T>
constexpr T Dot(const TVector4<T>& a, const TVector4<T>& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
}

using Vec4 = TVector4<float>;
// A colour: red, green, blue, alpha, each 0 to 1.
using Colour = TVector4<float>;
// One pixel, a byte a channel.
using Pixel = TVector4<unsigned char>;

}  // namespace math
