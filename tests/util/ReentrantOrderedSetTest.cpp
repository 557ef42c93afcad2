#include "util/ReentrantOrderedSet.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "LogCapture.h"
#include "util/Exception.h"

namespace {

using util::ReentrantOrderedSet;

std::vector<int> Contents(const ReentrantOrderedSet<int>& set) {
    return set.Items();
}

std::vector<int> Visit(const ReentrantOrderedSet<int>& set) {
    std::vector<int> seen;
    set.ForEach([&](int x) { seen.push_back(x); });
    return seen;
}

ReentrantOrderedSet<int> Make(std::initializer_list<int> items) {
    ReentrantOrderedSet<int> set;
    for (int x : items) {
        set.insert(x);
    }
    return set;
}

TEST(ReentrantOrderedSet, KeepsInsertionOrder) {
    const auto set = Make({3, 1, 2});
    EXPECT_EQ((std::vector<int>{3, 1, 2}), Contents(set));
    EXPECT_EQ((std::vector<int>{3, 1, 2}), Visit(set));
    EXPECT_EQ(3u, set.size());
    EXPECT_FALSE(set.empty());
    EXPECT_TRUE(set.Contains(1));
    EXPECT_FALSE(set.Contains(4));
    EXPECT_EQ(1, set[1]);
}

TEST(ReentrantOrderedSet, InsertingAPresentElementMovesItToTheEnd) {
    auto set = Make({1, 2, 3});
    set.insert(1);
    EXPECT_EQ((std::vector<int>{2, 3, 1}), Contents(set));
    set.insert(1);
    EXPECT_EQ((std::vector<int>{2, 3, 1}), Contents(set));
}

TEST(ReentrantOrderedSet, InsertingAReferenceToOwnElement) {
    ReentrantOrderedSet<util::String> set;
    set.insert("first");
    set.insert("second");
    set.insert(set[0]);
    EXPECT_EQ((std::vector<util::String>{"second", "first"}), set.Items());
}

TEST(ReentrantOrderedSet, EraseKeepsTheOrderOfTheOthers) {
    auto set = Make({1, 2, 3, 4});
    set.erase(2);
    EXPECT_EQ((std::vector<int>{1, 3, 4}), Contents(set));
    set.erase(7);
    EXPECT_EQ((std::vector<int>{1, 3, 4}), Contents(set));
    set.clear();
    EXPECT_TRUE(set.empty());
}

TEST(ReentrantOrderedSet, EraseIfAndInsertNewMatchTheOneByOneOperations) {
    auto set = Make({1, 2, 3, 4, 5, 6});
    set.EraseIf([](int x) { return x % 2 == 0; });
    EXPECT_EQ((std::vector<int>{1, 3, 5}), Contents(set));
    set.InsertNew(7);
    EXPECT_EQ((std::vector<int>{1, 3, 5, 7}), Contents(set));

    // During a walk both wait for its end, as insert and erase do.
    std::vector<int> seen;
    set.ForEach([&](int x) {
        seen.push_back(x);
        if (x == 1) {
            set.EraseIf([](int y) { return y > 4; });
            set.InsertNew(9);
        }
    });
    EXPECT_EQ((std::vector<int>{1, 3, 5, 7}), seen);
    EXPECT_EQ((std::vector<int>{1, 3, 9}), Contents(set));
}

TEST(ReentrantOrderedSetWalk, ErasingALaterElementStillVisitsIt) {
    auto set = Make({1, 2, 3});
    std::vector<int> seen;
    set.ForEach([&](int x) {
        seen.push_back(x);
        if (x == 1) {
            set.erase(3);
            EXPECT_TRUE(set.Contains(3)) << "changes wait for the end of the walk";
        }
    });
    EXPECT_EQ((std::vector<int>{1, 2, 3}), seen);
    EXPECT_EQ((std::vector<int>{1, 2}), Contents(set));
}

TEST(ReentrantOrderedSetWalk, AnElementMayEraseItself) {
    auto set = Make({1, 2, 3});
    std::vector<int> seen;
    set.ForEach([&](const int& x) {
        set.erase(x);
        seen.push_back(x);
    });
    EXPECT_EQ((std::vector<int>{1, 2, 3}), seen);
    EXPECT_TRUE(set.empty());
}

TEST(ReentrantOrderedSetWalk, InsertedElementIsNotVisited) {
    auto set = Make({1, 2});
    std::vector<int> seen;
    set.ForEach([&](int x) {
        seen.push_back(x);
        set.insert(x + 10);
    });
    EXPECT_EQ((std::vector<int>{1, 2}), seen);
    EXPECT_EQ((std::vector<int>{1, 2, 11, 12}), Contents(set));
}

TEST(ReentrantOrderedSetWalk, ClearDuringAWalkStillVisitsEverything) {
    auto set = Make({1, 2, 3});
    std::vector<int> seen;
    set.ForEach([&](int x) {
        seen.push_back(x);
        if (x == 1) {
            set.clear();
        }
    });
    EXPECT_EQ((std::vector<int>{1, 2, 3}), seen);
    EXPECT_TRUE(set.empty());
}

TEST(ReentrantOrderedSetWalk, RecordsAreAppliedInTheOrderOfTheRequests) {
    auto set = Make({1, 2, 3});
    set.ForEach([&](int x) {
        if (x != 1) {
            return;
        }
        set.insert(4);
        set.erase(4);  // cancels the insertion
        set.erase(1);
        set.insert(1);  // back, at the end
        set.insert(2);  // moves to the end after 1
        set.erase(9);   // absent: no effect
    });
    EXPECT_EQ((std::vector<int>{3, 1, 2}), Contents(set));

    set.ForEach([&](int x) {
        if (x == 3) {
            set.insert(7);
            set.clear();
            set.insert(8);
        }
    });
    EXPECT_EQ((std::vector<int>{8}), Contents(set));
    EXPECT_EQ(0u, set.PendingModificationCount());
}

TEST(ReentrantOrderedSetWalk, NestedWalksApplyOnlyAtTheOutermostEnd) {
    auto set = Make({1, 2, 3});
    std::vector<int> outer;
    std::vector<int> inner;
    set.ForEach([&](int x) {
        outer.push_back(x);
        if (x == 1) {
            set.ForEach([&](int y) {
                inner.push_back(y);
                if (y == 2) {
                    set.erase(2);
                    set.insert(5);
                }
            });
            EXPECT_TRUE(set.IsLocked());
            EXPECT_TRUE(set.Contains(2)) << "the inner end must not apply the records";
            EXPECT_FALSE(set.Contains(5));
            EXPECT_EQ(2u, set.PendingModificationCount());
        }
    });
    EXPECT_EQ((std::vector<int>{1, 2, 3}), outer);
    EXPECT_EQ((std::vector<int>{1, 2, 3}), inner);
    EXPECT_FALSE(set.IsLocked());
    EXPECT_EQ((std::vector<int>{1, 3, 5}), Contents(set));
}

TEST(ReentrantOrderedSetWalk, ExplicitLockAndUnlock) {
    auto set = Make({1, 2});
    set.Lock();
    set.Lock();
    set.erase(1);
    set.Unlock();
    EXPECT_TRUE(set.Contains(1));
    set.Unlock();
    EXPECT_FALSE(set.Contains(1));
    EXPECT_FALSE(set.IsLocked());
}

TEST(ReentrantOrderedSetWalk, AThrowingVisitorUnlocksAndAppliesTheRecords) {
    auto set = Make({1, 2, 3});
    EXPECT_THROW(set.ForEach([&](int x) {
        set.erase(x);
        if (x == 2) {
            throw std::runtime_error("stop");
        }
    }),
                 std::runtime_error);
    EXPECT_FALSE(set.IsLocked());
    EXPECT_EQ((std::vector<int>{3}), Contents(set));
    set.insert(4);
    EXPECT_EQ((std::vector<int>{3, 4}), Contents(set));
}

TEST(ReentrantOrderedSetWalk, UnlockWithoutLockIsACodeAssertion) {
    ReentrantOrderedSet<int> set;
    test::LogCapture log;
    EXPECT_THROW(set.Unlock(), BadCoderException);
    EXPECT_FALSE(set.IsLocked());
}

// An element whose comparison reaches back into its set, as a listener's code might.
struct Meddler {
    int id;
    static ReentrantOrderedSet<Meddler>* s_set;
    static bool s_meddle;

    bool operator==(const Meddler& other) const {
        if (s_meddle) {
            s_meddle = false;
            s_set->insert(Meddler{99});
        }
        return id == other.id;
    }
};
ReentrantOrderedSet<Meddler>* Meddler::s_set = nullptr;
bool Meddler::s_meddle = false;

TEST(ReentrantOrderedSetWalk, DirectChangeWhileRecordsArePendingIsACodeAssertion) {
    ReentrantOrderedSet<Meddler> set;
    Meddler::s_set = &set;
    set.insert(Meddler{1});
    set.insert(Meddler{2});
    set.Lock();
    set.erase(Meddler{1});
    set.insert(Meddler{3});
    Meddler::s_meddle = true;
    {
        test::LogCapture log;
        EXPECT_THROW(set.Unlock(), BadCoderException);
        EXPECT_TRUE(log.Contains("Code assertion failed: \"m_modificationList.empty()\""))
            << log.Text();
    }
    // The failed application is dropped; the set stays usable.
    EXPECT_FALSE(set.IsLocked());
    EXPECT_EQ(0u, set.PendingModificationCount());
    EXPECT_EQ(2u, set.size());
    set.insert(Meddler{4});
    EXPECT_EQ(3u, set.size());
    EXPECT_EQ(4, set[2].id);
    Meddler::s_set = nullptr;
}

TEST(ReentrantOrderedSet, CopyTakesTheElementsOnly) {
    auto set = Make({1, 2});
    set.Lock();
    set.insert(3);
    ReentrantOrderedSet<int> copy(set);
    EXPECT_FALSE(copy.IsLocked());
    EXPECT_EQ(0u, copy.PendingModificationCount());
    copy.insert(4);
    EXPECT_EQ((std::vector<int>{1, 2, 4}), Contents(copy));
    set.Unlock();
    EXPECT_EQ((std::vector<int>{1, 2, 3}), Contents(set));
}

TEST(ReentrantOrderedSet, AssigningToALockedSetIsACodeAssertion) {
    auto set = Make({1});
    const auto other = Make({2});
    set.Lock();
    {
        test::LogCapture log;
        EXPECT_THROW(set = other, BadCoderException);
    }
    set.Unlock();
    set = other;
    EXPECT_EQ((std::vector<int>{2}), Contents(set));
}

}  // namespace
