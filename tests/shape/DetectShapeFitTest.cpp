// Plane and sphere fits: exact samples, seeded noise, orientation rules, and the
// rejected inputs that leave the outputs alone.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <zol/shape/DetectShape.h>

#include "tests/common/MeshFactory.h"

using namespace ZOL;
using Points = std::vector<Vector3>;

TEST(DetectShapeFit, FitPlaneOnThreePointsFollowsTheFirstNormal) {
    Vector3 center, normal;
    ASSERT_TRUE(DetectShape::FitPlane({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}},
                                      {{0, 0, -1}, {0, 0, -1}, {0, 0, -1}}, center, normal));
    EXPECT_EQ(center, Vector3(1.0 / 3, 1.0 / 3, 0));
    EXPECT_NEAR((normal - Vector3(0, 0, -1)).Length(), 0.0, 1e-14);
    // One or two points take the normalised normal sum; opposite normals cancel and the
    // tiny sum is kept as it is.
    ASSERT_TRUE(DetectShape::FitPlane({{1, 2, 3}}, {{0, 3, 4}}, center, normal));
    EXPECT_EQ(center, Vector3(1, 2, 3));
    EXPECT_NEAR((normal - Vector3(0, 0.6, 0.8)).Length(), 0.0, 1e-15);
    ASSERT_TRUE(
        DetectShape::FitPlane({{0, 0, 0}, {2, 0, 0}}, {{0, 0, 1}, {0, 0, -1}}, center, normal));
    EXPECT_EQ(center, Vector3(1, 0, 0));
    EXPECT_EQ(normal.Length(), 0.0);
}

TEST(DetectShapeFit, FitsRecoverANoisyTiltedPlaneAndSpheresWhicheverWayNormalsPoint) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::normal_distribution<double> noise(0.0, 0.001);
    const Vector3 axis = Vector3(1, 2, 2) / 3.0, e1 = Vector3(2, -1, 0) / std::sqrt(5.0);
    const Vector3 e2 = axis.CrossProduct(e1), origin(3, -1, 4);
    Points points, normals;
    for (int i = 0; i < 500; ++i) {
        points.push_back(origin + e1 * (5 * u(rng)) + e2 * (2 * u(rng)) + axis * noise(rng));
        normals.push_back(-axis);
    }
    Vector3 center, normal;
    ASSERT_TRUE(DetectShape::FitPlane(points, normals, center, normal));
    EXPECT_NEAR(normal.Length(), 1.0, 1e-14);
    EXPECT_GT(normal * -axis, 1.0 - 1e-6);
    EXPECT_NEAR((center - origin) * axis, 0.0, 1e-3);

    // Spheres sampled on a Fibonacci spiral, exact or with radial noise.
    const Vector3 centre(1.5, -2.0, 0.25);
    const struct {
        int count;
        double radius, noise, tolerance;
    } cases[] = {
        {4, 3.0, 0, 1e-10}, {5, 3.0, 0, 1e-10}, {200, 3.0, 0, 1e-10}, {2000, 0.5, 0.002, 5e-4}};
    for (const auto& c : cases) {
        points.clear();
        normals.clear();
        for (int i = 0; i < c.count; ++i) {
            const double z = 1.0 - 2.0 * (i + 0.5) / c.count, r = std::sqrt(1.0 - z * z);
            const double phi = 2.399963229728653 * i, offset = c.noise * noise(rng) / 0.001;
            const Vector3 n(r * std::cos(phi), r * std::sin(phi), z);
            points.push_back(centre + n * (c.radius + offset));
            normals.push_back(n);
        }
        for (int flip = 0; flip < 2; ++flip) {
            double radius = 0.0;
            ASSERT_TRUE(DetectShape::FitSphere(points, normals, center, radius)) << c.count;
            EXPECT_NEAR((center - centre).Length(), 0.0, c.tolerance) << c.count;
            EXPECT_NEAR(radius, c.radius, c.tolerance) << c.count;
            for (Vector3& n : normals) n = -n;
        }
    }
}

TEST(DetectShapeFit, FitSphereFromTwoOrThreePointsMeetsTheFirstTwoNormalLines) {
    // Crossing lines meet at the centre; for skew lines it is the midpoint of their closest
    // points; a third point is ignored.
    const struct {
        Points points, normals;
        Vector3 center;
        double radius;
    } cases[] = {
        {{{2, 0, 0}, {0, 2, 0}}, {{1, 0, 0}, {0, 1, 0}}, {0, 0, 0}, 2.0},
        {{{0, 0, 0}, {1, 1, 1}}, {{1, 0, 0}, {0, 1, 0}}, {1, 0, 0.5}, std::sqrt(1.25)},
        {{{0, 0, 0}, {1, 1, 1}, {9, 9, 9}},
         {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
         {1, 0, 0.5},
         std::sqrt(1.25)},
    };
    for (const auto& c : cases) {
        Vector3 center;
        double radius = 0.0;
        ASSERT_TRUE(DetectShape::FitSphere(c.points, c.normals, center, radius));
        EXPECT_NEAR((center - c.center).Length(), 0.0, 1e-15);
        EXPECT_NEAR(radius, c.radius, 1e-15);
    }
}

TEST(DetectShapeFit, RejectedInputsLeaveTheOutputsUntouched) {
    const Vector3 sentinel(7, 7, 7);
    Vector3 center = sentinel, normal = sentinel;
    double radius = 9.0;
    EXPECT_FALSE(DetectShape::FitPlane({}, {}, center, normal));
    EXPECT_FALSE(DetectShape::FitPlane({{0, 0, 0}, {0, 0, 0}}, {{0, 0, 1}}, center, normal));
    const struct {
        Points points, normals;
    } spheres[] = {
        {{{0, 0, 0}}, {{0, 0, 1}}},
        {{{0, 0, 0}, {1, 0, 0}}, {{0, 0, 1}}},
        // Parallel and opposite normals of the two points used.
        {{{0, 0, 0}, {1, 0, 0}}, {{0, 0, 1}, {0, 0, 1}}},
        {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 0, 1}, {0, 0, -1}, {1, 0, 0}}},
        // Four points with one normal make a singular system.
        {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}, Points(4, Vector3(0, 0, 1))},
    };
    for (const auto& c : spheres) {
        EXPECT_FALSE(DetectShape::FitSphere(c.points, c.normals, center, radius));
    }
    EXPECT_EQ(center, sentinel);
    EXPECT_EQ(normal, sentinel);
    EXPECT_EQ(radius, 9.0);
}
