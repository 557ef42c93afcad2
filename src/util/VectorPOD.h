#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>
#include <type_traits>

#include "util/Assert.h"

namespace util {

// A vector for plain data: contents move with a memory copy, no element code ever runs.
// Used in the inner loops and for snapshots of tracked sets.
template <class T>
class VectorPOD {
    static_assert(std::is_trivially_copyable_v<T>, "VectorPOD holds only plain data");

public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    constexpr VectorPOD() = default;
    VectorPOD(std::initializer_list<T> items) { assign(items.begin(), items.end()); }
    VectorPOD(const VectorPOD& other) { assign(other.begin(), other.end()); }
    VectorPOD(VectorPOD&& other) noexcept { swap(other); }
    ~VectorPOD() { std::free(m_begin); }

    VectorPOD& operator=(const VectorPOD& other) {
        if (this != &other) {
            assign(other.begin(), other.end());
        }
        return *this;
    }
    VectorPOD& operator=(VectorPOD&& other) noexcept {
        swap(other);
        return *this;
    }

    void swap(VectorPOD& other) noexcept {
        std::swap(m_begin, other.m_begin);
        std::swap(m_end, other.m_end);
        std::swap(m_capacity, other.m_capacity);
    }

    void assign(const T* first, const T* last) {
        const size_t n = static_cast<size_t>(last - first);
        clear();
        reserve(n);
        if (n) {
            std::memcpy(static_cast<void*>(m_begin), first, n * sizeof(T));
        }
        m_end = m_begin + n;
    }

    void push_back(const T& value) {
        if (m_end == m_capacity) {
            // Copy first: value may live inside the block that Grow frees.
            const T copy = value;
            Grow(size() + 1);
            *m_end++ = copy;
            return;
        }
        *m_end++ = value;
    }

    void pop_back() {
        CODE_ASSERT(!empty());
        if (!empty()) {
            --m_end;
        }
    }

    void reserve(size_t n) {
        if (n > capacity()) {
            Reallocate(n);
        }
    }

    // New elements are left uninitialised unless a value is given. Growth is geometric,
    // as for a push, so that growing by one each time stays linear.
    void resize(size_t n) {
        if (n > capacity()) {
            Reallocate(std::max(n, 2 * capacity()));
        }
        m_end = m_begin + n;
    }
    void resize(size_t n, const T& value) {
        const size_t old = size();
        resize(n);
        for (size_t i = old; i < n; ++i) {
            m_begin[i] = value;
        }
    }

    void clear() { m_end = m_begin; }

    // Removes element i by moving the last element into its place.
    void erase_unordered(size_t i) {
        m_begin[i] = *(m_end - 1);
        --m_end;
    }

    size_t size() const { return static_cast<size_t>(m_end - m_begin); }
    size_t capacity() const { return static_cast<size_t>(m_capacity - m_begin); }
    bool empty() const { return m_begin == m_end; }

    T* data() { return m_begin; }
    const T* data() const { return m_begin; }
    T* begin() { return m_begin; }
    T* end() { return m_end; }
    const T* begin() const { return m_begin; }
    const T* end() const { return m_end; }
    T& front() { return *m_begin; }
    const T& front() const { return *m_begin; }
    T& back() { return *(m_end - 1); }
    const T& back() const { return *(m_end - 1); }
    T& operator[](size_t i) { return m_begin[i]; }
    const T& operator[](size_t i) const { return m_begin[i]; }

    friend bool operator==(const VectorPOD& a, const VectorPOD& b) {
        return a.size() == b.size() &&
               (a.empty() || std::memcmp(a.m_begin, b.m_begin, a.size() * sizeof(T)) == 0);
    }

private:
    // A push onto a full vector allocates twice the size after the push.
    void Grow(size_t sizeAfterPush) { Reallocate(2 * sizeAfterPush); }

    void Reallocate(size_t n) {
        T* block = static_cast<T*>(std::malloc(n * sizeof(T)));
        if (!block) {
            throw std::bad_alloc();
        }
        const size_t count = size();
        if (count) {
            std::memcpy(static_cast<void*>(block), m_begin, count * sizeof(T));
        }
        std::free(m_begin);
        m_begin = block;
        m_end = block + count;
        m_capacity = block + n;
    }

    T* m_begin = nullptr;
    T* m_end = nullptr;
    T* m_capacity = nullptr;
};

}  // namespace util
