#include "platform/GeneratorId.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

TEST(GeneratorId, NeverHandsOutAnIdTwice) {
    CGeneratorId& pool = *CGeneratorId::getInstance();
    pool.Initialize({-5, 3, 7});
    pool.ReleaseId(pool.GetId());
    pool.Clean();
    EXPECT_EQ(pool.GetId(), 9);
    // At the end of the range the lowest gap is taken.
    pool.Initialize({1, 2, 4, std::numeric_limits<int>::max()});
    EXPECT_EQ(pool.GetId(), 3);
    EXPECT_EQ(pool.GetId(), 5);
}

}  // namespace
