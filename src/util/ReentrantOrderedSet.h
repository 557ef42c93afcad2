#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <utility>
#include <vector>

#include "logging/Log.h"
#include "util/Assert.h"
#include "util/Exception.h"

namespace util {

// An ordered set that may be changed while it is being walked: listeners remove themselves
// (or anything else) from inside a notification. Changes requested during a walk are queued
// and applied when the outermost walk ends, so a walk always sees the set as it was when it
// began. Linear scans: these sets are small.
template <class T>
class ReentrantOrderedSet {
public:
    ReentrantOrderedSet() = default;
    // A copy takes the elements only; walks and pending changes belong to the original.
    ReentrantOrderedSet(const ReentrantOrderedSet& other) : m_items(other.m_items) {}
    ReentrantOrderedSet& operator=(const ReentrantOrderedSet& other) {
        if (this != &other) {
            CODE_ASSERT(!IsLocked());
            CODE_ASSERT(m_modificationList.empty());
            m_items = other.m_items;
        }
        return *this;
    }

    // Present elements move to the end.
    void insert(const T& x) {
        if (IsLocked()) {
            m_modificationList.push_back(Modification{Modification::Insert, x});
            return;
        }
        CODE_ASSERT(m_modificationList.empty());
        InsertImpl(x);
    }

    // For an element known to be absent (just made): the same as insert without the scan,
    // which is what keeps filling a large set linear.
    void InsertNew(T x) {
        if (IsLocked()) {
            m_modificationList.push_back(Modification{Modification::Insert, std::move(x)});
            return;
        }
        CODE_ASSERT(m_modificationList.empty());
        m_items.push_back(std::move(x));
    }

    void erase(const T& x) {
        if (IsLocked()) {
            m_modificationList.push_back(Modification{Modification::Erase, x});
            return;
        }
        CODE_ASSERT(m_modificationList.empty());
        EraseImpl(x);
    }

    void clear() {
        if (IsLocked()) {
            m_modificationList.push_back(Modification{Modification::Clear, std::nullopt});
            return;
        }
        CODE_ASSERT(m_modificationList.empty());
        ClearImpl();
    }

    // The two halves of a walk. Prefer ForEach or WalkGuard, which cannot forget Unlock.
    void Lock() const { ++m_lockCount; }
    void Unlock() const {
        CODE_ASSERT(m_lockCount > 0);
        if (--m_lockCount == 0 && !m_modificationList.empty()) {
            // Records are only queued by the non-const operations, so a set with pending
            // records is never a const object and the cast is sound.
            const_cast<ReentrantOrderedSet*>(this)->ApplyModifications();
        }
    }
    bool IsLocked() const { return m_lockCount != 0; }

    // Keeps the set locked for its lifetime. If the scope is left by an exception, a
    // failure while applying the queued changes is logged instead of replacing it.
    class WalkGuard {
    public:
        explicit WalkGuard(const ReentrantOrderedSet& set)
            : m_set(set), m_uncaught(std::uncaught_exceptions()) {
            m_set.Lock();
        }
        WalkGuard(const WalkGuard&) = delete;
        WalkGuard& operator=(const WalkGuard&) = delete;
        ~WalkGuard() noexcept(false) {
            if (std::uncaught_exceptions() == m_uncaught) {
                m_set.Unlock();
                return;
            }
            try {
                m_set.Unlock();
            } catch (const std::exception& e) {
                logging::LogCaughtException(e, VORRA_LOCATION);
            } catch (...) {
                logging::LogCaughtUnknownException(VORRA_LOCATION);
            }
        }

    private:
        const ReentrantOrderedSet& m_set;
        int m_uncaught;
    };

    // Visits the elements as they are now, first to last. f may change the set.
    template <class F>
    void ForEach(F&& f) const {
        WalkGuard guard(*this);
        const size_t count = m_items.size();
        for (size_t i = 0; i < count; ++i) {
            f(m_items[i]);
        }
    }

    // Erases every element the predicate holds for, keeping the order of the rest: the
    // same as erasing them one by one, in one pass when no walk is in progress.
    template <class Pred>
    void EraseIf(Pred&& pred) {
        if (IsLocked()) {
            for (const T& item : m_items) {
                if (pred(item)) {
                    m_modificationList.push_back(Modification{Modification::Erase, item});
                }
            }
            return;
        }
        CODE_ASSERT(m_modificationList.empty());
        std::vector<T> removed;
        size_t kept = 0;
        for (size_t i = 0; i < m_items.size(); ++i) {
            if (pred(m_items[i])) {
                removed.push_back(std::move(m_items[i]));
            } else {
                if (kept != i) {
                    m_items[kept] = std::move(m_items[i]);
                }
                ++kept;
            }
        }
        m_items.resize(kept);
    }

    size_t size() const { return m_items.size(); }
    bool empty() const { return m_items.empty(); }
    bool Contains(const T& x) const { return Find(x) != kNotFound; }
    const T& operator[](size_t i) const { return m_items[i]; }
    const std::vector<T>& Items() const { return m_items; }
    size_t PendingModificationCount() const { return m_modificationList.size(); }

private:
    struct Modification {
        enum Kind : uint8_t { Insert = 0, Erase = 1, Clear = 2 };
        Kind kind;
        std::optional<T> value;
    };

    static constexpr size_t kNotFound = static_cast<size_t>(-1);

    size_t Find(const T& x) const {
        for (size_t i = 0; i < m_items.size(); ++i) {
            if (m_items[i] == x) {
                return i;
            }
        }
        return kNotFound;
    }

    // Removed elements are moved out before they die, so that an element whose destruction
    // reaches back into this set finds the items in a consistent state.

    // By value: x may refer to an element of this very set.
    void InsertImpl(T x) {
        CODE_ASSERT(!IsLocked());
        const size_t i = Find(x);
        if (i != kNotFound) {
            [[maybe_unused]] T removed = std::move(m_items[i]);
            m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(i));
        }
        m_items.push_back(std::move(x));
    }

    void EraseImpl(const T& x) {
        CODE_ASSERT(!IsLocked());
        const size_t i = Find(x);
        if (i == kNotFound) {
            return;
        }
        [[maybe_unused]] T removed = std::move(m_items[i]);
        m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(i));
    }

    void ClearImpl() {
        CODE_ASSERT(!IsLocked());
        std::vector<T> removed;
        removed.swap(m_items);
    }

    // The list stays filled while the records are applied, so a change requested from
    // inside (an element's destructor, say) fails the assertion instead of overtaking the
    // records before it. Whatever happens, the list ends empty and the set stays usable.
    void ApplyModifications() {
        struct EmptyList {
            std::vector<Modification>& list;
            ~EmptyList() {
                std::vector<Modification> applied;
                applied.swap(list);
            }
        } emptyList{m_modificationList};
        for (size_t i = 0; i < m_modificationList.size(); ++i) {
            const Modification& record = m_modificationList[i];
            switch (record.kind) {
                case Modification::Insert:
                    InsertImpl(*record.value);
                    break;
                case Modification::Erase:
                    EraseImpl(*record.value);
                    break;
                case Modification::Clear:
                    ClearImpl();
                    break;
            }
        }
    }

    std::vector<T> m_items;
    mutable unsigned m_lockCount = 0;
    std::vector<Modification> m_modificationList;
};

}  // namespace util
