// PointCloudInfo: the neighbour cache of a cloud, filled in parallel, against brute
// force and across thread counts; cache sizing rules and every log line.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/runtime/Ann.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/PointCloudInfo.h>

#include "tests/common/PointData.h"
#include "tests/common/TestData.h"

using namespace ZOL;

TEST(PointCloudInfo, CacheOfARealScanInScanOrShuffledOrderMatchesBruteForceOnWorkers) {
    // Identity across thread counts is checked by the operations that fill the cache
    // (tests/runtime/ThreadCountInvarianceTest.cpp).
    for (bool shuffle : {false, true}) {
        std::vector<Vector3> points =
            zoltest::LoadPlyVertices(zoltest::DataPath("bunny/bun090.ply"));
        ASSERT_FALSE(points.empty());
        if (shuffle) std::shuffle(points.begin(), points.end(), std::mt19937(3));
        PointCloud cloud = zoltest::MakeCloud(points);
        const int k = 10;
        zoltest::ThreadCountScope scope(8);
        PointCloudInfo info;
        ASSERT_EQ(info.InitAnn(&cloud, k), RESULT_OK);
        ASSERT_EQ(info.FindNearestNeighbors(k, &cloud, nullptr), RESULT_OK);
        for (int i = 0; i < cloud.GetPointCount(); ++i) {
            ASSERT_EQ(info.GetCachedNeighborCount(i), k);
            ASSERT_EQ(info.GetCachedNeighborIds(i)[0], i) << "shuffled " << shuffle;
            if (i % 257 != 0) continue;
            const auto expected = zoltest::BruteForceNearest(points, points[i], k);
            for (int j = 0; j < k; ++j) {
                EXPECT_DOUBLE_EQ(info.GetCachedNeighborDistances(i)[j],
                                 expected[j].squaredDistance);
            }
        }
    }
}

TEST(PointCloudInfo, DuplicatePointsStillListThemselvesFirst) {
    // Every point appears `copies` times, so each list opens with zero distances; with
    // more copies than the list holds, the search alone could leave the point out.
    for (int copies : {3, 6}) {
        std::vector<Vector3> points;
        for (const Vector3& p : zoltest::RandomPoints(50, 8))
            points.insert(points.end(), copies, p);
        PointCloud cloud = zoltest::MakeCloud(points);
        for (int k : {1, 4}) {
            PointCloudInfo info;
            ASSERT_EQ(info.InitAnn(&cloud, k), RESULT_OK);
            ASSERT_EQ(info.FindNearestNeighbors(k, &cloud, nullptr), RESULT_OK);
            PointCloudInfo uncached;
            ASSERT_EQ(uncached.InitAnn(&cloud, k), RESULT_OK);
            for (int i = 0; i < cloud.GetPointCount(); ++i) {
                for (const PointCloudInfo* source : {&info, &uncached}) {
                    std::vector<int> ids;
                    std::vector<double> dists;
                    ASSERT_EQ(source->GetNeighbor(i, k, &ids, &dists), RESULT_OK);
                    ASSERT_EQ(ids[0], i) << copies << " copies, k=" << k;
                    for (int j = 0; j < std::min(k, copies); ++j) {
                        EXPECT_EQ(ids[j] / copies, i / copies);
                        EXPECT_EQ(dists[j], 0.0);
                    }
                }
            }
        }
    }
}

TEST(PointCloudInfo, SelectionFillsOnlySelectedPointsAndOthersAreAnsweredFromTheIndex) {
    PointCloud cloud = zoltest::MakeCloud(zoltest::RandomPoints(400, 9));
    const std::vector<int> selection = {3, 17, 17, 399, -5, 400, 250};
    PointCloudInfo info;
    ASSERT_EQ(info.InitAnn(&cloud, 5), RESULT_OK);
    ASSERT_EQ(info.FindNearestNeighbors(5, &cloud, &selection), RESULT_OK);
    for (int i = 0; i < 400; ++i) {
        const bool selected = i == 3 || i == 17 || i == 399 || i == 250;
        EXPECT_EQ(info.GetCachedNeighborCount(i), selected ? 5 : 0) << i;
    }
    PointCloudInfo full;
    ASSERT_EQ(full.InitAnn(&cloud, 5), RESULT_OK);
    ASSERT_EQ(full.FindNearestNeighbors(5, &cloud, nullptr), RESULT_OK);
    for (int i : {0, 3, 100, 399}) {
        std::vector<int> ids, fullIds;
        std::vector<double> dists, fullDists;
        ASSERT_EQ(info.GetNeighbor(i, 5, &ids, &dists), RESULT_OK);
        ASSERT_EQ(full.GetNeighbor(i, 5, &fullIds, &fullDists), RESULT_OK);
        EXPECT_EQ(ids, fullIds);
        EXPECT_EQ(dists, fullDists);
        // Fewer neighbours are the head of the list.
        std::vector<int> head;
        ASSERT_EQ(full.GetNeighbor(i, 2, &head), RESULT_OK);
        EXPECT_EQ(head, std::vector<int>(fullIds.begin(), fullIds.begin() + 2));
    }
}

TEST(PointCloudInfo, LargerRequestRelaysTheCacheAndSmallerKeepsIt) {
    PointCloud cloud = zoltest::MakeCloud(zoltest::RandomPoints(100, 10));
    PointCloudInfo info;
    ASSERT_EQ(info.InitAnn(&cloud, 8), RESULT_OK);
    Ann* ann = info.GetAnn();
    ASSERT_EQ(info.FindNearestNeighbors(8, &cloud, nullptr), RESULT_OK);
    ASSERT_EQ(info.InitAnn(&cloud, 4), RESULT_OK);
    EXPECT_EQ(info.GetNeighborCount(), 8);
    EXPECT_EQ(info.GetCachedNeighborCount(7), 8);
    EXPECT_EQ(info.GetAnn(), ann);  // index built once
    ASSERT_EQ(info.InitAnn(&cloud, 16), RESULT_OK);
    EXPECT_EQ(info.GetNeighborCount(), 16);
    EXPECT_EQ(info.GetCachedNeighborCount(7), 0);
    EXPECT_EQ(info.GetAnn(), ann);
    // More neighbours than points: clamped, no crash.
    ASSERT_EQ(info.FindNearestNeighbors(500, &cloud, nullptr), RESULT_OK);
    EXPECT_EQ(info.GetCachedNeighborCount(0), 100);
    std::vector<int> ids;
    ASSERT_EQ(info.GetNeighbor(0, 1000, &ids), RESULT_OK);
    EXPECT_EQ(ids.size(), 100u);
}

TEST(PointCloudInfo, EveryFailureLogsItsLineAndReturnsItsStatus) {
    PointCloud cloud = zoltest::MakeCloud(zoltest::RandomPoints(10, 12));
    std::vector<int> ids;
    struct Case {
        bool ready;  // InitAnn(&cloud, 4) done first
        int status;
        const char* line;
        std::function<int(PointCloudInfo&)> call;
    };
    const Case cases[] = {
        {false, RESULT_INVALID_INPUT, "PointCloudInfo::InitAnn pointCloud is NULL",
         [&](PointCloudInfo& i) { return i.InitAnn(nullptr, 4); }},
        {false, RESULT_NOT_READY, "PointCloudInfo::GetNeighbor: InitAnn first",
         [&](PointCloudInfo& i) { return i.GetNeighbor(0, 4, &ids); }},
        {false, RESULT_NOT_READY, "PointCloudInfo::FindNearestNeighbors: InitAnn first",
         [&](PointCloudInfo& i) { return i.FindNearestNeighbors(4, &cloud, nullptr); }},
        {false, RESULT_INVALID_INPUT, "PointCloudInfo::FindNearestNeighbors pointCloud is NULL",
         [&](PointCloudInfo& i) { return i.FindNearestNeighbors(4, nullptr, nullptr); }},
        {false, RESULT_INVALID_INPUT, "PointCloudInfo::FindNearestNeighbors: neighborCount < 1",
         [&](PointCloudInfo& i) { return i.FindNearestNeighbors(0, &cloud, nullptr); }},
        {true, RESULT_INVALID_INPUT, "PointCloudInfo::GetNeighbor: neighborCount < 1",
         [&](PointCloudInfo& i) { return i.GetNeighbor(0, 0, &ids); }},
        {true, RESULT_INVALID_INPUT,
         "PointCloudInfo::GetNeighbor: neighborIds == NULL && squaredDistances == NULL",
         [&](PointCloudInfo& i) { return i.GetNeighbor(0, 4, nullptr, nullptr); }},
        {true, RESULT_INVALID_INPUT, "PointCloudInfo::GetNeighbor: invalid pointId = 10",
         [&](PointCloudInfo& i) { return i.GetNeighbor(10, 4, &ids); }},
        {true, RESULT_INVALID_INPUT, "PointCloudInfo::GetNeighbor: invalid pointId = -1",
         [&](PointCloudInfo& i) { return i.GetNeighbor(-1, 4, &ids); }},
    };
    for (const Case& c : cases) {
        PointCloudInfo info;
        if (c.ready) {
            ASSERT_EQ(info.InitAnn(&cloud, 4), RESULT_OK);
        }
        zoltest::LogCapture log;
        EXPECT_EQ(c.call(info), c.status) << c.line;
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
    }
    // An index that cannot be built stays attached and is not retried.
    zoltest::LogCapture log;
    PointCloud empty;
    PointCloudInfo info;
    EXPECT_EQ(info.InitAnn(&empty, 4), RESULT_STEP_FAIL);
    EXPECT_NE(info.GetAnn(), nullptr);
    EXPECT_EQ(log.Lines(), std::vector<std::string>{
                               "Ann Init: pointList == NULL || pointList->GetPointCount() < 1"});
    EXPECT_EQ(info.InitAnn(&cloud, 4), RESULT_OK);
    EXPECT_EQ(info.GetAnn()->GetPointCount(), 0);
}

TEST(PointCloudInfo, ManyWorkersMayReadCachedAndUncachedListsAtOnce) {
    PointCloud cloud = zoltest::MakeCloud(zoltest::RandomPoints(2000, 13));
    const int n = cloud.GetPointCount();
    std::vector<int> half;
    for (int i = 0; i < n; i += 2) half.push_back(i);
    PointCloudInfo info;
    ASSERT_EQ(info.InitAnn(&cloud, 4), RESULT_OK);
    ASSERT_EQ(info.FindNearestNeighbors(4, &cloud, &half), RESULT_OK);  // odd ones uncached
    // Worker t reads points t, t + step, ... into their own rows, as smoothing workers do.
    auto read = [&](int t, int step, std::vector<int>* out) {
        std::vector<int> ids;
        for (int i = t; i < n; i += step) {
            if (info.GetNeighbor(i, 4, &ids) != RESULT_OK) return;
            std::copy(ids.begin(), ids.end(), out->begin() + 4 * i);
        }
    };
    std::vector<int> sequential(4 * n), parallel(4 * n, -1);
    read(0, 1, &sequential);
    std::vector<std::thread> workers;
    for (int t = 0; t < 4; ++t) workers.emplace_back(read, t, 4, &parallel);
    for (std::thread& w : workers) w.join();
    EXPECT_EQ(parallel, sequential);
}
