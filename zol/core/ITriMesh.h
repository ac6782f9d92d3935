// The abstract triangle mesh: algorithms take an ITriMesh so that they run on the
// library's TriMesh and on a host's own mesh class alike. Indices are dense ints.
#pragma once

#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Editable triangle mesh. Deletion is always swap-to-end then pop-back.
class ZOL_API ITriMesh {
public:
    virtual int GetVertexCount() const = 0;
    virtual int GetTriangleCount() const = 0;
    virtual Vector3 GetVertexCoord(int vertexId) = 0;
    virtual void SetVertexCoord(int vertexId, const Vector3& coord) = 0;
    virtual Vector3 GetVertexNormal(int vertexId) = 0;
    virtual void SetVertexNormal(int vertexId, const Vector3& normal) = 0;
    /// Writes the three corner vertex indices of \p triangleId into \p vertexIds.
    virtual void GetTriangleVertexIds(int triangleId, int vertexIds[3]) const = 0;
    virtual void SetTriangleVertexIds(int triangleId,
                                      int vertexId0,
                                      int vertexId1,
                                      int vertexId2) = 0;
    virtual Vector3 GetTriangleNormal(int triangleId) = 0;
    virtual void SetTriangleNormal(int triangleId, const Vector3& normal) = 0;
    /// \return the index of the new triangle.
    virtual int InsertTriangle(int vertexId0, int vertexId1, int vertexId2) = 0;
    /// \return the index of the new vertex.
    virtual int InsertVertex(const Vector3& coord) = 0;
    virtual void SwapVertex(int vertexId0, int vertexId1) = 0;
    /// Removes the last \p count vertices.
    virtual void PopbackVertices(int count) = 0;
    virtual void SwapTriangles(int triangleId0, int triangleId1) = 0;
    /// Removes the last \p count triangles.
    virtual void PopbackTriangles(int count) = 0;
    /// Recomputes triangle and vertex normals from the geometry.
    virtual void UpdateNormal() = 0;
    /// Removes every vertex and triangle.
    virtual void Clear() = 0;
    virtual ~ITriMesh() = default;
};

}  // namespace ZOL
