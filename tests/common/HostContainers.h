// A host's own containers: a point cloud and a triangle mesh kept as one array per
// component, reached only through IPointCloud and ITriMesh, to show that no algorithm
// depends on the library's PointCloud and TriMesh.
#pragma once

#include <utility>
#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/ITriMesh.h>
#include <zol/core/Vector3.h>

namespace zoltest {

/// Three parallel arrays of doubles: x, y and z of each element.
struct HostVectors {
    std::vector<double> axes[3];
    int Size() const { return static_cast<int>(axes[0].size()); }
    ZOL::Vector3 Get(int i) const { return ZOL::Vector3(axes[0][i], axes[1][i], axes[2][i]); }
    void Set(int i, const ZOL::Vector3& v) {
        for (int k = 0; k < 3; ++k) axes[k][i] = v[k];
    }
    void Append(const ZOL::Vector3& v) {
        for (int k = 0; k < 3; ++k) axes[k].push_back(v[k]);
    }
    void Swap(int i, int j) {
        for (std::vector<double>& axis : axes) std::swap(axis[i], axis[j]);
    }
    void Resize(int count) {
        for (std::vector<double>& axis : axes) axis.resize(count);
    }
};

/// A host's point cloud with optional normals.
class HostCloud : public ZOL::IPointCloud {
public:
    HostCloud() = default;
    /// The points (and normals when given) in order.
    explicit HostCloud(const std::vector<ZOL::Vector3>& points,
                       const std::vector<ZOL::Vector3>* normals = nullptr);

    int GetPointCount() const override { return mCoords.Size(); }
    ZOL::Vector3 GetPointCoord(int pointId) override { return mCoords.Get(pointId); }
    void SetPointCoord(int i, const ZOL::Vector3& p) override { mCoords.Set(i, p); }
    ZOL::Vector3 GetPointNormal(int pointId) override { return mNormals.Get(pointId); }
    void SetPointNormal(int pointId, const ZOL::Vector3& n) override { mNormals.Set(pointId, n); }
    bool HasNormal() const override { return mHasNormal; }
    void SetHasNormal(bool hasNormal) override;
    int InsertPoint(const ZOL::Vector3& coord, const ZOL::Vector3& normal) override;
    int InsertPoint(const ZOL::Vector3& coord) override { return InsertPoint(coord, {}); }
    void SwapPoint(int pointId0, int pointId1) override;
    void PopbackPoints(int count) override;
    void Clear() override { mCoords = mNormals = HostVectors(); }

private:
    HostVectors mCoords;
    HostVectors mNormals;  // kept at the point count whatever the flag says
    bool mHasNormal = false;
};

/// A host's triangle mesh: vertex and triangle arrays of its own.
class HostMesh : public ZOL::ITriMesh {
public:
    HostMesh() = default;
    /// A copy of \p source's vertices, triangles and normals, read through ITriMesh.
    explicit HostMesh(const ZOL::ITriMesh& source);

    int GetVertexCount() const override { return mCoords.Size(); }
    int GetTriangleCount() const override { return static_cast<int>(mCorners[0].size()); }
    ZOL::Vector3 GetVertexCoord(int vertexId) override { return mCoords.Get(vertexId); }
    void SetVertexCoord(int i, const ZOL::Vector3& p) override { mCoords.Set(i, p); }
    ZOL::Vector3 GetVertexNormal(int vertexId) override { return mNormals.Get(vertexId); }
    void SetVertexNormal(int i, const ZOL::Vector3& n) override { mNormals.Set(i, n); }
    void GetTriangleVertexIds(int triangleId, int vertexIds[3]) const override;
    void SetTriangleVertexIds(int triangleId, int vertexId0, int vertexId1, int vertexId2) override;
    ZOL::Vector3 GetTriangleNormal(int i) override { return mTriangleNormals.Get(i); }
    void SetTriangleNormal(int i, const ZOL::Vector3& n) override { mTriangleNormals.Set(i, n); }
    int InsertTriangle(int vertexId0, int vertexId1, int vertexId2) override;
    int InsertVertex(const ZOL::Vector3& coord) override;
    void SwapVertex(int vertexId0, int vertexId1) override;
    void PopbackVertices(int count) override;
    void SwapTriangles(int triangleId0, int triangleId1) override;
    void PopbackTriangles(int count) override;
    /// Area-weighted vertex normals and unit triangle normals.
    void UpdateNormal() override;
    void Clear() override { *this = HostMesh(); }

private:
    HostVectors mCoords;
    HostVectors mNormals;
    std::vector<int> mCorners[3];
    HostVectors mTriangleNormals;
};

}  // namespace zoltest
