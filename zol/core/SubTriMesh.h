// A view of part of another mesh: chosen triangles with their vertices, or chosen
// vertices with the triangles they span. Reads and writes go through to the parent;
// structure changes are not supported and say so in the log.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// How the selection of a SubTriMesh is read.
enum BuildSubTriMeshType : int {
    /// The ids name parent triangles; the view holds them and every vertex they use.
    BUILD_SUBTRIMESH_BY_TRIANGLE = 0,
    /// The ids name parent vertices; the view holds them and every triangle whose three
    /// corners are all among them.
    BUILD_SUBTRIMESH_BY_VERTEX = 1
};

/// Non-owning view of a part of a parent mesh. View vertices and view triangles are
/// numbered in ascending order of their parent indices. The parent must outlive the view
/// and must not change its structure (insert, swap, pop) while the view is used.
class ZOL_API SubTriMesh : public ITriMesh {
public:
    /// \param[in] parent the mesh to view; null gives an empty view (logged).
    /// \param[in] ids parent triangle or vertex indices, by \p type; duplicates and indices
    /// outside the parent are ignored.
    SubTriMesh(ITriMesh* parent, const std::vector<int>& ids, BuildSubTriMeshType type);
    /// \param[in] flags one flag per parent triangle or vertex, by \p type; a shorter
    /// vector leaves the rest unselected.
    SubTriMesh(ITriMesh* parent, const std::vector<bool>& flags, BuildSubTriMeshType type);
    ~SubTriMesh() override = default;

    int GetVertexCount() const override { return static_cast<int>(mVertexIds.size()); }
    int GetTriangleCount() const override { return static_cast<int>(mTriangleIds.size()); }
    /// Parent coordinate of view vertex \p vertexId.
    Vector3 GetVertexCoord(int vertexId) override;
    /// Writes the parent's coordinate; ignored for ids outside the view.
    void SetVertexCoord(int vertexId, const Vector3& coord) override;
    /// Parent normal of view vertex \p vertexId.
    Vector3 GetVertexNormal(int vertexId) override;
    /// Behaves exactly like SetVertexCoord: it writes \p normal into the parent's vertex
    /// COORDINATE (ignored outside the view). Callers that need to set normals must
    /// address the parent mesh.
    void SetVertexNormal(int vertexId, const Vector3& normal) override;
    /// Corners of the parent triangle, as view vertex indices.
    void GetTriangleVertexIds(int triangleId, int vertexIds[3]) const override;
    /// Writes the parent triangle's corners from view vertex indices; ignored when any
    /// index lies outside the view.
    void SetTriangleVertexIds(int triangleId, int vertexId0, int vertexId1, int vertexId2) override;
    Vector3 GetTriangleNormal(int triangleId) override;
    /// Writes the parent triangle's normal; ignored outside the view.
    void SetTriangleNormal(int triangleId, const Vector3& normal) override;
    /// Not meant for views: logs a line, then inserts through the parent and adds the new
    /// triangle to the view.
    /// \return the new view triangle index, or -1 when a corner lies outside the view.
    int InsertTriangle(int vertexId0, int vertexId1, int vertexId2) override;
    /// Not meant for views: logs a line, then inserts through the parent and adds the new
    /// vertex to the view.
    /// \return the new view vertex index, or -1 without a parent.
    int InsertVertex(const Vector3& coord) override;
    /// Not supported: logs a line and does nothing.
    void SwapVertex(int vertexId0, int vertexId1) override;
    /// Not supported: logs a line and does nothing.
    void PopbackVertices(int count) override;
    /// Not supported: logs a line and does nothing.
    void SwapTriangles(int triangleId0, int triangleId1) override;
    /// Not supported: logs a line and does nothing.
    void PopbackTriangles(int count) override;
    /// Not supported: logs a line and does nothing.
    void UpdateNormal() override;
    /// Empties the view; the parent is untouched.
    void Clear() override;

    /// \return the viewed mesh (may be null).
    ITriMesh* GetParentMesh() const { return mpParent; }
    /// \return the parent index of view vertex \p vertexId.
    int GetParentVertexId(int vertexId) const { return mVertexIds[vertexId]; }
    /// \return the parent index of view triangle \p triangleId.
    int GetParentTriangleId(int triangleId) const { return mTriangleIds[triangleId]; }
    /// \return the view index of parent vertex \p parentVertexId, or -1 if not in the view.
    int GetViewVertexId(int parentVertexId) const;
    /// View-to-parent maps (ascending parent indices).
    const std::vector<int>& GetParentVertexIds() const { return mVertexIds; }
    const std::vector<int>& GetParentTriangleIds() const { return mTriangleIds; }

private:
    void Build(const std::vector<bool>& flags, BuildSubTriMeshType type);
    bool InView(int vertexId) const {
        return vertexId >= 0 && vertexId < static_cast<int>(mVertexIds.size());
    }

    ITriMesh* mpParent;
    std::vector<int> mParentToView;  // parent vertex -> view vertex or -1
    std::vector<int> mVertexIds;     // view vertex -> parent vertex
    std::vector<int> mTriangleIds;   // view triangle -> parent triangle
};

}  // namespace ZOL
