// Mesh splitting: cutting a mesh along vertex lines, edge points, face points or a plane,
// and proposing cut lines for a UV atlas. Declared for hosts; not provided by this library.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/Plane3.h>
#include <zol/core/PointOnEdge.h>
#include <zol/core/PointOnFace.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Cuts meshes. Every member answers RESULT_NOT_AVAILABLE once its arguments pass the
/// checks listed with it.
class ZOL_API SplitMesh {
public:
    /// Labels the parts that closed vertex lines cut the mesh into.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] lineVertexIds each line as a chain of vertices joined by mesh edges.
    /// \param[out] triangleParts the part index of every triangle.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("SplitMesh::SplitByLines: triMesh == NULL || triangleParts == NULL") or no
    ///         line ("SplitMesh::SplitByLines: lineVertexIds is empty").
    static int SplitByLines(const ITriMesh* triMesh,
                            const std::vector<std::vector<int>>& lineVertexIds,
                            std::vector<int>* triangleParts);

    /// Inserts vertices at points on edges and joins them into one cut line.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] edgePoints the line, in order, at least two points.
    /// \param[out] lineVertexIds the vertices of the line; may be null.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("SplitMesh::InsertSplitLineByEdgePoints: triMesh == NULL") or fewer than two
    ///         points ("SplitMesh::InsertSplitLineByEdgePoints: edgePoints.size() < 2").
    static int InsertSplitLineByEdgePoints(ITriMesh* triMesh,
                                           const std::vector<PointOnEdge>& edgePoints,
                                           std::vector<int>* lineVertexIds);

    /// Cuts a mesh by a plane into the parts on its positive and negative sides.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] plane the cutting plane.
    /// \param[out] positiveMesh the part where the plane's signed distance is positive.
    /// \param[out] negativeMesh the other part.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("SplitMesh::SplitByPlane: triMesh == NULL || positiveMesh == NULL ||
    ///         negativeMesh == NULL") or a plane without normal ("SplitMesh::SplitByPlane:
    ///         plane normal is zero").
    static int SplitByPlane(const ITriMesh* triMesh,
                            const Plane3& plane,
                            ITriMesh* positiveMesh,
                            ITriMesh* negativeMesh);

    /// Proposes cut lines that open the mesh into the given number of charts.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] chartCount charts wanted, at least 1.
    /// \param[out] lineVertexIds the cut lines as vertex chains.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("SplitMesh::GenerateAtlasSplitLines: triMesh == NULL || lineVertexIds ==
    ///         NULL") or chartCount < 1 ("SplitMesh::GenerateAtlasSplitLines: chartCount <
    ///         1").
    static int GenerateAtlasSplitLines(const ITriMesh* triMesh,
                                       int chartCount,
                                       std::vector<std::vector<int>>* lineVertexIds);

    /// Inserts cut lines given as points on triangles, one vertex chain per line.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] faceLines each line as points on triangles, in order.
    /// \param[out] lineVertexIds the vertices of each line; may be null.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("SplitMesh::InsertSplitLinesByFacePoints: triMesh == NULL") or a point on a
    ///         triangle outside the mesh ("SplitMesh::InsertSplitLinesByFacePoints: triangle
    ///         id out of range").
    static int InsertSplitLinesByFacePoints(ITriMesh* triMesh,
                                            const std::vector<std::vector<PointOnFace>>& faceLines,
                                            std::vector<std::vector<int>>* lineVertexIds);
};

}  // namespace ZOL
