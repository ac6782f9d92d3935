// Shape detection: fits of primitives to oriented points, and selection of the smooth
// patch of a mesh around a seed triangle.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/TriMeshInfo.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class ZOL_API DetectShape {
public:
    /// Least-squares plane through oriented points. Fewer than three points give their
    /// mean and the normalised sum of their normals; otherwise the normal is the
    /// direction of least spread of the points, turned to agree with normals[0].
    /// Plain computation: no progress, no log.
    /// \param[in] points positions.
    /// \param[in] normals unit normals, normals[i] belongs to points[i].
    /// \param[out] center mean of the points.
    /// \param[out] normal unit plane normal.
    /// \return false for no points or counts that differ (outputs untouched), or when the
    ///         eigen solve fails (center already written); true otherwise.
    static bool FitPlane(const std::vector<Vector3>& points,
                         const std::vector<Vector3>& normals,
                         Vector3& center,
                         Vector3& normal);

    /// Sphere through oriented points: with four or more, the least-squares solution of
    /// n_i . c + r = n_i . p_i; with two or three, the midpoint of the closest points of
    /// the normal lines of the first two (the third is ignored).
    /// Plain computation: no progress, no log.
    /// \param[in] points positions.
    /// \param[in] normals unit normals, outward or inward alike.
    /// \param[out] center sphere centre.
    /// \param[out] radius sphere radius (>= 0).
    /// \return false for fewer than two points, counts that differ, parallel normals of
    ///         the two points used, or a singular least-squares system.
    static bool FitSphere(const std::vector<Vector3>& points,
                          const std::vector<Vector3>& normals,
                          Vector3& center,
                          double& radius);

    /// Selects the patch that continues triangle \p selectFaceId without a crease: grows
    /// across edges shared by exactly two triangles while the normals (as the mesh
    /// returns them) of the two triangles differ by less than \p angleTol. Builds the edge
    /// cache and runs _SelectTangentFace.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] selectFaceId the seed triangle.
    /// \param[in] angleTol largest angle between neighbouring normals, in radians.
    /// \param[out] indexRes cleared, then the seed and each selected triangle in the order
    ///             of selection (breadth first).
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) for a null argument ("SelectTangentFace:
    ///         triMesh == NULL || indexRes == NULL"), a mesh with fewer than 3 vertices or
    ///         no triangle ("...: invalid triMesh, vertexCount=<v> faceCount=<f>") or a seed
    ///         out of range ("...: invalid selectFaceId <id> / <count>"); the edge cache's
    ///         code when it fails (its line, then "...: CacheDataForEdgeInfos failed
    ///         <code>"). indexRes is unchanged on failure.
    static int SelectTangentFace(const ITriMesh* triMesh,
                                 int selectFaceId,
                                 double angleTol,
                                 std::vector<int>* indexRes);

    /// SelectTangentFace with a caller's edge cache, which is (re)built here.
    /// \param[in,out] triMeshInfo the cache of \p triMesh.
    /// \return as SelectTangentFace.
    static int _SelectTangentFace(const ITriMesh* triMesh,
                                  TriMeshInfo& triMeshInfo,
                                  int selectFaceId,
                                  double angleTol,
                                  std::vector<int>* indexRes);
};

}  // namespace ZOL
