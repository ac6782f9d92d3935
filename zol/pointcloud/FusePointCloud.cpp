// Fusion of point clouds into grid cells: one pass maps and checks every point (nothing
// changes when a point is refused), a second pass folds the points into the cells, each
// worker owning a fixed set of hash shards and visiting points in index order, so every
// cell sees its points in the same order for any thread count.
#include <zol/pointcloud/FusePointCloud.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <typeinfo>
#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/IPointList.h>
#include <zol/core/Matrix4x4.h>
#include <zol/core/PointCloud.h>
#include <zol/pointcloud/FuseTreeInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

namespace {

// Below this many points the workers cost more than they save.
const int kThreadedMinimum = 1 << 15;
// The first cell index that no longer fits an int.
const double kIndexLimit = 2147483648.0;

const ParallelLines kFuseLines = {
    "FusePointCloud::UpdateFuseFunction",
    "FusePointCloud::UpdateFuseFunction: ThreadPool InsertTask FuseCellsMT Failed"};

bool IsFinite(double x, double y, double z) {
    return std::isfinite(x) && std::isfinite(y) && std::isfinite(z);
}

// Runs body(t, n) over n slices: inline for small inputs, else on the workers.
template <typename Body>
int RunSlices(int taskCount, const Body& body) {
    if (taskCount == 1) {
        body(0, 1);
        return RESULT_OK;
    }
    return ParallelFor(taskCount, body, kFuseLines);
}

// The first refused point of one slice (-1 for none).
struct SliceCheck {
    int badCoord = -1;
    int badNormal = -1;
};

// One update's points as flat x, y, z triples, and how they map into the grid. The
// transform is applied on the fly: both passes read the source arrays, so a large cloud
// needs no per-point working memory.
struct FuseSource {
    const double* coords;
    const double* normals;  ///< null unless normals are fused
    const double* attributes;
    bool moved;    ///< whether a transform applies
    double m[12];  ///< the top three rows of the transform
    Vector3 origin;
    double h[3];

    Vector3 Point(int i) const {
        const double* p = coords + 3 * static_cast<std::size_t>(i);
        if (!moved) return Vector3(p[0], p[1], p[2]);
        return Vector3(m[0] * p[0] + m[1] * p[1] + m[2] * p[2] + m[3],
                       m[4] * p[0] + m[5] * p[1] + m[6] * p[2] + m[7],
                       m[8] * p[0] + m[9] * p[1] + m[10] * p[2] + m[11]);
    }
    Vector3 Normal(int i) const {
        const double* v = normals + 3 * static_cast<std::size_t>(i);
        if (!moved) return Vector3(v[0], v[1], v[2]);
        return Vector3(m[0] * v[0] + m[1] * v[1] + m[2] * v[2],
                       m[4] * v[0] + m[5] * v[1] + m[6] * v[2],
                       m[8] * v[0] + m[9] * v[1] + m[10] * v[2]);
    }
    // The cell of \p p; false below bboxMin or beyond the int range (one-sided rule).
    bool Cell(const Vector3& p, FuseCellKey& key) const {
        double q[3];
        for (int a = 0; a < 3; ++a) {
            q[a] = (p[a] - origin[a]) / h[a];
            if (!(q[a] >= 0.0 && q[a] < kIndexLimit)) return false;
        }
        key = FuseCellKey{static_cast<int>(q[0]), static_cast<int>(q[1]), static_cast<int>(q[2])};
        return true;
    }
};

// Pass 1 over points [first, last): every moved point, and normal when fused, is finite.
void CheckPoints(const FuseSource& src, int first, int last, SliceCheck& check) {
    for (int i = first; i < last; ++i) {
        const Vector3 p = src.Point(i);
        if (!IsFinite(p.x, p.y, p.z)) {
            check.badCoord = i;
            return;
        }
        if (src.normals) {
            const Vector3 v = src.Normal(i);
            if (!IsFinite(v.x, v.y, v.z)) {
                check.badNormal = i;
                return;
            }
        }
    }
}

// Pass 2: folds every point whose cell lies in shards [shardFirst, shardLast) into its
// cell, in point order.
void FoldPoints(
    const FuseSource& src, int pointCount, FuseTree& tree, int shardFirst, int shardLast) {
    const int m = tree.AttributeCount();
    const bool fuseNormal = src.normals != nullptr;
    // Hash lookups are cache misses, so cells are located kAhead points ahead and their
    // slots asked for, and half-way there the cell records; a ring holds the lookups.
    const int kAhead = 16;
    struct Located {
        FuseCellKey key;
        std::uint64_t hash;
        int shard;  ///< -1 for a point outside the range or another worker's shard
    } ring[kAhead];
    auto locate = [&](int i, Located& at) {
        at.shard = -1;
        if (!src.Cell(src.Point(i), at.key)) return;
        at.hash = FuseTree::Hash(at.key);
        const int s = FuseTree::ShardOf(at.hash);
        if (s < shardFirst || s >= shardLast) return;
        at.shard = s;
        tree.shards[s].PrefetchSlot(at.hash);
    };
    for (int i = 0; i < kAhead && i < pointCount; ++i) locate(i, ring[i]);
    FuseCellKey lastKey{-1, -1, -1};
    int lastShard = -1, lastCell = -1;
    for (int i = 0; i < pointCount; ++i) {
        const Located here = ring[i % kAhead];
        if (i + kAhead < pointCount) locate(i + kAhead, ring[i % kAhead]);
        const Located& half = ring[(i + kAhead / 2) % kAhead];
        if (i + kAhead / 2 < pointCount && half.shard >= 0) {
            tree.shards[half.shard].PrefetchCell(half.hash);
        }
        if (here.shard < 0) continue;
        FuseShard& shard = tree.shards[here.shard];
        bool inserted = false;
        if (here.shard != lastShard || !(here.key == lastKey)) {
            lastCell = shard.FindOrInsert(here.key, here.hash, inserted);
            lastKey = here.key, lastShard = here.shard;
        }
        FuseCell& cell = *shard.cells.At(lastCell);
        const Vector3 p = src.Point(i);
        const Vector3 nu = fuseNormal ? src.Normal(i) : Vector3(0.0, 0.0, 0.0);
        const double* a = m > 0 ? src.attributes + static_cast<std::size_t>(i) * m : nullptr;
        double* values = m > 0 ? shard.attributes.At(lastCell) : nullptr;
        if (inserted) {
            cell.position = p;
            cell.normal = nu;
            cell.weight = 1;
            for (int k = 0; k < m; ++k) values[k] = a[k];
            continue;
        }
        const double w = static_cast<double>(cell.weight);
        const double W = w + 1.0;
        cell.position = (cell.position * w + p) / W;
        for (int k = 0; k < m; ++k) values[k] = (w * values[k] + a[k]) / W;
        ++cell.weight;
        if (fuseNormal) {
            // Weighted by the weight after the increment; an opposite normal is flipped
            // before it is added.
            cell.normal = cell.normal * nu < 0.0 ? cell.normal * W - nu : cell.normal * W + nu;
            cell.normal.Normalise();
        }
    }
}

// The flat coordinates of a list: a plain PointCloud's own array, else a copy kept in
// \p copy. \p normals picks the normals instead.
const double* FlatArray(const IPointList* pointList, bool normals, std::vector<double>& copy) {
    static_assert(sizeof(Vector3) == 3 * sizeof(double), "Vector3 is three packed doubles");
    const auto* cloudList = dynamic_cast<const PointCloudPointList*>(pointList);
    const IPointCloud* cloud = cloudList ? cloudList->GetPointCloud() : nullptr;
    // A class derived from PointCloud may answer the per-point reads differently.
    if (cloud && typeid(*cloud) == typeid(PointCloud)) {
        const PointCloud* plain = static_cast<const PointCloud*>(cloud);
        const Vector3* data = normals ? plain->GetPointNormalData() : plain->GetPointCoordData();
        if (data) return &data->x;
    }
    if (normals) {
        CopyPointListNormals(pointList, &copy);
    } else {
        CopyPointListCoords(pointList, &copy);
    }
    return copy.data();
}

}  // namespace

FusePointCloud::FusePointCloud()
    : mpFuseTree(nullptr),
      mResolutionX(0),
      mResolutionY(0),
      mResolutionZ(0),
      mBBoxMin(0.0, 0.0, 0.0),
      mBBoxMax(0.0, 0.0, 0.0),
      mFuseNormal(false) {}

FusePointCloud::FusePointCloud(int resolutionX,
                               int resolutionY,
                               int resolutionZ,
                               const Vector3& bboxMin,
                               const Vector3& bboxMax,
                               bool fuseNormal)
    : FusePointCloud() {
    Init(resolutionX, resolutionY, resolutionZ, bboxMin, bboxMax, fuseNormal);
}

FusePointCloud::~FusePointCloud() { Clear(); }

int FusePointCloud::Init(int resolutionX,
                         int resolutionY,
                         int resolutionZ,
                         const Vector3& bboxMin,
                         const Vector3& bboxMax,
                         bool fuseNormal) {
    SetProgress(0.0);
    if (resolutionX < 1 || resolutionY < 1 || resolutionZ < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FusePointCloud::Init: resolutionX < 1 || resolutionY < 1 || "
                          "resolutionZ < 1");
    }
    // Written as "not below" so that NaN and infinite bounds are refused too.
    bool goodBox = true;
    for (int a = 0; a < 3; ++a) {
        goodBox = goodBox && std::isfinite(bboxMin[a]) && std::isfinite(bboxMax[a]) &&
                  bboxMin[a] < bboxMax[a];
    }
    if (!goodBox)
        return LogFailure(RESULT_INVALID_INPUT, "FusePointCloud::Init: bboxMin >= bboxMax");
    Clear();
    mpFuseTree = new FuseTree;
    mResolutionX = resolutionX;
    mResolutionY = resolutionY;
    mResolutionZ = resolutionZ;
    mBBoxMin = bboxMin;
    mBBoxMax = bboxMax;
    mFuseNormal = fuseNormal;
    return RESULT_OK;
}

void FusePointCloud::Clear() {
    delete mpFuseTree;
    mpFuseTree = nullptr;
}

int FusePointCloud::GetCellCount() const {
    return mpFuseTree ? static_cast<int>(mpFuseTree->CellCount()) : 0;
}

bool FusePointCloud::HasGrid() const { return mpFuseTree != nullptr; }

int FusePointCloud::UpdateFuseFunction(const IPointCloud* pointCloud,
                                       const Matrix4x4* transform,
                                       const std::vector<double>* pointAttributes) {
    SetProgress(0.0);
    // dump hook
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FusePointCloud::UpdateFuseFunction: input pointCloud is NULL");
    }
    if (mFuseNormal && !pointCloud->HasNormal()) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "FusePointCloud::UpdateFuseFunction: input pointCloud should have normal information");
    }
    PointCloudPointList pointList(pointCloud);
    ProgressSuspendScope suspend;
    return _UpdateFuseFunction(&pointList, transform, pointAttributes);
}

int FusePointCloud::_UpdateFuseFunction(const IPointList* pointList,
                                        const Matrix4x4* transform,
                                        const std::vector<double>* pointAttributes) {
    SetProgress(0.0);
    if (pointList == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FusePointCloud::UpdateFuseFunction: input pointList is NULL");
    }
    const int pointCount = pointList->GetPointCount();
    if (pointCount <= 0) {
        return LogFailure(RESULT_OK,
                          "FusePointCloud::UpdateFuseFunction: input pointCloud pointCount == 0");
    }
    if (transform != nullptr && transform->IsEmpty()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FusePointCloud::UpdateFuseFunction: transform is empty");
    }
    // m = size / point count, rounded down: values beyond m per point are not read.
    const std::size_t attributeSize = pointAttributes ? pointAttributes->size() : 0;
    if (mpFuseTree == nullptr) {
        return LogFailure(RESULT_STEP_FAIL, "FusePointCloud::UpdateFuseFunction: FuseTree is NULL");
    }
    const int attributeCount = static_cast<int>(attributeSize / pointCount);
    FuseTree& tree = *mpFuseTree;
    const bool hasCells = tree.CellCount() > 0;
    if (hasCells && attributeCount != tree.AttributeCount()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FusePointCloud::UpdateFuseFunction: attribute count ", attributeCount,
                          " differs from fused ", tree.AttributeCount());
    }

    FuseSource src;
    src.coords = FlatArray(pointList, false, tree.coordCopy);
    src.normals = mFuseNormal ? FlatArray(pointList, true, tree.normalCopy) : nullptr;
    src.attributes = attributeCount > 0 ? pointAttributes->data() : nullptr;
    src.moved = transform != nullptr;
    for (int k = 0; k < 12; ++k) src.m[k] = transform ? transform->GetValue(k) : 0.0;
    src.origin = mBBoxMin;
    const int resolution[3] = {mResolutionX, mResolutionY, mResolutionZ};
    for (int a = 0; a < 3; ++a) src.h[a] = (mBBoxMax[a] - mBBoxMin[a]) / resolution[a];

    // Pass 1: every point is checked before any cell changes.
    const int taskCount = pointCount < kThreadedMinimum ? 1 : ParallelTaskCount(pointCount);
    std::vector<SliceCheck> checks(taskCount);
    int status = RunSlices(taskCount, [&](int t, int n) {
        CheckPoints(src, SliceBegin(pointCount, t, n), SliceBegin(pointCount, t + 1, n), checks[t]);
    });
    if (status != RESULT_OK) return status;
    for (const SliceCheck& c : checks) {
        if (c.badCoord >= 0) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "FusePointCloud::UpdateFuseFunction: non-finite coordinate at "
                              "pointId = ",
                              c.badCoord);
        }
        if (c.badNormal >= 0) {
            return LogFailure(
                RESULT_INVALID_INPUT,
                "FusePointCloud::UpdateFuseFunction: non-finite normal at pointId = ", c.badNormal);
        }
    }
    if (gSystemLogLevel <= LOG_TRACE) {
        FuseCellKey key;
        for (int i = 0; i < pointCount; ++i) {
            if (!src.Cell(src.Point(i), key)) {
                LogLine("FusePointCloud::UpdateFuseFunction: point is out of range");
            }
        }
    }
    if (!hasCells && tree.AttributeCount() != attributeCount)
        tree.SetAttributeCount(attributeCount);

    // Pass 2: worker t owns a contiguous run of shards and folds their points in index
    // order, so each cell's running means see the same sequence for any thread count.
    return RunSlices(std::min(taskCount, FuseTree::kShardCount), [&](int t, int n) {
        FoldPoints(src, pointCount, tree, SliceBegin(FuseTree::kShardCount, t, n),
                   SliceBegin(FuseTree::kShardCount, t + 1, n));
    });
}

int FusePointCloud::ExtractPointCloud(IPointCloud* pointCloud,
                                      std::vector<double>* pointAttributes) const {
    SetProgress(0.0);
    // dump hook
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FusePointCloud::ExtractPointCloud: input pointCloud is NULL");
    }
    if (pointCloud->GetPointCount() > 0) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FusePointCloud::ExtractPointCloud: input pointCloud is not blank");
    }
    if (mpFuseTree == nullptr) {
        return LogFailure(RESULT_STEP_FAIL, "FusePointCloud::ExtractPointCloud: FuseTree is NULL");
    }
    const FuseTree& tree = *mpFuseTree;
    const LargeVector<FuseCellRef> sorted = tree.SortedCells();
    const int m = tree.AttributeCount();
    pointCloud->SetHasNormal(mFuseNormal);
    if (PointCloud* cloud = dynamic_cast<PointCloud*>(pointCloud)) {
        cloud->ReservePoint(static_cast<int>(sorted.size()));
    }
    if (pointAttributes) pointAttributes->reserve(pointAttributes->size() + sorted.size() * m);
    for (const FuseCellRef& r : sorted) {
        const FuseShard& shard = tree.shards[r.shard];
        const FuseCell& cell = *shard.cells.At(r.cell);
        if (mFuseNormal) {
            pointCloud->InsertPoint(cell.position, cell.normal);
        } else {
            pointCloud->InsertPoint(cell.position);
        }
        if (pointAttributes) {
            if (m > 0) {
                const double* values = shard.attributes.At(r.cell);
                pointAttributes->insert(pointAttributes->end(), values, values + m);
            }
        }
    }
    return RESULT_OK;
}

}  // namespace ZOL
