// Plane and sphere fits: exact samples, seeded noise, orientation rules, and the
// rejected inputs that leave the outputs alone.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <zol/shape/DetectShape.h>

#include "tests/common/MeshFactory.h"

using namespace ZOL;
using Points = std::vector<Vector3>;

TEST(DetectShapeFit, SmallInputsGiveHandComputedFitsOrLeaveTheOutputsUntouched) {
    const double r = std::sqrt(1.25);
    const Vector3 up(0, 0, 1), x(1, 0, 0), y(0, 1, 0), none(7, 7, 7);
    const struct {
        bool sphere;
        Points points, normals;
        Vector3 center, normal;  // a sphere: (radius, 7, 7); none: rejected
    } cases[] = {
        // A plane through three points follows the first normal; one or two points take
        // the normalised normal sum, and opposite normals leave the tiny sum as it is.
        {false, {{0, 0, 0}, x, y}, Points(3, -up), {1.0 / 3, 1.0 / 3, 0}, -up},
        {false, {{1, 2, 3}}, {{0, 3, 4}}, {1, 2, 3}, {0, 0.6, 0.8}},
        {false, {{0, 0, 0}, {2, 0, 0}}, {up, -up}, x, {0, 0, 0}},
        {false, {}, {}, none, none},
        {false, {{0, 0, 0}, {0, 0, 0}}, {up}, none, none},
        // Crossing normal lines of the first two points meet at the centre; for skew lines
        // it is the midpoint of their closest points; a third point is ignored.
        {true, {{2, 0, 0}, {0, 2, 0}}, {x, y}, {0, 0, 0}, {2, 7, 7}},
        {true, {{0, 0, 0}, {1, 1, 1}}, {x, y}, {1, 0, 0.5}, {r, 7, 7}},
        {true, {{0, 0, 0}, {1, 1, 1}, {9, 9, 9}}, {x, y, up}, {1, 0, 0.5}, {r, 7, 7}},
        {true, {{0, 0, 0}}, {up}, none, none},
        {true, {{0, 0, 0}, x}, {up}, none, none},
        // Parallel and opposite normals of the two points used; four points with one
        // normal make a singular system.
        {true, {{0, 0, 0}, x}, {up, up}, none, none},
        {true, {{0, 0, 0}, x, y}, {up, -up, x}, none, none},
        {true, {{0, 0, 0}, x, y, {1, 1, 0}}, Points(4, up), none, none},
    };
    for (const auto& c : cases) {
        Vector3 center = none, normal = none;
        const bool fitted = c.sphere ? DetectShape::FitSphere(c.points, c.normals, center, normal.x)
                                     : DetectShape::FitPlane(c.points, c.normals, center, normal);
        EXPECT_EQ(fitted, c.center != none) << c.points.size() << (c.sphere ? " sphere" : " plane");
        EXPECT_NEAR(center.Distance(c.center), 0.0, 1e-14);
        EXPECT_NEAR(normal.Distance(c.normal), 0.0, 1e-14);
    }
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
