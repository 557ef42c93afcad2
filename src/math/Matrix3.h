#pragma once

#include <cmath>
#include <cstddef>

#include "math/Vector2.h"
#include "math/Vector3.h"
#include "util/Assert.h"

namespace math {

// A 3 by 3 matrix for homogeneous 2-D coordinates, stored row by row. A point is the
// column (x, y, 1), a direction (x, y, 0), so the translation sits in the last column.
template <class T>
struct TMatrix3 {
    T m[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

    constexpr TMatrix3() = default;
    constexpr TMatrix3(T m00, T m01, T m02, T m10, T m11, T m12, T m20, T m21, T m22)
        : m{m00, m01, m02, m10, m11, m12, m20, m21, m22} {}

    static constexpr TMatrix3 Identity() { return TMatrix3(); }
    static constexpr TMatrix3 Translation(const TVector2<T>& t) {
        return TMatrix3(1, 0, t.x, 0, 1, t.y, 0, 0, 1);
    }
    // Counter-clockwise about the origin, angle in radians.
    static TMatrix3 Rotation(T angle) {
        const T cs = std::cos(angle);
        const T sn = std::sin(angle);
        return TMatrix3(cs, -sn, 0, sn, cs, 0, 0, 0, 1);
    }
    static constexpr TMatrix3 Scale(T sx, T sy) { return TMatrix3(sx, 0, 0, 0, sy, 0, 0, 0, 1); }
    static constexpr TMatrix3 Scale(const TVector2<T>& s) { return Scale(s.x, s.y); }

    constexpr T& operator()(size_t row, size_t col) { return m[row * 3 + col]; }
    constexpr const T& operator()(size_t row, size_t col) const { return m[row * 3 + col]; }

    constexpr T Determinant() const {
        return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
               m[2] * (m[3] * m[7] - m[4] * m[6]);
    }
    constexpr TMatrix3 Transposed() const {
        return TMatrix3(m[0], m[3], m[6], m[1], m[4], m[7], m[2], m[5], m[8]);
    }

    // The product applies o first, then this.
    constexpr TMatrix3 operator*(const TMatrix3& o) const {
        TMatrix3 r;
        for (size_t i = 0; i < 3; ++i) {
            for (size_t j = 0; j < 3; ++j) {
                r.m[i * 3 + j] =
                    m[i * 3] * o.m[j] + m[i * 3 + 1] * o.m[3 + j] + m[i * 3 + 2] * o.m[6 + j];
            }
        }
        return r;
    }
    constexpr TVector3<T> operator*(const TVector3<T>& v) const {
        return TVector3<T>(m[0] * v.x + m[1] * v.y + m[2] * v.z,
                           m[3] * v.x + m[4] * v.y + m[5] * v.z,
                           m[6] * v.x + m[7] * v.y + m[8] * v.z);
    }

    // The transforms in use are affine (last row 0 0 1), so no division by w is made.
    constexpr TVector2<T> TransformPoint(const TVector2<T>& p) const {
        return TVector2<T>(m[0] * p.x + m[1] * p.y + m[2], m[3] * p.x + m[4] * p.y + m[5]);
    }
    constexpr TVector2<T> TransformVector(const TVector2<T>& v) const {
        return TVector2<T>(m[0] * v.x + m[1] * v.y, m[3] * v.x + m[4] * v.y);
    }

    constexpr bool operator==(const TMatrix3& o) const {
        for (size_t i = 0; i < 9; ++i) {
            if (m[i] != o.m[i]) {
                return false;
            }
        }
        return true;
    }
    constexpr bool operator!=(const TMatrix3& o) const { return !(*this == o); }
};

// The exact inverse by cofactors: only an exactly singular matrix is refused.
template <class T>
TMatrix3<T> Inverted(const TMatrix3<T>& a) {
    const T* m = a.m;
    const T c00 = m[4] * m[8] - m[5] * m[7];
    const T c01 = m[5] * m[6] - m[3] * m[8];
    const T c02 = m[3] * m[7] - m[4] * m[6];
    const T det = m[0] * c00 + m[1] * c01 + m[2] * c02;
    CODE_ASSERT(det != 0);
    return TMatrix3<T>(
        c00 / det, (m[2] * m[7] - m[1] * m[8]) / det, (m[1] * m[5] - m[2] * m[4]) / det, c01 / det,
        (m[0] * m[8] - m[2] * m[6]) / det, (m[2] * m[3] - m[0] * m[5]) / det, c02 / det,
        (m[1] * m[6] - m[0] * m[7]) / det, (m[0] * m[4] - m[1] * m[3]) / det);
}

using Mat3 = TMatrix3<float>;

}  // namespace math
