// Fusion of point clouds into grid cells: one pass maps and checks every point (nothing
// changes when a point is refused), a second pass folds the points into the cells, each
// worker owning a fixed set of hash shards and visiting points in index order, so every
// cell sees its points in the same order for any thread count.
#include <zol/pointcloud/FusePointCloud.h>

#include <cmath>
#include <cstdint>
#include <typeinfo>
#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/IPointList.h>
#include <zol/core/Matrix4x4.h>
#include <zol/core/PointCloud.h>
#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/pointcloud/FuseFoldInternal.h>
#include <zol/pointcloud/FuseTreeInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

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
    mpFuseTree = new FuseTree(0, fuseNormal);
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
    DumpCall<DumpFusePointCloudUpdate>(mResolutionX, mResolutionY, mResolutionZ, mBBoxMin, mBBoxMax,
                                       mFuseNormal, this, pointCloud, transform,
                                       pointAttributes);  // dump hook
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

    // Pass 1: every point is checked, and its cell found, before any cell changes.
    const FuseMapResult map = MapFusePoints(src, pointCount, tree);
    if (map.status != RESULT_OK) return map.status;
    if (map.badCoord >= 0) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FusePointCloud::UpdateFuseFunction: non-finite coordinate at "
                          "pointId = ",
                          map.badCoord);
    }
    if (map.badNormal >= 0) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "FusePointCloud::UpdateFuseFunction: non-finite normal at pointId = ", map.badNormal);
    }
    if (gSystemLogLevel <= LOG_TRACE) LogDroppedPoints(map);
    if (!hasCells && tree.AttributeCount() != attributeCount)
        tree.SetAttributeCount(attributeCount);

    // Pass 2: worker t owns a contiguous run of shards and folds their points in index
    // order, so each cell's running means see the same sequence for any thread count.
    return FoldFusePoints(src, pointCount, map, tree);
}

int FusePointCloud::ExtractPointCloud(IPointCloud* pointCloud,
                                      std::vector<double>* pointAttributes) const {
    SetProgress(0.0);
    DumpCall<DumpFusePointCloudExtract>(mResolutionX, mResolutionY, mResolutionZ, mBBoxMin,
                                        mBBoxMax, mFuseNormal, this, pointCloud,
                                        pointAttributes);  // dump hook
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
    ReadOutCells(*mpFuseTree, pointCloud, mFuseNormal, pointAttributes);
    return RESULT_OK;
}

}  // namespace ZOL
