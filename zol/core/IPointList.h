// Read-only point lists: the input of algorithms that only read points, with adapters
// over a point cloud, over a mesh's vertices and over a subset of another list, and
// helpers that copy a list's coordinates into a flat array once per call.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/ITriMesh.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Read-only sequence of points with normals.
class ZOL_API IPointList {
public:
    virtual ~IPointList() = default;
    virtual int GetPointCount() const = 0;
    virtual Vector3 GetPointCoord(int pointId) = 0;
    virtual Vector3 GetPointNormal(int pointId) = 0;
};

/// The points of an IPointCloud. Does not own the cloud.
class ZOL_API PointCloudPointList : public IPointList {
public:
    /// \param[in] pointCloud the cloud to read; must outlive the list. Null gives an
    ///            empty list.
    explicit PointCloudPointList(const IPointCloud* pointCloud);
    int GetPointCount() const override;
    Vector3 GetPointCoord(int pointId) override;
    Vector3 GetPointNormal(int pointId) override;
    /// \return the wrapped cloud.
    IPointCloud* GetPointCloud() const;

private:
    IPointCloud* mpPointCloud;
};

/// The vertices of an ITriMesh (coordinate and vertex normal). Does not own the mesh.
class ZOL_API TriMeshPointList : public IPointList {
public:
    /// \param[in] triMesh the mesh to read; must outlive the list. Null gives an empty list.
    explicit TriMeshPointList(const ITriMesh* triMesh);
    int GetPointCount() const override;
    Vector3 GetPointCoord(int pointId) override;
    Vector3 GetPointNormal(int pointId) override;
    /// \return the wrapped mesh.
    ITriMesh* GetTriMesh() const;

private:
    ITriMesh* mpTriMesh;
};

/// A subset of another list: point i of this list is point sampleIds[i] of the base list.
class ZOL_API SampledPointList : public IPointList {
public:
    /// \param[in] pointList the base list; must outlive this one. Null gives an empty list.
    /// \param[in] sampleIds indices into the base list (copied; not checked).
    SampledPointList(const IPointList* pointList, const std::vector<int>& sampleIds);
    int GetPointCount() const override;
    Vector3 GetPointCoord(int pointId) override;
    Vector3 GetPointNormal(int pointId) override;
    /// \return the base list.
    IPointList* GetBaseList() const;
    /// \return the indices into the base list.
    const std::vector<int>& GetSampleIds() const;

private:
    IPointList* mpPointList;
    std::vector<int> mSampleIds;
};

/// Copies the coordinates of every point of a list into \p xyz as x, y, z triples.
/// A list over a PointCloud (also through a SampledPointList) is copied straight from
/// the cloud's array, without a virtual call per point.
/// \param[in] pointList the list; null gives an empty array.
/// \param[out] xyz resized to 3 * point count.
ZOL_API void CopyPointListCoords(const IPointList* pointList, std::vector<double>* xyz);
/// As CopyPointListCoords, for the normals (zero triples when the source has none).
ZOL_API void CopyPointListNormals(const IPointList* pointList, std::vector<double>* xyz);

}  // namespace ZOL
