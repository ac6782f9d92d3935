// Read-only access to vertices and triangles, for algorithms that never edit a mesh.
#pragma once

#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Read-only triangle list; same meaning and indices as the matching ITriMesh reads.
class ZOL_API ITriangleList {
public:
    virtual ~ITriangleList() = default;
    virtual int GetVertexCount() const = 0;
    virtual int GetTriangleCount() const = 0;
    virtual Vector3 GetVertexCoord(int vertexId) = 0;
    virtual Vector3 GetVertexNormal(int vertexId) = 0;
    /// Writes the three corner vertex indices of \p triangleId into \p vertexIds.
    virtual void GetTriangleVertexIds(int triangleId, int vertexIds[3]) const = 0;
    virtual Vector3 GetTriangleNormal(int triangleId) = 0;
};

}  // namespace ZOL
