// Volumetric fusion: hand-computed cells, output order, the one-sided range rule, a
// nested-map reference on real scans, save and resume, damaged saved states, and the
// exact line and code of every refused call.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <sstream>
#include <tuple>

#include <zol/core/Matrix4x4.h>
#include <zol/core/PointCloud.h>
#include <zol/pointcloud/FusePointCloud.h>
#include <zol/runtime/Constants.h>

#include "tests/common/PointData.h"
#include "tests/common/ScanData.h"
#include "tests/common/TestData.h"
#include "tests/common/ThreadCountScope.h"

using namespace ZOL;

namespace {

std::string Saved(const FusePointCloud& fuse) {
    std::ostringstream out;
    EXPECT_EQ(fuse.DumpInfo(out), RESULT_OK);
    return out.str();
}

PointCloud Extracted(const FusePointCloud& fuse, std::vector<double>* attributes = nullptr) {
    PointCloud cloud;
    EXPECT_EQ(fuse.ExtractPointCloud(&cloud, attributes), RESULT_OK);
    return cloud;
}

// The fused cells by an ordered map of running means: points below bboxMin or with a
// cell index beyond an int are dropped, cells beyond bboxMax kept.
std::vector<Vector3> ReferenceCells(const std::vector<Vector3>& points,
                                    const Vector3& lo,
                                    const Vector3& cell) {
    std::map<std::tuple<int, int, int>, std::pair<Vector3, double>> cells;
    for (const Vector3& p : points) {
        const Vector3 q((p.x - lo.x) / cell.x, (p.y - lo.y) / cell.y, (p.z - lo.z) / cell.z);
        if (std::min({q.x, q.y, q.z}) < 0 || std::max({q.x, q.y, q.z}) > INT_MAX) continue;
        auto& c = cells[std::make_tuple(int(q.x), int(q.y), int(q.z))];
        c.first = (c.first * c.second + p) / (c.second + 1.0);
        c.second += 1.0;
    }
    std::vector<Vector3> means;
    for (const auto& c : cells) means.push_back(c.second.first);
    return means;
}

void ExpectCells(const FusePointCloud& fuse, const std::vector<Vector3>& expected) {
    PointCloud fused = Extracted(fuse);
    ASSERT_EQ(fused.GetPointCount(), static_cast<int>(expected.size()));
    for (int i = 0; i < fused.GetPointCount(); ++i) {
        const Vector3 got = fused.GetPointCoord(i);
        ASSERT_TRUE(got.x == expected[i].x && got.y == expected[i].y && got.z == expected[i].z)
            << "cell " << i;
    }
}

PointCloud Oriented(const std::vector<Vector3>& points, const std::vector<Vector3>& normals) {
    return zoltest::MakeCloud(points, &normals);
}

}  // namespace

TEST(FusePointCloud, CellsHoldRunningMeansAndNormalsByTheSignRule) {
    // Cell (0,0,0) of a 2 x 1 x 1 grid over [0,2] x [0,1] x [0,1] receives three points;
    // cell (1,0,0) one. Expected values are worked by hand from the update rule.
    const double r5 = std::sqrt(5.0);
    PointCloud a = Oriented({{0.2, 0.5, 0.5}, {1.5, 0.5, 0.5}}, {{1, 0, 0}, {0, 0, 1}});
    PointCloud b = Oriented({{0.5, 0.2, 0.5}}, {{0, 1, 0}});
    PointCloud c = Oriented({{0.8, 0.8, 0.2}}, {{0, -1, 0}});
    // Five values over two points: m = 5 / 2 = 2, and the fifth value is not read.
    const std::vector<double> attrA = {1, 10, 7, 70, 999}, attrB = {4, 40}, attrC = {7, 100};
    FusePointCloud fuse(2, 1, 1, Vector3(0, 0, 0), Vector3(2, 1, 1), true);
    ASSERT_EQ(fuse.UpdateFuseFunction(&a, nullptr, &attrA), RESULT_OK);
    ASSERT_EQ(fuse.UpdateFuseFunction(&b, nullptr, &attrB), RESULT_OK);
    ASSERT_EQ(fuse.UpdateFuseFunction(&c, nullptr, &attrC), RESULT_OK);
    std::vector<double> attributes = {-1};  // extraction appends
    PointCloud fused = Extracted(fuse, &attributes);
    ASSERT_TRUE(fused.HasNormal());
    ASSERT_EQ(fused.GetPointCount(), 2);
    EXPECT_NEAR(fused.GetPointCoord(0).Distance(Vector3(0.5, 0.5, 0.4)), 0.0, 1e-14);
    // After b: 2 (1,0,0) + (0,1,0) = (2,1,0)/sqrt5 (weight after the increment). c points
    // the other way, so it is flipped: 3 (2,1,0)/sqrt5 - (0,-1,0).
    Vector3 expected(6 / r5, 3 / r5 + 1, 0);
    expected.Normalise();
    EXPECT_NEAR(fused.GetPointNormal(0).Distance(expected), 0.0, 1e-15);
    EXPECT_EQ(fused.GetPointCoord(1), Vector3(1.5, 0.5, 0.5));
    EXPECT_EQ(fused.GetPointNormal(1), Vector3(0, 0, 1));
    const std::vector<double> expectedAttributes = {-1, 4, 50, 7, 70};
    ASSERT_EQ(attributes.size(), expectedAttributes.size());
    for (size_t i = 0; i < attributes.size(); ++i) {
        EXPECT_NEAR(attributes[i], expectedAttributes[i], 1e-13) << i;
    }
}

TEST(FusePointCloud, CellsComeOutInGridOrderForAnyIndexWidthAndTheRangeIsOneSided) {
    // Index widths from a few bits to 31 bits per axis, so that the packed keys take one
    // or several sorting passes, or no longer fit one integer; on a plane every z index
    // is the same. Probes at bboxMin, just below it and beyond an int join every case.
    // Large fusions are ordered and read out on the workers.
    const struct {
        int resolution;
        double spread;  ///< points lie in [0, spread)^3 of a grid over [0, 1]^3
        bool plane;
        int count;    ///< points drawn
        int threads;  ///< 0 for the default
    } cases[] = {{8, 12.0, false, 3000, 0},    {4096, 1.0, false, 3000, 0},
                 {4096, 1.0, true, 3000, 0},   {1, 2.0e9, false, 3000, 0},
                 {4096, 1.0, false, 90000, 1}, {4096, 1.0, false, 90000, 2},
                 {512, 1.0, false, 90000, 8}};
    for (const auto& c : cases) {
        zoltest::ThreadCountScope threads(c.threads);
        std::vector<Vector3> points = {
            {0, 0, 0}, {-1e-12, 0.5, 0.5}, {0.5, -0.25, 0.5}, {0.5, 0.5, -1.5}, {1e12, 0.5, 0.5}};
        std::uint64_t state = 12345;
        auto uniform = [&state, &c]() {
            state = state * 6364136223846793005ull + 1442695040888963407ull;
            return c.spread * static_cast<double>(state >> 11) / 9007199254740992.0;
        };
        for (int i = 0; i < c.count; ++i) {
            const double x = uniform(), y = uniform(), z = c.plane ? 0.3 : uniform();
            points.push_back(Vector3(x, y, z));
            if (i % 3 == 0) points.push_back(Vector3(x, y, z) * 0.999);  // often one cell
        }
        PointCloud cloud = zoltest::MakeCloud(points);
        FusePointCloud fuse(c.resolution, c.resolution, c.resolution, Vector3(0, 0, 0),
                            Vector3(1, 1, 1), false);
        ASSERT_EQ(fuse.UpdateFuseFunction(&cloud, nullptr, nullptr), RESULT_OK);
        const double h = 1.0 / c.resolution;
        SCOPED_TRACE(c.resolution);
        ExpectCells(fuse, ReferenceCells(points, Vector3(0, 0, 0), Vector3(h, h, h)));
    }
}

TEST(FusePointCloud, RealScansMatchANestedMapReference) {
    std::vector<Vector3> points = zoltest::LoadPlyVertices(zoltest::DataPath("bunny/bun000.ply"));
    const std::vector<Vector3> other =
        zoltest::LoadPlyVertices(zoltest::DataPath("bunny/bun045.ply"));
    ASSERT_GT(points.size(), 40000u);
    PointCloud scan0 = zoltest::MakeCloud(points), scan1 = zoltest::MakeCloud(other);
    const Matrix4x4 pose = zoltest::BunnyTruth("bun045", "bun000");
    for (const Vector3& p : other) points.push_back(pose.TransformPoint(p));
    const Vector3 lo(-0.1, 0.03, -0.07), hi(0.07, 0.19, 0.07);  // part of the bunny
    FusePointCloud fuse(97, 97, 97, lo, hi, false);
    ASSERT_EQ(fuse.UpdateFuseFunction(&scan0, nullptr, nullptr), RESULT_OK);
    ASSERT_EQ(fuse.UpdateFuseFunction(&scan1, &pose, nullptr), RESULT_OK);
    ExpectCells(fuse, ReferenceCells(points, lo, (hi - lo) / 97.0));
}

TEST(FusePointCloud, SavedAndResumedFusionEqualsOneShotFusion) {
    const std::vector<Vector3> points = zoltest::RandomPoints(5000, 7, 1.2);
    const std::vector<Vector3> normals = zoltest::RandomNormals(5000, 8);
    PointCloud first = zoltest::MakeCloud(points, &normals);
    PointCloud second = zoltest::MakeCloud(zoltest::RandomPoints(5000, 9, 1.2), &normals);
    std::vector<double> attributes(5000);
    for (size_t i = 0; i < attributes.size(); ++i) attributes[i] = std::sin(0.1 * i);
    Matrix4x4 turn;
    turn.InitIdentityTransform();
    turn.SetValue(0, 1, -1.0), turn.SetValue(1, 0, 1.0), turn.SetValue(0, 0, 0.0);
    turn.SetValue(1, 1, 0.0), turn.SetValue(2, 3, 0.3);

    FusePointCloud oneShot(64, 64, 64, Vector3(-1, -1, -1), Vector3(1, 1, 1), true);
    ASSERT_EQ(oneShot.UpdateFuseFunction(&first, nullptr, &attributes), RESULT_OK);
    ASSERT_EQ(oneShot.UpdateFuseFunction(&second, &turn, &attributes), RESULT_OK);

    FusePointCloud before(64, 64, 64, Vector3(-1, -1, -1), Vector3(1, 1, 1), true);
    ASSERT_EQ(before.UpdateFuseFunction(&first, nullptr, &attributes), RESULT_OK);
    std::istringstream in(Saved(before) + "trailing data stays in the stream\n");
    FusePointCloud resumed;
    ASSERT_EQ(resumed.LoadInfo(in), RESULT_OK);
    std::string rest;
    std::getline(in, rest);
    EXPECT_EQ(rest, "trailing data stays in the stream");
    ASSERT_EQ(resumed.UpdateFuseFunction(&second, &turn, &attributes), RESULT_OK);
    EXPECT_EQ(Saved(resumed), Saved(oneShot));
}

TEST(FusePointCloud, DamagedSavedStateIsRefusedAndTheObjectKept) {
    PointCloud cloud = zoltest::MakeCloud({{0.5, 0.5, 0.5}, {1.5, 0.5, 0.5}});
    FusePointCloud source(2, 2, 2, Vector3(0, 0, 0), Vector3(2, 2, 2), false);
    for (int pass = 0; pass < 2; ++pass) {
        ASSERT_EQ(source.UpdateFuseFunction(&cloud, nullptr, nullptr), RESULT_OK);
    }
    const std::string good = Saved(source);
    ASSERT_EQ(good,
              "FusePointCloud 1\nresolution 2 2 2\nbbox 0 0 0 2 2 2\nfuseNormal 0\n"
              "attributes 0\ncells 2\n0 0 0 0.5 0.5 0.5 0 0 0 2\n1 0 0 1.5 0.5 0.5 0 0 0 2\n"
              "end FusePointCloud\n");
    auto edit = [&](const std::string& from, const std::string& to) {
        std::string text = good;
        return text.replace(text.find(from), from.size(), to);
    };
    const struct {
        std::string text;
        const char* line;
    } cases[] = {
        {"", "FusePointCloud::LoadInfo: not a saved fuse state"},
        {edit("FusePointCloud 1", "FusePointCloud 2"),
         "FusePointCloud::LoadInfo: not a saved fuse state"},
        {edit("resolution 2 2 2", "resolution 2 0 2"),
         "FusePointCloud::LoadInfo: damaged grid header"},
        {edit("bbox 0 0 0 2", "bbox 3 0 0 2"), "FusePointCloud::LoadInfo: damaged grid header"},
        {edit("cells 2", "cells 3"), "FusePointCloud::LoadInfo: damaged cell at record 2"},
        {edit("1 0 0 1.5", "1 0 0 nan"), "FusePointCloud::LoadInfo: damaged cell at record 1"},
        {edit("0 0 0 2\n", "0 0 0 0.5\n"), "FusePointCloud::LoadInfo: damaged cell at record 0"},
        {edit("0 0 0 2\n1", "0 0 0 2\n0"), "FusePointCloud::LoadInfo: duplicate cell at record 1"},
        {edit("cells 2", "cells 1"), "FusePointCloud::LoadInfo: missing end line"},
    };
    FusePointCloud target(3, 3, 3, Vector3(0, 0, 0), Vector3(1, 1, 1), true);
    PointCloud one = Oriented({{0.5, 0.5, 0.5}}, {{0, 0, 1}});
    ASSERT_EQ(target.UpdateFuseFunction(&one, nullptr, nullptr), RESULT_OK);
    const std::string kept = Saved(target);
    for (const auto& c : cases) {
        zoltest::LogCapture log;
        std::istringstream in(c.text);
        EXPECT_EQ(target.LoadInfo(in), RESULT_INVALID_INPUT) << c.line;
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
        EXPECT_EQ(Saved(target), kept) << c.line;
    }
}

TEST(FusePointCloud, RefusedCallsLogOneLineAndChangeNothing) {
    PointCloud plain = zoltest::MakeCloud({{0.5, 0.5, 0.5}, {1.5, 0.5, 0.5}});
    PointCloud oriented = Oriented({{0.5, 0.5, 0.5}, {1.5, 0.5, 0.5}}, {{0, 0, 1}, {0, 0, 1}});
    PointCloud nanPoint = Oriented({{0.5, 0.5, 0.5}, {NAN, 0.5, 0.5}}, {{0, 0, 1}, {0, 0, 1}});
    PointCloud nanNormal =
        Oriented({{0.5, 0.5, 0.5}, {1.5, 0.5, 0.5}}, {{0, 0, 1}, {0, INFINITY, 1}});
    // A NaN normal is refused on a point that the range rule drops too, and a finite
    // normal whose moved copy overflows is refused as well.
    PointCloud droppedNanNormal =
        Oriented({{0.5, 0.5, 0.5}, {-1.0, 0.5, 0.5}}, {{0, 0, 1}, {NAN, 0, 1}});
    PointCloud hugeNormal =
        Oriented({{0.5, 0.5, 0.5}, {0.5, 0.5, 0.5}}, {{0, 0, 1}, {1e308, 1e308, 0}});
    Matrix4x4 shear;
    shear.InitIdentityTransform();
    shear.SetValue(1, 1.0);
    PointCloud empty(true, false, false), filled = plain;
    const Matrix4x4 emptyMatrix;
    const std::vector<double> three(3), four(4);
    const Vector3 lo(0, 0, 0), hi(2, 2, 2);
    FusePointCloud fuse(2, 2, 2, lo, hi, true);
    FusePointCloud withAttributes(2, 2, 2, lo, hi, false);
    ASSERT_EQ(withAttributes.UpdateFuseFunction(&plain, nullptr, &four), RESULT_OK);
    FusePointCloud noGrid;
    std::ostringstream sink;
    const int bad = RESULT_INVALID_INPUT;
    const struct {
        std::function<int()> call;
        int code;
        const char* line;
    } cases[] = {
        {[&] { return fuse.Init(0, 2, 2, lo, hi, true); }, bad,
         "FusePointCloud::Init: resolutionX < 1 || resolutionY < 1 || resolutionZ < 1"},
        {[&] { return fuse.Init(2, 2, 2, lo, Vector3(2, 0, 2), true); }, bad,
         "FusePointCloud::Init: bboxMin >= bboxMax"},
        {[&] { return fuse.Init(2, 2, 2, lo, Vector3(2, NAN, 2), true); }, bad,
         "FusePointCloud::Init: bboxMin >= bboxMax"},
        {[&] { return fuse.UpdateFuseFunction(nullptr, nullptr, nullptr); }, bad,
         "FusePointCloud::UpdateFuseFunction: input pointCloud is NULL"},
        {[&] { return fuse.UpdateFuseFunction(&plain, nullptr, nullptr); }, bad,
         "FusePointCloud::UpdateFuseFunction: input pointCloud should have normal information"},
        {[&] { return fuse._UpdateFuseFunction(nullptr, nullptr, nullptr); }, bad,
         "FusePointCloud::UpdateFuseFunction: input pointList is NULL"},
        {[&] { return fuse.UpdateFuseFunction(&empty, nullptr, nullptr); }, RESULT_OK,
         "FusePointCloud::UpdateFuseFunction: input pointCloud pointCount == 0"},
        {[&] { return fuse.UpdateFuseFunction(&oriented, &emptyMatrix, nullptr); }, bad,
         "FusePointCloud::UpdateFuseFunction: transform is empty"},
        {[&] { return fuse.UpdateFuseFunction(&oriented, nullptr, &three); }, bad,
         "FusePointCloud::UpdateFuseFunction: attribute count 1 differs from fused 0"},
        {[&] { return withAttributes.UpdateFuseFunction(&plain, nullptr, nullptr); }, bad,
         "FusePointCloud::UpdateFuseFunction: attribute count 0 differs from fused 2"},
        {[&] { return fuse.UpdateFuseFunction(&nanPoint, nullptr, nullptr); }, bad,
         "FusePointCloud::UpdateFuseFunction: non-finite coordinate at pointId = 1"},
        {[&] { return fuse.UpdateFuseFunction(&nanNormal, nullptr, nullptr); }, bad,
         "FusePointCloud::UpdateFuseFunction: non-finite normal at pointId = 1"},
        {[&] { return fuse.UpdateFuseFunction(&droppedNanNormal, nullptr, nullptr); }, bad,
         "FusePointCloud::UpdateFuseFunction: non-finite normal at pointId = 1"},
        {[&] { return fuse.UpdateFuseFunction(&hugeNormal, &shear, nullptr); }, bad,
         "FusePointCloud::UpdateFuseFunction: non-finite normal at pointId = 1"},
        {[&] { return noGrid.UpdateFuseFunction(&plain, nullptr, nullptr); }, RESULT_STEP_FAIL,
         "FusePointCloud::UpdateFuseFunction: FuseTree is NULL"},
        {[&] { return fuse.ExtractPointCloud(nullptr, nullptr); }, bad,
         "FusePointCloud::ExtractPointCloud: input pointCloud is NULL"},
        {[&] { return fuse.ExtractPointCloud(&filled, nullptr); }, bad,
         "FusePointCloud::ExtractPointCloud: input pointCloud is not blank"},
        {[&] { return noGrid.ExtractPointCloud(&empty, nullptr); }, RESULT_STEP_FAIL,
         "FusePointCloud::ExtractPointCloud: FuseTree is NULL"},
        {[&] { return noGrid.DumpInfo(sink); }, RESULT_STEP_FAIL,
         "FusePointCloud::DumpInfo: FuseTree is NULL"},
    };
    ASSERT_EQ(fuse.UpdateFuseFunction(&oriented, nullptr, nullptr), RESULT_OK);
    const std::string kept = Saved(fuse);
    for (const auto& c : cases) {
        zoltest::LogCapture log;
        EXPECT_EQ(c.call(), c.code) << c.line;
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
        EXPECT_EQ(Saved(fuse), kept) << c.line;
    }
    EXPECT_EQ(filled.GetPointCount(), 2);
    EXPECT_EQ(empty.GetPointCount(), 0);
}
