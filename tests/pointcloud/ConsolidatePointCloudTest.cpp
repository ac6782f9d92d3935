// ConsolidatePointCloud: normals of real range scans against the scanner side, the
// normal-smoothing system against a dense solve, plane projection against a known
// plane, smoothing invariants and every failure line.
#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/io/Parser.h>
#include <zol/pointcloud/ConsolidatePointCloud.h>
#include <zol/pointcloud/PointCloudDensity.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/PointCloudInfo.h>

#include "tests/common/PointData.h"
#include "tests/common/TestData.h"

using namespace ZOL;
using CPC = ConsolidatePointCloud;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

std::unique_ptr<PointCloud> LoadScan(const std::string& name) {
    return std::unique_ptr<PointCloud>(
        Parser::ImportPointCloud(zoltest::DataPath("bunny/" + name)));
}

/// Every coordinate and normal of a cloud, for exact comparisons.
std::vector<double> Snapshot(PointCloud& cloud) {
    std::vector<double> values;
    for (int i = 0; i < cloud.GetPointCount(); ++i) {
        for (const Vector3& v : {cloud.GetPointCoord(i), cloud.GetPointNormal(i)}) {
            values.insert(values.end(), {v.x, v.y, v.z});
        }
    }
    return values;
}

/// Points p + e * u + f * v of a w x h lattice with spacing \p step in a plane.
std::vector<Vector3> Lattice(
    int w, int h, double step, const Vector3& origin, const Vector3& u, const Vector3& v) {
    std::vector<Vector3> points;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) points.push_back(origin + u * (x * step) + v * (y * step));
    }
    return points;
}

/// Standard deviation of |p| over a cloud: the noise of a sphere about its own radius.
double RadialSpread(PointCloud& cloud) {
    double sum = 0.0, sum2 = 0.0;
    const int n = cloud.GetPointCount();
    for (int i = 0; i < n; ++i) {
        const double r = cloud.GetPointCoord(i).Length();
        sum += r;
        sum2 += r * r;
    }
    return std::sqrt(sum2 / n - (sum / n) * (sum / n));
}

}  // namespace

TEST(ConsolidatePointCloud, NormalsOfAPlaneFaceTheCamera) {
    PointCloud cloud = zoltest::MakeCloud(
        Lattice(12, 12, 0.1, Vector3(0, 0, 2), Vector3(1, 0, 0), Vector3(0, 1, 0)));
    const Vector3 camera(0, 0, 1);  // the scanner looks along +z
    ASSERT_EQ(CPC::CalculatePointCloudNormal(&cloud, 8, &camera), RESULT_OK);
    ASSERT_TRUE(cloud.HasNormal());
    for (int i = 0; i < cloud.GetPointCount(); ++i) {
        EXPECT_NEAR(cloud.GetPointNormal(i).z, -1.0, 1e-12) << i;
    }
}

TEST(ConsolidatePointCloud, RangeScanNormalsFaceTheScanner) {
    // The scanner of these scans looks along -z in each scan's own frame. With the grid
    // the scanner side is known; without it the graph and the centroid must find it.
    for (const char* name : {"bun000.ply", "bun045.ply", "bun090.ply", "bun315.ply", "top3.ply"}) {
        for (bool grid : {true, false}) {
            std::unique_ptr<PointCloud> scan = LoadScan(name);
            ASSERT_TRUE(scan && scan->HasGridTopology()) << name;
            if (!grid) scan->ClearGridTopologyInfo();
            ASSERT_EQ(CPC::CalculatePointCloudNormal(scan.get(), 10), RESULT_OK);
            int facing = 0;
            for (int i = 0; i < scan->GetPointCount(); ++i) facing += scan->GetPointNormal(i).z > 0;
            EXPECT_GE(facing, (grid ? 0.99 : 0.98) * scan->GetPointCount()) << name << grid;
        }
    }
}

TEST(ConsolidatePointCloud, OrientRestoresFlippedNormalsReverseAndUpdateKeepTheSide) {
    std::unique_ptr<PointCloud> scan = LoadScan("bun045.ply");
    ASSERT_EQ(CPC::CalculatePointCloudNormal(scan.get(), 10), RESULT_OK);
    const std::vector<double> estimated = Snapshot(*scan);
    for (int i = 0; i < scan->GetPointCount(); i += 3) {
        scan->SetPointNormal(i, -scan->GetPointNormal(i));
    }
    ASSERT_EQ(CPC::OrientPointCloudNormal(scan.get(), 10), RESULT_OK);
    EXPECT_EQ(Snapshot(*scan), estimated);

    ASSERT_EQ(CPC::ReversePointCloudNormal(scan.get()), RESULT_OK);
    ASSERT_EQ(UpdatePointCloudNormal(scan.get(), 10), RESULT_OK);
    const std::vector<double> updated = Snapshot(*scan);
    for (size_t v = 0; v < estimated.size(); v += 6) {
        for (int a = 0; a < 3; ++a) {
            EXPECT_EQ(updated[v + a], estimated[v + a]);
            EXPECT_EQ(updated[v + 3 + a], -estimated[v + 3 + a]);
        }
    }
}

TEST(ConsolidatePointCloud, SmoothNormalSolvesTheScreenedLaplacianLeastSquares) {
    const int n = 14, k = 5;
    const double weight = 0.5;
    const std::vector<Vector3> points = zoltest::RandomPoints(n, 21);
    const std::vector<Vector3> normals = zoltest::RandomNormals(n, 22);
    const std::vector<int> fixedIds = {3, 7};
    // Dense least squares over the free normals, the pinned ones moved to the right-hand
    // side: per free point a data row (weight 0.5) and a row "itself minus the mean of
    // its k - 1 nearest others".
    const int free = n - static_cast<int>(fixedIds.size());
    std::vector<int> column(n, -1);
    for (int i = 0, c = 0; i < n; ++i) {
        if (i != 3 && i != 7) column[i] = c++;
    }
    Eigen::MatrixXd a = Eigen::MatrixXd::Zero(2 * free, free);
    Eigen::MatrixXd b = Eigen::MatrixXd::Zero(2 * free, 3);
    for (int i = 0; i < n; ++i) {
        const int r = column[i];
        if (r < 0) continue;
        a(r, r) = weight;
        const std::vector<zoltest::Neighbor> near =
            zoltest::BruteForceNearest(points, points[i], k);
        a(free + r, r) = 1.0;
        for (int t = 0; t < 3; ++t) b(r, t) = weight * normals[i][t];
        for (int t = 1; t < k; ++t) {
            const int j = near[t].id;
            if (column[j] >= 0) {
                a(free + r, column[j]) -= 1.0 / (k - 1);
            } else {
                for (int c = 0; c < 3; ++c) b(free + r, c) += normals[j][c] / (k - 1);
            }
        }
    }
    const Eigen::MatrixXd x = a.colPivHouseholderQr().solve(b);

    PointCloud cloud = zoltest::MakeCloud(points, &normals);
    ASSERT_EQ(CPC::SmoothNormal(&cloud, weight, k, &fixedIds), RESULT_OK);
    for (int i = 0; i < n; ++i) {
        const Vector3 got = cloud.GetPointNormal(i);
        if (i == 3 || i == 7) {
            for (int c = 0; c < 3; ++c) EXPECT_EQ(got[c], normals[i][c]) << i;
            continue;
        }
        const Eigen::Vector3d expected = x.row(column[i]).transpose().normalized();
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(got[c], expected[c], 1e-7) << i;
    }
}

TEST(ConsolidatePointCloud, PlaneProjectionMovesPointsOntoTheLeastSquaresPlane) {
    // With the neighbourhood the whole cloud, every selected point lands on the one
    // least-squares plane of all points; the others stay exactly where they were.
    const std::vector<Vector3> points = zoltest::RandomPoints(9, 31);
    Eigen::MatrixXd centered(9, 3);
    Eigen::Vector3d c = Eigen::Vector3d::Zero();
    for (const Vector3& p : points) c += Eigen::Vector3d(p.x, p.y, p.z) / 9.0;
    for (int i = 0; i < 9; ++i) {
        centered.row(i) = Eigen::Vector3d(points[i].x, points[i].y, points[i].z) - c;
    }
    const Eigen::Vector3d normal =
        Eigen::JacobiSVD<Eigen::MatrixXd>(centered, Eigen::ComputeFullV).matrixV().col(2);
    const std::vector<int> selection = {1, 4, 8};
    PointCloud cloud = zoltest::MakeCloud(points);
    ASSERT_EQ(CPC::SmoothGeometry(&cloud, 9, 1, &selection), RESULT_OK);
    for (int i = 0; i < 9; ++i) {
        const Vector3 got = cloud.GetPointCoord(i);
        if (i != 1 && i != 4 && i != 8) {
            EXPECT_EQ(got.x, points[i].x);
            EXPECT_EQ(got.z, points[i].z);
            continue;
        }
        const Eigen::Vector3d p = centered.row(i).transpose();
        const Eigen::Vector3d expected = p - p.dot(normal) * normal + c;
        for (int a = 0; a < 3; ++a) EXPECT_NEAR(got[a], expected[a], 1e-12) << i;
    }
}

TEST(ConsolidatePointCloud, SmoothingKeepsAPlaneFlatAndReducesNoiseOnASphere) {
    struct Case {
        const char* name;
        std::function<int(PointCloud*)> smooth;
    };
    const std::vector<Case> cases = {
        {"plane projection", [](PointCloud* c) { return CPC::SmoothGeometry(c, 10, 2, nullptr); }},
        {"bilateral",
         [](PointCloud* c) {
             PointCloudInfo info;
             return CPC::_SmoothGeometry(c, info, 10, 2, nullptr, CPC::SMOOTH_QUALITY_BILATERAL);
         }},
        {"along normals",
         [](PointCloud* c) {
             PointCloudInfo info;
             return CPC::_SmoothGeometryByNormal(c, info, 10, 60 * ONE_RADIAN, 2, nullptr);
         }},
    };
    const Vector3 u = Vector3(1, 0.2, 0.3) * (1 / Vector3(1, 0.2, 0.3).Length());
    const Vector3 v =
        u.CrossProduct(Vector3(0, 0, 1)) * (1 / u.CrossProduct(Vector3(0, 0, 1)).Length());
    const Vector3 planeNormal = u.CrossProduct(v);
    const std::vector<Vector3> planePoints = Lattice(15, 15, 0.07, Vector3(1, 2, 3), u, v);
    const std::vector<Vector3> planeNormals(planePoints.size(), planeNormal);
    std::mt19937 rng(5);
    std::normal_distribution<double> noise(0.0, 0.01);
    std::vector<Vector3> spherePoints = zoltest::RandomNormals(3000, 41);
    std::vector<Vector3> sphereNormals = spherePoints;
    for (Vector3& p : spherePoints) p = p * (1.0 + noise(rng));
    for (const Case& c : cases) {
        PointCloud plane = zoltest::MakeCloud(planePoints, &planeNormals);
        ASSERT_EQ(c.smooth(&plane), RESULT_OK) << c.name;
        for (int i = 0; i < plane.GetPointCount(); ++i) {
            EXPECT_NEAR((plane.GetPointCoord(i) - planePoints[0]) * planeNormal, 0.0, 1e-12);
        }
        PointCloud sphere = zoltest::MakeCloud(spherePoints, &sphereNormals);
        const double before = RadialSpread(sphere);
        ASSERT_EQ(c.smooth(&sphere), RESULT_OK) << c.name;
        EXPECT_LT(RadialSpread(sphere), 0.5 * before) << c.name;
    }
}

TEST(ConsolidatePointCloud, SmoothingAlongNormalsKeepsASharpEdgeSharp) {
    // A fold of two perpendicular planes, z = 0 (x < 0) and x = 0 (z > 0), with noise
    // along the normals. Within 30 degrees the planes do not pull on each other; at 180
    // degrees the points beside the fold leave their plane.
    std::vector<Vector3> points =
        Lattice(20, 20, 0.05, Vector3(-1, 0, 0), Vector3(1, 0, 0), Vector3(0, 1, 0));
    const std::vector<Vector3> wall =
        Lattice(20, 20, 0.05, Vector3(0, 0, 0.05), Vector3(0, 0, 1), Vector3(0, 1, 0));
    points.insert(points.end(), wall.begin(), wall.end());
    std::vector<Vector3> normals(400, Vector3(0, 0, 1));
    normals.resize(800, Vector3(-1, 0, 0));
    std::mt19937 rng(9);
    std::normal_distribution<double> noise(0.0, 0.003);
    for (size_t i = 0; i < points.size(); ++i) points[i] += normals[i] * noise(rng);
    auto edgeError = [&](double sharpAngle) {
        PointCloud cloud = zoltest::MakeCloud(points, &normals);
        PointCloudInfo info;
        EXPECT_EQ(CPC::_SmoothGeometryByNormal(&cloud, info, 12, sharpAngle, 5, nullptr),
                  RESULT_OK);
        double worst = 0.0;
        for (int i = 0; i < 800; ++i) {
            const Vector3 p = cloud.GetPointCoord(i);
            worst = std::max(worst, std::fabs(i < 400 ? p.z : p.x));
        }
        return worst;
    };
    EXPECT_LT(edgeError(30 * ONE_RADIAN), 0.006);
    EXPECT_GT(edgeError(ZOL_PI), 0.015);
}

TEST(ConsolidatePointCloud, BadArgumentsLogTheirLineAndLeaveTheCloudAsItWas) {
    enum Kind { kNormals, kNoNormals, kEmpty, kTwoPoints, kNaNCoord, kNaNNormal };
    struct Case {
        Kind kind;
        int code;
        std::string line;
        std::function<int(PointCloud*)> call;
    };
    const Vector3 zero, nan(kNaN, 0, 0);
    const std::vector<int> none, outside = {30}, negative = {-1};
    PointCloudInfo info;
    using P = PointCloud*;
    const std::string calc = "ConsolidatePointCloud::CalculatePointCloudNormal",
                      orient = "ConsolidatePointCloud::OrientPointCloudNormal",
                      reverse = "ConsolidatePointCloud::ReversePointCloudNormal: ",
                      normal = "ConsolidatePointCloud::SmoothNormal",
                      byNormal = "ConsolidatePointCloud::SmoothGeometryByNormal: ",
                      geometry = "ConsolidatePointCloud::SmoothGeometry: ";
    const std::vector<Case> cases = {
        {kNormals, -2, calc + ": pointCloud == NULL || neighborCount < 4",
         [](P) { return CPC::CalculatePointCloudNormal(nullptr, 8); }},
        {kNoNormals, -2, calc + ": invalid cameraDirection",
         [&](P c) { return CPC::CalculatePointCloudNormal(c, 8, &nan); }},
        {kTwoPoints, -1, calc + " invalid pointCount: 2",
         [](P c) { return CPC::CalculatePointCloudNormal(c, 8); }},
        {kNaNCoord, -3, calc + ": neighbor search failed -3",
         [](P c) { return CPC::CalculatePointCloudNormal(c, 8); }},
        {kNormals, -2, orient + ": pointCloud == NULL || neighborCount < 4",
         [](P c) { return CPC::OrientPointCloudNormal(c, 2); }},
        {kNoNormals, -2, orient + ": pointCloud should have normal first",
         [](P c) { return CPC::OrientPointCloudNormal(c, 8); }},
        {kNormals, -2, orient + ": invalid cameraDirection",
         [&](P c) { return CPC::OrientPointCloudNormal(c, 8, &zero); }},
        {kEmpty, -1, orient + " invalid pointCount: 0",
         [](P c) { return CPC::OrientPointCloudNormal(c, 8); }},
        {kNormals, -2, reverse + "pointCloud == NULL",
         [](P) { return CPC::ReversePointCloudNormal(nullptr); }},
        {kNoNormals, -2, reverse + "pointCloud should have normal first",
         [](P c) { return CPC::ReversePointCloudNormal(c); }},
        {kNormals, -2, "UpdatePointCloudNormal: pointCloud == NULL || neighborCount < 4",
         [](P c) { return UpdatePointCloudNormal(c, 3); }},
        {kNoNormals, -2, "UpdatePointCloudNormal: pointCloud should has normal first",
         [](P c) { return UpdatePointCloudNormal(c, 8); }},
        {kNormals, -2, normal + " input pointCloud is NULL",
         [](P) { return CPC::SmoothNormal(nullptr, 1, 8, nullptr); }},
        {kNoNormals, -2, normal + " pointCloud should have normal first",
         [](P c) { return CPC::SmoothNormal(c, 1, 8, nullptr); }},
        {kNormals, -2, normal + " normalWeight should large than REAL_TOL: 1e-15",
         [](P c) { return CPC::SmoothNormal(c, 1e-15, 8, nullptr); }},
        {kNormals, -2, normal + ", invalid neighborCount < 4",
         [](P c) { return CPC::SmoothNormal(c, 1, 3, nullptr); }},
        {kEmpty, -1, normal + " invalid pointCount: 0",
         [](P c) { return CPC::SmoothNormal(c, 1, 8, nullptr); }},
        {kNormals, -2, normal + " invalid fixedIndex: 30",
         [&](P c) { return CPC::SmoothNormal(c, 1, 8, &outside); }},
        {kNaNNormal, -2, normal + ": LeastSquareSparseLUSolver Solve Z failed -2",
         [](P c) { return CPC::SmoothNormal(c, 1, 8, nullptr); }},
        {kNormals, -2, byNormal + "input pointCloud is NULL",
         [&](P) { return CPC::_SmoothGeometryByNormal(nullptr, info, 8, 1, 1, nullptr); }},
        {kEmpty, -2, byNormal + "invalid point count: 0",
         [&](P c) { return CPC::_SmoothGeometryByNormal(c, info, 8, 1, 1, nullptr); }},
        {kNoNormals, -2, byNormal + "input pointCloud should have normal first",
         [&](P c) { return CPC::_SmoothGeometryByNormal(c, info, 8, 1, 1, nullptr); }},
        {kNormals, -2, byNormal + "invalid iterationCount: 0",
         [&](P c) { return CPC::_SmoothGeometryByNormal(c, info, 8, 1, 0, nullptr); }},
        {kNormals, -2, byNormal + "invalid neighborCount: 3",
         [&](P c) { return CPC::_SmoothGeometryByNormal(c, info, 3, 1, 1, nullptr); }},
        {kNormals, -2,
         byNormal + "invalid sharpAngle, sharpAngle > 180 * ONE_RADIAN || sharpAngle < 0 - -0.5",
         [&](P c) { return CPC::_SmoothGeometryByNormal(c, info, 8, -0.5, 1, nullptr); }},
        {kNormals, -2, "SmoothGeometryByNormal: selectIndex is empty",
         [&](P c) { return CPC::_SmoothGeometryByNormal(c, info, 8, 1, 1, &none); }},
        {kNormals, -2, "SmoothGeometryByNormal: invalid selectIndex: -1",
         [&](P c) { return CPC::_SmoothGeometryByNormal(c, info, 8, 1, 1, &negative); }},
        {kNormals, -2, geometry + "input pointCloud is NULL",
         [](P) { return CPC::SmoothGeometry(nullptr, 8, 1, nullptr); }},
        {kNormals, -2, geometry + "neighborCount < 3 || iterationCount < 1",
         [](P c) { return CPC::SmoothGeometry(c, 2, 1, nullptr); }},
        {kNormals, 0, "", [](P c) { return CPC::SmoothGeometry(c, 31, 1, nullptr); }},
        {kNormals, 0, "", [&](P c) { return CPC::SmoothGeometry(c, 8, 1, &none); }},
        {kNormals, -2, geometry + "invalid selectIndex: 30",
         [&](P c) { return CPC::SmoothGeometry(c, 8, 1, &outside); }},
        {kNaNCoord, -3, "_SmoothGeometry: InitAnn Failed -3",
         [](P c) { return CPC::SmoothGeometry(c, 8, 1, nullptr); }},
        {kNormals, -2, "_SmoothGeometry: info holds the index of another cloud",
         [&](P c) {
             PointCloud other = zoltest::MakeCloud(zoltest::RandomPoints(40, 8));
             info.InitAnn(&other, 8);
             return CPC::_SmoothGeometry(c, info, 8, 1, nullptr, CPC::SMOOTH_QUALITY_PLANE);
         }},
    };
    for (const Case& c : cases) {
        const int n = c.kind == kEmpty ? 0 : c.kind == kTwoPoints ? 2 : 30;
        std::vector<Vector3> points = zoltest::RandomPoints(n, 3);
        std::vector<Vector3> normals = zoltest::RandomNormals(n, 4);
        if (c.kind == kNaNCoord) points[5].y = kNaN;
        if (c.kind == kNaNNormal) normals[6].z = kNaN;
        PointCloud cloud = zoltest::MakeCloud(points, c.kind == kNoNormals ? nullptr : &normals);
        PointCloud before(cloud);
        zoltest::LogCapture log;
        info.Clear();
        EXPECT_EQ(c.call(&cloud), c.code) << c.line;
        if (c.code != 0) {
            EXPECT_TRUE(log.Contains(c.line)) << c.line;
        }
        EXPECT_EQ(cloud.HasNormal(), before.HasNormal()) << c.line;
        const std::vector<double> now = Snapshot(cloud), was = Snapshot(before);
        EXPECT_TRUE(std::equal(now.begin(), now.end(), was.begin(), was.end(),
                               [](double a, double b) { return a == b || (a != a && b != b); }))
            << c.line;
    }
}
