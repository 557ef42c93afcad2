#include "util/CallbackSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "LogCapture.h"

namespace {

using util::CallbackArgSet;
using util::CallbackPtr;
using util::CallbackSet;
using util::SharedPtr;

struct Owner : util::Pointee {
    int calls = 0;
    void Poke() { ++calls; }
    void Take(float value) { received.push_back(value); }
    std::vector<float> received;
};
using OwnerPtr = SharedPtr<Owner>;

// Each test owns its callbacks through one owner and records the order of the calls.
class CallbackSetTest : public testing::Test {
protected:
    ~CallbackSetTest() noexcept override = default;

    CallbackPtr Recorder(int id) {
        return util::MakeCallback(m_owner, [this, id] { m_calls.push_back(id); });
    }

    OwnerPtr m_owner{new Owner};
    std::vector<int> m_calls;
    CallbackSet m_set;
};

TEST_F(CallbackSetTest, CallsInTheOrderOfAddition) {
    m_set.Add(Recorder(1));
    m_set.Add(Recorder(2));
    m_set.Add(Recorder(3));
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{1, 2, 3}), m_calls);
    m_set.CallAll();
    EXPECT_EQ(6u, m_calls.size());
}

TEST_F(CallbackSetTest, AddingTwiceCallsOnceAtTheEnd) {
    const CallbackPtr first = Recorder(1);
    m_set.Add(first);
    m_set.Add(Recorder(2));
    m_set.Add(first);
    EXPECT_EQ(2u, m_set.size());
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{2, 1}), m_calls);
}

TEST_F(CallbackSetTest, RemoveAndClear) {
    const CallbackPtr first = Recorder(1);
    const CallbackPtr second = Recorder(2);
    m_set.Add(first);
    m_set.Add(second);
    m_set.Remove(first);
    EXPECT_FALSE(m_set.Contains(first));
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{2}), m_calls);
    m_set.Clear();
    EXPECT_TRUE(m_set.empty());
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{2}), m_calls);
}

TEST_F(CallbackSetTest, AddWithOwnerGivesTheCallbackToRemoveLater) {
    const CallbackPtr callback = m_set.Add(m_owner, [this] { m_calls.push_back(7); });
    m_set.CallAll();
    m_set.Remove(callback);
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{7}), m_calls);
}

TEST_F(CallbackSetTest, MethodOfTheOwner) {
    m_set.Add(util::MakeCallback(m_owner.Get(), &Owner::Poke));
    m_set.CallAll();
    m_set.CallAll();
    EXPECT_EQ(2, m_owner->calls);
}

TEST_F(CallbackSetTest, CallbackErasingALaterOneDoesNotStopItInThisPass) {
    const CallbackPtr third = Recorder(3);
    m_set.Add(util::MakeCallback(m_owner, [&] {
        m_calls.push_back(1);
        m_set.Remove(third);
    }));
    m_set.Add(Recorder(2));
    m_set.Add(third);
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{1, 2, 3}), m_calls);
    EXPECT_FALSE(m_set.Contains(third));
    m_calls.clear();
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{1, 2}), m_calls);
}

TEST_F(CallbackSetTest, CallbackRemovingItself) {
    CallbackPtr once;
    once = util::MakeCallback(m_owner, [&] {
        m_calls.push_back(1);
        m_set.Remove(once);
    });
    m_set.Add(once);
    m_set.Add(Recorder(2));
    m_set.CallAll();
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{1, 2, 2}), m_calls);
    once.Reset();
}

TEST_F(CallbackSetTest, CallbackAddedDuringCallAllIsNotCalledInThisPass) {
    m_set.Add(util::MakeCallback(m_owner, [&] {
        m_calls.push_back(1);
        if (m_calls.size() == 1) {
            m_set.Add(Recorder(9));
        }
    }));
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{1}), m_calls);
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{1, 1, 9}), m_calls);
}

TEST_F(CallbackSetTest, ClearDuringCallAllTakesEffectAfterThePass) {
    m_set.Add(util::MakeCallback(m_owner, [&] {
        m_calls.push_back(1);
        m_set.Clear();
    }));
    m_set.Add(Recorder(2));
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{1, 2}), m_calls);
    EXPECT_TRUE(m_set.empty());
}

TEST_F(CallbackSetTest, NestedCallAllAppliesChangesAtTheOutermostEnd) {
    const CallbackPtr second = Recorder(2);
    int depth = 0;
    m_set.Add(util::MakeCallback(m_owner, [&] {
        m_calls.push_back(1);
        if (depth++ == 0) {
            m_set.Remove(second);
            m_set.CallAll();
            EXPECT_TRUE(m_set.Contains(second));
        }
    }));
    m_set.Add(second);
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{1, 1, 2, 2}), m_calls);
    EXPECT_FALSE(m_set.Contains(second));
}

TEST_F(CallbackSetTest, StdExceptionDoesNotStopTheOthers) {
    m_set.Add(Recorder(1));
    m_set.Add(util::MakeCallback(m_owner, [] { throw std::runtime_error("gears jammed"); }));
    m_set.Add(Recorder(3));
    test::LogCapture log;
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{1, 3}), m_calls);
    EXPECT_TRUE(log.Contains("Caught exception: gears jammed")) << log.Text();
    EXPECT_TRUE(log.Contains("-- Warning: Exception caught in CallbackSet::CallAll: gears jammed"))
        << log.Text();
}

TEST_F(CallbackSetTest, ForeignExceptionDoesNotStopTheOthers) {
    m_set.Add(util::MakeCallback(m_owner, [] { throw 42; }));
    m_set.Add(Recorder(2));
    test::LogCapture log;
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{2}), m_calls);
    EXPECT_TRUE(log.Contains("Caught an unknown exception: ")) << log.Text();
    EXPECT_TRUE(log.Contains("-- Warning: Exception caught in CallbackSet::CallAll: "))
        << log.Text();
}

TEST_F(CallbackSetTest, ThrowingCallbackStillLetsQueuedChangesApply) {
    m_set.Add(util::MakeCallback(m_owner, [&] {
        m_set.Add(Recorder(5));
        throw std::logic_error("after the add");
    }));
    test::LogCapture log;
    m_set.CallAll();
    EXPECT_EQ(2u, m_set.size());
    EXPECT_FALSE(m_set.Callbacks().IsLocked());
}

TEST_F(CallbackSetTest, NullCallbackIsReportedAndSkippedAndFlushed) {
    m_set.Add(CallbackPtr());
    m_set.Add(Recorder(2));
    {
        test::LogCapture log;
        m_set.CallAll();
        EXPECT_TRUE(log.Contains("Tried to dereference a NULL SharedPtr")) << log.Text();
    }
    EXPECT_EQ((std::vector<int>{2}), m_calls);
    m_set.Flush();
    EXPECT_EQ(1u, m_set.size());
}

TEST_F(CallbackSetTest, DeadOwnerIsSkippedAndRemovedAtFlush) {
    OwnerPtr shortLived(new Owner);
    const CallbackPtr dying = util::MakeCallback(shortLived, [&] { m_calls.push_back(1); });
    m_set.Add(dying);
    m_set.Add(Recorder(2));
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{1, 2}), m_calls);

    shortLived.Reset();
    EXPECT_TRUE(dying->IsDead());
    m_calls.clear();
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{2}), m_calls);
    EXPECT_EQ(2u, m_set.size()) << "CallAll only skips";

    m_set.Flush();
    EXPECT_EQ(1u, m_set.size());
    EXPECT_FALSE(m_set.Contains(dying));
    EXPECT_FALSE(dying->Call());
}

TEST_F(CallbackSetTest, FlushDuringCallAllIsDeferred) {
    OwnerPtr shortLived(new Owner);
    m_set.Add(util::MakeCallback(shortLived, [&] { m_calls.push_back(1); }));
    m_set.Add(util::MakeCallback(m_owner, [&] {
        m_calls.push_back(2);
        m_set.Flush();
    }));
    shortLived.Reset();
    m_set.CallAll();
    EXPECT_EQ((std::vector<int>{2}), m_calls);
    EXPECT_EQ(1u, m_set.size());
}

TEST_F(CallbackSetTest, OwnerReleasedDuringItsCallbackLivesUntilItReturns) {
    OwnerPtr owner(new Owner);
    util::WeakPtr<Owner> watch(owner);
    bool aliveAfterRelease = false;
    m_set.Add(util::MakeCallback(owner, [&] {
        owner.Reset();
        aliveAfterRelease = !watch.Expired();
    }));
    m_set.CallAll();
    EXPECT_TRUE(aliveAfterRelease);
    EXPECT_TRUE(watch.Expired());
}

TEST_F(CallbackSetTest, OwnerNobodyOwnsYetIsCalledAndNotDeleted) {
    // As when an object registers from inside its own constructor.
    Owner unowned;
    m_set.Add(util::MakeCallback(&unowned, &Owner::Poke));
    m_set.CallAll();
    m_set.CallAll();
    EXPECT_EQ(2, unowned.calls);
    m_set.Clear();
}

TEST_F(CallbackSetTest, NullOwnerMeansNeverCalled) {
    m_set.Add(util::MakeCallback(util::WeakPtr<util::Pointee>(), [&] { m_calls.push_back(1); }));
    m_set.CallAll();
    EXPECT_TRUE(m_calls.empty());
    m_set.Flush();
    EXPECT_TRUE(m_set.empty());
}

TEST(CallbackSetTracking, EverySetWithCallbacksIsTrackedForTheFrameFlush) {
    auto tracked = [](const util::AbstractCallbackSet* set) {
        const auto all = util::AbstractCallbackSet::Snapshot();
        return std::find(all.begin(), all.end(), set) != all.end();
    };
    const util::AbstractCallbackSet* gone;
    {
        CallbackSet set;
        CallbackArgSet<float> argSet;
        // Nothing to flush yet: the frame passes them by.
        EXPECT_FALSE(tracked(&set));
        EXPECT_FALSE(tracked(&argSet));
        gone = &set;

        OwnerPtr owner(new Owner);
        set.Add(util::MakeCallback(owner, [] {}));
        argSet.Add(owner, [](float) {});
        EXPECT_TRUE(tracked(&set));
        EXPECT_TRUE(tracked(&argSet));
        // A copy holds callbacks from the start.
        const CallbackSet copy(set);
        EXPECT_TRUE(tracked(&copy));
        EXPECT_EQ(copy.size(), 1u);
        owner.Reset();
        for (util::AbstractCallbackSet* each : util::AbstractCallbackSet::Snapshot()) {
            if (each == &set) {
                each->Flush();
            }
        }
        EXPECT_TRUE(set.empty());
    }
    EXPECT_FALSE(tracked(gone));
}

TEST(CallbackArgSet, PassesTheValueToEveryLiveCallback) {
    OwnerPtr a(new Owner);
    OwnerPtr b(new Owner);
    CallbackArgSet<float> set;
    set.Add(util::MakeCallbackArg<float>(a.Get(), &Owner::Take));
    set.Add(b, [&](float value) { b->received.push_back(value * 2); });
    set.CallAll(0.5f);
    EXPECT_EQ((std::vector<float>{0.5f}), a->received);
    EXPECT_EQ((std::vector<float>{1.0f}), b->received);

    util::WeakPtr<Owner> watchA(a);
    a.Reset();
    EXPECT_TRUE(watchA.Expired());
    set.CallAll(2.0f);
    EXPECT_EQ((std::vector<float>{1.0f, 4.0f}), b->received);
    set.Flush();
    EXPECT_EQ(1u, set.size());
}

TEST(CallbackArgSet, ThrowsAndChangesDuringTheCall) {
    OwnerPtr owner(new Owner);
    CallbackArgSet<float> set;
    std::vector<float> seen;
    util::CallbackFloatPtr last;
    set.Add(owner, [&](float) { throw std::runtime_error("bad step"); });
    set.Add(owner, [&](float value) {
        seen.push_back(value);
        set.Remove(last);
    });
    last = set.Add(owner, [&](float value) { seen.push_back(-value); });
    test::LogCapture log;
    set.CallAll(3.0f);
    EXPECT_EQ((std::vector<float>{3.0f, -3.0f}), seen);
    EXPECT_TRUE(log.Contains("Exception caught in CallbackSet::CallAll: bad step")) << log.Text();
    EXPECT_EQ(2u, set.size());
}

}  // namespace
