// The host containers' storage: every component in an array of its own.
#include "tests/common/HostContainers.h"

#include <utility>

namespace zoltest {

using ZOL::Vector3;

HostCloud::HostCloud(const std::vector<Vector3>& points, const std::vector<Vector3>* normals)
    : mHasNormal(normals != nullptr) {
    for (size_t i = 0; i < points.size(); ++i) {
        mCoords.Append(points[i]);
        mNormals.Append(normals ? (*normals)[i] : Vector3());
    }
}

void HostCloud::SetHasNormal(bool hasNormal) {
    // Normals switched on start at zero, as the interface promises for new points.
    if (hasNormal && !mHasNormal) {
        mNormals = HostVectors();
        mNormals.Resize(GetPointCount());
    }
    mHasNormal = hasNormal;
}

int HostCloud::InsertPoint(const Vector3& coord, const Vector3& normal) {
    mCoords.Append(coord);
    mNormals.Append(normal);
    return GetPointCount() - 1;
}

void HostCloud::SwapPoint(int pointId0, int pointId1) {
    mCoords.Swap(pointId0, pointId1);
    mNormals.Swap(pointId0, pointId1);
}

void HostCloud::PopbackPoints(int count) {
    mCoords.Resize(GetPointCount() - count);
    mNormals.Resize(mCoords.Size());
}

HostMesh::HostMesh(const ZOL::ITriMesh& source) {
    ZOL::ITriMesh& mesh = const_cast<ZOL::ITriMesh&>(source);  // the getters are not const
    for (int v = 0; v < mesh.GetVertexCount(); ++v) {
        mCoords.Append(mesh.GetVertexCoord(v));
        mNormals.Append(mesh.GetVertexNormal(v));
    }
    int ids[3];
    for (int t = 0; t < mesh.GetTriangleCount(); ++t) {
        mesh.GetTriangleVertexIds(t, ids);
        for (int c = 0; c < 3; ++c) mCorners[c].push_back(ids[c]);
        mTriangleNormals.Append(mesh.GetTriangleNormal(t));
    }
}

void HostMesh::GetTriangleVertexIds(int triangleId, int vertexIds[3]) const {
    for (int c = 0; c < 3; ++c) vertexIds[c] = mCorners[c][triangleId];
}

void HostMesh::SetTriangleVertexIds(int triangleId, int vertexId0, int vertexId1, int vertexId2) {
    mCorners[0][triangleId] = vertexId0;
    mCorners[1][triangleId] = vertexId1;
    mCorners[2][triangleId] = vertexId2;
}

int HostMesh::InsertTriangle(int vertexId0, int vertexId1, int vertexId2) {
    mCorners[0].push_back(vertexId0);
    mCorners[1].push_back(vertexId1);
    mCorners[2].push_back(vertexId2);
    mTriangleNormals.Append(Vector3());
    return GetTriangleCount() - 1;
}

int HostMesh::InsertVertex(const Vector3& coord) {
    mCoords.Append(coord);
    mNormals.Append(Vector3());
    return GetVertexCount() - 1;
}

void HostMesh::SwapVertex(int vertexId0, int vertexId1) {
    mCoords.Swap(vertexId0, vertexId1);
    mNormals.Swap(vertexId0, vertexId1);
}

void HostMesh::PopbackVertices(int count) {
    mCoords.Resize(GetVertexCount() - count);
    mNormals.Resize(mCoords.Size());
}

void HostMesh::SwapTriangles(int triangleId0, int triangleId1) {
    for (std::vector<int>& corner : mCorners) std::swap(corner[triangleId0], corner[triangleId1]);
    mTriangleNormals.Swap(triangleId0, triangleId1);
}

void HostMesh::PopbackTriangles(int count) {
    const int kept = GetTriangleCount() - count;
    for (std::vector<int>& corner : mCorners) corner.resize(kept);
    mTriangleNormals.Resize(kept);
}

void HostMesh::UpdateNormal() {
    std::vector<Vector3> sums(GetVertexCount());
    for (int t = 0; t < GetTriangleCount(); ++t) {
        int ids[3];
        GetTriangleVertexIds(t, ids);
        const Vector3 p0 = mCoords.Get(ids[0]);
        Vector3 normal = (mCoords.Get(ids[1]) - p0).CrossProduct(mCoords.Get(ids[2]) - p0);
        for (int id : ids) sums[id] += normal;
        normal.Normalise();
        mTriangleNormals.Set(t, normal);
    }
    for (int v = 0; v < GetVertexCount(); ++v) {
        sums[v].Normalise();
        mNormals.Set(v, sums[v]);
    }
}

}  // namespace zoltest
