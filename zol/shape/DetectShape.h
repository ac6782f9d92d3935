// Shape detection: fits of primitives to oriented points, and selection of the smooth
// patch of a mesh around a seed triangle.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
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

    // ---- Declared for hosts, not provided here ---------------------------------------
    // Each follows the API frame and answers RESULT_NOT_AVAILABLE (-8) once its arguments
    // pass the checks listed with it. Unlike FitPlane and FitSphere, the cylinder and cone
    // fits answer a status, since a bool could not say that the fit is not available.

    /// Splits an oriented cloud into primitives (planes, spheres, cylinders, cones) by
    /// growing regions whose points lie within \p distanceTol of one fitted primitive and
    /// whose normals agree with it within \p angleTol.
    /// \param[in] pointCloud the points; must have normals; only read.
    /// \param[in] distanceTol in coordinate units, greater than 0.
    /// \param[in] angleTol in radians, in (0, 90 degrees].
    /// \param[in] minPointCount the fewest points a primitive keeps, at least 3.
    /// \param[out] primitiveIds the primitive of every point, -1 for none.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), in this order, for a
    ///         null cloud or output or a cloud without normals ("DetectShape::
    ///         DetectPrimitive: pointCloud == NULL || primitiveIds == NULL ||
    ///         !pointCloud->HasNormal()"), a tolerance out of range ("DetectShape::
    ///         DetectPrimitive: distanceTol <= 0 || angleTol out of (0, 90]") or
    ///         minPointCount < 3 ("DetectShape::DetectPrimitive: minPointCount < 3").
    static int DetectPrimitive(const IPointCloud* pointCloud,
                               double distanceTol,
                               double angleTol,
                               int minPointCount,
                               std::vector<int>* primitiveIds);

    /// Selects the triangles of the primitive (plane, sphere, cylinder or cone) that
    /// triangle \p selectFaceId lies on: grows from it while the triangles stay within
    /// \p distanceTol of the primitive fitted so far.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] selectFaceId the seed triangle.
    /// \param[in] distanceTol in coordinate units, greater than 0.
    /// \param[out] faceIds the selected triangles.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), in this order, for a
    ///         null mesh or output ("DetectShape::SelectPrimitive: triMesh == NULL ||
    ///         faceIds == NULL"), a seed out of range ("DetectShape::SelectPrimitive:
    ///         invalid selectFaceId") or distanceTol not above 0 ("DetectShape::
    ///         SelectPrimitive: distanceTol <= 0").
    static int SelectPrimitive(const ITriMesh* triMesh,
                               int selectFaceId,
                               double distanceTol,
                               std::vector<int>* faceIds);

    /// Least-squares cylinder through oriented points, its axis first found from the
    /// normals (which are perpendicular to it) and then rectified. No dump record.
    /// \param[in] points positions, at least 3.
    /// \param[in] normals unit normals, normals[i] belongs to points[i].
    /// \param[out] axisPoint a point of the axis.
    /// \param[out] axisDirection unit axis direction.
    /// \param[out] radius the radius.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for counts that differ
    ///         or fewer than 3 points ("DetectShape::FitCylinder: points.size() !=
    ///         normals.size() || points.size() < 3").
    static int FitCylinder(const std::vector<Vector3>& points,
                           const std::vector<Vector3>& normals,
                           Vector3& axisPoint,
                           Vector3& axisDirection,
                           double& radius);

    /// Least-squares cone through oriented points. No dump record.
    /// \param[in] points positions, at least 4.
    /// \param[in] normals unit normals, normals[i] belongs to points[i].
    /// \param[out] apex the cone's apex.
    /// \param[out] axisDirection unit axis direction, from the apex into the cone.
    /// \param[out] halfAngle the half opening angle, in radians.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for counts that differ
    ///         or fewer than 4 points ("DetectShape::FitCone: points.size() !=
    ///         normals.size() || points.size() < 4").
    static int FitCone(const std::vector<Vector3>& points,
                       const std::vector<Vector3>& normals,
                       Vector3& apex,
                       Vector3& axisDirection,
                       double& halfAngle);
};

}  // namespace ZOL
