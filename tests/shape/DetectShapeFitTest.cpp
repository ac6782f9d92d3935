// Plane and sphere fits: exact samples, seeded noise, orientation rules, and the
// rejected inputs that leave the outputs alone.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <zol/shape/DetectShape.h>

using namespace ZOL;

namespace {

// Points on a sphere with outward normals (Fibonacci spiral), optional radial noise.
void SampleSphere(const Vector3& centre,
                  double radius,
                  int count,
                  double noise,
                  std::vector<Vector3>& points,
                  std::vector<Vector3>& normals) {
    std::mt19937 rng(42);
    std::normal_distribution<double> jitter(0.0, noise > 0 ? noise : 1.0);
    points.clear();
    normals.clear();
    for (int i = 0; i < count; ++i) {
        const double z = 1.0 - 2.0 * (i + 0.5) / count;
        const double r = std::sqrt(1.0 - z * z);
        const double phi = 2.399963229728653 * i;
        const Vector3 n(r * std::cos(phi), r * std::sin(phi), z);
        const double offset = noise > 0 ? jitter(rng) : 0.0;
        points.push_back(centre + n * (radius + offset));
        normals.push_back(n);
    }
}

}  // namespace

TEST(DetectShapeFit, FitPlaneOnThreePointsFollowsTheFirstNormal) {
    Vector3 center, normal;
    ASSERT_TRUE(DetectShape::FitPlane({Vector3(0, 0, 0), Vector3(1, 0, 0), Vector3(0, 1, 0)},
                                      {Vector3(0, 0, -1), Vector3(0, 0, -1), Vector3(0, 0, -1)},
                                      center, normal));
    EXPECT_EQ(center, Vector3(1.0 / 3, 1.0 / 3, 0));
    EXPECT_NEAR((normal - Vector3(0, 0, -1)).Length(), 0.0, 1e-14);
    // One or two points take the normalised normal sum; opposite normals cancel and the
    // tiny sum is kept as it is.
    ASSERT_TRUE(DetectShape::FitPlane({Vector3(1, 2, 3)}, {Vector3(0, 3, 4)}, center, normal));
    EXPECT_EQ(center, Vector3(1, 2, 3));
    EXPECT_NEAR((normal - Vector3(0, 0.6, 0.8)).Length(), 0.0, 1e-15);
    ASSERT_TRUE(DetectShape::FitPlane({Vector3(0, 0, 0), Vector3(2, 0, 0)},
                                      {Vector3(0, 0, 1), Vector3(0, 0, -1)}, center, normal));
    EXPECT_EQ(center, Vector3(1, 0, 0));
    EXPECT_EQ(normal.Length(), 0.0);
}

TEST(DetectShapeFit, FitPlaneOnANoisyTiltedPlane) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::normal_distribution<double> noise(0.0, 0.001);
    Vector3 axisN(1, 2, 2);
    axisN.Normalise();
    const Vector3 e1 = Vector3(2, -1, 0) / std::sqrt(5.0);
    const Vector3 e2 = axisN.CrossProduct(e1);
    const Vector3 origin(3, -1, 4);
    std::vector<Vector3> points, normals;
    for (int i = 0; i < 500; ++i) {
        points.push_back(origin + e1 * (5 * u(rng)) + e2 * (2 * u(rng)) + axisN * noise(rng));
        normals.push_back(-axisN);
    }
    Vector3 center, normal;
    ASSERT_TRUE(DetectShape::FitPlane(points, normals, center, normal));
    EXPECT_NEAR(normal.Length(), 1.0, 1e-14);
    EXPECT_GT(normal * -axisN, 1.0 - 1e-6);
    EXPECT_NEAR((center - origin) * axisN, 0.0, 1e-3);
}

TEST(DetectShapeFit, FitSphereRecoversExactAndNoisySpheresWhicheverWayNormalsPoint) {
    const Vector3 centre(1.5, -2.0, 0.25);
    const struct {
        int count;
        double radius, noise, tolerance;
    } cases[] = {
        {4, 3.0, 0, 1e-10}, {5, 3.0, 0, 1e-10}, {200, 3.0, 0, 1e-10}, {2000, 0.5, 0.002, 5e-4}};
    for (const auto& c : cases) {
        std::vector<Vector3> points, normals;
        SampleSphere(centre, c.radius, c.count, c.noise, points, normals);
        for (int flip = 0; flip < 2; ++flip) {
            Vector3 fitted;
            double r = 0.0;
            ASSERT_TRUE(DetectShape::FitSphere(points, normals, fitted, r)) << c.count;
            EXPECT_NEAR((fitted - centre).Length(), 0.0, c.tolerance) << c.count;
            EXPECT_NEAR(r, c.radius, c.tolerance) << c.count;
            for (Vector3& n : normals) n = -n;
        }
    }
}

TEST(DetectShapeFit, FitSphereFromTwoPointsIntersectsTheirNormalLines) {
    Vector3 c;
    double r = 0.0;
    ASSERT_TRUE(DetectShape::FitSphere({Vector3(2, 0, 0), Vector3(0, 2, 0)},
                                       {Vector3(1, 0, 0), Vector3(0, 1, 0)}, c, r));
    EXPECT_NEAR(c.Length(), 0.0, 1e-15);
    EXPECT_NEAR(r, 2.0, 1e-15);
    // Skew normal lines: the centre is the midpoint of their closest points.
    ASSERT_TRUE(DetectShape::FitSphere({Vector3(0, 0, 0), Vector3(1, 1, 1)},
                                       {Vector3(1, 0, 0), Vector3(0, 1, 0)}, c, r));
    EXPECT_NEAR((c - Vector3(1, 0, 0.5)).Length(), 0.0, 1e-15);
    EXPECT_NEAR(r, std::sqrt(1.25), 1e-15);
    // A third point is ignored.
    Vector3 c3;
    double r3 = 0.0;
    ASSERT_TRUE(DetectShape::FitSphere({Vector3(0, 0, 0), Vector3(1, 1, 1), Vector3(9, 9, 9)},
                                       {Vector3(1, 0, 0), Vector3(0, 1, 0), Vector3(0, 0, 1)}, c3,
                                       r3));
    EXPECT_EQ(c3, c);
    EXPECT_EQ(r3, r);
}

TEST(DetectShapeFit, RejectedInputsLeaveTheOutputsUntouched) {
    const Vector3 sentinel(7, 7, 7);
    Vector3 center = sentinel, normal = sentinel;
    double radius = 9.0;
    EXPECT_FALSE(DetectShape::FitPlane({}, {}, center, normal));
    EXPECT_FALSE(DetectShape::FitPlane({Vector3(), Vector3()}, {Vector3(0, 0, 1)}, center, normal));
    EXPECT_FALSE(DetectShape::FitSphere({Vector3()}, {Vector3(0, 0, 1)}, center, radius));
    EXPECT_FALSE(
        DetectShape::FitSphere({Vector3(), Vector3(1, 0, 0)}, {Vector3(0, 0, 1)}, center, radius));
    // Parallel and opposite normals of the two points used.
    EXPECT_FALSE(DetectShape::FitSphere({Vector3(), Vector3(1, 0, 0)},
                                        {Vector3(0, 0, 1), Vector3(0, 0, 1)}, center, radius));
    EXPECT_FALSE(DetectShape::FitSphere({Vector3(), Vector3(1, 0, 0), Vector3(0, 1, 0)},
                                        {Vector3(0, 0, 1), Vector3(0, 0, -1), Vector3(1, 0, 0)},
                                        center, radius));
    // Four points with one normal make a singular system.
    EXPECT_FALSE(DetectShape::FitSphere(
        {Vector3(), Vector3(1, 0, 0), Vector3(0, 1, 0), Vector3(1, 1, 0)},
        {Vector3(0, 0, 1), Vector3(0, 0, 1), Vector3(0, 0, 1), Vector3(0, 0, 1)}, center, radius));
    EXPECT_EQ(center, sentinel);
    EXPECT_EQ(normal, sentinel);
    EXPECT_EQ(radius, 9.0);
}
