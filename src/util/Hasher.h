#pragma once

#include <cstdint>
#include <type_traits>

#include "util/String.h"

namespace util {

template <class T>
class SharedPtr;

// 32-bit hashes; all arithmetic wraps.
struct DefaultHasher {
    static constexpr uint32_t kA = 0x8DA6B343u;
    static constexpr uint32_t kB = 0xD8163841u;
    static constexpr uint32_t kC = 0xCB1AB31Fu;

    template <class T, class = std::enable_if_t<std::is_integral_v<T> || std::is_enum_v<T>>>
    uint32_t operator()(T value) const {
        return static_cast<uint32_t>(value) * kA;
    }
    template <class T>
    uint32_t operator()(T* pointer) const {
        return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(pointer)) * kA;
    }
    template <class T>
    uint32_t operator()(const SharedPtr<T>& pointer) const {
        return (*this)(pointer.Get());
    }
    uint32_t operator()(const String& text) const {
        uint32_t h = 0;
        for (char c : text) {
            h = h * 0x1003Fu + static_cast<uint32_t>(static_cast<signed char>(c));
        }
        return h;
    }
    uint32_t operator()(const char* text) const { return (*this)(String(text)); }

    static uint32_t Combine(uint32_t a, uint32_t b) { return a * kA + b * kB; }
    static uint32_t Combine(uint32_t a, uint32_t b, uint32_t c) { return a * kA + b * kB + c * kC; }

    // Two-part keys such as TVector2<int>.
    template <class T>
    auto operator()(const T& v) const -> decltype(v.x, v.y, uint32_t()) {
        return Combine(static_cast<uint32_t>(v.x), static_cast<uint32_t>(v.y));
    }
};

}  // namespace util
