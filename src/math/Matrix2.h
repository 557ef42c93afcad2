#pragma once

#include <cmath>

#include "math/Vector2.h"
#include "util/Assert.h"

namespace math {

// A 2 by 2 matrix, rows (a b) and (c d).
template <class T>
struct TMatrix2 {
    T a{1};
    T b{0};
    T c{0};
    T d{1};

    // Identity by default: a matrix nobody set should transform nothing.
    constexpr TMatrix2() = default;
    constexpr TMatrix2(T a_, T b_, T c_, T d_) : a(a_), b(b_), c(c_), d(d_) {}

    static constexpr TMatrix2 Identity() { return TMatrix2(); }
    // Counter-clockwise by the angle in radians.
    static TMatrix2 Rotation(T angle) {
        const T cs = std::cos(angle);
        const T sn = std::sin(angle);
        return TMatrix2(cs, -sn, sn, cs);
    }
    static constexpr TMatrix2 Scale(T sx, T sy) { return TMatrix2(sx, 0, 0, sy); }
    // The matrix whose columns are the two vectors.
    static constexpr TMatrix2 FromColumns(const TVector2<T>& c0, const TVector2<T>& c1) {
        return TMatrix2(c0.x, c1.x, c0.y, c1.y);
    }

    constexpr T Determinant() const { return a * d - b * c; }
    constexpr TMatrix2 Transposed() const { return TMatrix2(a, c, b, d); }

    constexpr TMatrix2 operator+(const TMatrix2& o) const {
        return TMatrix2(a + o.a, b + o.b, c + o.c, d + o.d);
    }
    constexpr TMatrix2 operator-(const TMatrix2& o) const {
        return TMatrix2(a - o.a, b - o.b, c - o.c, d - o.d);
    }
    constexpr TMatrix2 operator*(T s) const { return TMatrix2(a * s, b * s, c * s, d * s); }
    constexpr TMatrix2 operator*(const TMatrix2& o) const {
        return TMatrix2(a * o.a + b * o.c, a * o.b + b * o.d, c * o.a + d * o.c, c * o.b + d * o.d);
    }
    constexpr TVector2<T> operator*(const TVector2<T>& v) const {
        return TVector2<T>(a * v.x + b * v.y, c * v.x + d * v.y);
    }

    constexpr bool operator==(const TMatrix2& o) const {
        return a == o.a && b == o.b && c == o.c && d == o.d;
    }
    constexpr bool operator!=(const TMatrix2& o) const { return !(*this == o); }
};

// The exact inverse: only an exactly singular matrix is refused, any other is divided.
template <class T>
TMatrix2<T> Inverted(const TMatrix2<T>& m) {
    const T det = m.Determinant();
    CODE_ASSERT(det != 0);
    return TMatrix2<T>(m.d / det, -m.b / det, -m.c / det, m.a / det);
}

using Mat2 = TMatrix2<float>;

}  // namespace math
