// Point-cloud utilities: bounding box, the order left by two-ended deletion, the camera
// direction and its selection-position behaviour, grazing-angle points, copy, transform
// and every log line.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/pointcloud/PointCloudUtility.h>
#include <zol/runtime/Constants.h>

#include "tests/common/PointData.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

// Point i at (i, 0, 0) with normal (0, i, 0), so that order can be read back.
PointCloud NumberedCloud(int count) {
    PointCloud cloud(true, false, false);
    for (int i = 0; i < count; ++i) cloud.InsertPoint(Vector3(i, 0, 0), Vector3(0, i, 0));
    return cloud;
}

std::vector<int> Numbers(PointCloud& cloud) {
    std::vector<int> ids;
    for (int i = 0; i < cloud.GetPointCount(); ++i) {
        EXPECT_EQ(cloud.GetPointNormal(i).y, cloud.GetPointCoord(i).x);
        ids.push_back(static_cast<int>(cloud.GetPointCoord(i).x));
    }
    return ids;
}

}  // namespace

TEST(PointCloudUtility, BoundingBoxOfAScan) {
    PointCloud cloud =
        zoltest::MakeCloud({Vector3(1, -2, 3), Vector3(-4, 5, 0.5), Vector3(0, 0, 7)});
    const PointCloudPointList list(&cloud);
    Vector3 lower, upper;
    ASSERT_EQ(CalculatePointListBoundingBox(&list, lower, upper), RESULT_OK);
    EXPECT_EQ(lower, Vector3(-4, -2, 0.5));
    EXPECT_EQ(upper, Vector3(1, 5, 7));
}

TEST(PointCloudUtility, DeletionFillsEachGapWithTheLastSurvivor) {
    struct Case {
        int count;
        std::vector<int> deleteIndex;
        std::vector<int> survivors;  // in the order left behind
    };
    const Case cases[] = {
        {6, {1, 4}, {0, 5, 2, 3}}, {5, {0}, {4, 1, 2, 3}},       {5, {4}, {0, 1, 2, 3}},
        {4, {3, 0, 2, 1}, {}},     {6, {0, 0, 5, 1}, {4, 3, 2}}, {3, {}, {0, 1, 2}},
    };
    for (const Case& c : cases) {
        PointCloud cloud = NumberedCloud(c.count);
        ASSERT_EQ(DeletePointCloudElements(&cloud, c.deleteIndex), RESULT_OK);
        EXPECT_EQ(Numbers(cloud), c.survivors) << c.count << " points";
    }
}

TEST(PointCloudUtility, CameraDirectionReadsSampledPositionsAsPointIndices) {
    // Normals far apart on the sphere all survive the grid sample. With selection
    // {3, 1} the sampled positions are 0 and 1, so points 0 and 1 are summed.
    PointCloud cloud(true, false, false);
    const Vector3 normals[] = {Vector3(0, 0, 1), Vector3(1, 0, 0), Vector3(0, 1, 0),
                               Vector3(0, 0, -1)};
    for (const Vector3& n : normals) cloud.InsertPoint(Vector3(), n);
    const std::vector<int> selection{3, 1};
    const double h = std::sqrt(0.5);
    const std::pair<const std::vector<int>*, Vector3> cases[] = {{&selection, Vector3(-h, 0, -h)},
                                                                 {nullptr, Vector3(-h, -h, 0)}};
    for (const auto& [select, expected] : cases) {
        Vector3 direction;
        ASSERT_EQ(EstimateCameraDirection(&cloud, select, direction), RESULT_OK);
        EXPECT_NEAR((direction - expected).Length(), 0.0, 1e-12);
    }
}

TEST(PointCloudUtility, GrazingPointsAreThoseBeyondTheAngle) {
    PointCloud cloud(true, false, false);
    for (double degrees : {0.0, 30.0, -30.0, 59.0, -59.0, 61.0, -61.0, 90.0, -90.0, 180.0}) {
        const double a = degrees * ONE_RADIAN;
        cloud.InsertPoint(Vector3(), Vector3(std::sin(a), 0, std::cos(a)));
    }
    const Vector3 view(0, 0, 1);
    std::vector<int> ids{99};
    ASSERT_EQ(DetectBoundaryPointByZAngle(&cloud, 60 * ONE_RADIAN, &view, ids), RESULT_OK);
    EXPECT_EQ(ids, (std::vector<int>{5, 6, 7, 8}));
    ASSERT_EQ(DetectBoundaryPointByZAngle(&cloud, 0.0, &view, ids), RESULT_OK);
    EXPECT_EQ(ids, (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
    // Estimated: the normals sum towards +z, so the view is along -z.
    ASSERT_EQ(DetectBoundaryPointByZAngle(&cloud, 60 * ONE_RADIAN, nullptr, ids), RESULT_OK);
    EXPECT_EQ(ids, (std::vector<int>{5, 6, 7, 8}));
    PointCloud two = NumberedCloud(2);
    ids = {99};
    ASSERT_EQ(DetectBoundaryPointByZAngle(&two, 0.5, &view, ids), RESULT_OK);
    EXPECT_EQ(ids, std::vector<int>{99});
}

TEST(PointCloudUtility, CopyKeepsPointsAndNormalsOnlyAndTransformTurnsNormals) {
    PointCloud source = NumberedCloud(4);
    source.SetDefaultColor(Vector3(1, 0, 0));
    PointCloud target(false, true, false);
    target.InsertPoint(Vector3(9, 9, 9));
    ASSERT_EQ(CopyPointCloud(&source, &target), RESULT_OK);
    EXPECT_TRUE(target.HasNormal());
    EXPECT_EQ(Numbers(target), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(target.GetPointColor(2), Vector3());
    ASSERT_EQ(CopyPointCloud(&target, &target), RESULT_OK);
    EXPECT_EQ(target.GetPointCount(), 4);
    PointCloud* copy = CopyPointCloud(&source);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(Numbers(*copy), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_FALSE(copy->HasColor());
    delete copy;

    // Scale 2 and shift (1, 2, 3): points move, normals are scaled but not renormalised.
    Matrix4x4 transform;
    transform.InitIdentityTransform();
    for (int d = 0; d < 3; ++d) {
        transform.SetValue(d, d, 2.0);
        transform.SetValue(d, 3, d + 1.0);
    }
    TransformPointCloud(&source, transform);
    EXPECT_EQ(source.GetPointCoord(3), Vector3(7, 2, 3));
    EXPECT_EQ(source.GetPointNormal(3), Vector3(0, 6, 0));
}

TEST(PointCloudUtility, EveryFailureLogsItsLineAndReturnsItsStatus) {
    PointCloud plain = zoltest::MakeCloud(zoltest::RandomPoints(5, 1));
    PointCloud oriented = NumberedCloud(5), empty;
    PointCloud bad = NumberedCloud(5);
    bad.SetPointCoord(2, Vector3(0, 0, INFINITY));
    const PointCloudPointList emptyList(&empty), badList(&bad);
    Vector3 v;
    std::vector<int> ids;
    const std::vector<int> tooLong{0, 0, 0, 0, 0, 1};  // point 1's normal first at position 5
    const std::vector<int> none, outside{5};
    const std::string boundary =
        "RemoveBoundaryPoint invalid input: pointCloud == NULL || (!pointCloud->HasNormal()) || "
        "maxZAngle < 0 || maxZAngle > 90.0";
    const std::string camera = "EstimateCameraDirection: ";
    struct Case {
        int status;
        std::string line;
        std::function<int()> call;
    };
    const Case cases[] = {
        {RESULT_INVALID_INPUT, camera + "depthData == NULL || depthData->HasNormal() == false",
         [&] { return EstimateCameraDirection(&plain, nullptr, v); }},
        {RESULT_OK, "SamplePointCloud::_GridSample: pointCount is 0",
         [&] { return EstimateCameraDirection(&oriented, &none, v) + (v.Length() > 0.0); }},
        {RESULT_INVALID_INPUT, camera + "selectIndex out of range: 5",
         [&] { return EstimateCameraDirection(&oriented, &outside, v); }},
        {RESULT_INVALID_INPUT, camera + "sampled position out of range: 5",
         [&] { return EstimateCameraDirection(&oriented, &tooLong, v); }},
        {RESULT_INVALID_INPUT, boundary,
         [&] { return DetectBoundaryPointByZAngle(nullptr, 0.1, &v, ids); }},
        {RESULT_INVALID_INPUT, boundary,
         [&] { return DetectBoundaryPointByZAngle(&oriented, 1.5708, &v, ids); }},
        {RESULT_INVALID_INPUT, boundary,
         [&] { return DetectBoundaryPointByZAngle(&oriented, NAN, &v, ids); }},
        {RESULT_INVALID_INPUT, "DeletePointCloudElements: input point cloud is null",
         [&] { return DeletePointCloudElements(nullptr, outside); }},
        {RESULT_INVALID_INPUT, "DeletePointCloudElements: deleteIndex out of range: 5",
         [&] {
             return DeletePointCloudElements(&oriented, {0, 5});
         }},
        {RESULT_INVALID_INPUT, "CopyPointCloud: pointCloud == NULL || copyCloud == NULL",
         [&] { return CopyPointCloud(&plain, nullptr); }},
        {RESULT_OK, "CopyPointCloud: pointCloud == NULL",
         [&] { return CopyPointCloud(static_cast<const PointCloud*>(nullptr)) ? 1 : 0; }},
        {RESULT_OK, "TransformPointCloud: pointCloud is NULL",
         [&] { return TransformPointCloud(nullptr, Matrix4x4(1.0)), 0; }},
        {RESULT_INVALID_INPUT, "CalculatePointCloudBoundingBox: pointList is NULL",
         [&] { return CalculatePointListBoundingBox(nullptr, v, v); }},
        {RESULT_INVALID_INPUT, "CalculatePointCloudBoundingBox: pointCount is 0",
         [&] { return CalculatePointListBoundingBox(&emptyList, v, v); }},
        {RESULT_INVALID_INPUT,
         "CalculatePointCloudBoundingBox: point 2 has a non-finite coordinate",
         [&] { return CalculatePointListBoundingBox(&badList, v, v); }},
    };
    for (const Case& c : cases) {
        zoltest::LogCapture log;
        EXPECT_EQ(c.call(), c.status) << c.line;
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
    }
    EXPECT_EQ(Numbers(oriented), (std::vector<int>{0, 1, 2, 3, 4}));
}
