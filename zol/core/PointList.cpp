// The three point-list adapters and the flat copies of a list's coordinates and normals.
#include <zol/core/IPointList.h>

#include <cstring>
#include <typeinfo>

#include <zol/core/PointCloud.h>

namespace ZOL {

namespace {

/// The PointCloud under a list, when there is one, so that its arrays can be read
/// directly; null for any other source. A class derived from PointCloud may override
/// the per-point reads, so only a plain PointCloud is read through its arrays.
const PointCloud* UnderlyingPointCloud(const IPointList* pointList) {
    const auto* cloudList = dynamic_cast<const PointCloudPointList*>(pointList);
    if (!cloudList || !cloudList->GetPointCloud()) return nullptr;
    const IPointCloud* cloud = cloudList->GetPointCloud();
    if (typeid(*cloud) != typeid(PointCloud)) return nullptr;
    return static_cast<const PointCloud*>(cloud);
}

void CopyVectors(const Vector3* data, int count, std::vector<double>* xyz) {
    static_assert(sizeof(Vector3) == 3 * sizeof(double), "Vector3 must be three packed doubles");
    xyz->resize(static_cast<size_t>(count) * 3);
    if (count > 0) std::memcpy(xyz->data(), data, static_cast<size_t>(count) * sizeof(Vector3));
}

template <typename Read>
void CopyList(const IPointList* pointList,
              const Vector3* (*flatData)(const PointCloud&),
              Read read,
              std::vector<double>* xyz) {
    xyz->clear();
    if (!pointList) return;
    const int count = pointList->GetPointCount();
    if (const PointCloud* cloud = UnderlyingPointCloud(pointList)) {
        const Vector3* data = flatData(*cloud);
        if (data) {
            CopyVectors(data, count, xyz);
        } else {
            xyz->assign(static_cast<size_t>(count) * 3, 0.0);
        }
        return;
    }
    xyz->resize(static_cast<size_t>(count) * 3);
    if (const auto* sampled = dynamic_cast<const SampledPointList*>(pointList)) {
        if (const PointCloud* cloud = UnderlyingPointCloud(sampled->GetBaseList())) {
            const Vector3* data = flatData(*cloud);
            const std::vector<int>& ids = sampled->GetSampleIds();
            for (int i = 0; i < count; ++i) {
                const Vector3 p = data ? data[ids[i]] : Vector3();
                (*xyz)[3 * i] = p.x;
                (*xyz)[3 * i + 1] = p.y;
                (*xyz)[3 * i + 2] = p.z;
            }
            return;
        }
    }
    IPointList* list = const_cast<IPointList*>(pointList);
    for (int i = 0; i < count; ++i) {
        const Vector3 p = read(list, i);
        (*xyz)[3 * i] = p.x;
        (*xyz)[3 * i + 1] = p.y;
        (*xyz)[3 * i + 2] = p.z;
    }
}

}  // namespace

PointCloudPointList::PointCloudPointList(const IPointCloud* pointCloud)
    : mpPointCloud(const_cast<IPointCloud*>(pointCloud)) {}

int PointCloudPointList::GetPointCount() const {
    return mpPointCloud ? mpPointCloud->GetPointCount() : 0;
}

Vector3 PointCloudPointList::GetPointCoord(int pointId) {
    return mpPointCloud->GetPointCoord(pointId);
}

Vector3 PointCloudPointList::GetPointNormal(int pointId) {
    return mpPointCloud->GetPointNormal(pointId);
}

IPointCloud* PointCloudPointList::GetPointCloud() const { return mpPointCloud; }

TriMeshPointList::TriMeshPointList(const ITriMesh* triMesh)
    : mpTriMesh(const_cast<ITriMesh*>(triMesh)) {}

int TriMeshPointList::GetPointCount() const { return mpTriMesh ? mpTriMesh->GetVertexCount() : 0; }

Vector3 TriMeshPointList::GetPointCoord(int pointId) { return mpTriMesh->GetVertexCoord(pointId); }

Vector3 TriMeshPointList::GetPointNormal(int pointId) {
    return mpTriMesh->GetVertexNormal(pointId);
}

ITriMesh* TriMeshPointList::GetTriMesh() const { return mpTriMesh; }

SampledPointList::SampledPointList(const IPointList* pointList, const std::vector<int>& sampleIds)
    : mpPointList(const_cast<IPointList*>(pointList)), mSampleIds(sampleIds) {}

int SampledPointList::GetPointCount() const {
    return mpPointList ? static_cast<int>(mSampleIds.size()) : 0;
}

Vector3 SampledPointList::GetPointCoord(int pointId) {
    return mpPointList->GetPointCoord(mSampleIds[pointId]);
}

Vector3 SampledPointList::GetPointNormal(int pointId) {
    return mpPointList->GetPointNormal(mSampleIds[pointId]);
}

IPointList* SampledPointList::GetBaseList() const { return mpPointList; }

const std::vector<int>& SampledPointList::GetSampleIds() const { return mSampleIds; }

void CopyPointListCoords(const IPointList* pointList, std::vector<double>* xyz) {
    if (!xyz) return;
    CopyList(
        pointList, [](const PointCloud& c) { return c.GetPointCoordData(); },
        [](IPointList* list, int i) { return list->GetPointCoord(i); }, xyz);
}

void CopyPointListNormals(const IPointList* pointList, std::vector<double>* xyz) {
    if (!xyz) return;
    CopyList(
        pointList, [](const PointCloud& c) { return c.GetPointNormalData(); },
        [](IPointList* list, int i) { return list->GetPointNormal(i); }, xyz);
}

}  // namespace ZOL
