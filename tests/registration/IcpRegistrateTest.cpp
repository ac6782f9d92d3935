// RegistratePointCloud::ICPRegistrate: a known motion of a real scan with given and
// estimated normals, a cloud onto itself, marks that pin what the surface cannot, the
// widening of the pairing distance, and the log line of each bad argument.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <mutex>
#include <string>
#include <vector>

#include <zol/registration/RegistratePointCloud.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/PointCloudInfo.h>

#include "tests/common/HostContainers.h"
#include "tests/common/PointData.h"
#include "tests/common/ScanData.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

/// A flat square of side 1 sampled on a jittered 60 x 60 grid, normals +z.
PointCloud FlatSquare() {
    std::vector<Vector3> points = zoltest::RandomPoints(3600, 5, 0.002);
    std::vector<Vector3> normals(points.size(), Vector3(0, 0, 1));
    for (int i = 0; i < 3600; ++i) points[i] += Vector3((i % 60) / 59.0, (i / 60) / 59.0, 0.0);
    for (Vector3& p : points) p.z = 0.0;
    return zoltest::MakeCloud(points, &normals);
}

}  // namespace

TEST(IcpRegistrateTest, ScanMovedByAKnownMotion_IsMovedBack) {
    const PointCloud& scan = zoltest::BunnyScan("bun000");
    const Vector3 center = zoltest::Centroid(scan);
    const Matrix4x4 motion = zoltest::RigidMotion({1, -2, 0.5}, 4.0, center, {0.002, 0, -0.001});
    const PointCloud moved = zoltest::Moved(scan, motion);
    for (bool hasNormal : {true, false}) {
        SCOPED_TRACE(hasNormal);
        Matrix4x4 result;
        ASSERT_EQ(RegistratePointCloud::ICPRegistrate(&scan, nullptr, &moved, nullptr, &result,
                                                      nullptr, hasNormal),
                  RESULT_OK);
        Matrix4x4 identity;
        identity.InitIdentityTransform();
        const zoltest::PoseError error = zoltest::ComparePoses(result * motion, identity, center);
        EXPECT_LT(error.degrees, 0.02);
        EXPECT_LT(error.distance, 2e-5);
    }
}

TEST(IcpRegistrateTest, CloudOntoItself_GivesTheIdentityAtTheFirstIteration) {
    const PointCloud& scan = zoltest::BunnyScan("bun045");
    zoltest::LogCapture log;
    Matrix4x4 result;
    ASSERT_EQ(
        RegistratePointCloud::ICPRegistrate(&scan, nullptr, &scan, nullptr, &result, nullptr, true),
        RESULT_OK);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(result.GetValue(i), (i % 5 == 0) ? 1.0 : 0.0);
    EXPECT_EQ(log.LinesWithoutPools(),
              (std::vector<std::string>{"ICPRegistrateWithNormal early stop itrId=0",
                                        "ICPRegistrateWithNormal: stop try"}));
}

TEST(IcpRegistrateTest, ProgressSeenByTheCloudReadsNeverFallsBack) {
    // A host cloud notes the progress at every coordinate read: nested steps (bounding
    // box, samplers, grid sample) must not reset it between the milestones. Workers read
    // too, so a read and its note happen under one lock.
    struct ProgressCloud : zoltest::HostCloud {
        using HostCloud::HostCloud;
        Vector3 GetPointCoord(int pointId) override {
            std::lock_guard<std::mutex> guard(lock);
            seen.push_back(GetApiProgress());
            return HostCloud::GetPointCoord(pointId);
        }
        std::mutex lock;
        std::vector<double> seen;
    };
    const PointCloud& scan = zoltest::BunnyScan("bun045");
    ProgressCloud cloud(std::vector<Vector3>(scan.GetPointCoordData(),
                                             scan.GetPointCoordData() + scan.GetPointCount()));
    Matrix4x4 result;
    ASSERT_EQ(RegistratePointCloud::ICPRegistrate(&cloud, nullptr, &cloud, nullptr, &result,
                                                  nullptr, false),
              RESULT_OK);
    EXPECT_TRUE(std::is_sorted(cloud.seen.begin(), cloud.seen.end()));
    EXPECT_EQ(cloud.seen.back(), 0.4);  // the tolerance's grid sample reads last
}

TEST(IcpRegistrateTest, MarksPinTheSlideThatAPlaneLeavesFree) {
    // A plane slid along itself keeps every point on the plane, so point-to-plane pairs
    // cannot see the slide; three marks that sit together in raw coordinates pull it back.
    const PointCloud plane = FlatSquare();
    Matrix4x4 slide;
    slide.GenerateTranslation(Vector3(0.05, -0.03, 0.0));
    const std::vector<Vector3> marks = {{0.2, 0.2, 0}, {0.8, 0.3, 0}, {0.5, 0.9, 0}};
    Matrix4x4 free, pinned;
    ASSERT_EQ(
        RegistratePointCloud::ICPRegistrate(&plane, nullptr, &plane, nullptr, &free, &slide, true),
        RESULT_OK);
    ASSERT_EQ(
        RegistratePointCloud::ICPRegistrate(&plane, &marks, &plane, &marks, &pinned, &slide, true),
        RESULT_OK);
    EXPECT_LT(free.GetTranslation().Length(), 1e-9);
    EXPECT_LT((pinned.GetTranslation() - Vector3(-0.05, 0.03, 0.0)).Length(), 1e-6);
}

TEST(IcpRegistrateTest, CoincidentPointsFailAndALineDoesNotMove) {
    std::vector<Vector3> spot(20, Vector3(1, 2, 3)), line;
    for (int i = 0; i < 200; ++i) line.emplace_back(0.01 * i, 0.0, 0.0);
    const PointCloud coincident = zoltest::MakeCloud(spot), straight = zoltest::MakeCloud(line);
    zoltest::LogCapture log;
    Matrix4x4 result;
    EXPECT_EQ(RegistratePointCloud::ICPRegistrate(&coincident, nullptr, &coincident, nullptr,
                                                  &result, nullptr, false),
              RESULT_FAIL);
    EXPECT_EQ(
        log.LinesWithoutPools(),
        std::vector<std::string>{"FastCalculateDistanceTol: pointCloudRef is a singular point"});
    // A line gives no plane to fit: every step is singular and the result stays put.
    ASSERT_EQ(RegistratePointCloud::ICPRegistrate(&straight, nullptr, &straight, nullptr, &result,
                                                  nullptr, false),
              RESULT_OK);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(result.GetValue(i), (i % 5 == 0) ? 1.0 : 0.0);
}

TEST(IcpRegistrateTest, PairingDistanceDoublesUntilPartnersAppear) {
    // Unit distance tolerance and a cloud 100 units away: the limit (k + 5) tol^2 with
    // k = 0, 1, 3, 7, ... first reaches 100^2 at k = 2^14 - 1, after 14 empty iterations.
    const std::vector<Vector3> points = zoltest::RandomPoints(500, 3, 0.5);
    const PointCloud ref = zoltest::MakeCloud(points);
    Matrix4x4 far;
    far.GenerateTranslation(Vector3(100, 0, 0));
    PointCloudInfo refInfo, fromInfo;
    const double tol = 1.0;
    zoltest::LogCapture log;
    Matrix4x4 result;
    ASSERT_EQ(RegistratePointCloud::_ICPRegistrate(&ref, refInfo, nullptr, &ref, fromInfo, nullptr,
                                                   &result, &far, false, 0, nullptr, &tol, 1),
              RESULT_OK);
    const std::vector<std::string> lines = log.LinesWithoutPools();
    EXPECT_EQ(std::count(lines.begin(), lines.end(),
                         "ICPRegistrateWithNormal correspondCount size is small: 0 continue"),
              14);
    EXPECT_LT(result.GetTranslation().x, -1.0);  // the first solved step moves back
}

TEST(IcpRegistrateTest, BadArgumentsLogTheirLineAndCode) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const PointCloud cloud = zoltest::MakeCloud(zoltest::RandomPoints(50, 1));
    const PointCloud two = zoltest::MakeCloud(zoltest::RandomPoints(2, 1));
    std::vector<Vector3> bad = zoltest::RandomPoints(50, 1);
    bad[7].y = nan;
    const PointCloud withNan = zoltest::MakeCloud(bad);
    const int outOfRange[3] = {0, 1, 50};
    const double negativeTol = -1.0;
    using Call = std::function<int(Matrix4x4*)>;
    const auto worker = [&](const PointCloud* ref, const PointCloud* from, bool hasNormal,
                            int count, const int* ids, const double* tol) {
        return [=](Matrix4x4* result) {
            PointCloudInfo refInfo, fromInfo;
            return RegistratePointCloud::_ICPRegistrate(ref, refInfo, nullptr, from, fromInfo,
                                                        nullptr, result, nullptr, hasNormal, count,
                                                        ids, tol, 1);
        };
    };
    const char* kNull =
        "ICPRegistrate: pointCloudRef == NULL || pointCloudFrom == NULL || resultTransform == NULL";
    struct Case {
        Call call;
        bool nullResult;
        int code;
        const char* line;
    } cases[] = {
        {worker(nullptr, &cloud, false, 0, nullptr, nullptr), false, RESULT_INVALID_INPUT, kNull},
        {worker(&cloud, &cloud, false, 0, nullptr, nullptr), true, RESULT_INVALID_INPUT, kNull},
        {worker(&cloud, &two, false, 0, nullptr, nullptr), false, RESULT_INVALID_INPUT,
         "ICPRegistrateWithNormal fromPointCount < 3 || refPointCount < 3"},
        {worker(&cloud, &cloud, true, 0, nullptr, nullptr), false, RESULT_INVALID_INPUT,
         "ICPRegistrateWithNormal hasNormal == true but a cloud has no normal"},
        {worker(&cloud, &cloud, false, 0, nullptr, &nan), false, RESULT_INVALID_INPUT,
         "ICPRegistrateWithNormal invalid distanceTol: nan"},
        {worker(&withNan, &cloud, false, 0, nullptr, nullptr), false, RESULT_INVALID_INPUT,
         "ICPRegistrateWithNormal pointCloudRef has a non-finite coordinate"},
        {worker(&cloud, &withNan, false, 0, nullptr, nullptr), false, RESULT_INVALID_INPUT,
         "ICPRegistrateWithNormal pointCloudFrom has a non-finite coordinate"},
        {worker(&cloud, &cloud, false, -1, nullptr, nullptr), false, RESULT_INVALID_INPUT,
         "invalid fromSampleCount: -1"},
        {worker(&cloud, &cloud, false, 3, outOfRange, nullptr), false, RESULT_INVALID_INPUT,
         "ICPRegistrateWithNormal invalid fromSampleIds: 50"},
        {worker(&cloud, &cloud, false, 0, outOfRange, nullptr), false, RESULT_INVALID_INPUT,
         "ICPRegistrateWithNormal fromSampleIds given with fromSampleCount 0"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        zoltest::LogCapture log;
        Matrix4x4 result(7.0);
        EXPECT_EQ(c.call(c.nullResult ? nullptr : &result), c.code);
        EXPECT_EQ(log.LinesWithoutPools(), std::vector<std::string>{c.line});
        EXPECT_EQ(result.GetValue(0), 7.0);
    }
    // A tolerance below 1e-15, even a negative one, is raised to 1e-15 and is no error.
    Matrix4x4 result;
    EXPECT_EQ(worker(&cloud, &cloud, false, 0, nullptr, &negativeTol)(&result), RESULT_OK);
}
