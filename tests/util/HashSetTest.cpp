#include "util/HashSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "LogCapture.h"
#include "util/Exception.h"
#include "util/HashMap.h"
#include "util/Pointee.h"

namespace {

using util::HashMap;
using util::HashSet;

// Puts every key into bucket 0, so that the order inside one bucket can be observed.
struct SameBucketHasher {
    uint32_t operator()(int) const { return 0; }
};

// Puts key k into bucket k % n.
struct IdentityHasher {
    uint32_t operator()(int value) const { return static_cast<uint32_t>(value); }
};

template <class Table>
std::vector<int> InIterationOrder(const Table& table) {
    std::vector<int> values;
    for (int value : table) {
        values.push_back(value);
    }
    return values;
}

TEST(HashSetGrowth, NewTableHasThreeBuckets) {
    HashSet<int> set;
    EXPECT_EQ(3u, set.BucketCount());
    EXPECT_EQ(0u, set.size());
    EXPECT_TRUE(set.empty());
}

TEST(HashSetGrowth, FourthInsertionGrowsToSevenAndEighthToSeventeen) {
    HashSet<int> set;
    for (int i = 0; i < 3; ++i) {
        set.insert(i);
    }
    EXPECT_EQ(3u, set.BucketCount()) << "load factor one is still allowed";
    set.insert(3);
    EXPECT_EQ(7u, set.BucketCount());
    for (int i = 4; i < 7; ++i) {
        set.insert(i);
    }
    EXPECT_EQ(7u, set.BucketCount());
    set.insert(7);
    EXPECT_EQ(17u, set.BucketCount());
    EXPECT_EQ(8u, set.size());
}

TEST(HashSetGrowth, DuplicateInsertionCanStillGrowButDoesNotCount) {
    // The growth check runs before the lookup, as the count is 3 here.
    HashSet<int> set;
    set.insert(1);
    set.insert(2);
    set.insert(3);
    const auto [it, inserted] = set.insert(2);
    EXPECT_FALSE(inserted);
    EXPECT_EQ(2, *it);
    EXPECT_EQ(3u, set.size());
    EXPECT_EQ(7u, set.BucketCount());
}

TEST(HashSetGrowth, BucketCountSequence) {
    using Table = HashSet<int>;
    EXPECT_EQ(3u, Table::NextBucketCount(0));
    EXPECT_EQ(3u, Table::NextBucketCount(1));
    EXPECT_EQ(7u, Table::NextBucketCount(3));
    EXPECT_EQ(17u, Table::NextBucketCount(7));
    EXPECT_EQ(37u, Table::NextBucketCount(17));
    EXPECT_EQ(79u, Table::NextBucketCount(37));
    // 159 = 3 * 53 and 161 = 7 * 23 are skipped.
    EXPECT_EQ(163u, Table::NextBucketCount(79));
    // Values of 8 or less are taken without a test.
    EXPECT_EQ(5u, Table::NextBucketCount(2));
    EXPECT_EQ(11u, Table::NextBucketCount(4)) << "9 is above 8 and divisible by 3";
}

TEST(HashSetGrowth, ManyInsertionsKeepEverythingAndTheLoadFactor) {
    HashSet<int> set;
    for (int i = 0; i < 500; ++i) {
        set.insert(i * 7919);
        ASSERT_LE(set.size(), set.BucketCount());
    }
    EXPECT_EQ(500u, set.size());
    for (int i = 0; i < 500; ++i) {
        EXPECT_TRUE(set.Contains(i * 7919)) << i;
    }
    EXPECT_FALSE(set.Contains(1));
    EXPECT_EQ(500u, InIterationOrder(set).size());
}

TEST(HashSetIteration, VisitsBucketsInAscendingOrderSkippingEmptyOnes) {
    HashSet<int, IdentityHasher> set;
    set.insert(5);  // bucket 2
    set.insert(1);  // bucket 1
    set.insert(9);  // bucket 0
    EXPECT_EQ(3u, set.BucketCount());
    EXPECT_EQ((std::vector<int>{9, 1, 5}), InIterationOrder(set));

    HashSet<int, IdentityHasher> sparse;
    sparse.insert(2);
    EXPECT_EQ(2, *sparse.begin());
    EXPECT_EQ(2u, sparse.begin().BucketIndex());
}

TEST(HashSetIteration, EndIsBucketCountAndZero) {
    HashSet<int> set;
    set.insert(4);
    EXPECT_EQ(set.BucketCount(), set.end().BucketIndex());
    EXPECT_EQ(0u, set.end().IndexInBucket());
    HashSet<int> empty;
    EXPECT_TRUE(empty.begin() == empty.end());
}

TEST(HashSetIteration, ComparingIteratorsOfTwoTablesIsACodeAssertion) {
    HashSet<int> a;
    HashSet<int> b;
    test::LogCapture log;
    EXPECT_THROW((void)(a.begin() == b.begin()), BadCoderException);
    EXPECT_TRUE(log.Contains("Code assertion failed: \"&lhs.m_table == &rhs.m_table\""))
        << log.Text();
}

TEST(HashSetErase, MovesTheBucketsLastElementIntoTheGap) {
    HashSet<int, SameBucketHasher> set;
    set.insert(1);
    set.insert(2);
    set.insert(3);
    ASSERT_EQ((std::vector<int>{1, 2, 3}), InIterationOrder(set));
    EXPECT_EQ(1u, set.erase(1));
    EXPECT_EQ((std::vector<int>{3, 2}), InIterationOrder(set));
    EXPECT_EQ(2u, set.size());
}

TEST(HashSetErase, LastElementOfBucketIsSimplyDropped) {
    HashSet<int, SameBucketHasher> set;
    set.insert(1);
    set.insert(2);
    set.insert(3);
    EXPECT_EQ(1u, set.erase(3));
    EXPECT_EQ((std::vector<int>{1, 2}), InIterationOrder(set));
}

TEST(HashSetErase, AbsentElementRemovesNothing) {
    HashSet<int> set;
    set.insert(1);
    EXPECT_EQ(0u, set.erase(2));
    EXPECT_EQ(1u, set.size());
}

TEST(HashSetErase, ByIteratorReturnsTheElementThatNowFollows) {
    HashSet<int, SameBucketHasher> set;
    set.insert(1);
    set.insert(2);
    set.insert(3);
    auto next = set.erase(set.find(1));
    ASSERT_TRUE(next != set.end());
    EXPECT_EQ(3, *next);
    next = set.erase(set.find(2));
    EXPECT_TRUE(next == set.end());
    EXPECT_EQ((std::vector<int>{3}), InIterationOrder(set));
}

TEST(HashSetErase, EraseEverythingWhileIterating) {
    HashSet<int> set;
    for (int i = 0; i < 40; ++i) {
        set.insert(i);
    }
    int removed = 0;
    for (auto it = set.begin(); it != set.end();) {
        it = set.erase(it);
        ++removed;
    }
    EXPECT_EQ(40, removed);
    EXPECT_TRUE(set.empty());
}

TEST(HashSetErase, TablesNeverShrink) {
    HashSet<int> set;
    for (int i = 0; i < 10; ++i) {
        set.insert(i);
    }
    const size_t buckets = set.BucketCount();
    for (int i = 0; i < 10; ++i) {
        set.erase(i);
    }
    EXPECT_EQ(buckets, set.BucketCount());
    set.insert(1);
    set.clear();
    EXPECT_EQ(buckets, set.BucketCount());
    EXPECT_TRUE(set.empty());
    EXPECT_FALSE(set.Contains(1));
}

TEST(HashSetKeys, SharedPtrKeysHashByPointer) {
    struct Thing : util::Pointee {};
    util::SharedPtr<Thing> a(new Thing);
    util::SharedPtr<Thing> b(new Thing);
    HashSet<util::SharedPtr<Thing>> set;
    set.insert(a);
    set.insert(a);
    EXPECT_EQ(1u, set.size());
    EXPECT_TRUE(set.Contains(a));
    EXPECT_FALSE(set.Contains(b));
    EXPECT_EQ(util::DefaultHasher()(a.Get()), util::DefaultHasher()(a));
}

TEST(DefaultHasher, WordsMultiplyByTheFirstConstant) {
    util::DefaultHasher hash;
    EXPECT_EQ(0x8DA6B343u, hash(1));
    EXPECT_EQ(static_cast<uint32_t>(2u * 0x8DA6B343u), hash(2u));
    EXPECT_EQ(0u, hash(0));
}

TEST(DefaultHasher, StringsUseSignedBytes) {
    util::DefaultHasher hash;
    EXPECT_EQ(0u, hash(util::String()));
    EXPECT_EQ(97u, hash(util::String("a")));
    EXPECT_EQ(static_cast<uint32_t>(97u * 0x1003Fu + 98u), hash(util::String("ab")));
    // A byte above 127 counts as negative.
    EXPECT_EQ(0xFFFFFFFFu, hash(util::String("\xff")));
}

TEST(DefaultHasher, TwoPartKeys) {
    struct Point {
        int x;
        int y;
    };
    util::DefaultHasher hash;
    EXPECT_EQ(static_cast<uint32_t>(3u * 0x8DA6B343u + 5u * 0xD8163841u), hash(Point{3, 5}));
    EXPECT_EQ(static_cast<uint32_t>(3u * 0x8DA6B343u + 5u * 0xD8163841u + 7u * 0xCB1AB31Fu),
              util::DefaultHasher::Combine(3, 5, 7));
}

TEST(HashMap, IndexingInsertsADefaultValue) {
    HashMap<util::String, int> map;
    EXPECT_EQ(0, map["a"]);
    EXPECT_EQ(1u, map.size());
    map["a"] = 5;
    EXPECT_EQ(5, map["a"]);
    EXPECT_EQ(1u, map.size());
}

TEST(HashMap, DuplicateInsertKeepsTheExistingValue) {
    HashMap<int, util::String> map;
    EXPECT_TRUE(map.insert({1, "first"}).second);
    const auto [it, inserted] = map.insert({1, "second"});
    EXPECT_FALSE(inserted);
    EXPECT_EQ("first", it->second);
    EXPECT_EQ("first", map[1]);
    EXPECT_EQ(1u, map.size());
}

TEST(HashMap, FindGivesAnIteratorOrEnd) {
    HashMap<int, int> map;
    for (int i = 0; i < 20; ++i) {
        map[i] = i * i;
    }
    EXPECT_EQ(37u, map.BucketCount());
    auto it = map.find(7);
    ASSERT_TRUE(it != map.end());
    EXPECT_EQ(7, it->first);
    EXPECT_EQ(49, it->second);
    EXPECT_TRUE(map.find(20) == map.end());
    const HashMap<int, int>& constMap = map;
    EXPECT_TRUE(constMap.find(3) != constMap.end());
    EXPECT_EQ(1u, map.erase(7));
    EXPECT_TRUE(map.find(7) == map.end());
    EXPECT_EQ(19u, map.size());
}

TEST(HashMap, GrowsLikeTheSet) {
    HashMap<int, int> map;
    for (int i = 0; i < 4; ++i) {
        map[i] = i;
    }
    EXPECT_EQ(7u, map.BucketCount());
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(i, map[i]);
    }
}

}  // namespace
