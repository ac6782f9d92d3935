// Plane3, Obb and the small index types: constructions, projections, the far point of
// a parallel intersection, inclusive box bounds.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include <zol/core/ImageColorId.h>
#include <zol/core/Obb.h>
#include <zol/core/Plane3.h>

#include "tests/common/TestData.h"

using namespace ZOL;

TEST(Plane3, ThroughThreePointsHasUnitNormalAndPointNormalKeepsTheLength) {
    const Plane3 plane(Vector3(0, 0, 2), Vector3(3, 0, 2), Vector3(0, 5, 2));
    double abcd[4];
    plane.GetParameters(abcd);
    EXPECT_EQ(std::vector<double>(abcd, abcd + 4), std::vector<double>({0, 0, 1, -2}));
    EXPECT_EQ(plane.SignedDistance(Vector3(4, 4, 5)), 3.0);
    EXPECT_EQ(Plane3(Vector3(1, 1, 1), Vector3(2, 2, 2), Vector3(3, 3, 3)).GetNormal().Length(),
              0.0);
    const Plane3 scaled(Vector3(1, 1, 1), Vector3(0, 2, 0));
    EXPECT_EQ(scaled.GetDistance(), -2.0);
    EXPECT_EQ(scaled.SignedDistance(Vector3(0, 3, 0)), 4.0);  // not divided by |n|
}

TEST(Plane3, ProjectionsLandInThePlaneAndTheNormalItselfWarns) {
    const Plane3 plane(Vector3(0, 0, 1), Vector3(0, 0, 1));
    const Vector3 p = plane.ProjectPoint(Vector3(3, 4, 9));
    EXPECT_TRUE(p.x == 3.0 && p.z == 1.0);
    const Vector3 v = plane.ProjectVector(Vector3(3, 4, 9));
    EXPECT_DOUBLE_EQ(v.x, 0.6);
    EXPECT_DOUBLE_EQ(v.y, 0.8);
    EXPECT_EQ(v.z, 0.0);
    zoltest::LogCapture log;
    EXPECT_LT(plane.ProjectVector(Vector3(0, 0, 5)).Length(), REAL_TOL);
    EXPECT_EQ(log.Lines(),
              std::vector<std::string>{"Plane3::ProjectVector: warning: vec3.Length < REAL_TOL"});
}

TEST(Plane3, IntersectionOfCrossingAndParallelLines) {
    const Plane3 plane(Vector3(0, 0, 1), Vector3(0, 0, 1));
    double t = 0;
    const Vector3 x = plane.Intersection(Vector3(1, 2, 3), Vector3(1, 2, -1), &t);
    EXPECT_DOUBLE_EQ(t, 0.5);
    EXPECT_DOUBLE_EQ(x.z, 1.0);
    EXPECT_EQ(plane.Intersection(Vector3(1, 2, 3), Vector3(1, 2, -1), nullptr).z, x.z);
    // A parallel line gives a finite far point.
    const Vector3 far = plane.Intersection(Vector3(0, 0, 2), Vector3(1, 0, 2), &t);
    EXPECT_TRUE(std::isfinite(far.x) && std::isfinite(far.y) && std::isfinite(far.z));
    EXPECT_TRUE(std::isfinite(t));
    EXPECT_GT(std::abs(t), 1e14);
    EXPECT_GT(std::abs(far.x), 1e14);
}

TEST(Obb, BoundsAreInclusiveAndFollowTheBoxAxes) {
    const Vector3 axes[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    const double half[3] = {1, 2, 3};
    const Obb box(Vector3(10, 0, 0), axes, half);
    EXPECT_TRUE(box.IsPointInside(Vector3(11, 0, 0)));  // on a face
    EXPECT_TRUE(box.IsPointInside(Vector3(9, -2, 3)));  // a corner
    EXPECT_FALSE(box.IsPointInside(Vector3(11.000001, 0, 0)));
    EXPECT_FALSE(box.IsPointInside(Vector3(10, 0, -3.5)));
    std::vector<Vector3> corners(3);
    box.Get8CornerPoints(corners);
    ASSERT_EQ(corners.size(), 8u);
    EXPECT_TRUE(corners[0] == Vector3(9, -2, -3));
    EXPECT_TRUE(corners[1] == Vector3(11, -2, -3));
    EXPECT_TRUE(corners[6] == Vector3(9, 2, 3));
    for (const Vector3& c : corners) EXPECT_TRUE(box.IsPointInside(c));

    const double s = std::sqrt(0.5);
    const Vector3 rotated[3] = {{s, s, 0}, {-s, s, 0}, {0, 0, 1}};
    const double thin[3] = {2, 0.5, 1};
    const Obb turned(Vector3(), rotated, thin);
    EXPECT_TRUE(turned.IsPointInside(Vector3(1.2, 1.2, 0)));
    EXPECT_FALSE(turned.IsPointInside(Vector3(1.2, -1.2, 0)));
}

TEST(ImageColorId, DefaultHasNoImage) { EXPECT_EQ(ImageColorId().GetImageIndex(), -1); }
