// SamplePointCloud: farthest-point order against exhaustive search, the partitioned
// scheme on clusters and coincident points, the high-quality position result, grid
// order against a bucket-of-maps oracle, feature sampling, log lines.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/pointcloud/SamplePointCloud.h>
#include <zol/runtime/Constants.h>

#include "tests/common/PointData.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

// Farthest-point order by exhaustive search: |seed| mod n first, then always the point
// whose nearest sample is farthest, the lowest index on a tie.
std::vector<int> BruteForceFarthest(const std::vector<Vector3>& points, int count, long long seed) {
    const int n = static_cast<int>(points.size());
    std::vector<int> order{static_cast<int>(std::llabs(seed) % n)};
    std::vector<bool> taken(n, false);
    taken[order[0]] = true;
    while (static_cast<int>(order.size()) < count) {
        int best = -1;
        double bestDistance = -1.0;
        for (int c = 0; c < n; ++c) {
            if (taken[c]) continue;
            double nearest = 1.7e308;
            for (int s : order)
                nearest = std::min(nearest, (points[c] - points[s]).LengthSquared());
            if (nearest > bestDistance) {
                bestDistance = nearest;
                best = c;
            }
        }
        taken[best] = true;
        order.push_back(best);
    }
    return order;
}

// The grid rule written out with one ordered map of cells per hash bucket.
std::vector<int> GridOracle(const std::vector<Vector3>& points, double interval) {
    Vector3 m = points[0];
    for (const Vector3& p : points) {
        m = Vector3(std::min(m.x, p.x), std::min(m.y, p.y), std::min(m.z, p.z));
    }
    m = m - Vector3(1e-15, 1e-15, 1e-15);
    std::map<uint32_t, std::map<std::array<long long, 3>, std::pair<int, double>>> buckets;
    for (int i = 0; i < static_cast<int>(points.size()); ++i) {
        const Vector3 u = (points[i] - m) / interval;
        const std::array<long long, 3> key{static_cast<long long>(u.x), static_cast<long long>(u.y),
                                           static_cast<long long>(u.z)};
        const double score = (u - Vector3(key[0], key[1], key[2])).LengthSquared();
        const uint32_t bucket =
            static_cast<uint32_t>((key[0] * 73856093LL) ^ (key[1] * 19349669LL) ^
                                  (key[2] * 83492791LL)) %
            2560000u;
        auto [cell, added] = buckets[bucket].emplace(key, std::make_pair(i, score));
        if (!added && cell->second.second > score) cell->second = {i, score};
    }
    std::vector<int> ids;
    for (const auto& bucket : buckets) {
        for (const auto& cell : bucket.second) ids.push_back(cell.second.first);
    }
    return ids;
}

// The points of \p ids, in that order.
std::vector<Vector3> Subset(const std::vector<Vector3>& points, const std::vector<int>& ids) {
    std::vector<Vector3> out;
    for (int id : ids) out.push_back(points[id]);
    return out;
}

std::vector<int> Sample(const IPointCloud& cloud, int count, int seed, SampleQuality quality) {
    std::vector<int> ids(count, -1);
    EXPECT_EQ(SamplePointCloud::UniformSample(&cloud, count, ids.data(), seed, quality), RESULT_OK);
    return ids;
}

}  // namespace

TEST(SamplePointCloud, PlainSchemeFollowsExhaustiveFarthestPointOrder) {
    // Equal gaps make most steps ties, which the lowest index must win.
    std::vector<Vector3> line, grid, plane;
    for (int i = 0; i < 7; ++i) line.emplace_back(i, 0, 0);
    for (int i = 0; i < 9; ++i) grid.emplace_back(i % 3, i / 3, 0);
    for (int i = 0; i < 2000; ++i) plane.emplace_back(i % 50, i / 50, 0);
    const std::vector<Vector3> cloud = zoltest::RandomPoints(300, 2);
    const std::vector<Vector3> large = zoltest::RandomPoints(3000, 2);
    struct Case {
        const std::vector<Vector3>* points;
        int count;
        int seed;
        SampleQuality quality;
    };
    const Case cases[] = {
        {&line, 7, 3, SAMPLE_QUALITY_LOW},     {&grid, 9, 4, SAMPLE_QUALITY_LOW},
        {&cloud, 150, -7, SAMPLE_QUALITY_LOW}, {&cloud, 199, 1003, SAMPLE_QUALITY_LOW},
        {&cloud, 300, 0, SAMPLE_QUALITY_HIGH}, {&cloud, 1, -2147483647 - 1, SAMPLE_QUALITY_LOW},
        {&plane, 120, 77, SAMPLE_QUALITY_LOW}, {&large, 150, 5, SAMPLE_QUALITY_LOW},
    };
    for (const Case& c : cases) {
        PointCloud pc = zoltest::MakeCloud(*c.points);
        const PointCloudPointList list(&pc);
        std::vector<int> ids(c.count);
        ASSERT_EQ(SamplePointCloud::_UniformSamplePointList(&list, c.count, ids.data(), c.seed,
                                                            c.quality),
                  RESULT_OK);
        EXPECT_EQ(ids, BruteForceFarthest(*c.points, c.count, c.seed)) << c.count << " " << c.seed;
    }
}

TEST(SamplePointCloud, PartitionedSchemeSamplesEachClusterInProportion) {
    // 1000 candidates, 200 samples: two cells around the seeds grown from candidate 0.
    // The cluster of 750 gets 750/1000 * 200 + 1 = 151, the other the remaining 49, each
    // by plain farthest-point sampling inside the cluster; members keep candidate order.
    const std::vector<Vector3> a = zoltest::RandomPoints(750, 3);
    std::vector<Vector3> b = zoltest::RandomPoints(250, 4);
    std::vector<Vector3> points;
    std::vector<int> inA, inB;
    for (int i = 0; i < 1000; ++i) {
        const bool takeA = i % 4 != 3;
        (takeA ? inA : inB).push_back(i);
        points.push_back(takeA ? a[inA.size() - 1] : b[inB.size() - 1] + Vector3(100, 0, 0));
    }
    PointCloud cloud = zoltest::MakeCloud(points);
    const PointCloudPointList list(&cloud);
    std::vector<int> ids(200);
    ASSERT_EQ(
        SamplePointCloud::_UniformSamplePointList(&list, 200, ids.data(), 5, SAMPLE_QUALITY_LOW),
        RESULT_OK);
    std::vector<int> expected;
    for (int p : BruteForceFarthest(Subset(points, inA), 151, 5)) expected.push_back(inA[p]);
    for (int p : BruteForceFarthest(Subset(points, inB), 49, 5)) expected.push_back(inB[p]);
    EXPECT_EQ(ids, expected);
}

TEST(SamplePointCloud, CoincidentPointsFallBackToRoundRobinCells) {
    // Two cells: even and odd candidates; 101 and 99 samples; within a cell the seed
    // comes first and then, all distances being 0, the lowest members.
    PointCloud cloud = zoltest::MakeCloud(std::vector<Vector3>(1000, Vector3(1.5, -2, 0.25)));
    std::vector<int> expected{6};
    for (int i = 0; static_cast<int>(expected.size()) < 101; i += 2)
        if (i != 6) expected.push_back(i);
    expected.push_back(7);
    for (int i = 1; static_cast<int>(expected.size()) < 200; i += 2)
        if (i != 7) expected.push_back(i);
    EXPECT_EQ(Sample(cloud, 200, 3, SAMPLE_QUALITY_LOW), expected);
}

TEST(SamplePointCloud, HighQualityReturnsPositionsInTheFirstStageSubset) {
    // 100 samples + 20 extra < 1000 points: the first stage takes 120 farthest points,
    // the result is the farthest-point order among those 120, as positions 0..119.
    const std::vector<Vector3> points = zoltest::RandomPoints(1000, 6);
    PointCloud cloud = zoltest::MakeCloud(points);
    const std::vector<int> firstStage = BruteForceFarthest(points, 120, 9);
    EXPECT_EQ(Sample(cloud, 100, 9, SAMPLE_QUALITY_HIGH),
              BruteForceFarthest(Subset(points, firstStage), 100, 9));
}

TEST(SamplePointCloud, GridSampleOrderMatchesBucketsOfOrderedCells) {
    std::vector<Vector3> small = zoltest::RandomPoints(400, 7, 3.0);
    small.push_back(small[17]);  // same cell, same score: the lower index stays
    small.push_back(small[0] * 0.999);
    const std::vector<Vector3> scan =
        zoltest::LoadPlyVertices(zoltest::DataPath("bunny/bun000.ply"));
    const std::vector<Vector3> many = zoltest::RandomPoints(150000, 8);  // split over workers
    // The small set at 1e-6 (a box of 6): cell indices beyond 21 bits an axis; an infinite
    // interval makes one cell.
    const double kInfinite = std::numeric_limits<double>::infinity();
    const std::pair<const std::vector<Vector3>*, double> cases[] = {
        {&small, 0.5},  {&small, 7.0},   {&small, 1e-6}, {&small, kInfinite},
        {&scan, 0.002}, {&scan, 0.0005}, {&many, 0.02}};
    for (const auto& [points, interval] : cases) {
        PointCloud cloud = zoltest::MakeCloud(*points);
        const std::vector<int> expected = GridOracle(*points, interval);
        std::vector<int> ids{42};
        ASSERT_EQ(SamplePointCloud::GridSample(&cloud, interval, ids), RESULT_OK);
        EXPECT_EQ(ids, expected) << interval;
    }
}

TEST(SamplePointCloud, FlatnessMatchesNeighbourNormalsAndFeaturesComeFirst) {
    // An L-shaped fold of two jittered grids: flat away from the fold, not near it.
    std::vector<Vector3> points, normals;
    const std::vector<Vector3> jitter = zoltest::RandomPoints(400, 8, 0.01);
    for (int i = 0; i < 400; ++i) {
        const int u = i % 20, v = (i / 20) % 10;
        const bool floor = i < 200;
        points.push_back((floor ? Vector3(u + 1, v, 0) : Vector3(0, v, u)) + jitter[i]);
        normals.push_back(floor ? Vector3(0, 0, i % 2 ? 1 : -1) : Vector3(1, 0, 0));
    }
    PointCloud cloud = zoltest::MakeCloud(points, &normals);
    const PointCloudPointList list(&cloud);
    std::vector<double> flatness;
    ASSERT_EQ(CalculateFlatness(&list, 9, &flatness), RESULT_OK);
    std::vector<int> features;
    for (int i = 0; i < 400; ++i) {
        double sum = 0;
        for (const auto& nb : zoltest::BruteForceNearest(points, points[i], 9))
            sum += std::fabs(normals[i] * normals[nb.id]);
        EXPECT_NEAR(flatness[i], 1.0 - sum / 9, 1e-12) << i;
        if (flatness[i] > 0.01) features.push_back(i);
    }
    ASSERT_GT(features.size(), 20u);
    ASSERT_LT(features.size(), 100u);

    // 40 samples at uniform weight 0.5: 20 feature samples first, then 20 others.
    std::vector<int> ids(40);
    ASSERT_EQ(
        SamplePointCloud::GeometrySample(&cloud, 40, ids.data(), 0.5, 9, 2, SAMPLE_QUALITY_LOW),
        RESULT_OK);
    EXPECT_EQ(std::set<int>(ids.begin(), ids.end()).size(), 40u);
    for (int i = 0; i < 20; ++i) EXPECT_GT(flatness[ids[i]], 0.01) << i;
    // More feature samples wanted than features: every feature, then the rest.
    const int n = static_cast<int>(features.size()) + 5;
    ids.assign(n, -1);
    ASSERT_EQ(
        SamplePointCloud::GeometrySample(&cloud, n, ids.data(), 0.0, 9, 2, SAMPLE_QUALITY_LOW),
        RESULT_OK);
    EXPECT_EQ(std::set<int>(ids.begin(), ids.end() - 5),
              std::set<int>(features.begin(), features.end()));
    // Uniform weight 1 is plain uniform sampling.
    ids.assign(30, -1);
    ASSERT_EQ(
        SamplePointCloud::GeometrySample(&cloud, 30, ids.data(), 1.0, 9, 2, SAMPLE_QUALITY_LOW),
        RESULT_OK);
    EXPECT_EQ(ids, BruteForceFarthest(points, 30, 2));
}

TEST(SamplePointCloud, EveryFailureLogsItsLinesAndReturnsItsStatus) {
    PointCloud cloud = zoltest::MakeCloud(zoltest::RandomPoints(100, 9));
    const std::vector<Vector3> up(10, Vector3(0, 0, 1));
    PointCloud oriented = zoltest::MakeCloud(zoltest::RandomPoints(10, 9), &up);
    PointCloud wide = zoltest::MakeCloud({Vector3(0, 0, 0), Vector3(1e4, 0, 0)});
    PointCloud bad = zoltest::MakeCloud(zoltest::RandomPoints(10, 9));
    bad.SetPointCoord(3, Vector3(0, std::nan(""), 0));
    PointCloud empty, emptyOriented(true, false, false);
    const PointCloudPointList list(&cloud), emptyList(&empty);
    const SampleQuality low = SAMPLE_QUALITY_LOW, high = SAMPLE_QUALITY_HIGH;
    const SampleQuality q2 = static_cast<SampleQuality>(2), qm = static_cast<SampleQuality>(-1);
    const double nan = std::nan("");
    int ids[200];
    std::vector<int> out;
    std::vector<double> values;
    const std::string uniform = "SamplePointCloud::UniformSample",
                      list_ = "SamplePointCloud::_UniformSamplePointList",
                      geometry = "SamplePointCloud::_GeometrySamplePointList";
    const int invalid = RESULT_INVALID_INPUT, fail = RESULT_FAIL;
    using S = SamplePointCloud;
    struct Case {
        int status;
        std::string lines;  // one after another, each ended by a line feed
        std::function<int()> call;
    };
    const Case cases[] = {
        {invalid, uniform + " pointCount < 1 || sampleCount > pointCount \n",
         [&] { return S::UniformSample(&cloud, 101, ids, 0, low); }},
        {invalid, uniform + ": invalid quality parameter: 2\n",
         [&] { return S::UniformSample(&cloud, 5, ids, 0, q2); }},
        {invalid, uniform + ": sampleCount < 1: 0\n",
         [&] { return S::UniformSample(&cloud, 0, ids, 0, low); }},
        {invalid, list_ + " sampleIndex is NULL\n" + uniform + " failed\n",
         [&] { return S::UniformSample(&cloud, 5, nullptr, 0, low); }},
        {invalid, uniform + " sampleIndex is NULL\n",
         [&] { return S::UniformSample(&cloud, 10, nullptr, 0, high); }},
        {invalid,
         "UniformSampleSubpart: point 3 has a non-finite coordinate\n" + list_ + " failed\n" +
             uniform + " failed\n",
         [&] { return S::UniformSample(&bad, 2, ids, 0, low); }},
        {invalid, list_ + " input pointList is NULL\n",
         [&] { return S::_UniformSamplePointList(nullptr, 1, ids, 0, low); }},
        {invalid, list_ + ": invalid quality parameter: -1\n",
         [&] { return S::_UniformSamplePointList(&list, 1, ids, 0, qm); }},
        {fail, list_ + " invalid pointCount: 0\n",
         [&] { return S::_UniformSamplePointList(&emptyList, 1, ids, 0, low); }},
        {invalid, list_ + " sampleIndex is NULL\n",
         [&] { return S::_UniformSamplePointList(&list, 1, nullptr, 0, low); }},
        {invalid,
         "UniformSampleSubpart: sampleCount < 1 || sampleCount > candidateCount: 101 100\n" +
             list_ + " failed\n",
         [&] { return S::_UniformSamplePointList(&list, 101, ids, 0, low); }},
        {invalid, "UniformSampleSubpart: pointList == NULL || candidateIndex is empty\n",
         [&] { return S::UniformSampleSubpart(&list, {}, 1, out, 0, low); }},
        {invalid, "UniformSampleSubpart: candidate out of range: 100\n",
         [&] {
             return S::UniformSampleSubpart(&list, {3, 100}, 1, out, 0, low);
         }},
        {invalid,
         "SamplePointCloud::GeometrySample: pointCloud == NULL || pointCloud->HasNormal() == "
         "false\n",
         [&] { return S::GeometrySample(&cloud, 5, ids, 0.5, 9, 0, low); }},
        {fail, geometry + " invalid pointCount: 0\n",
         [&] { return S::GeometrySample(&emptyOriented, 5, ids, 0.5, 9, 0, low); }},
        {invalid, geometry + " sampleIndex is NULL\n",
         [&] { return S::GeometrySample(&oriented, 5, nullptr, 0.5, 9, 0, low); }},
        {invalid, geometry + " uniformWeight < 0 || uniformWeight > 1\n",
         [&] { return S::GeometrySample(&oriented, 5, ids, nan, 9, 0, low); }},
        {invalid,
         "CalculateFlatness: neighborCount < 1: 0\n" + geometry + " CalculateFlatness Failed\n",
         [&] { return S::GeometrySample(&oriented, 5, ids, 0.5, 0, 0, low); }},
        {invalid, geometry + " input pointList is NULL\n",
         [&] { return S::_GeometrySamplePointList(nullptr, 5, ids, 0.5, 9, 0, low); }},
        {invalid, "CalculateFlatness: invalid input\n",
         [&] { return CalculateFlatness(&list, 9, nullptr); }},
        {fail, "CalculateFlatness invalid pointCount: 0\n",
         [&] { return CalculateFlatness(&emptyList, 9, &values); }},
        {invalid, "SamplePointCloud::GridSample: pointCloud == NULL\n",
         [&] { return S::GridSample(nullptr, 0.1, out); }},
        {invalid, "SamplePointCloud::GridSample: interval < REAL_TOL\n",
         [&] { return S::GridSample(&cloud, 1e-16, out); }},
        {invalid, "SamplePointCloud::GridSample: interval is NaN\n",
         [&] { return S::GridSample(&cloud, nan, out); }},
        {RESULT_OK, "SamplePointCloud::_GridSample: pointCount is 0\n",
         [&] { return S::GridSample(&empty, 0.1, out); }},
        {invalid, "SamplePointCloud::_GridSample: point 3 has a non-finite coordinate\n",
         [&] { return S::GridSample(&bad, 0.1, out); }},
        {invalid,
         "SamplePointCloud::_GridSample: interval too small for the extent of the points\n",
         [&] { return S::GridSample(&wide, 1e-15, out); }},
        {invalid, "SamplePointCloud::_GridSample input pointList is NULL\n",
         [&] { return S::_GridSample(nullptr, 0.1, out); }},
        {invalid, "SamplePointCloud::_GridSample: interval < REAL_TOL || interval is NaN\n",
         [&] { return S::_GridSample(&list, -1.0, out); }},
    };
    for (const Case& c : cases) {
        zoltest::LogCapture log;
        EXPECT_EQ(c.call(), c.status) << c.lines;
        std::string lines;
        for (const std::string& line : log.Lines()) lines += line + "\n";
        EXPECT_EQ(lines, c.lines);
    }
}
