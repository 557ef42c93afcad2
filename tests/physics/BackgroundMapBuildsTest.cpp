#include "physics/BackgroundMapBuilds.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "physics/Polygon.h"
#include "util/Exception.h"

namespace {

using math::Vec2;
using math::Vec2List;
using physics::BackgroundMapBuilds;
using physics::Polygon;
using physics::PolygonPtr;

// Convex, concave, many-sided and thin outlines, away from the origin.
std::vector<Vec2List> Outlines() {
    std::vector<Vec2List> outlines = {
        {{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}},
        {{5, 5}, {9, 5.5f}, {8, 8}, {6, 7}},
        {{-3, 1}, {4, 1}, {4, 1.05f}, {-3, 1.05f}},
    };
    Vec2List star;
    for (int i = 0; i < 24; ++i) {
        const float angle = 2 * math::Pi * static_cast<float>(i) / 24;
        const float radius = (i % 2) ? 3.0f : 1.2f;
        star.push_back({10 + radius * std::cos(angle), -4 + radius * std::sin(angle)});
    }
    outlines.push_back(star);
    return outlines;
}

template <class T>
bool SameBits(const util::Array2D<T>& a, const util::Array2D<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

void ExpectSameMaps(const Polygon& actual, const Polygon& expected) {
    EXPECT_TRUE(SameBits(actual.GetDistMap(), expected.GetDistMap()));
    EXPECT_TRUE(SameBits(actual.GetOutlineMap(), expected.GetOutlineMap()));
    EXPECT_TRUE(SameBits(actual.GetNormalMap(), expected.GetNormalMap()));
    EXPECT_EQ(actual.GetPerimeter(), expected.GetPerimeter());
}

}  // namespace

TEST(BackgroundMapBuilds, MapsComeOutAsBuiltInPlaceHoweverTheyAreReached) {
    const std::vector<Vec2List> outlines = Outlines();
    std::vector<PolygonPtr> inPlace;
    for (const Vec2List& outline : outlines) {
        inPlace.push_back(PolygonPtr(new Polygon(outline)));
    }

    std::vector<PolygonPtr> loaded;
    {
        BackgroundMapBuilds builds;
        EXPECT_EQ(BackgroundMapBuilds::Current(), &builds);
        for (int round = 0; round < 6; ++round) {
            for (const Vec2List& outline : outlines) {
                loaded.push_back(PolygonPtr(new Polygon(outline)));
            }
        }
        // Everything but the maps is there at once.
        EXPECT_EQ(loaded.back()->GetVertices().size(), outlines.back().size());
        // The last made is the least likely to have been begun: asking for a distance
        // builds it here; a copy waits for its original.
        const Vec2 inside(1.5f, 0.5f);
        const PolygonPtr& last = loaded[loaded.size() - outlines.size()];
        EXPECT_EQ(last->Dist(inside), inPlace[0]->Dist(inside));
        EXPECT_LT(last->Dist(inside), 0);
        const Polygon copy(*loaded[loaded.size() - 1]);
        ExpectSameMaps(copy, *inPlace.back());
        // Polygons dropped while queued or under way leave the others alone.
        for (size_t i = 1; i + 1 < loaded.size(); i += 3) {
            loaded[i] = PolygonPtr();
        }
    }
    EXPECT_EQ(BackgroundMapBuilds::Current(), nullptr);
    for (size_t i = 0; i < loaded.size(); ++i) {
        if (loaded[i]) {
            ExpectSameMaps(*loaded[i], *inPlace[i % outlines.size()]);
        }
    }
}

TEST(BackgroundMapBuilds, AnInnerScopeLeavesTheOuterInCharge) {
    BackgroundMapBuilds outer;
    PolygonPtr polygon;
    {
        BackgroundMapBuilds inner;
        EXPECT_EQ(BackgroundMapBuilds::Current(), &outer);
        polygon = PolygonPtr(new Polygon(Outlines()[1]));
    }
    EXPECT_EQ(BackgroundMapBuilds::Current(), &outer);
    ExpectSameMaps(*polygon, Polygon(Outlines()[1]));
}

TEST(BackgroundMapBuilds, BadOutlinesStillThrowFromTheConstructor) {
    BackgroundMapBuilds builds;
    EXPECT_THROW(Polygon(Vec2List{{0, 0}, {1, 1}}), BadDataException);
    EXPECT_THROW(Polygon(Vec2List{{0, 0}, {1, 1}, {1, 0}, {0, 1}}), BadDataException);
}
