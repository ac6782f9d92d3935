// Curves on meshes: smoothing, offsetting and untangling curves given as points on
// triangles, and joining face points into curves. Declared for hosts; not provided by
// this library.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/PointOnFace.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Edits curves that lie on a mesh. A curve on the mesh is a sequence of points on
/// triangles; a closed curve joins its last point to its first. Every member answers
/// RESULT_NOT_AVAILABLE once its arguments pass the checks listed with it.
class ZOL_API OptimiseCurve {
public:
    /// Smooths a curve while keeping it on the surface.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] iterationCount number of passes, at least 1.
    /// \param[in] isClosed whether the curve is a loop.
    /// \param[in,out] curve the curve, at least two points; rewritten.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("OptimiseCurve::SmoothCurveOnMesh: triMesh == NULL || curve == NULL"),
    ///         iterationCount < 1 ("OptimiseCurve::SmoothCurveOnMesh: iterationCount < 1")
    ///         or fewer than two points ("OptimiseCurve::SmoothCurveOnMesh: curve size < 2").
    static int SmoothCurveOnMesh(const ITriMesh* triMesh,
                                 int iterationCount,
                                 bool isClosed,
                                 std::vector<PointOnFace>* curve);

    /// The curve on the surface at a given geodesic distance to the left of a curve.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] curve the source curve, at least two points.
    /// \param[in] isClosed whether the curve is a loop.
    /// \param[in] offsetDistance distance in model units; negative offsets to the right.
    /// \param[out] offsetCurve the result.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("OptimiseCurve::ApproximateOffset: triMesh == NULL || offsetCurve == NULL")
    ///         or fewer than two points ("OptimiseCurve::ApproximateOffset: curve size < 2").
    static int ApproximateOffset(const ITriMesh* triMesh,
                                 const std::vector<PointOnFace>& curve,
                                 bool isClosed,
                                 double offsetDistance,
                                 std::vector<PointOnFace>* offsetCurve);

    /// Removes self-intersections so that the curve visits every place once.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] isClosed whether the curve is a loop.
    /// \param[in,out] curve the curve; rewritten.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("OptimiseCurve::MakeBijective: triMesh == NULL || curve == NULL").
    static int MakeBijective(const ITriMesh* triMesh,
                             bool isClosed,
                             std::vector<PointOnFace>* curve);

    /// Joins face points by shortest paths over the surface, in order.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] facePoints the points to pass, at least two.
    /// \param[in] isClosed whether to join the last point back to the first.
    /// \param[out] curve the joined curve.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("OptimiseCurve::ConnectFacePointsOnMesh: triMesh == NULL || curve == NULL")
    ///         or fewer than two points ("OptimiseCurve::ConnectFacePointsOnMesh: facePoints
    ///         size < 2").
    static int ConnectFacePointsOnMesh(const ITriMesh* triMesh,
                                       const std::vector<PointOnFace>& facePoints,
                                       bool isClosed,
                                       std::vector<PointOnFace>* curve);

    /// Joins two face points along the section of the mesh by the plane through both
    /// points that contains the given normal direction.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] start, end the end points.
    /// \param[in] planeNormal a direction of the cutting plane, not zero.
    /// \param[out] curve the joined curve.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("OptimiseCurve::ConnectFacePointsByCuttingPlane: triMesh == NULL || curve ==
    ///         NULL") or a zero direction ("OptimiseCurve::ConnectFacePointsByCuttingPlane:
    ///         planeNormal is zero").
    static int ConnectFacePointsByCuttingPlane(const ITriMesh* triMesh,
                                               const PointOnFace& start,
                                               const PointOnFace& end,
                                               const Vector3& planeNormal,
                                               std::vector<PointOnFace>* curve);

    /// Smooths a polyline that crosses the surface (points need not lie on the mesh),
    /// pulling it towards the surface.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] iterationCount number of passes, at least 1.
    /// \param[in] isClosed whether the polyline is a loop.
    /// \param[in,out] curve the polyline; rewritten.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("OptimiseCurve::SmoothCurveCrossMesh: triMesh == NULL || curve == NULL") or
    ///         iterationCount < 1 ("OptimiseCurve::SmoothCurveCrossMesh: iterationCount <
    ///         1").
    static int SmoothCurveCrossMesh(const ITriMesh* triMesh,
                                    int iterationCount,
                                    bool isClosed,
                                    std::vector<Vector3>* curve);
};

}  // namespace ZOL
