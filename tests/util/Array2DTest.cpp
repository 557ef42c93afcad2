#include "util/Array2D.h"

#include <gtest/gtest.h>

#include <vector>

#include "LogCapture.h"
#include "util/Exception.h"

namespace {

using util::Array2D;

TEST(Array2D, ElementXYLiesAtRowTimesWidthPlusColumn) {
    Array2D<int> grid(3, 2);
    EXPECT_EQ(3u, grid.GetWidth());
    EXPECT_EQ(2u, grid.GetHeight());
    EXPECT_EQ(6u, grid.size());
    for (size_t y = 0; y < 2; ++y) {
        for (size_t x = 0; x < 3; ++x) {
            grid(x, y) = static_cast<int>(10 * y + x);
        }
    }
    const std::vector<int> rows(grid.data(), grid.data() + grid.size());
    EXPECT_EQ((std::vector<int>{0, 1, 2, 10, 11, 12}), rows);
    const Array2D<int>& constGrid = grid;
    EXPECT_EQ(12, constGrid(2, 1));
}

TEST(Array2D, NewElementsAreValueInitialisedOrGiven) {
    Array2D<float> zeros(4, 4);
    for (size_t i = 0; i < zeros.size(); ++i) {
        EXPECT_EQ(0.0f, zeros.data()[i]);
    }
    Array2D<float> filled(2, 3, 1.5f);
    EXPECT_EQ(1.5f, filled(1, 2));
    filled.Fill(-1.0f);
    EXPECT_EQ(-1.0f, filled(0, 0));
    filled.Resize(5, 1, 2.0f);
    EXPECT_EQ(5u, filled.GetWidth());
    EXPECT_EQ(1u, filled.GetHeight());
    EXPECT_EQ(2.0f, filled(4, 0));
}

TEST(Array2D, OutOfRangeIsACodeAssertion) {
    Array2D<int> grid(3, 2);
    test::LogCapture log;
    EXPECT_THROW(grid(3, 0), BadCoderException);
    EXPECT_THROW(grid(0, 2), BadCoderException);
    EXPECT_THROW(grid(static_cast<size_t>(-1), 0), BadCoderException);
    // A column past the width must not wrap into the next row.
    EXPECT_THROW(grid(4, 0), BadCoderException);
    const Array2D<int>& constGrid = grid;
    EXPECT_THROW(constGrid(0, 5), BadCoderException);
    EXPECT_TRUE(log.Contains("Code assertion failed: \"x < m_width && y < m_height\""))
        << log.Text();
    EXPECT_NO_THROW(grid(2, 1));
}

TEST(Array2D, EmptyGridHasNoElements) {
    Array2D<int> grid;
    EXPECT_TRUE(grid.empty());
    test::LogCapture log;
    EXPECT_THROW(grid(0, 0), BadCoderException);
}

TEST(Array2D, OtherElementStores) {
    Array2D<std::string, std::vector<std::string>> names(2, 2, "x");
    names(1, 1) = "corner";
    EXPECT_EQ("corner", names.Elements()[3]);
    EXPECT_EQ("x", names(0, 1));
}

}  // namespace
