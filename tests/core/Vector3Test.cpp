// Vector2 and Vector3: normalisation at the tolerance, tolerant equality, ordering
// and the clockwise rotation.
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>

using namespace ZOL;

TEST(Vector3, NormaliseReturnsPriorLength) {
    Vector3 v(3, 4, 0);
    EXPECT_DOUBLE_EQ(v.Normalise(), 5.0);
    EXPECT_DOUBLE_EQ(v.x, 0.6);
    EXPECT_DOUBLE_EQ(v.y, 0.8);
    EXPECT_EQ(v.z, 0.0);
}

TEST(Vector3, TooShortVectorIsLeftUnchangedAndItsLengthReturned) {
    Vector3 v(1e-16, 0, 0);
    EXPECT_EQ(v.Normalise(), 1e-16);
    EXPECT_EQ(v.x, 1e-16);
    Vector3 zero;
    EXPECT_EQ(zero.Normalise(), 0.0);
    EXPECT_EQ(zero.x, 0.0);
}

TEST(Vector3, NormaliseAtExactlyTheToleranceDiffersBetweenVector2AndVector3) {
    // Vector2 divides at length == REAL_TOL, Vector3 only above it.
    Vector2 v2(REAL_TOL, 0);
    Vector3 v3(REAL_TOL, 0, 0);
    EXPECT_EQ(v2.Normalise(), REAL_TOL);
    EXPECT_EQ(v3.Normalise(), REAL_TOL);
    EXPECT_EQ(v2.x, 1.0);
    EXPECT_EQ(v3.x, REAL_TOL);
}

TEST(Vector3, EqualityIsTolerantAndOrderIgnoresEqualVectors) {
    const Vector3 a(1, 2, 3);
    const Vector3 b(1 + 4e-16, 2, 3);  // closer than REAL_TOL, yet a different double
    ASSERT_NE(a.x, b.x);
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a < b);
    EXPECT_FALSE(b < a);
    const Vector2 c(1, 2), d(1 + 4e-16, 2);
    EXPECT_TRUE(c == d);
    EXPECT_FALSE(c < d);
    EXPECT_FALSE(d < c);
    EXPECT_FALSE(a == Vector3(1, 2, 3 + 1e-14));
}

TEST(Vector3, OrderIsLexicographicAndSortsSets) {
    struct Case {
        Vector3 lo, hi;
    };
    const Case cases[] = {{{0, 9, 9}, {1, 0, 0}},
                          {{1, 0, 9}, {1, 1, 0}},
                          {{1, 1, 0}, {1, 1, 1}},
                          {{-1, 5, 5}, {-0.5, -5, -5}}};
    for (const Case& c : cases) {
        EXPECT_TRUE(c.lo < c.hi);
        EXPECT_FALSE(c.hi < c.lo);
    }
    std::set<Vector3> s = {{1, 1, 1}, {0, 2, 0}, {1, 1, 1}, {0, 1, 5}};
    ASSERT_EQ(s.size(), 3u);
    EXPECT_EQ(s.begin()->y, 1.0);
    EXPECT_EQ(s.rbegin()->x, 1.0);
}

TEST(Vector3, ArithmeticAndProducts) {
    const Vector3 a(1, 2, 3), b(4, 5, 6);
    EXPECT_EQ(a * b, 32.0);
    const Vector3 c = a.CrossProduct(b);
    EXPECT_EQ(c.x, -3.0);
    EXPECT_EQ(c.y, 6.0);
    EXPECT_EQ(c.z, -3.0);
    EXPECT_EQ((a + b)[2], 9.0);
    EXPECT_EQ((-a)[1], -2.0);
    EXPECT_EQ((b / 2.0).x, 2.0);
    EXPECT_EQ(a.DistanceSquared(b), 27.0);
    EXPECT_TRUE(std::isinf((a / 0.0).x));  // plain division, no guard
    EXPECT_EQ(Vector2(1, 2).CrossProduct(Vector2(3, 4)), -2.0);
}

TEST(Vector2, RotateIsClockwise) {
    Vector2 v(1, 0);
    v.Rotate(ZOL_PI / 2);
    EXPECT_NEAR(v.x, 0.0, 1e-15);
    EXPECT_NEAR(v.y, -1.0, 1e-15);  // counter-clockwise would give +1
    Vector2 w(0, 1);
    w.Rotate(ZOL_PI / 2);
    EXPECT_NEAR(w.x, 1.0, 1e-15);
    EXPECT_NEAR(w.y, 0.0, 1e-15);
}
