// Point density: the lower median of brute-force mean distances for both entries (with selections
// and oversized neighbour counts), and failure lines.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include <zol/core/IPointList.h>
#include <zol/core/PointCloud.h>
#include <zol/pointcloud/PointCloudDensity.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/PointCloudInfo.h>

#include "tests/common/PointData.h"
#include "tests/common/TestData.h"

using namespace ZOL;

TEST(PointCloudDensity, IsTheLowerMedianOfMeanDistancesToTheNearestOthers) {
    const std::vector<Vector3> points = zoltest::RandomPoints(41, 12);
    struct Case {
        int neighborCount;
        std::vector<int> selection;  // empty: all points
    };
    const std::vector<Case> cases = {
        {6, {}}, {2, {}}, {60, {}}, {6, {17}}, {7, {3, 9, 9, 30, 40, 0}}};
    for (const Case& c : cases) {
        const int k = std::min(c.neighborCount, 41);
        std::vector<int> ids = c.selection;
        if (ids.empty()) {
            for (int i = 0; i < 41; ++i) ids.push_back(i);
        }
        std::sort(ids.begin(), ids.end());
        ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
        std::vector<double> means;
        for (int i : ids) {
            double sum = 0.0;
            for (const zoltest::Neighbor& nb : zoltest::BruteForceNearest(points, points[i], k)) {
                sum += std::sqrt(nb.squaredDistance);
            }
            means.push_back(sum / (k - 1));
        }
        std::sort(means.begin(), means.end());
        const double expected = means[(means.size() + 1) / 2 - 1];

        PointCloud cloud = zoltest::MakeCloud(points);
        PointCloudInfo info;
        double density = -1.0;
        ASSERT_EQ(_CalculatePointListDensity(&cloud, info, c.neighborCount, density,
                                             c.selection.empty() ? nullptr : &c.selection),
                  RESULT_OK);
        EXPECT_NEAR(density, expected, 1e-12 * expected) << c.neighborCount;
        if (!c.selection.empty()) continue;
        PointCloudPointList list(&cloud);
        ASSERT_EQ(CalculatePointListDensity(&list, c.neighborCount, density), RESULT_OK);
        EXPECT_NEAR(density, expected, 1e-12 * expected) << c.neighborCount;
    }
}

TEST(PointCloudDensity, BadArgumentsLogTheirLineAndLeaveTheDensity) {
    const double kNaN = std::numeric_limits<double>::quiet_NaN();
    std::vector<Vector3> points = zoltest::RandomPoints(20, 2);
    PointCloud cloud = zoltest::MakeCloud(points);
    points[4].x = kNaN;
    PointCloud broken = zoltest::MakeCloud(points);
    PointCloud empty;
    PointCloudPointList list(&cloud), brokenList(&broken), emptyList(&empty);
    const std::vector<int> none, outside = {20};
    PointCloudInfo info;
    struct Case {
        std::function<int(double&)> call;
        int code;
        const char* line;
    };
    const std::vector<Case> cases = {
        {[&](double& d) { return CalculatePointListDensity(nullptr, 4, d); }, -2,
         "CalculatePointListDensity: invalid input"},
        {[&](double& d) { return CalculatePointListDensity(&emptyList, 4, d); }, -1,
         "CalculatePointListDensity invalid pointCount: 0 neighborCount: 4"},
        {[&](double& d) { return CalculatePointListDensity(&list, 1, d); }, -1,
         "CalculatePointListDensity invalid pointCount: 20 neighborCount: 1"},
        {[&](double& d) { return CalculatePointListDensity(&brokenList, 4, d); }, -5,
         "CalculatePointListDensity: Ann initialize failed"},
        {[&](double& d) { return _CalculatePointListDensity(nullptr, info, 4, d, nullptr); }, -2,
         "CalculatePointListDensity: invalid input"},
        {[&](double& d) { return _CalculatePointListDensity(&cloud, info, 1, d, nullptr); }, -1,
         "CalculatePointListDensity invalid pointCount: 20 neighborCount: 1"},
        {[&](double& d) { return _CalculatePointListDensity(&cloud, info, 4, d, &none); }, -2,
         "CalculatePointListDensity: selectIndex is empty"},
        {[&](double& d) { return _CalculatePointListDensity(&cloud, info, 4, d, &outside); }, -2,
         "CalculatePointListDensity: invalid selectIndex: 20"},
        {[&](double& d) { return _CalculatePointListDensity(&broken, info, 4, d, nullptr); }, -3,
         "CalculatePointListDensity: Ann initialize failed"},
    };
    for (const Case& c : cases) {
        zoltest::LogCapture log;
        info.Clear();
        double density = 7.0;
        EXPECT_EQ(c.call(density), c.code) << c.line;
        EXPECT_TRUE(log.Contains(c.line)) << c.line;
        EXPECT_EQ(density, 7.0) << c.line;
    }
}
