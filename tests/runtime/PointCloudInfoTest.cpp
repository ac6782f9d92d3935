// PointCloudInfo: the neighbour cache of a cloud, filled in parallel, against brute
// force and across thread counts; cache sizing rules and every log line.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/runtime/Ann.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/PointCloudInfo.h>
#include <zol/runtime/ThreadPool.h>

#include "tests/common/PointData.h"
#include "tests/common/TestData.h"

using namespace ZOL;

TEST(PointCloudInfo, NeighbourListStartsWithThePointItself) {
    PointCloud cloud = zoltest::MakeCloud(zoltest::RandomPoints(500, 5));
    PointCloudInfo info;
    ASSERT_EQ(info.InitAnn(&cloud, 6), RESULT_OK);
    ASSERT_EQ(info.FindNearestNeighbors(6, &cloud, nullptr), RESULT_OK);
    std::vector<int> ids;
    std::vector<double> dists;
    ASSERT_EQ(info.GetNeighbor(42, 6, &ids, &dists), RESULT_OK);
    ASSERT_EQ(ids.size(), 6u);
    EXPECT_EQ(ids[0], 42);
    EXPECT_EQ(dists[0], 0.0);
}

TEST(PointCloudInfo, CacheMatchesBruteForceAndIsIdenticalForAnyThreadCount) {
    const std::vector<Vector3> points =
        zoltest::LoadPlyVertices(zoltest::DataPath("bunny/bun000.ply"));
    ASSERT_FALSE(points.empty());
    PointCloud cloud = zoltest::MakeCloud(points);
    const int n = cloud.GetPointCount();
    const int k = 10;
    std::vector<int> reference;
    std::vector<double> referenceDists;
    for (int threads : {1, 2, 8}) {
        zoltest::ThreadCountScope scope(threads);
        PointCloudInfo info;
        ASSERT_EQ(info.InitAnn(&cloud, k), RESULT_OK);
        ASSERT_EQ(info.FindNearestNeighbors(k, &cloud, nullptr), RESULT_OK);
        std::vector<int> all;
        std::vector<double> allDists;
        for (int i = 0; i < n; ++i) {
            ASSERT_EQ(info.GetCachedNeighborCount(i), k);
            all.insert(all.end(), info.GetCachedNeighborIds(i), info.GetCachedNeighborIds(i) + k);
            allDists.insert(allDists.end(), info.GetCachedNeighborDistances(i),
                            info.GetCachedNeighborDistances(i) + k);
        }
        if (reference.empty()) {
            reference = all;
            referenceDists = allDists;
        } else {
            EXPECT_EQ(all, reference) << threads << " threads";
            EXPECT_EQ(allDists, referenceDists) << threads << " threads";
        }
    }
    for (int i = 0; i < n; i += 257) {
        const auto expected = zoltest::BruteForceNearest(points, points[i], k);
        EXPECT_EQ(reference[static_cast<size_t>(i) * k], i);
        for (int j = 0; j < k; ++j) {
            EXPECT_DOUBLE_EQ(referenceDists[static_cast<size_t>(i) * k + j],
                             expected[j].squaredDistance);
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
    full.InitAnn(&cloud, 5);
    full.FindNearestNeighbors(5, &cloud, nullptr);
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
    PointCloud empty;
    std::vector<int> ids;
    {
        zoltest::LogCapture log;
        PointCloudInfo info;
        EXPECT_EQ(info.InitAnn(nullptr, 4), RESULT_INVALID_INPUT);
        EXPECT_EQ(info.GetNeighbor(0, 4, &ids), RESULT_NOT_READY);
        EXPECT_EQ(info.FindNearestNeighbors(4, &cloud, nullptr), RESULT_NOT_READY);
        EXPECT_EQ(info.FindNearestNeighbors(4, nullptr, nullptr), RESULT_INVALID_INPUT);
        EXPECT_EQ(info.FindNearestNeighbors(0, &cloud, nullptr), RESULT_INVALID_INPUT);
        EXPECT_EQ(log.Lines(), (std::vector<std::string>{
                                   "PointCloudInfo::InitAnn pointCloud is NULL",
                                   "PointCloudInfo::GetNeighbor: InitAnn first",
                                   "PointCloudInfo::FindNearestNeighbors: InitAnn first",
                                   "PointCloudInfo::FindNearestNeighbors pointCloud is NULL",
                                   "PointCloudInfo::FindNearestNeighbors: neighborCount < 1"}));
    }
    {
        zoltest::LogCapture log;
        PointCloudInfo info;
        ASSERT_EQ(info.InitAnn(&cloud, 4), RESULT_OK);
        EXPECT_EQ(info.GetNeighbor(0, 0, &ids), RESULT_INVALID_INPUT);
        EXPECT_EQ(info.GetNeighbor(0, 4, nullptr, nullptr), RESULT_INVALID_INPUT);
        EXPECT_EQ(info.GetNeighbor(10, 4, &ids), RESULT_INVALID_INPUT);
        EXPECT_EQ(info.GetNeighbor(-1, 4, &ids), RESULT_INVALID_INPUT);
        EXPECT_EQ(
            log.Lines(),
            (std::vector<std::string>{
                "PointCloudInfo::GetNeighbor: neighborCount < 1",
                "PointCloudInfo::GetNeighbor: neighborIds == NULL && squaredDistances == NULL",
                "PointCloudInfo::GetNeighbor: invalid pointId = 10",
                "PointCloudInfo::GetNeighbor: invalid pointId = -1"}));
    }
    {
        // An index that cannot be built stays attached and is not retried.
        zoltest::LogCapture log;
        PointCloudInfo info;
        EXPECT_EQ(info.InitAnn(&empty, 4), RESULT_STEP_FAIL);
        EXPECT_NE(info.GetAnn(), nullptr);
        EXPECT_EQ(log.Lines(),
                  std::vector<std::string>{
                      "Ann Init: pointList == NULL || pointList->GetPointCount() < 1"});
        EXPECT_EQ(info.InitAnn(&cloud, 4), RESULT_OK);
        EXPECT_EQ(info.GetAnn()->GetPointCount(), 0);
    }
}

namespace {

/// Reads the neighbour lists of points t, t + n, ... into their own output rows, the
/// way the smoothing workers read a shared PointCloudInfo.
class ReadNeighborsMT : public TaskBase {
public:
    ReadNeighborsMT(const PointCloudInfo* info, int t, int n, int count, std::vector<int>* out)
        : mpInfo(info), mT(t), mN(n), mCount(count), mpOut(out) {}
    void Run() override {
        std::vector<int> ids;
        for (int i = mT; i < mCount; i += mN) {
            if (mpInfo->GetNeighbor(i, 4, &ids) != RESULT_OK) return;
            std::copy(ids.begin(), ids.end(), mpOut->begin() + 4 * i);
        }
    }

private:
    const PointCloudInfo* mpInfo;
    int mT, mN, mCount;
    std::vector<int>* mpOut;
};

}  // namespace

TEST(PointCloudInfo, ManyWorkersMayReadCachedAndUncachedListsAtOnce) {
    PointCloud cloud = zoltest::MakeCloud(zoltest::RandomPoints(2000, 13));
    const int n = cloud.GetPointCount();
    std::vector<int> half;
    for (int i = 0; i < n; i += 2) half.push_back(i);
    PointCloudInfo info;
    ASSERT_EQ(info.InitAnn(&cloud, 4), RESULT_OK);
    ASSERT_EQ(info.FindNearestNeighbors(4, &cloud, &half), RESULT_OK);  // odd ones uncached
    std::vector<int> sequential(4 * n), parallel(4 * n, -1);
    ReadNeighborsMT(&info, 0, 1, n, &sequential).Run();
    {
        ThreadPool pool;
        ASSERT_EQ(pool.InitThreads(4), 4);
        for (int t = 0; t < 4; ++t) pool.InsertTask(new ReadNeighborsMT(&info, t, 4, n, &parallel));
        pool.WaitAll();
    }
    EXPECT_EQ(parallel, sequential);
}
