// The two passes of a fusion update: one maps every point to its cell and checks it, so
// that a refused call changes nothing, the other folds the points into their cells.
#pragma once

#include <cstddef>
#include <vector>

#include <zol/core/Vector3.h>
#include <zol/pointcloud/FuseTreeInternal.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

/// One update's points as flat x, y, z triples, and how they map into the grid. The
/// transform is applied on the fly: both passes read the source arrays, so a large cloud
/// needs no per-point copy of moved coordinates.
struct FuseSource {
    const double* coords;
    const double* normals;  ///< null unless normals are fused
    const double* attributes;
    bool moved;    ///< whether a transform applies
    double m[12];  ///< the top three rows of the transform
    Vector3 origin;
    double h[3];

    Vector3 Point(std::size_t i) const {
        const double* p = coords + 3 * i;
        if (!moved) return Vector3(p[0], p[1], p[2]);
        return Vector3(m[0] * p[0] + m[1] * p[1] + m[2] * p[2] + m[3],
                       m[4] * p[0] + m[5] * p[1] + m[6] * p[2] + m[7],
                       m[8] * p[0] + m[9] * p[1] + m[10] * p[2] + m[11]);
    }
    Vector3 Normal(std::size_t i) const {
        const double* v = normals + 3 * i;
        if (!moved) return Vector3(v[0], v[1], v[2]);
        return Vector3(m[0] * v[0] + m[1] * v[1] + m[2] * v[2],
                       m[4] * v[0] + m[5] * v[1] + m[6] * v[2],
                       m[8] * v[0] + m[9] * v[1] + m[10] * v[2]);
    }
};

/// Below this many points an update runs on the calling thread: workers would cost more
/// than they save.
constexpr int kFuseThreadedMinimum = 1 << 15;

/// The workers of an update of \p pointCount points.
inline int FuseTaskCount(int pointCount) {
    return pointCount < kFuseThreadedMinimum ? 1 : ParallelTaskCount(pointCount);
}

/// Runs body(t, n) over \p taskCount slices of an update: inline for one, else on the
/// workers.
template <typename Body>
int RunFuseSlices(int taskCount, const Body& body) {
    if (taskCount == 1) {
        body(0, 1);
        return RESULT_OK;
    }
    static const ParallelLines lines = {
        "FusePointCloud::UpdateFuseFunction",
        "FusePointCloud::UpdateFuseFunction: ThreadPool InsertTask FuseCellsMT Failed"};
    return ParallelFor(taskCount, body, lines);
}

/// What the mapping pass found.
struct FuseMapResult {
    int status = 0;         ///< RESULT_OK, or the workers' failure
    int badCoord = -1;      ///< the first point whose moved coordinate is not finite
    int badNormal = -1;     ///< the first point whose fused normal is not finite
    long long dropped = 0;  ///< points that the range rule dropped
    /// Per shard, the runs of the update: a new cell starts such a run, so this bounds
    /// the cells each shard may gain.
    std::vector<std::size_t> shardRuns;
    /// Per slice of the points, in point order: where its runs start in tree.runs, and
    /// how many there are.
    std::vector<int> sliceFirst;
    std::vector<int> sliceRuns;
};

/// Pass 1: checks every point and writes the runs of points in one cell into tree.runs,
/// on the workers for large updates. No cell changes.
FuseMapResult MapFusePoints(const FuseSource& src, int pointCount, FuseTree& tree);

/// Pass 2: folds every mapped point into its cell; each worker owns a run of shards and
/// visits their runs in point order, so every cell sees the same sequence of points for
/// any thread count. \return RESULT_OK or the workers' failure.
int FoldFusePoints(const FuseSource& src, int pointCount, const FuseMapResult& map, FuseTree& tree);

/// Logs one line per point of the last mapping that the range rule dropped.
void LogDroppedPoints(const FuseMapResult& map);

}  // namespace ZOL
