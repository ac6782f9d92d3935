// Free utilities on any ITriMesh: copying, deleting vertices and triangles (by
// swap-to-end and pop-back), finding isolated vertices, bounding box and edge length,
// and the overlap test of two triangles in the plane.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Replaces the content of \p toMesh by the vertices (coordinate, normal) and triangles
/// (corners, normal) of \p fromMesh. Between two TriMesh objects it is a deep copy that
/// also carries attribute arrays, flags, default colour and mesh type. Copying a mesh
/// onto itself does nothing.
/// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when either mesh is null, nothing changed
///         ("CopyTriMesh: fromMesh == NULL || toMesh == NULL").
ZOL_API int CopyTriMesh(ITriMesh* fromMesh, ITriMesh* toMesh);

/// Deletes the listed vertices and every triangle that uses one of them. Survivors are
/// moved into the freed slots (swap-to-end then pop-back, so vertex order is not kept)
/// and triangle corners are renumbered to follow them.
/// \param[in] deleteIndex vertex ids; duplicates and ids outside the mesh are ignored.
/// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when triMesh is null
///         ("DeleteTriMeshVertices: triMesh == NULL").
ZOL_API int DeleteTriMeshVertices(ITriMesh* triMesh, const std::vector<int>& deleteIndex);

/// Deletes the listed triangles by swap-to-end then pop-back; vertices are kept (they may
/// become isolated).
/// \param[in] deleteIndex triangle ids; duplicates and ids outside the mesh are ignored.
/// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when triMesh is null
///         ("DeleteTriMeshTriangles: triMesh == NULL").
ZOL_API int DeleteTriMeshTriangles(ITriMesh* triMesh, const std::vector<int>& deleteIndex);

/// Lists the vertices used by no triangle, ascending.
/// \param[out] isolatedIds cleared first.
/// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when triMesh or isolatedIds is null
///         ("FindIsolatedVertices: triMesh == NULL || isolatedIds == NULL").
ZOL_API int FindIsolatedVertices(ITriMesh* triMesh, std::vector<int>* isolatedIds);

/// Axis-aligned bounding box of all vertices (isolated ones included).
/// \param[out] bboxMin smallest x, y, z.
/// \param[out] bboxMax largest x, y, z.
/// \return RESULT_OK; RESULT_INVALID_INPUT (-2), checked in this order, when triMesh is
///         null ("CalculateTriMeshBoundingBox: triMesh == NULL"), an output is null
///         ("CalculateTriMeshBoundingBox: bboxMin == NULL || bboxMax == NULL") or the mesh
///         has no vertex ("CalculateTriMeshBoundingBox: vertexCount < 1").
ZOL_API int CalculateTriMeshBoundingBox(ITriMesh* triMesh, Vector3* bboxMin, Vector3* bboxMax);

/// Mean length of the triangle sides: every triangle contributes its three sides, so an
/// edge shared by two triangles counts twice (on a closed mesh this equals the mean over
/// distinct edges).
/// \param[out] averageLength in the unit of the coordinates.
/// \return RESULT_OK; RESULT_INVALID_INPUT (-2), checked in this order, when triMesh is
///         null ("CalculateTriMeshAverageEdgeLength: triMesh == NULL"), averageLength is
///         null ("...: averageLength == NULL"), the mesh has no triangle ("...:
///         triangleCount < 1") or a triangle names a vertex outside the mesh ("...: invalid
///         vertex id <v> in triangle <t>").
ZOL_API int CalculateTriMeshAverageEdgeLength(ITriMesh* triMesh, double* averageLength);

/// Tells whether two triangles in the plane overlap, i.e. share an area (separating-axis
/// test over the six side normals). Touching does not count: triangles that meet only
/// along a side or at a corner, as neighbours in a UV layout do, do not overlap, and a
/// degenerate triangle (no area) overlaps nothing. Either orientation is accepted.
/// \param[in] triangle0 three corners.
/// \param[in] triangle1 three corners.
/// \param[in] tolerance how deep (in coordinate units) the triangles must reach into each
/// other along every axis to count as overlapping; 0 is the exact test. A negative value
/// makes touching and slightly apart triangles count as overlapping.
/// \return true when the triangles overlap by more than \p tolerance.
ZOL_API bool IsTriangleOverlap2D(const Vector2 triangle0[3],
                                 const Vector2 triangle1[3],
                                 double tolerance = 0.0);

}  // namespace ZOL
