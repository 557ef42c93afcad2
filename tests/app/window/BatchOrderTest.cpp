#include "app/BatchOrder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

using math::BoundingBox2f;
using math::Vec2;

constexpr int kSide = 48;

// A piece covering the grid cells [x0, x1) by [y0, y1); a piece of a slot drawn in two
// passes also has an inner part that its second pass covers.
struct Piece {
    int slot;
    int x0, y0, x1, y1;
    bool immediate = false;
};

// Cells share a pixel exactly when their boxes, pulled in by half a cell, overlap.
BoundingBox2f BoxOf(const Piece& p) {
    return BoundingBox2f(Vec2(static_cast<float>(p.x0), static_cast<float>(p.y0)),
                         Vec2(static_cast<float>(p.x1) - 0.5f, static_cast<float>(p.y1) - 0.5f));
}

class Canvas {
public:
    Canvas() : m_cells(kSide * kSide, -1) {}
    // The first pass paints the piece's id * 2, the second its id * 2 + 1 on the inner part.
    void Paint(const Piece& p, int id, int pass) {
        const int inset = pass == 0 ? 0 : 1;
        for (int y = p.y0 + inset; y < p.y1 - inset; ++y) {
            for (int x = p.x0 + inset; x < p.x1 - inset; ++x) {
                m_cells[static_cast<size_t>(y * kSide + x)] = id * 2 + pass;
            }
        }
    }
    bool operator==(const Canvas& o) const { return m_cells == o.m_cells; }

private:
    std::vector<int> m_cells;
};

// Slots 0 and 1 draw in two passes: first pass of every piece, then the second of every one.
constexpr int kSelfOrderedSlots = 2;

struct Batched {
    app::BatchOrder order;
    std::vector<std::vector<int>> held = std::vector<std::vector<int>>(app::BatchOrder::kMaxSlots);
    Canvas canvas;
    int flushes = 0;
    const std::vector<Piece>* pieces = nullptr;

    void Flush(int slot) {
        ++flushes;
        std::vector<int>& ids = held[static_cast<size_t>(slot)];
        const int passes = slot < kSelfOrderedSlots ? 2 : 1;
        for (int pass = 0; pass < passes; ++pass) {
            for (const int id : ids) {
                canvas.Paint((*pieces)[static_cast<size_t>(id)], id, pass);
                if (passes == 1) {
                    canvas.Paint((*pieces)[static_cast<size_t>(id)], id, 1);
                }
            }
        }
        ids.clear();
    }

    void Draw(const std::vector<Piece>& all) {
        pieces = &all;
        order.Reset(4);
        const auto flush = [this](int slot) { Flush(slot); };
        for (size_t id = 0; id < all.size(); ++id) {
            const Piece& p = all[id];
            if (p.immediate) {
                order.Before(BoxOf(p), flush);
                canvas.Paint(p, static_cast<int>(id), 0);
                canvas.Paint(p, static_cast<int>(id), 1);
                continue;
            }
            order.Add(p.slot, BoxOf(p), p.slot < kSelfOrderedSlots, flush);
            held[static_cast<size_t>(p.slot)].push_back(static_cast<int>(id));
        }
        order.FlushAll(flush);
    }
};

Canvas InOrder(const std::vector<Piece>& pieces) {
    Canvas canvas;
    for (size_t id = 0; id < pieces.size(); ++id) {
        canvas.Paint(pieces[id], static_cast<int>(id), 0);
        canvas.Paint(pieces[id], static_cast<int>(id), 1);
    }
    return canvas;
}

TEST(BatchOrderTest, BatchedDrawingLooksLikeDrawingInOrder) {
    std::mt19937 random(2026);
    std::uniform_int_distribution<int> slotOf(0, 6);
    std::uniform_int_distribution<int> at(0, kSide - 1);
    std::uniform_int_distribution<int> size(1, 6);
    std::uniform_int_distribution<int> percent(0, 99);
    for (int scene = 0; scene < 300; ++scene) {
        std::vector<Piece> pieces;
        const int count = 10 + scene % 70;
        for (int i = 0; i < count; ++i) {
            Piece p;
            p.slot = slotOf(random);
            p.x0 = at(random);
            p.y0 = at(random);
            // Now and then a piece too large for the grid's lists.
            const int grow = percent(random) < 3 ? 40 : size(random);
            p.x1 = std::min(kSide, p.x0 + grow);
            p.y1 = std::min(kSide, p.y0 + size(random));
            p.immediate = percent(random) < 10;
            pieces.push_back(p);
        }
        Batched batched;
        batched.Draw(pieces);
        ASSERT_TRUE(batched.canvas == InOrder(pieces)) << "scene " << scene;
    }
}

TEST(BatchOrderTest, PiecesApartDrawOneBatchPerSlotAndChainsFollowTheirOrder) {
    // Hinge-like: a picture, then a line over it, then the next pair elsewhere. Lines follow
    // pictures throughout, so there is no circle: one draw each.
    std::vector<Piece> pieces;
    for (int i = 0; i < 100; ++i) {
        const int x = (i % 10) * 4;
        const int y = (i / 10) * 4;
        pieces.push_back({3, x, y, x + 3, y + 3});
        pieces.push_back({4, x + 1, y, x + 2, y + 3});
    }
    // A third kind beside them, touching nothing.
    pieces.push_back({5, 44, 44, 47, 47});
    Batched batched;
    batched.Draw(pieces);
    EXPECT_TRUE(batched.canvas == InOrder(pieces));
    EXPECT_EQ(batched.flushes, 3);
}

TEST(BatchOrderTest, AnOrderGoingRoundInACircleDrawsEarly) {
    // 3 under 4, then 3 again over that 4: the first 3 must be drawn before the second can
    // join its slot.
    const std::vector<Piece> pieces = {{3, 0, 0, 4, 4}, {4, 2, 2, 6, 6}, {3, 3, 3, 8, 8}};
    Batched batched;
    batched.Draw(pieces);
    EXPECT_TRUE(batched.canvas == InOrder(pieces));
    EXPECT_EQ(batched.flushes, 3);
}

TEST(BatchOrderTest, BoxesBeyondTheGridOrNotANumberCountAsEverywhere) {
    app::BatchOrder order;
    order.Reset(1);
    std::vector<int> drawn;
    const auto flush = [&drawn](int slot) { drawn.push_back(slot); };
    order.Add(2, BoundingBox2f(Vec2(0, 0), Vec2(1, 1)), false, flush);
    order.Add(3, BoundingBox2f(Vec2(-1e30f, 0), Vec2(1e30f, 1)), false, flush);
    const float nan = std::nanf("");
    // Far from both pieces, yet the huge one may be anywhere: 3 is drawn, after 2.
    order.Before(BoundingBox2f(Vec2(50, 50), Vec2(51, 51)), flush);
    EXPECT_EQ(drawn, (std::vector<int>{2, 3}));
    order.Add(1, BoundingBox2f(Vec2(nan, 0), Vec2(1, 1)), false, flush);
    order.Before(BoundingBox2f(Vec2(90, 90), Vec2(91, 91)), flush);
    EXPECT_EQ(drawn, (std::vector<int>{2, 3, 1}));
}

}  // namespace
