// Whole-mesh measurements: surface area and enclosed volume; sections, curvature and
// thickness are declared for hosts but not provided.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/PointOnFace.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class ZOL_API MeasureMesh {
public:
    /// Surface area: half the sum of |(b - a) x (c - a)| over all triangles (a, b, c).
    /// Degenerate triangles add 0; a mesh without triangles has area 0.
    /// \param[in] triMesh the mesh; only read.
    /// \param[out] area the area in squared coordinate units; unchanged on failure.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when triMesh is null or a triangle
    ///         names a vertex out of range; RESULT_STEP_FAIL (-3) when no worker thread
    ///         starts (each logged).
    static int ComputeArea(const ITriMesh* triMesh, double& area);

    /// Enclosed volume: |sum over triangles of a . (b x c)| / 6. The absolute value is
    /// taken once of the total, so a mesh with all triangles reversed gives the same
    /// volume; no closedness test is made, an open mesh gives what the sum gives.
    /// \param[in] triMesh the mesh; only read.
    /// \param[out] volume the volume in cubed coordinate units; unchanged on failure.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when triMesh is null or a triangle
    ///         names a vertex out of range; RESULT_STEP_FAIL (-3) when no worker thread
    ///         starts (each logged).
    static int ComputeVolume(const ITriMesh* triMesh, double& volume);

    // ---- Measurements declared for hosts, not provided here ------------------------
    // Each answers RESULT_NOT_AVAILABLE (-8) once its arguments pass the checks listed
    // with it, after recording the call when DumpOnce() armed recording.

    /// Length of the section of the mesh by a plane, on the mesh's triangles; with
    /// \p convexHull, the length of the section's convex hull in the plane instead (the
    /// girth a tape measure would read).
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] planePoint a point of the plane.
    /// \param[in] planeNormal the plane normal; need not be unit, must not be zero.
    /// \param[in] convexHull measure the convex hull of the section.
    /// \param[out] length in coordinate units.
    /// \param[out] curvePoints the section's polyline; may be null.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("MeasureMesh::ComputeSectionExact: triMesh == NULL") or a zero or
    ///         non-finite normal ("MeasureMesh::ComputeSectionExact: invalid planeNormal").
    static int ComputeSectionExact(const ITriMesh* triMesh,
                                   const Vector3& planePoint,
                                   const Vector3& planeNormal,
                                   bool convexHull,
                                   double& length,
                                   std::vector<Vector3>* curvePoints);
    /// Length of the section curve on the mesh through the given points on faces, in
    /// their order.
    /// \param[in] sectionPoints at least 2 points on the mesh's triangles.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("MeasureMesh::ComputeSectionExact: triMesh == NULL"), fewer than 2 points
    ///         ("MeasureMesh::ComputeSectionExact: sectionPoints size < 2") or a triangle
    ///         id outside the mesh ("MeasureMesh::ComputeSectionExact: triangle id out of
    ///         range").
    static int ComputeSectionExact(const ITriMesh* triMesh,
                                   const std::vector<PointOnFace>& sectionPoints,
                                   double& length,
                                   std::vector<Vector3>* curvePoints);

    /// ComputeSectionExact on a smoothed section curve, which measures a scanned surface's
    /// girth without its noise; same arguments, checks and lines, named
    /// "MeasureMesh::ComputeSectionApproximate: ...".
    static int ComputeSectionApproximate(const ITriMesh* triMesh,
                                         const Vector3& planePoint,
                                         const Vector3& planeNormal,
                                         bool convexHull,
                                         double& length,
                                         std::vector<Vector3>* curvePoints);
    /// ComputeSectionExact through points on faces, on a smoothed section curve.
    static int ComputeSectionApproximate(const ITriMesh* triMesh,
                                         const std::vector<PointOnFace>& sectionPoints,
                                         double& length,
                                         std::vector<Vector3>* curvePoints);

    /// Principal curvatures and directions at every vertex. Any output may be null.
    /// \param[in] triMesh the mesh; only read.
    /// \param[out] minCurvature, maxCurvature one value per vertex, in 1 / coordinate unit.
    /// \param[out] minDirections, maxDirections one unit tangent vector per vertex.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("MeasureMesh::ComputePrincipalCurvature: triMesh == NULL") or one without
    ///         triangles ("MeasureMesh::ComputePrincipalCurvature: triangleCount < 1").
    static int ComputePrincipalCurvature(const ITriMesh* triMesh,
                                         std::vector<double>* minCurvature,
                                         std::vector<double>* maxCurvature,
                                         std::vector<Vector3>* minDirections,
                                         std::vector<Vector3>* maxDirections);

    /// Wall thickness at every vertex: the distance to the opposite side of the surface
    /// along the inward normal, capped at \p maxThickness.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] maxThickness the cap, in coordinate units, greater than 0.
    /// \param[out] thickness one value per vertex.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh or
    ///         output ("MeasureMesh::ComputeThickness: triMesh == NULL || thickness ==
    ///         NULL") or a cap not above 0 or NaN ("MeasureMesh::ComputeThickness:
    ///         maxThickness <= 0").
    static int ComputeThickness(const ITriMesh* triMesh,
                                double maxThickness,
                                std::vector<double>* thickness);
};

}  // namespace ZOL
