// Registration speed and accuracy on the shared bunny scans: point-to-plane ICP of
// bun045 onto bun000 from a 10-degree perturbation, coarse alignment of bun045 onto
// bun000 from random poses, a synthetic sphere-and-box scene of 100k points, and the
// full table of coarse alignment then ICP on every pair that overlaps by 30 % or more.
// Times are wall clock on the threads given; accuracy is reported as counters.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include <zol/registration/RegistratePointCloud.h>
#include <zol/runtime/ThreadCount.h>

#include "tests/common/PointData.h"
#include "tests/common/ScanData.h"

namespace {

using ZOL::Matrix4x4;
using ZOL::PointCloud;
using ZOL::RegistratePointCloud;
using ZOL::Vector3;

/// Pose error of registering \p from (moved) onto \p ref: coarse alignment unless
/// \p init is given, then ICP; \p truth is the pose that puts \p from on \p ref.
zoltest::PoseError Register(const PointCloud& ref,
                            const PointCloud& from,
                            const Matrix4x4& truth,
                            const Matrix4x4* init,
                            double accuracy) {
    Matrix4x4 start, result;
    if (init) {
        start = *init;
    } else {
        RegistratePointCloud::AlignPointCloud(&ref, &from, &start, accuracy);
    }
    RegistratePointCloud::ICPRegistrate(&ref, nullptr, &from, nullptr, &result, &start, true);
    return zoltest::ComparePoses(result * start, truth, zoltest::Centroid(from));
}

bool IsRight(const zoltest::PoseError& e) { return e.degrees < 0.5 && e.distance < 0.001; }

void BM_IcpBun045OntoBun000From10Degrees(benchmark::State& state) {
    ZOL::SetThreadCount(static_cast<int>(state.range(0)));
    const PointCloud& ref = zoltest::BunnyScan("bun000");
    const PointCloud& from = zoltest::BunnyScan("bun045");
    const Matrix4x4 truth = zoltest::BunnyTruth("bun045", "bun000");
    const Vector3 center = truth.TransformPoint(zoltest::Centroid(from));
    const Matrix4x4 init = zoltest::RigidMotion({0.3, 1.0, -0.4}, 10.0, center) * truth;
    zoltest::PoseError error{};
    for (auto _ : state) {
        error = Register(ref, from, truth, &init, 0.0);
        benchmark::DoNotOptimize(error);
    }
    state.counters["degrees_off"] = error.degrees;
    state.counters["mm_off"] = error.distance * 1000.0;
    ZOL::SetThreadCount(0);
}
BENCHMARK(BM_IcpBun045OntoBun000From10Degrees)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void BM_AlignBun045OntoBun000FromRandomPoses(benchmark::State& state) {
    ZOL::SetThreadCount(static_cast<int>(state.range(0)));
    const double accuracy = state.range(1) / 100.0;
    const PointCloud& ref = zoltest::BunnyScan("bun000");
    const PointCloud& from = zoltest::BunnyScan("bun045");
    const Matrix4x4 truth = zoltest::BunnyTruth("bun045", "bun000");
    const int poseCount = 5;
    std::vector<PointCloud> poses;
    std::vector<Matrix4x4> truths;
    for (int p = 0; p < poseCount; ++p) {
        const Matrix4x4 motion = zoltest::RandomMotion(50 + p, 180.0, zoltest::Centroid(from), 0.1);
        poses.push_back(zoltest::Moved(from, motion));
        truths.push_back(truth * motion.AffineInverse());
    }
    int next = 0;
    for (auto _ : state) {
        Matrix4x4 result;
        RegistratePointCloud::AlignPointCloud(&ref, &poses[next], &result, accuracy);
        benchmark::DoNotOptimize(result.mpValues);
        next = (next + 1) % poseCount;
    }
    int right = 0;
    for (int p = 0; p < poseCount; ++p)
        right += IsRight(Register(ref, poses[p], truths[p], nullptr, accuracy));
    state.counters["poses_right_of_5"] = right;
    ZOL::SetThreadCount(0);
}
BENCHMARK(BM_AlignBun045OntoBun000FromRandomPoses)
    ->Args({1, 50})
    ->Args({2, 0})
    ->Args({2, 50})
    ->Args({2, 100})
    ->Unit(benchmark::kMillisecond);

/// A sphere (radius 5 cm) and a box (8 x 6 x 4 cm, off the line through the sphere's
/// centre so that the scene has no symmetry), sampled uniformly on their surfaces with
/// exact outward normals.
PointCloud SphereAndBox(int count, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::normal_distribution<double> normal;
    const Vector3 boxCenter(0.12, 0.03, 0.01), half(0.04, 0.03, 0.02);
    const double faceArea[3] = {half.y * half.z, half.x * half.z, half.x * half.y};
    const double sphereArea = 4.0 * M_PI * 0.05 * 0.05;
    const double boxArea = 8.0 * (faceArea[0] + faceArea[1] + faceArea[2]);
    std::vector<Vector3> points, normals;
    for (int i = 0; i < count; ++i) {
        if (unit(rng) * (sphereArea + boxArea) < sphereArea) {
            Vector3 n(normal(rng), normal(rng), normal(rng));
            n.Normalise();
            points.push_back(n * 0.05);
            normals.push_back(n);
            continue;
        }
        // A face in proportion to its area, then a point on it.
        double pick = unit(rng) * (faceArea[0] + faceArea[1] + faceArea[2]);
        int axis = 0;
        while (axis < 2 && pick > faceArea[axis]) pick -= faceArea[axis++];
        const double side = unit(rng) < 0.5 ? -1.0 : 1.0;
        Vector3 p((2 * unit(rng) - 1) * half.x, (2 * unit(rng) - 1) * half.y,
                  (2 * unit(rng) - 1) * half.z);
        Vector3 n;
        p[axis] = side * half[axis];
        n[axis] = side;
        points.push_back(boxCenter + p);
        normals.push_back(n);
    }
    return zoltest::MakeCloud(points, &normals);
}

void BM_SphereAndBox100kFromRandomPoses(benchmark::State& state) {
    const PointCloud ref = SphereAndBox(100000, 1);
    const PointCloud sampled = SphereAndBox(100000, 2);
    const int poseCount = 8;
    int right = 0;
    for (auto _ : state) {
        right = 0;
        for (int p = 0; p < poseCount; ++p) {
            const Matrix4x4 motion = zoltest::RandomMotion(70 + p, 180.0, {0.05, 0, 0}, 0.1);
            const PointCloud from = zoltest::Moved(sampled, motion);
            right += IsRight(Register(ref, from, motion.AffineInverse(), nullptr, 0.5));
        }
    }
    state.counters["poses_right_of_8"] = right;
}
BENCHMARK(BM_SphereAndBox100kFromRandomPoses)->Iterations(1)->Unit(benchmark::kSecond);

/// Every ordered pair of the bunny scans that overlaps by 30 % or more, 10 random starts
/// each: coarse alignment at the accuracy given (percent), then ICP. Prints one line per
/// pair.
void BM_BunnyAccuracyTable(benchmark::State& state) {
    const double accuracy = state.range(0) / 100.0;
    const char* pairs[][2] = {{"bun000", "bun045"}, {"bun000", "bun090"}, {"bun000", "bun315"},
                              {"bun000", "top3"},   {"bun045", "bun000"}, {"bun045", "bun090"},
                              {"bun045", "bun315"}, {"bun045", "top3"},   {"bun090", "bun000"},
                              {"bun090", "bun045"}, {"bun090", "top3"},   {"bun315", "bun000"},
                              {"bun315", "bun045"}, {"bun315", "top3"},   {"top3", "bun000"},
                              {"top3", "bun045"},   {"top3", "bun090"},   {"top3", "bun315"}};
    int right = 0, worstPair = 10;
    for (auto _ : state) {
        right = 0;
        worstPair = 10;
        for (const auto& pair : pairs) {
            const PointCloud& ref = zoltest::BunnyScan(pair[1]);
            const PointCloud& from0 = zoltest::BunnyScan(pair[0]);
            int pairRight = 0;
            for (int start = 0; start < 10; ++start) {
                const Matrix4x4 motion =
                    zoltest::RandomMotion(1000 + start, 180.0, zoltest::Centroid(from0), 0.1);
                const PointCloud from = zoltest::Moved(from0, motion);
                const Matrix4x4 truth =
                    zoltest::BunnyTruth(pair[0], pair[1]) * motion.AffineInverse();
                pairRight += IsRight(Register(ref, from, truth, nullptr, accuracy));
            }
            std::printf("%s onto %s: %d of 10\n", pair[0], pair[1], pairRight);
            right += pairRight;
            worstPair = std::min(worstPair, pairRight);
        }
    }
    state.counters["right_of_180"] = right;
    state.counters["worst_pair_of_10"] = worstPair;
}
BENCHMARK(BM_BunnyAccuracyTable)
    ->Arg(0)
    ->Arg(50)
    ->Arg(100)
    ->Iterations(1)
    ->Unit(benchmark::kSecond);

}  // namespace

BENCHMARK_MAIN();
