#include "util/Pointee.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

// Counts destructions, and can look at its own weak pointers while dying.
class Probe : public util::Pointee {
public:
    explicit Probe(int* deaths = nullptr) : m_deaths(deaths) {}
    ~Probe() override {
        if (m_deaths) {
            ++*m_deaths;
        }
        if (m_observer) {
            m_observerExpiredInDestructor = m_observer->Expired();
        }
    }

    int* m_deaths;
    util::WeakPtr<Probe>* m_observer = nullptr;
    bool m_observerExpiredInDestructor = false;
};

// Locks a weak pointer to itself while still inside its constructor.
class SelfLocker : public util::Pointee {
public:
    explicit SelfLocker(int* deaths) : m_deaths(deaths) {
        util::WeakPtr<SelfLocker> self(this);
        util::LockPtr<SelfLocker> lock = self.Lock();
        m_lockedWhileUnowned = static_cast<bool>(lock);
    }
    ~SelfLocker() override { ++*m_deaths; }

    int* m_deaths;
    bool m_lockedWhileUnowned = false;
};

class ThrowingDestructor : public util::Pointee {
public:
    explicit ThrowingDestructor(int* deaths) : m_deaths(deaths) {}
    ~ThrowingDestructor() noexcept(false) override {
        ++*m_deaths;
        throw std::runtime_error("destructor failed");
    }
    int* m_deaths;
};

}  // namespace

TEST(Pointee, StrongCountsOwnAndTheLastReleaseDeletes) {
    int deaths = 0;
    const size_t liveBefore = util::LivePointeeCount();
    {
        util::SharedPtr<Probe> a(new Probe(&deaths));
        EXPECT_EQ(util::LivePointeeCount(), liveBefore + 1);
        util::SharedPtr<Probe> b = a;
        EXPECT_EQ(a->GetHandle()->strong, 2);
        a.Reset();
        EXPECT_EQ(deaths, 0);
        util::SharedPtr<util::Pointee> base = b;  // conversion to a base keeps the count
        b.Reset();
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(util::LivePointeeCount(), liveBefore);
}

TEST(Pointee, WeakPointersExpireBeforeTheDestructorRuns) {
    util::WeakPtr<Probe> observer;
    Probe* raw = new Probe();
    util::SharedPtr<Probe> owner(raw);
    observer = owner;
    raw->m_observer = &observer;
    EXPECT_EQ(observer.Get(), raw);
    util::PointeeHandle* handle = raw->GetHandle();
    EXPECT_EQ(handle->weak, 1);
    owner.Reset();
    // The destructor saw its observer already expired; reading it let go of the handle.
    EXPECT_TRUE(observer.Expired());
    EXPECT_EQ(observer.Get(), nullptr);
    EXPECT_EQ(handle->weak, 0);
}

TEST(Pointee, ExpiredWeakPointersCompareEqual) {
    util::WeakPtr<Probe> first;
    util::WeakPtr<Probe> second;
    {
        util::SharedPtr<Probe> a(new Probe());
        util::SharedPtr<Probe> b(new Probe());
        first = a;
        second = b;
        EXPECT_FALSE(first == second);
    }
    EXPECT_TRUE(first == second);
    EXPECT_TRUE(first == util::WeakPtr<Probe>());
}

TEST(Pointee, LockingAnUnownedObjectDoesNotDeleteIt) {
    int deaths = 0;
    SelfLocker* locker = new SelfLocker(&deaths);
    EXPECT_TRUE(locker->m_lockedWhileUnowned);
    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(locker->GetHandle()->strong, 0);
    {
        util::SharedPtr<SelfLocker> owner(locker);
        util::WeakPtr<SelfLocker> weak(owner);
        {
            util::LockPtr<SelfLocker> lock = weak.Lock();
            owner.Reset();
            // The lock was taken while owned, so it is now the last owner.
            EXPECT_EQ(deaths, 0);
        }
        EXPECT_EQ(deaths, 1);
        EXPECT_FALSE(weak.Lock());
    }
}

TEST(Pointee, NullDereferencesThrowTheirMessages) {
    util::SharedPtr<Probe> null;
    try {
        null->m_deaths = nullptr;
        FAIL() << "no throw";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Tried to dereference a NULL SharedPtr");
    }
    util::LockPtr<Probe> lock = util::WeakPtr<Probe>().Lock();
    EXPECT_FALSE(lock);
    try {
        (*lock).m_deaths = nullptr;
        FAIL() << "no throw";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Tried to dereference a NULL LockPtr");
    }
}

TEST(Pointee, ThrowingDestructorDoesNotStopTheRelease) {
    int deaths = 0;
    util::WeakPtr<ThrowingDestructor> weak;
    {
        util::SharedPtr<ThrowingDestructor> owner(new ThrowingDestructor(&deaths));
        weak = owner;
    }
    EXPECT_EQ(deaths, 1);
    EXPECT_TRUE(weak.Expired());
}

TEST(Pointee, SweepFreesUnreferencedHandlesAndAmortisesItsPasses) {
    util::SweepHandles();
    util::SweepHandles();
    const size_t base = util::PointeeHandleCount();
    ASSERT_EQ(util::PointeeSweepStart(), base);

    // Three objects that die unobserved leave three handles without references.
    for (int i = 0; i < 3; ++i) {
        util::SharedPtr<Probe> p(new Probe());
    }
    EXPECT_EQ(util::PointeeHandleCount(), base + 3);
    util::SweepHandles();
    EXPECT_EQ(util::PointeeHandleCount(), base);
    EXPECT_EQ(util::PointeeSweepStart(), base);

    // Observed handles stay; a handle released after it was passed over waits for a
    // full pass.
    std::vector<util::SharedPtr<Probe>> alive;
    const size_t fullSize = util::PointeeLastFullSweepSize();
    const size_t grow = fullSize + 10;
    for (size_t i = 0; i < grow; ++i) {
        alive.emplace_back(new Probe());
    }
    util::SweepHandles();  // more than doubled: a full pass
    EXPECT_EQ(util::PointeeLastFullSweepSize(), base + grow);
    alive.front().Reset();  // its handle lies before sweepStart now
    util::SweepHandles();   // incremental: does not see it
    EXPECT_EQ(util::PointeeHandleCount(), base + grow);
    EXPECT_EQ(util::PointeeLastFullSweepSize(), base + grow);

    // Growing past double the last full pass triggers a full pass, which frees it.
    std::vector<util::SharedPtr<Probe>> more;
    for (size_t i = 0; i < base + grow + 1; ++i) {
        more.emplace_back(new Probe());
    }
    util::SweepHandles();
    EXPECT_EQ(util::PointeeHandleCount(), 2 * (base + grow));
    EXPECT_EQ(util::PointeeLastFullSweepSize(), 2 * (base + grow));
    alive.clear();
    more.clear();
    util::SweepHandles();
}
