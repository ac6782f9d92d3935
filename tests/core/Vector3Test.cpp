// Vector3: normalisation, tolerant equality and ordering.
#include <gtest/gtest.h>

#include <zol/core/Vector3.h>

using namespace ZOL;

TEST(Vector3, NormaliseReturnsPriorLength) {
    Vector3 v(3, 4, 0);
    EXPECT_DOUBLE_EQ(v.Normalise(), 5.0);
    EXPECT_DOUBLE_EQ(v.x, 0.6);
    EXPECT_DOUBLE_EQ(v.y, 0.8);
}
