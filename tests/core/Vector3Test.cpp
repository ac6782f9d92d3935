// Vector2 and Vector3: normalisation at the tolerance, tolerant equality, ordering
// and the clockwise rotation.
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>

using namespace ZOL;

TEST(Vector3, NormaliseReturnsThePriorLengthAndLeavesTooShortVectorsUnchanged) {
    Vector3 v(3, 4, 0);
    EXPECT_DOUBLE_EQ(v.Normalise(), 5.0);
    EXPECT_DOUBLE_EQ(v.x, 0.6);
    EXPECT_DOUBLE_EQ(v.y, 0.8);
    // Vector2 divides at length == REAL_TOL, Vector3 only above it.
    const struct {
        double x, afterVector3, afterVector2;
    } cases[] = {{1e-16, 1e-16, 1e-16}, {0.0, 0.0, 0.0}, {REAL_TOL, REAL_TOL, 1.0}};
    for (const auto& c : cases) {
        Vector3 v3(c.x, 0, 0);
        Vector2 v2(c.x, 0);
        EXPECT_EQ(v3.Normalise(), c.x);
        EXPECT_EQ(v2.Normalise(), c.x);
        EXPECT_EQ(v3.x, c.afterVector3);
        EXPECT_EQ(v2.x, c.afterVector2);
    }
}

TEST(Vector3, EqualityIsTolerantAndOrderIgnoresEqualVectors) {
    const Vector3 a(1, 2, 3);
    const Vector3 b(1 + 4e-16, 2, 3);  // closer than REAL_TOL, yet a different double
    ASSERT_NE(a.x, b.x);
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a < b || b < a);
    const Vector2 c(1, 2), d(1 + 4e-16, 2);
    EXPECT_TRUE(c == d);
    EXPECT_FALSE(c < d || d < c);
    EXPECT_FALSE(a == Vector3(1, 2, 3 + 1e-14));

    const Vector3 ordered[][2] = {{{0, 9, 9}, {1, 0, 0}},
                                  {{1, 0, 9}, {1, 1, 0}},
                                  {{1, 1, 0}, {1, 1, 1}},
                                  {{-1, 5, 5}, {-0.5, -5, -5}}};
    for (const auto& pair : ordered) {
        EXPECT_TRUE(pair[0] < pair[1]);
        EXPECT_FALSE(pair[1] < pair[0]);
    }
    std::set<Vector3> s = {{1, 1, 1}, {0, 2, 0}, {1, 1, 1}, {0, 1, 5}};
    ASSERT_EQ(s.size(), 3u);
    EXPECT_EQ(s.begin()->y, 1.0);
}

TEST(Vector3, CrossProductsFollowTheRightHandRule) {
    const Vector3 c = Vector3(1, 2, 3).CrossProduct(Vector3(4, 5, 6));
    EXPECT_TRUE(c.x == -3.0 && c.y == 6.0 && c.z == -3.0);
    EXPECT_EQ(Vector2(1, 2).CrossProduct(Vector2(3, 4)), -2.0);
    EXPECT_TRUE(std::isinf((Vector3(1, 2, 3) / 0.0).x));  // plain division, no guard
}

TEST(Vector2, RotateIsClockwise) {
    Vector2 v(1, 0);
    v.Rotate(ZOL_PI / 2);
    EXPECT_NEAR(v.x, 0.0, 1e-15);
    EXPECT_NEAR(v.y, -1.0, 1e-15);  // counter-clockwise would give +1
}
