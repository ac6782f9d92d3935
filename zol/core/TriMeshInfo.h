// Per-mesh cache of derived topology. Algorithms that walk a mesh across its edges
// build it once per call (or keep it between calls while the mesh is unchanged).
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Cached topology of one triangle mesh. The edge records list, for every undirected
/// edge, its two vertices and ALL triangles that contain it: 1 on a boundary, 2 on a
/// manifold interior edge, 3 or more on a non-manifold edge. Edges are numbered in
/// ascending order of (smaller vertex id, larger vertex id); the triangles of an edge are
/// in ascending id order (a triangle that has the edge twice appears twice). The cache
/// does not watch the mesh: rebuild it after the mesh changes.
class ZOL_API TriMeshInfo {
public:
    TriMeshInfo() = default;

    /// Builds the edge records of \p triMesh, replacing any earlier ones, in linear time
    /// plus a small sort per vertex. Triangle sides whose two corners are equal make no
    /// edge. On failure the cache is left empty.
    /// \param[in] triMesh the mesh; only read.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when triMesh is null
    ///         ("TriMeshInfo::CacheDataForEdgeInfos: triMesh == NULL"), has no triangle
    ///         ("...: triangleCount < 1") or a triangle names a vertex outside
    ///         [0, vertexCount) ("...: invalid vertex id <v> in triangle <t>").
    int CacheDataForEdgeInfos(const ITriMesh* triMesh);
    /// \return true when edge records are present.
    bool HasEdgeInfos() const { return mHasEdgeInfos; }
    /// Drops the edge records and frees their memory.
    void ClearEdgeInfos();
    /// Drops every cached record.
    void Clear() { ClearEdgeInfos(); }

    /// \return the number of undirected edges.
    int GetEdgeCount() const { return static_cast<int>(mEdgeVertexIds.size() / 2); }
    /// \return the two vertex ids of \p edgeId, the smaller first.
    const int* GetEdgeVertexIds(int edgeId) const { return &mEdgeVertexIds[2 * edgeId]; }
    /// \return how many triangles contain \p edgeId.
    int GetEdgeTriangleCount(int edgeId) const {
        return mEdgeTriangleOffsets[edgeId + 1] - mEdgeTriangleOffsets[edgeId];
    }
    /// \return the ids of the triangles containing \p edgeId (GetEdgeTriangleCount of them).
    const int* GetEdgeTriangleIds(int edgeId) const {
        return mEdgeTriangleIds.data() + mEdgeTriangleOffsets[edgeId];
    }
    /// \return the triangle ids of \p edgeId as a new vector (convenience form).
    std::vector<int> GetEdgeTriangles(int edgeId) const {
        const int* first = GetEdgeTriangleIds(edgeId);
        return std::vector<int>(first, first + GetEdgeTriangleCount(edgeId));
    }
    /// \return the edge from corner \p cornerId to corner (cornerId + 1) % 3 of
    /// \p triangleId, or -1 when those two corners are the same vertex.
    int GetTriangleEdgeId(int triangleId, int cornerId) const {
        return mTriangleEdgeIds[3 * static_cast<size_t>(triangleId) + cornerId];
    }
    /// \return the edge joining \p vertexId0 and \p vertexId1 (either order), or -1.
    /// Binary search, O(log edgeCount).
    int FindEdge(int vertexId0, int vertexId1) const;
    /// \return vertex and triangle counts of the mesh the records were built from.
    int GetCachedVertexCount() const { return mVertexCount; }
    int GetCachedTriangleCount() const { return mTriangleCount; }

private:
    bool mHasEdgeInfos = false;
    int mVertexCount = 0;
    int mTriangleCount = 0;
    std::vector<int> mEdgeVertexIds;        // 2 per edge, smaller first
    std::vector<int> mEdgeTriangleOffsets;  // edgeCount + 1 entries into mEdgeTriangleIds
    std::vector<int> mEdgeTriangleIds;      // triangles of all edges, edge after edge
    std::vector<int> mTriangleEdgeIds;      // 3 per triangle, -1 for a collapsed side
};

}  // namespace ZOL
