// RegistratePointCloud::AlignPointCloud: degenerate shapes that must not crash and the log
// line and code of each bad argument. Real scans from random poses are in
// RegistrationScanTest; thread counts in the operation table (tests/common/OperationTable).
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <zol/registration/RegistratePointCloud.h>
#include <zol/runtime/Constants.h>

#include "tests/common/PointData.h"
#include "tests/common/ScanData.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

PointCloud WithNormals(const std::vector<Vector3>& points, const Vector3& normal) {
    const std::vector<Vector3> normals(points.size(), normal);
    return zoltest::MakeCloud(points, &normals);
}

bool IsFiniteRigid(const Matrix4x4& m) {
    for (int i = 0; i < 16; ++i) {
        if (!std::isfinite(m.GetValue(i))) return false;
    }
    return m.GetValue(3, 3) == 1.0;
}

}  // namespace

TEST(AlignPointCloudTest, DegenerateShapesReturnWithoutCrashing) {
    std::vector<Vector3> line, plane, spot(40, Vector3(1, 2, 3));
    for (int i = 0; i < 400; ++i) {
        line.emplace_back(i * 0.01, 0.0, 0.0);
        plane.emplace_back((i % 20) * 0.01, (i / 20) * 0.01, 0.0);
    }
    const std::vector<Vector3> three = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    struct Case {
        const char* name;
        PointCloud cloud;
        int code;
        std::vector<std::string> lines;
    } cases[] = {
        {"coincident points",
         WithNormals(spot, {0, 0, 1}),
         RESULT_STEP_FAIL,
         {"AlignPointCloud: simplify pointCloudRef failed"}},
        {"a line", WithNormals(line, {0, 0, 1}), RESULT_OK, {}},
        {"a plane", WithNormals(plane, {0, 0, 1}), RESULT_OK, {}},
        {"three points", WithNormals(three, {0, 0, 1}), RESULT_OK, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const PointCloud moved = zoltest::Moved(c.cloud, zoltest::RandomMotion(2, 90, {}, 0.1));
        zoltest::LogCapture log;
        Matrix4x4 result;
        EXPECT_EQ(RegistratePointCloud::AlignPointCloud(&c.cloud, &moved, &result, 0.5), c.code);
        EXPECT_EQ(log.LinesWithoutPools(), c.lines);
        if (c.code == RESULT_OK) {
            EXPECT_TRUE(IsFiniteRigid(result));
        }
    }
}

TEST(AlignPointCloudTest, BadArgumentsLogTheirLineAndCode) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<Vector3> points = zoltest::RandomPoints(30, 8);
    const PointCloud good = WithNormals(points, {0, 0, 1});
    const PointCloud bare = zoltest::MakeCloud(points);
    const PointCloud two = WithNormals(zoltest::RandomPoints(2, 8), {0, 0, 1});
    std::vector<Vector3> nanPoints = points;
    nanPoints[3].z = nan;
    const PointCloud nanPoint = WithNormals(nanPoints, {0, 0, 1});
    const PointCloud nanNormal = WithNormals(points, {nan, 0, 1});
    const char* kNull =
        "AlignPointCloud pointCloudRef == NULL || pointCloudFrom == NULL || resultTransform == "
        "NULL";
    struct Case {
        const PointCloud* ref;
        const PointCloud* from;
        bool nullResult;
        double accuracy;
        const char* line;
    } cases[] = {
        {nullptr, &good, false, 0.5, kNull},
        {&good, &good, true, 0.5, kNull},
        {&good, &two, false, 0.5, "AlignPointCloud invalid pointCloud count"},
        {&bare, &good, false, 0.5, "error: pointCloudRef and pointCloudFrom should have normal"},
        {&good, &good, false, 1.5, "invalid accuracy: 1.5"},
        {&good, &good, false, nan, "invalid accuracy: nan"},
        {&nanPoint, &good, false, 0.5,
         "AlignPointCloud pointCloudRef has a non-finite coordinate or normal"},
        {&good, &nanNormal, false, 0.5,
         "AlignPointCloud pointCloudFrom has a non-finite coordinate or normal"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        zoltest::LogCapture log;
        Matrix4x4 result(7.0);
        EXPECT_EQ(RegistratePointCloud::AlignPointCloud(
                      c.ref, c.from, c.nullResult ? nullptr : &result, c.accuracy),
                  RESULT_INVALID_INPUT);
        EXPECT_EQ(log.LinesWithoutPools(), std::vector<std::string>{c.line});
        EXPECT_EQ(result.GetValue(0), 7.0);
    }
}
