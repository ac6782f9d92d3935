// Fusion of point clouds into grid cells: one pass maps and checks every point (nothing
// changes when a point is refused), a second pass folds the points into the cells, each
// worker owning a fixed set of hash shards and visiting points in index order, so every
// cell sees its points in the same order for any thread count.
#include <zol/pointcloud/FusePointCloud.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
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
// Shard marker of a point that falls outside the one-sided range.
const std::uint8_t kSkipped = 0xff;
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

// The per-call working data of one update: moved coordinates and normals, each point's
// cell and shard, and the first refused point of each slice.
struct FuseInput {
    std::vector<double> coords;
    std::vector<double> normals;
    std::vector<FuseCellKey> keys;
    std::vector<std::uint8_t> shards;
    const double* attributes = nullptr;
    int attributeCount = 0;
};

struct SliceCheck {
    int badCoord = -1;
    int badNormal = -1;
};

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
    const std::size_t attributeSize = pointAttributes ? pointAttributes->size() : 0;
    if (attributeSize % static_cast<std::size_t>(pointCount) != 0) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FusePointCloud::UpdateFuseFunction: pointAttributes size is not a "
                          "multiple of pointCount");
    }
    if (mpFuseTree == nullptr) {
        return LogFailure(RESULT_STEP_FAIL, "FusePointCloud::UpdateFuseFunction: FuseTree is NULL");
    }
    const int attributeCount = static_cast<int>(attributeSize / pointCount);
    FuseTree& tree = *mpFuseTree;
    const bool hasCells = tree.CellCount() > 0;
    if (hasCells && attributeCount != tree.attributeCount) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FusePointCloud::UpdateFuseFunction: attribute count ", attributeCount,
                          " differs from fused ", tree.attributeCount);
    }

    FuseInput in;
    CopyPointListCoords(pointList, &in.coords);
    if (mFuseNormal) CopyPointListNormals(pointList, &in.normals);
    in.keys.resize(pointCount);
    in.shards.resize(pointCount);
    in.attributes = attributeCount > 0 ? pointAttributes->data() : nullptr;
    in.attributeCount = attributeCount;

    const int taskCount = pointCount < kThreadedMinimum ? 1 : ParallelTaskCount(pointCount);
    const double h[3] = {(mBBoxMax.x - mBBoxMin.x) / mResolutionX,
                         (mBBoxMax.y - mBBoxMin.y) / mResolutionY,
                         (mBBoxMax.z - mBBoxMin.z) / mResolutionZ};
    const Vector3 origin = mBBoxMin;
    const bool fuseNormal = mFuseNormal;

    // Pass 1: move, check and locate every point; nothing in the tree changes yet.
    std::vector<SliceCheck> checks(taskCount);
    auto locate = [&](int t, int n) {
        const int first = SliceBegin(pointCount, t, n), last = SliceBegin(pointCount, t + 1, n);
        for (int i = first; i < last; ++i) {
            double* p = &in.coords[3 * i];
            if (transform) {
                const Vector3 moved = transform->TransformPoint(Vector3(p[0], p[1], p[2]));
                p[0] = moved.x, p[1] = moved.y, p[2] = moved.z;
            }
            if (!IsFinite(p[0], p[1], p[2])) {
                checks[t].badCoord = i;
                return;
            }
            if (fuseNormal) {
                double* v = &in.normals[3 * i];
                if (transform) {
                    const Vector3 turned = transform->RotateVector(Vector3(v[0], v[1], v[2]));
                    v[0] = turned.x, v[1] = turned.y, v[2] = turned.z;
                }
                if (!IsFinite(v[0], v[1], v[2])) {
                    checks[t].badNormal = i;
                    return;
                }
            }
            int index[3];
            bool inRange = true;
            for (int a = 0; a < 3; ++a) {
                const double q = (p[a] - origin[a]) / h[a];
                inRange = inRange && q >= 0.0 && q < kIndexLimit;
                index[a] = inRange ? static_cast<int>(q) : 0;
            }
            if (!inRange) {
                in.shards[i] = kSkipped;
                continue;
            }
            in.keys[i] = FuseCellKey{index[0], index[1], index[2]};
            in.shards[i] = static_cast<std::uint8_t>(FuseTree::ShardOf(FuseTree::Hash(in.keys[i])));
        }
    };
    int status = RunSlices(taskCount, locate);
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
        for (int i = 0; i < pointCount; ++i) {
            if (in.shards[i] == kSkipped) {
                LogLine("FusePointCloud::UpdateFuseFunction: point is out of range");
            }
        }
    }
    if (!hasCells) tree.attributeCount = attributeCount;

    // Pass 2: worker t owns a contiguous run of shards and folds their points in index
    // order, so each cell's running means see the same sequence for any thread count.
    auto fold = [&](int t, int n) {
        const int shardFirst = SliceBegin(FuseTree::kShardCount, t, n);
        const int shardLast = SliceBegin(FuseTree::kShardCount, t + 1, n);
        const int m = in.attributeCount;
        FuseCellKey lastKey{-1, -1, -1};
        FuseShard* lastShard = nullptr;
        int lastCell = -1;
        for (int i = 0; i < pointCount; ++i) {
            const int s = in.shards[i];
            if (s < shardFirst || s >= shardLast) continue;
            FuseShard& shard = tree.shards[s];
            const FuseCellKey& key = in.keys[i];
            bool inserted = false;
            int cellId = lastCell;
            if (&shard != lastShard || !(key == lastKey)) {
                cellId = shard.FindOrInsert(key, FuseTree::Hash(key), m, inserted);
                lastKey = key, lastShard = &shard, lastCell = cellId;
            }
            FuseCell& cell = shard.cells[cellId];
            const double* pi = &in.coords[3 * i];
            const Vector3 p(pi[0], pi[1], pi[2]);
            const double* a =
                in.attributes ? in.attributes + static_cast<std::size_t>(i) * m : nullptr;
            double* values = shard.attributes.data() + static_cast<std::size_t>(cellId) * m;
            const Vector3 nu = fuseNormal ? Vector3(in.normals[3 * i], in.normals[3 * i + 1],
                                                    in.normals[3 * i + 2])
                                          : Vector3(0.0, 0.0, 0.0);
            if (inserted) {
                cell.position = p;
                cell.normal = nu;
                cell.weight = 1.0;
                for (int k = 0; k < m; ++k) values[k] = a[k];
                continue;
            }
            const double w = cell.weight;
            const double W = w + 1.0;
            cell.position = (cell.position * w + p) / W;
            for (int k = 0; k < m; ++k) values[k] = (w * values[k] + a[k]) / W;
            cell.weight = W;
            if (fuseNormal) {
                // Weighted by the weight after the increment; an opposite normal is
                // flipped before it is added.
                cell.normal = cell.normal * nu < 0.0 ? cell.normal * W - nu : cell.normal * W + nu;
                cell.normal.Normalise();
            }
        }
    };
    const int shardTasks = std::min(taskCount, FuseTree::kShardCount);
    status = RunSlices(shardTasks, fold);
    return status;
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
    const std::vector<FuseCellRef> sorted = tree.SortedCells();
    const int m = tree.attributeCount;
    pointCloud->SetHasNormal(mFuseNormal);
    if (PointCloud* cloud = dynamic_cast<PointCloud*>(pointCloud)) {
        cloud->ReservePoint(static_cast<int>(sorted.size()));
    }
    if (pointAttributes) pointAttributes->reserve(pointAttributes->size() + sorted.size() * m);
    for (const FuseCellRef& r : sorted) {
        const FuseShard& shard = tree.shards[r.shard];
        const FuseCell& cell = shard.cells[r.cell];
        if (mFuseNormal) {
            pointCloud->InsertPoint(cell.position, cell.normal);
        } else {
            pointCloud->InsertPoint(cell.position);
        }
        if (pointAttributes) {
            const double* values = shard.attributes.data() + static_cast<std::size_t>(r.cell) * m;
            pointAttributes->insert(pointAttributes->end(), values, values + m);
        }
    }
    return RESULT_OK;
}

}  // namespace ZOL
