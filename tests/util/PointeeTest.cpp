#include <gtest/gtest.h>

#include "util/Pointee.h"

TEST(Smoke, Builds) { EXPECT_EQ(1, 1); }
