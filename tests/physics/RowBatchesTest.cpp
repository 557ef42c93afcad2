#include "physics/Contact.h"
#include "physics/RowBatches.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <set>
#include <vector>

namespace {

using physics::ContactRow;
using physics::RowBatch;
using physics::RowBatches;
using physics::RowChange;
using physics::SolverBody;

// Bodies 0 and 1 are fixed (one of them the ground that nearly every row touches), 2 only
// turns, the rest move freely. The last slot is the padding's.
std::vector<SolverBody> MakeBodies(size_t count, std::mt19937& random) {
    std::uniform_real_distribution<float> mass(0.2f, 2.0f);
    std::vector<SolverBody> bodies(count + 1, SolverBody{{0, 0}, 0, 0, 0});
    for (size_t i = 3; i < count; ++i) {
        bodies[i].massInv = mass(random);
        bodies[i].inertiaInv = mass(random) * 3;
    }
    bodies[2].inertiaInv = 1.5f;
    return bodies;
}

// Rows in a random order with the values a pile's contacts have: many on the ground,
// runs of rows on the same pair, some pushing apart and some holding.
std::vector<ContactRow> MakeRows(size_t count, size_t bodyCount, std::mt19937& random) {
    std::uniform_int_distribution<uint32_t> body(0, static_cast<uint32_t>(bodyCount - 1));
    std::uniform_real_distribution<float> unit(-1, 1);
    std::uniform_real_distribution<float> positive(0.05f, 1.5f);
    std::vector<ContactRow> rows;
    while (rows.size() < count) {
        ContactRow row{};
        row.body0 = unit(random) < -0.5f ? 0 : body(random);
        row.body1 = body(random);
        if (row.body0 == row.body1) {
            continue;
        }
        const float angle = unit(random) * 3.1416f;
        row.n = {std::cos(angle), std::sin(angle)};
        row.rn1 = unit(random);
        row.rt1 = unit(random);
        row.rn2 = unit(random);
        row.rt2 = unit(random);
        row.massN = positive(random);
        row.massT = positive(random);
        row.targetN = unit(random) * 0.3f;
        row.targetT = unit(random) * 0.1f;
        row.accN = positive(random) * 0.2f;
        row.accT = unit(random) * 0.05f;
        row.friction = positive(random) * 0.5f;
        rows.push_back(row);
        // A second point on the same pair follows now and then, as box contacts come.
        if (unit(random) > 0.3f && rows.size() < count) {
            ContactRow twin = row;
            twin.rn1 = unit(random);
            twin.rn2 = unit(random);
            rows.push_back(twin);
        }
    }
    return rows;
}

std::vector<uint32_t> Positions(size_t count) {
    std::vector<uint32_t> order(count);
    for (size_t i = 0; i < count; ++i) {
        order[i] = static_cast<uint32_t>(i);
    }
    return order;
}

void ExpectSameBits(const void* a, const void* b, size_t bytes, const char* what) {
    EXPECT_EQ(0, std::memcmp(a, b, bytes)) << what << " differ";
}

// Restores the sweep's choice of vector width.
class WideVectors {
public:
    explicit WideVectors(bool allowed) : m_was(RowBatches::AllowWideVectors(allowed)) {}
    ~WideVectors() { RowBatches::AllowWideVectors(m_was); }

private:
    bool m_was;
};

TEST(RowBatches, BatchedSweepsEqualTheSequentialSweepBitForBit) {
    for (unsigned seed : {1u, 2u, 3u, 4u, 5u, 6u}) {
        // Odd seeds take the widest vectors the processor has, even ones the narrow kind.
        const WideVectors width(seed % 2 == 1);
        std::mt19937 random(seed);
        const size_t bodyCount = 40;
        std::vector<SolverBody> sequential = MakeBodies(bodyCount, random);
        std::vector<SolverBody> batched = sequential;
        std::vector<ContactRow> rows = MakeRows(300, bodyCount, random);
        std::vector<ContactRow> batchedRows = rows;

        // Two runs with something else between them, as a constraint of another kind would
        // sit in the list: a run must not be mixed with the next.
        const size_t split = 170;
        auto between = [](std::vector<SolverBody>& bodies) {
            bodies[5].velocityChange.x = bodies[5].velocityChange.x * 0.5f + 0.01f;
        };

        RowBatches batches;
        batches.Clear(static_cast<uint32_t>(bodyCount), batched.data());
        const std::vector<uint32_t> order = Positions(rows.size());
        batches.Add(batchedRows.data(), order.data(), split, batched.data());
        const size_t firstEnd = batches.BatchCount();
        batches.Add(batchedRows.data(), order.data() + split, rows.size() - split, batched.data());
        const size_t secondEnd = batches.BatchCount();

        std::vector<RowChange> changes(rows.size());
        std::vector<RowChange> laneChanges(secondEnd * RowBatch::kLanes);
        const int passes = 30;
        for (int pass = 0; pass < passes; ++pass) {
            const bool last = pass + 1 == passes;
            physics::Contact::Sweep(rows.data(), rows.data() + split, sequential.data(),
                                    last ? changes.data() : nullptr);
            between(sequential);
            physics::Contact::Sweep(rows.data() + split, rows.data() + rows.size(),
                                    sequential.data(), last ? changes.data() + split : nullptr);

            batches.Sweep(0, firstEnd, batched.data(), last ? laneChanges.data() : nullptr);
            between(batched);
            batches.Sweep(firstEnd, secondEnd, batched.data(), last ? laneChanges.data() : nullptr);
        }
        std::vector<RowChange> batchedChanges(rows.size());
        batches.Scatter(batchedRows.data(), laneChanges.data(), batchedChanges.data());

        ExpectSameBits(sequential.data(), batched.data(), sizeof(SolverBody) * bodyCount, "bodies");
        ExpectSameBits(rows.data(), batchedRows.data(), sizeof(ContactRow) * rows.size(), "rows");
        ExpectSameBits(changes.data(), batchedChanges.data(), sizeof(RowChange) * rows.size(),
                       "changes");
        // The padding's slot saw only zeros.
        const SolverBody& padding = batched[bodyCount];
        EXPECT_EQ(0.0f, padding.velocityChange.x);
        EXPECT_EQ(0.0f, padding.velocityChange.y);
        EXPECT_EQ(0.0f, padding.angularChange);
        // The work did not collapse into one row a batch.
        EXPECT_LT(secondEnd, rows.size() / 2) << "seed " << seed;
    }
}

TEST(RowBatches, BatchesShareNoMovingBodyAndKeepEachBodysOrder) {
    std::mt19937 random(7);
    const size_t bodyCount = 25;
    const std::vector<SolverBody> bodies = MakeBodies(bodyCount, random);
    const std::vector<ContactRow> rows = MakeRows(200, bodyCount, random);
    RowBatches batches;
    batches.Clear(static_cast<uint32_t>(bodyCount), bodies.data());
    // Rows taken in the list's order but backwards, as a sort might hand them over.
    std::vector<uint32_t> order = Positions(rows.size());
    std::reverse(order.begin(), order.end());
    batches.Add(rows.data(), order.data(), order.size(), bodies.data());

    const auto& laneRows = batches.LaneRows();
    ASSERT_EQ(batches.BatchCount() * RowBatch::kLanes, laneRows.size());
    std::vector<int> timesSeen(rows.size(), 0);
    std::vector<bool> seen(bodyCount, false);
    std::vector<uint32_t> lastRowOf(bodyCount, 0);
    for (size_t b = 0; b < batches.BatchCount(); ++b) {
        std::set<uint32_t> inBatch;
        for (int lane = 0; lane < RowBatch::kLanes; ++lane) {
            const uint32_t r = laneRows[b * RowBatch::kLanes + lane];
            if (r == RowBatches::kNoRow) {
                continue;
            }
            ASSERT_LT(r, rows.size());
            ++timesSeen[r];
            for (uint32_t body : {rows[r].body0, rows[r].body1}) {
                if (bodies[body].massInv == 0 && bodies[body].inertiaInv == 0) {
                    continue;  // fixed bodies order nothing
                }
                EXPECT_TRUE(inBatch.insert(body).second) << "body " << body << " twice in batch";
                if (seen[body]) {
                    EXPECT_GT(lastRowOf[body], r) << "body " << body << " out of order";
                }
                seen[body] = true;
                lastRowOf[body] = r;
            }
        }
    }
    for (size_t r = 0; r < rows.size(); ++r) {
        EXPECT_EQ(1, timesSeen[r]) << "row " << r;
    }
    // Only the turning body 2 of the first three orders its rows.
    EXPECT_TRUE(seen[2]);
    EXPECT_FALSE(seen[0] || seen[1]);
}

}  // namespace
