// PointCloud: point arrays and the grid bookkeeping that keeps the cell-to-point and
// point-to-cell maps consistent through insertion, swapping and removal.
#include <zol/core/PointCloud.h>

#include <algorithm>

#include <zol/runtime/BulkMemoryInternal.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

PointCloud::PointCloud() : PointCloud(false, false, false) {}

PointCloud::PointCloud(bool hasNormal, bool hasColor, bool hasGridTopology)
    : mHasNormal(hasNormal),
      mHasColor(hasColor),
      mHasGridTopology(hasGridTopology),
      mWidth(0),
      mHeight(0) {}

PointCloud::PointCloud(const PointCloud& other) = default;

PointCloud& PointCloud::operator=(const PointCloud& other) = default;

PointCloud::~PointCloud() = default;

int PointCloud::GetPointCount() const { return static_cast<int>(mCoords.size()); }

Vector3 PointCloud::GetPointCoord(int pointId) { return mCoords[pointId]; }

void PointCloud::SetPointCoord(int pointId, const Vector3& coord) { mCoords[pointId] = coord; }

Vector3 PointCloud::GetPointNormal(int pointId) {
    return mHasNormal ? mNormals[pointId] : Vector3();
}

void PointCloud::SetPointNormal(int pointId, const Vector3& normal) {
    if (mHasNormal) mNormals[pointId] = normal;
}

bool PointCloud::HasNormal() const { return mHasNormal; }

void PointCloud::SetHasNormal(bool hasNormal) {
    mHasNormal = hasNormal;
    if (hasNormal) mNormals.resize(mCoords.size());
}

int PointCloud::InsertPoint(const Vector3& coord, const Vector3& normal) {
    const int pointId = GetPointCount();
    mCoords.push_back(coord);
    if (mHasNormal) mNormals.push_back(normal);
    if (mHasColor) mColors.emplace_back();
    if (mHasGridTopology) mPointToGrid.push_back(-1);
    return pointId;
}

int PointCloud::InsertPoint(const Vector3& coord) { return InsertPoint(coord, Vector3()); }

void PointCloud::SwapPoint(int pointId0, int pointId1) {
    if (pointId0 == pointId1) return;
    std::swap(mCoords[pointId0], mCoords[pointId1]);
    if (mHasNormal) std::swap(mNormals[pointId0], mNormals[pointId1]);
    if (mHasColor) std::swap(mColors[pointId0], mColors[pointId1]);
    if (mHasGridTopology && !mPointToGrid.empty()) {
        const int cell0 = mPointToGrid[pointId0];
        const int cell1 = mPointToGrid[pointId1];
        mPointToGrid[pointId0] = cell1;
        mPointToGrid[pointId1] = cell0;
        if (cell0 >= 0) mGridToPoint[cell0] = pointId1;
        if (cell1 >= 0) mGridToPoint[cell1] = pointId0;
    }
}

void PointCloud::PopbackPoints(int count) {
    const int pointCount = GetPointCount();
    count = std::clamp(count, 0, pointCount);
    const size_t newSize = static_cast<size_t>(pointCount - count);
    if (mPointToGrid.size() > newSize) {
        for (size_t i = newSize; i < mPointToGrid.size(); ++i) {
            const int cell = mPointToGrid[i];
            if (cell >= 0 && cell < static_cast<int>(mGridToPoint.size())) mGridToPoint[cell] = -1;
        }
        mPointToGrid.resize(newSize);
    }
    mCoords.resize(newSize);
    if (mNormals.size() > newSize) mNormals.resize(newSize);
    if (mColors.size() > newSize) mColors.resize(newSize);
}

void PointCloud::Clear() {
    mCoords.clear();
    mNormals.clear();
    mColors.clear();
    mPointToGrid.clear();
    std::fill(mGridToPoint.begin(), mGridToPoint.end(), -1);
}

void PointCloud::InitGrid(int width, int height) {
    mWidth = std::max(width, 0);
    mHeight = std::max(height, 0);
    mHasGridTopology = true;
    mGridToPoint.assign(static_cast<size_t>(mWidth) * static_cast<size_t>(mHeight), -1);
    mPointToGrid.clear();
    mCoords.clear();
    mNormals.clear();
    mColors.clear();
}

int PointCloud::GetWidth() const { return mWidth; }

int PointCloud::GetHeight() const { return mHeight; }

int PointCloud::GetValidGridCount() const { return GetPointCount(); }

int PointCloud::CellIndex(int x, int y) const {
    const long long cell = static_cast<long long>(y) * mWidth + x;
    if (cell < 0 || cell >= static_cast<long long>(mGridToPoint.size())) return -1;
    return static_cast<int>(cell);
}

bool PointCloud::IsGridValid(int x, int y) const {
    const int cell = CellIndex(x, y);
    return cell >= 0 && mGridToPoint[cell] != -1;
}

void PointCloud::InvalidateGrid(int x, int y) {
    const int pointId = GetGridPointId(x, y);
    if (pointId < 0) return;
    // Through the virtual slots, so that a class deriving from PointCloud sees the
    // removal as an ordinary swap and pop-back.
    SwapPoint(pointId, GetPointCount() - 1);
    PopbackPoints(1);
}

void PointCloud::SetGridCoord(int x, int y, const Vector3& coord) {
    const int cell = CellIndex(x, y);
    if (cell < 0) return;
    const int pointId = mGridToPoint[cell];
    if (pointId >= 0) {
        mCoords[pointId] = coord;
        return;
    }
    mGridToPoint[cell] = GetPointCount();
    mPointToGrid.push_back(cell);
    mCoords.push_back(coord);
    if (mHasNormal) mNormals.resize(mCoords.size());
    if (mHasColor) mColors.resize(mCoords.size());
}

Vector3 PointCloud::GetGridCoord(int x, int y) {
    const int pointId = GetGridPointId(x, y);
    return pointId >= 0 ? mCoords[pointId] : Vector3();
}

bool PointCloud::HasGridNormal() const { return HasNormal(); }

void PointCloud::SetHasGridNormal(bool hasNormal) { SetHasNormal(hasNormal); }

void PointCloud::SetGridNormal(int x, int y, const Vector3& normal) {
    const int pointId = GetGridPointId(x, y);
    if (pointId >= 0 && mHasNormal) mNormals[pointId] = normal;
}

Vector3 PointCloud::GetGridNormal(int x, int y) {
    const int pointId = GetGridPointId(x, y);
    return pointId >= 0 && mHasNormal ? mNormals[pointId] : Vector3();
}

bool PointCloud::HasColor() const { return mHasColor; }

void PointCloud::SetHasColor(bool hasColor) {
    mHasColor = hasColor;
    if (hasColor) mColors.resize(mCoords.size());
}

Vector3 PointCloud::GetPointColor(int pointId) const {
    return mHasColor ? mColors[pointId] : Vector3();
}

void PointCloud::SetPointColor(int pointId, const Vector3& color) {
    if (mHasColor) mColors[pointId] = color;
}

void PointCloud::SetDefaultColor(const Vector3& color) {
    mHasColor = true;
    mColors.assign(mCoords.size(), color);
}

void PointCloud::ReservePoint(int count) {
    if (count <= 0) return;
    const size_t n = static_cast<size_t>(count);
    mCoords.reserve(n);
    if (mHasNormal) mNormals.reserve(n);
    if (mHasColor) mColors.reserve(n);
    if (mHasGridTopology) mPointToGrid.reserve(n);
    // A large reserved cloud is about to be filled front to back: in huge pages its first
    // touch costs a fraction of what 4 KiB pages cost.
    AdviseHugePages(mCoords.data(), mCoords.capacity() * sizeof(Vector3));
    AdviseHugePages(mNormals.data(), mNormals.capacity() * sizeof(Vector3));
    AdviseHugePages(mColors.data(), mColors.capacity() * sizeof(Vector3));
}

void PointCloud::ResizePoint(int count) {
    const size_t n = count > 0 ? static_cast<size_t>(count) : 0;
    if (n < mCoords.size()) PopbackPoints(static_cast<int>(mCoords.size() - n));
    mCoords.resize(n);
    if (mHasNormal) mNormals.resize(n);
    if (mHasColor) mColors.resize(n);
    if (mHasGridTopology) mPointToGrid.resize(n, -1);
}

bool PointCloud::HasGridTopology() const { return mHasGridTopology; }

void PointCloud::ClearGridTopologyInfo() {
    mHasGridTopology = false;
    mGridToPoint.clear();
    mPointToGrid.clear();
    mWidth = 0;
    mHeight = 0;
}

int PointCloud::GetGridPointId(int x, int y) const {
    const int cell = CellIndex(x, y);
    return cell < 0 ? -1 : mGridToPoint[cell];
}

int PointCloud::GetPointGridId(int pointId) const {
    if (pointId < 0 || pointId >= static_cast<int>(mPointToGrid.size())) return -1;
    return mPointToGrid[pointId];
}

void PointCloud::UnifyCoords(double bboxSize, double* scaleValue, Vector3* objCenCoord) {
    Vector3 center;
    double scale = 1.0;
    if (!mCoords.empty()) {
        Vector3 lo = mCoords[0];
        Vector3 hi = mCoords[0];
        for (const Vector3& p : mCoords) {
            for (int a = 0; a < 3; ++a) {
                lo[a] = std::min(lo[a], p[a]);
                hi[a] = std::max(hi[a], p[a]);
            }
        }
        center = (lo + hi) * 0.5;
        const double halfExtent = std::max({hi.x - lo.x, hi.y - lo.y, hi.z - lo.z}) * 0.5;
        if (halfExtent > REAL_TOL) scale = bboxSize / halfExtent;
    }
    UnifyCoords(scale, center);
    if (scaleValue) *scaleValue = scale;
    if (objCenCoord) *objCenCoord = center;
}

void PointCloud::UnifyCoords(double scaleValue, const Vector3& objCenCoord) {
    for (Vector3& p : mCoords) p = (p - objCenCoord) * scaleValue;
}

const Vector3* PointCloud::GetPointCoordData() const { return mCoords.data(); }

const Vector3* PointCloud::GetPointNormalData() const {
    return mHasNormal ? mNormals.data() : nullptr;
}

}  // namespace ZOL
