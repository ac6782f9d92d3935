// Ann: k-nearest and radius queries against brute force on a real scan and random
// clouds, independence of thread count and query order, searches from several threads
// with and without private library copies, clamping of k, and every log line.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <thread>
#include <vector>

#include <zol/core/IPointList.h>
#include <zol/core/Matrix4x4.h>
#include <zol/runtime/Ann.h>
#include <zol/runtime/AnnLibraryCopiesInternal.h>
#include <zol/runtime/Constants.h>

#include "tests/common/PointData.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

std::vector<double> Flatten(const std::vector<Vector3>& points) {
    std::vector<double> xyz;
    for (const Vector3& p : points) xyz.insert(xyz.end(), {p.x, p.y, p.z});
    return xyz;
}

/// Caps the kd-tree library copies used by indexes built in its lifetime.
struct CopyLimitScope {
    explicit CopyLimitScope(int limit) { SetAnnLibraryCopyLimit(limit); }
    ~CopyLimitScope() { SetAnnLibraryCopyLimit(0); }
};

/// Checks every step-th row of a list query against the brute-force oracle.
void ExpectMatchesBruteForce(const std::vector<Vector3>& points,
                             const std::vector<Vector3>& queries,
                             int step,
                             int k,
                             const std::vector<int>& ids,
                             const std::vector<double>& dists) {
    for (size_t q = 0; q < queries.size(); q += step) {
        const std::vector<zoltest::Neighbor> expected =
            zoltest::BruteForceNearest(points, queries[q], k);
        for (int j = 0; j < k; ++j) {
            const size_t at = q * k + j;
            ASSERT_DOUBLE_EQ(dists[at], expected[j].squaredDistance) << "query " << q << " #" << j;
            // Ties may come in either order; the reported point must be at that distance.
            ASSERT_DOUBLE_EQ(points[ids[at]].DistanceSquared(queries[q]), dists[at]);
        }
    }
}

}  // namespace

TEST(Ann, KAbovePointCountIsClampedAndTheRestMarkedMissing) {
    double data[] = {0, 0, 0, 3, 0, 0, 1, 0, 0};
    Ann ann;
    ASSERT_EQ(ann.Init(data, 3, 3), RESULT_OK);
    double queries[] = {0, 0, 0, 3, 0, 0};
    std::vector<int> ids(2 * 5);
    std::vector<double> dists(2 * 5);
    ASSERT_EQ(ann.FindNearestNeighbors(queries, 2, 5, ids.data(), dists.data()), RESULT_OK);
    EXPECT_EQ(ids, (std::vector<int>{0, 2, 1, -1, -1, 1, 2, 0, -1, -1}));
    EXPECT_EQ(dists[1], 1.0);
    EXPECT_EQ(dists[3], REAL_LARGE);
    EXPECT_EQ(dists[9], REAL_LARGE);

    PointCloud cloud = zoltest::MakeCloud({Vector3(0, 0, 0), Vector3(1, 0, 0)});
    PointCloudPointList list(&cloud);
    ASSERT_EQ(ann.Init(&list, nullptr), RESULT_OK);
    zoltest::ThreadCountScope scope(2);
    std::vector<int> listIds(2 * 4);
    ASSERT_EQ(ann.FindNearestNeighbors(&list, 4, listIds.data(), nullptr), RESULT_OK);
    EXPECT_EQ(listIds, (std::vector<int>{0, 1, -1, -1, 1, 0, -1, -1}));
}

TEST(Ann, ListQueriesOnWorkersMatchBruteForceAndSerialRawQueriesInAnyOrder) {
    const std::vector<Vector3> points =
        zoltest::LoadPlyVertices(zoltest::DataPath("bunny/bun000.ply"));
    ASSERT_EQ(points.size(), 40256u);
    const int n = static_cast<int>(points.size()), k = 8;
    // The same points shuffled: searched in another order inside, written to the same rows.
    std::vector<int> perm(points.size());
    std::iota(perm.begin(), perm.end(), 0);
    std::shuffle(perm.begin(), perm.end(), std::mt19937(5));
    std::vector<Vector3> shuffled;
    for (int p : perm) shuffled.push_back(points[p]);
    PointCloud cloud = zoltest::MakeCloud(points), shuffledCloud = zoltest::MakeCloud(shuffled);
    PointCloudPointList list(&cloud), shuffledList(&shuffledCloud);
    Ann ann;
    {
        // Built for one worker; queries on more workers add trees.
        zoltest::ThreadCountScope scope(1);
        ASSERT_EQ(ann.Init(&list, nullptr), RESULT_OK);
    }
    std::vector<int> ids(points.size() * k, -9), permutedIds, shuffledIds(ids), rawIds(ids);
    std::vector<double> dists(ids.size(), -9.0), permutedDists, shuffledDists(dists),
        rawDists(dists);
    {
        zoltest::ThreadCountScope scope(8);
        ASSERT_EQ(ann.FindNearestNeighbors(&list, k, ids.data(), dists.data()), RESULT_OK);
        // Either output alone gives the same rows.
        ASSERT_EQ(ann.FindNearestNeighbors(&shuffledList, k, shuffledIds.data(), nullptr),
                  RESULT_OK);
        ASSERT_EQ(ann.FindNearestNeighbors(&shuffledList, k, nullptr, shuffledDists.data()),
                  RESULT_OK);
    }
    ExpectMatchesBruteForce(points, points, 211, k, ids, dists);
    for (int p : perm) {
        permutedIds.insert(permutedIds.end(), ids.begin() + p * k, ids.begin() + p * k + k);
        permutedDists.insert(permutedDists.end(), dists.begin() + p * k, dists.begin() + p * k + k);
    }
    EXPECT_EQ(shuffledIds, permutedIds);
    EXPECT_EQ(shuffledDists, permutedDists);
    // Raw queries on the calling thread alone: the same rows, from either output alone too.
    std::vector<double> raw = Flatten(shuffled);
    ASSERT_EQ(ann.FindNearestNeighbors(raw.data(), n, k, rawIds.data(), nullptr), RESULT_OK);
    ASSERT_EQ(ann.FindNearestNeighbors(raw.data(), n, k, nullptr, rawDists.data()), RESULT_OK);
    EXPECT_EQ(rawIds, permutedIds);
    EXPECT_EQ(rawDists, permutedDists);
}

TEST(Ann, RadiusQueryReturnsExactlyThePointsInsideNearestFirst) {
    const std::vector<Vector3> points = zoltest::RandomPoints(5000, 21);
    std::vector<double> xyz = Flatten(points);
    Ann ann;
    ASSERT_EQ(ann.Init(xyz.data(), 5000, 3), RESULT_OK);
    for (const Vector3& centre : zoltest::RandomPoints(20, 22)) {
        for (double radius : {0.0, 0.05, 0.2, 0.6}) {
            double q[] = {centre.x, centre.y, centre.z};
            std::vector<int> ids = {99};
            std::vector<double> dists;
            ASSERT_EQ(ann.FindNearestNeighbors(q, radius, &ids, &dists), RESULT_OK);
            std::vector<zoltest::Neighbor> expected =
                zoltest::BruteForceNearest(points, centre, 5000);
            while (!expected.empty() && expected.back().squaredDistance > radius * radius)
                expected.pop_back();
            ASSERT_EQ(ids.size(), expected.size()) << radius;
            for (size_t j = 0; j < ids.size(); ++j) {
                EXPECT_EQ(ids[j], expected[j].id);
                EXPECT_DOUBLE_EQ(dists[j], expected[j].squaredDistance);
            }
        }
    }
    // The radius is a plain distance and its boundary is inside.
    double line[] = {0, 0, 0, 0, 1, 0, 2, 0, 0, 0, 0, -3}, origin[] = {0, 0, 0};
    ASSERT_EQ(ann.Init(line, 4, 3), RESULT_OK);
    std::vector<int> ids;
    std::vector<double> dists;
    ASSERT_EQ(ann.FindNearestNeighbors(origin, 2.0, &ids, &dists), RESULT_OK);
    EXPECT_EQ(ids, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(dists, (std::vector<double>{0.0, 1.0, 4.0}));
}

TEST(Ann, TransformAndNormalsShapeTheIndexedPoints) {
    // Two points at one spot facing opposite ways, and a third further on x.
    const std::vector<Vector3> points = {Vector3(0, 0, 0), Vector3(0, 0, 0), Vector3(2, 0, 0)};
    const std::vector<Vector3> normals = {Vector3(0, 0, 1), Vector3(0, 0, -1), Vector3(0, 0, 1)};
    PointCloud cloud = zoltest::MakeCloud(points, &normals);
    PointCloudPointList list(&cloud);
    Matrix4x4 shift(0.0);
    for (int i = 0; i < 4; ++i) shift.SetValue(i, i, 1.0);
    shift.SetValue(0, 3, 10.0);  // x + 10
    Ann ann;
    ASSERT_EQ(ann.Init(&list, &shift), RESULT_OK);
    double shifted[] = {12, 0, 0};
    int id = -1;
    double dist = -1;
    ASSERT_EQ(ann.FindNearestNeighbors(shifted, 1, 1, &id, &dist), RESULT_OK);
    EXPECT_EQ(id, 2);
    EXPECT_EQ(dist, 0.0);

    ASSERT_EQ(ann.InitWithNormal(&list, 0.5, nullptr), RESULT_OK);
    EXPECT_EQ(ann.GetDimension(), 6);
    std::vector<int> ids(3 * 2);
    std::vector<double> dists(3 * 2);
    ASSERT_EQ(ann.FindNearestNeighbors(&list, 2, ids.data(), dists.data()), RESULT_OK);
    EXPECT_EQ(ids[0], 0);
    EXPECT_EQ(ids[2], 1);
    EXPECT_EQ(ids[4], 2);
    EXPECT_DOUBLE_EQ(dists[1], 1.0);  // opposite normals: (2 * 0.5)^2
    double raw[] = {0, 0, 0, 0, 0, -0.5};
    ASSERT_EQ(ann.FindNearestNeighbors(raw, 1, 1, &id, nullptr), RESULT_OK);
    EXPECT_EQ(id, 1);
}

TEST(Ann, EveryFailureLogsItsLineAndReturnsItsStatus) {
    PointCloud empty;
    PointCloudPointList emptyList(&empty);
    PointCloud one = zoltest::MakeCloud({Vector3(1, 1, 1)});
    PointCloudPointList oneList(&one);
    double data[] = {0, 0, 0};
    double nan[] = {0, std::numeric_limits<double>::quiet_NaN(), 0};
    int ids[4];
    double dists[4];
    std::vector<int> idVec;
    const char* kInitRaw = "Ann Init: refData == NULL || refCount < 1 || refDim < 1: ";
    const char* kInitList = "Ann Init: pointList == NULL || pointList->GetPointCount() < 1";
    const char* kNotInit = "AnnImpl::FindNearestNeighbors not initialized";
    const char* kNoOutput = "Invalid input: indexRes == NULL && distanceRes == NULL";

    struct Case {
        bool ready;  // called on an index over `data`, or on a fresh one
        std::string line;
        int status;
        std::function<int(Ann&)> call;
    };
    const std::vector<Case> cases = {
        {false, kInitRaw + std::string("refCount=3 refDim=3"), RESULT_INVALID_INPUT,
         [&](Ann& a) { return a.Init(nullptr, 3, 3); }},
        {false, kInitRaw + std::string("refCount=0 refDim=3"), RESULT_INVALID_INPUT,
         [&](Ann& a) { return a.Init(data, 0, 3); }},
        {false, kInitRaw + std::string("refCount=1 refDim=0"), RESULT_INVALID_INPUT,
         [&](Ann& a) { return a.Init(data, 1, 0); }},
        {false, kInitList, RESULT_INVALID_INPUT,
         [&](Ann& a) { return a.Init(&emptyList, nullptr); }},
        {false, "Ann InitWithNormal: pointList == NULL || pointList->GetPointCount() < 1",
         RESULT_INVALID_INPUT, [&](Ann& a) { return a.InitWithNormal(nullptr, 1.0, nullptr); }},
        {false, "Ann Init: Tree init failed", RESULT_NOT_READY,
         [&](Ann& a) { return a.Init(nan, 1, 3); }},
        {false, kNotInit, RESULT_NOT_READY,
         [&](Ann& a) { return a.FindNearestNeighbors(data, 1, 1, ids, dists); }},
        {false, kNotInit + std::string(": invalid input"), RESULT_NOT_READY,
         [&](Ann& a) { return a.FindNearestNeighbors(data, 1, 0, ids, dists); }},
        {false, kNotInit, RESULT_NOT_READY,
         [&](Ann& a) { return a.FindNearestNeighbors(&oneList, 1, ids, nullptr); }},
        {false, kNotInit + std::string(": invalid input"), RESULT_NOT_READY,
         [&](Ann& a) { return a.FindNearestNeighbors(data, 1.0, nullptr, nullptr); }},
        {true, kNoOutput, RESULT_INVALID_INPUT,
         [&](Ann& a) { return a.FindNearestNeighbors(data, 1, 1, nullptr, nullptr); }},
        {true, kNoOutput, RESULT_INVALID_INPUT,
         [&](Ann& a) { return a.FindNearestNeighbors(&oneList, 1, nullptr, nullptr); }},
        {true, kNoOutput, RESULT_INVALID_INPUT,
         [&](Ann& a) { return a.FindNearestNeighbors(data, 1.0, nullptr, nullptr); }},
        {true, "Ann::FindNearestNeighbors: queryData == NULL || queryCount < 0 || k < 1",
         RESULT_INVALID_INPUT,
         [&](Ann& a) { return a.FindNearestNeighbors(data, 1, 0, ids, dists); }},
        {true, "Ann::FindNearestNeighbors: queryList == NULL || k < 1", RESULT_INVALID_INPUT,
         [&](Ann& a) { return a.FindNearestNeighbors(nullptr, 1, ids, dists); }},
        {true, "Ann::FindNearestNeighbors: query == NULL || radius < 0", RESULT_INVALID_INPUT,
         [&](Ann& a) { return a.FindNearestNeighbors(data, -1.0, &idVec, nullptr); }},
        // A failed Init leaves the index empty.
        {true, "Ann Init: Tree init failed", RESULT_NOT_READY,
         [&](Ann& a) { return a.Init(nan, 1, 3); }},
    };
    for (const Case& c : cases) {
        Ann ann;
        if (c.ready) {
            ASSERT_EQ(ann.Init(data, 1, 3), RESULT_OK);
        }
        zoltest::LogCapture log;
        ids[0] = -7;
        EXPECT_EQ(c.call(ann), c.status) << c.line;
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
        EXPECT_EQ(ids[0], -7) << "a failed call wrote results: " << c.line;
        // Query failures keep the index; a failed Init leaves it empty.
        EXPECT_EQ(ann.GetPointCount(), c.ready && c.status != RESULT_NOT_READY ? 1 : 0) << c.line;
    }
}

TEST(Ann, IndexesBuiltSearchedAndReleasedOnSeveralHostThreadsAtOnceGiveSequentialResults) {
    // One scan's index is searched over and over while three threads build, search and
    // release small indexes, keeping many alive; then all again with every tree in the
    // one shared copy of the kd-tree library.
    const std::vector<Vector3> scan =
        zoltest::LoadPlyVertices(zoltest::DataPath("bunny/bun045.ply"));
    ASSERT_FALSE(scan.empty());
    PointCloud scanCloud = zoltest::MakeCloud(scan);
    PointCloudPointList scanList(&scanCloud);
    const int builders = 3, rounds = 6, k = 6;
    std::vector<std::vector<double>> data, queries;
    for (int t = 0; t < builders; ++t) {
        data.push_back(Flatten(zoltest::RandomPoints(1500 + 100 * t, 30 + t)));
        queries.push_back(Flatten(zoltest::RandomPoints(500, 40 + t)));
    }
    auto query = [&](Ann& ann, int t, std::vector<int>* out) {
        std::vector<int> ids(500 * k, -1), inside;
        ann.FindNearestNeighbors(queries[t].data(), 500, k, ids.data(), nullptr);
        ann.FindNearestNeighbors(queries[t].data(), 0.1, &inside, nullptr);
        out->insert(out->end(), ids.begin(), ids.end());
        out->insert(out->end(), inside.begin(), inside.end());
    };
    auto build = [&](int t, std::vector<int>* out) {
        std::vector<Ann> alive(rounds);
        for (Ann& ann : alive) {
            Ann released;
            released.Init(data[t].data(), static_cast<int>(data[t].size() / 3), 3);
            query(released, t, out);
            ann.Init(data[t].data(), static_cast<int>(data[t].size() / 3), 3);
        }
        for (Ann& ann : alive) query(ann, t, out);
    };
    for (int limit : {0, 1}) {
        CopyLimitScope copies(limit);
        zoltest::ThreadCountScope threads(2);
        Ann scanAnn;
        ASSERT_EQ(scanAnn.Init(&scanList, nullptr), RESULT_OK);
        std::vector<int> scanExpected(scan.size() * k);
        scanAnn.FindNearestNeighbors(&scanList, k, scanExpected.data(), nullptr);
        std::vector<std::vector<int>> expected(builders), got(builders);
        for (int t = 0; t < builders; ++t) build(t, &expected[t]);
        int scanMismatches = 0;
        std::vector<std::thread> workers;
        workers.emplace_back([&] {
            std::vector<int> ids(scanExpected.size());
            for (int round = 0; round < 4; ++round) {
                scanAnn.FindNearestNeighbors(&scanList, k, ids.data(), nullptr);
                scanMismatches += ids != scanExpected;
            }
        });
        for (int t = 0; t < builders; ++t) workers.emplace_back(build, t, &got[t]);
        for (std::thread& w : workers) w.join();
        EXPECT_EQ(got, expected) << "copy limit " << limit;
        EXPECT_EQ(scanMismatches, 0) << "copy limit " << limit;
    }
}
