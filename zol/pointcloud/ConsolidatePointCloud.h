// ConsolidatePointCloud: operations that clean one point cloud in place: estimating,
// orienting and reversing its normals, smoothing the normals, and smoothing the points
// by plane projection, bilateral weighting or along their normals.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class PointCloudInfo;

/// Static operations on one IPointCloud. Each public operation builds a neighbour context
/// (PointCloudInfo) for the call; the underscore forms take the caller's context so that
/// several steps on one cloud build its index once. Neighbour counts include the point
/// itself and are clamped to the point count. A failed call leaves the cloud as it was
/// (the smoothing iterations write complete passes only).
class ZOL_API ConsolidatePointCloud {
public:
    /// How _SmoothGeometry moves a selected point.
    enum SmoothQuality : int {
        SMOOTH_QUALITY_PLANE = 0,     ///< onto the least-squares plane of its neighbours
        SMOOTH_QUALITY_BILATERAL = 1  ///< along that plane's normal, bilaterally weighted
    };

    // ---- Normal estimation -------------------------------------------------------

    /// Estimates a unit normal per point, the normal of the least-squares plane of its
    /// \p neighborCount nearest points (the eigenvector of the smallest eigenvalue of
    /// their covariance), orients the normals consistently, stores them and turns the
    /// cloud's normals on. Orientation, in this order of preference:
    /// - \p cameraDirection given: every normal faces the scanner (n . direction < 0);
    /// - a PointCloud with grid topology (a range image): every normal faces the
    ///   scanner, whose side follows from the grid: seen from the scanner, cell x grows
    ///   to the right and y upwards (the layout of the range scans that
    ///   Parser::ImportPointCloud reads);
    /// - otherwise: orientation is propagated over the neighbour graph along the most
    ///   parallel normals (a minimum spanning tree on 1 - |ni . nj|), and each connected
    ///   part then faces away from its centroid on the whole.
    /// Normals nearly perpendicular to the viewing direction take their side from their
    /// neighbours. Results do not depend on the thread count.
    /// \param[in,out] pointCloud the cloud; normals are written, points are not moved.
    /// \param[in] neighborCount points per plane fit, at least 4.
    /// \param[in] cameraDirection the direction the scanner looks in (from the scanner
    ///            into the scene, as EstimateCameraDirection gives it); null when unknown.
    /// \return RESULT_OK (0);
    ///         RESULT_INVALID_INPUT (-2) for a null cloud or neighborCount < 4
    ///         ("ConsolidatePointCloud::CalculatePointCloudNormal: pointCloud == NULL ||
    ///         neighborCount < 4") or a zero or non-finite cameraDirection
    ///         ("ConsolidatePointCloud::CalculatePointCloudNormal: invalid
    ///         cameraDirection");
    ///         RESULT_FAIL (-1) for fewer than 3 points
    ///         ("ConsolidatePointCloud::CalculatePointCloudNormal invalid pointCount: " n);
    ///         the neighbour step's status when the index cannot be built (e.g. a NaN
    ///         coordinate) or searched ("ConsolidatePointCloud::CalculatePointCloudNormal:
    ///         neighbor search failed " and the status).
    static int CalculatePointCloudNormal(IPointCloud* pointCloud,
                                         int neighborCount,
                                         const Vector3* cameraDirection = nullptr);
    /// CalculatePointCloudNormal on the caller's neighbour context (same checks, lines
    /// and statuses); RESULT_INVALID_INPUT (-2) also when \p info already holds the index
    /// of a cloud of another size ("ConsolidatePointCloud::CalculatePointCloudNormal: info
    /// holds the index of another cloud").
    static int _CalculatePointCloudNormal(IPointCloud* pointCloud,
                                          PointCloudInfo& info,
                                          int neighborCount,
                                          const Vector3* cameraDirection);

    /// Re-orients the existing normals of a cloud by the rules of
    /// CalculatePointCloudNormal, flipping normals only (no normal changes direction
    /// otherwise, and none is rescaled).
    /// \param[in,out] pointCloud the cloud; must have normals.
    /// \param[in] neighborCount neighbours per point of the propagation graph, at least 4.
    /// \param[in] cameraDirection as for CalculatePointCloudNormal; null when unknown.
    /// \return RESULT_OK (0);
    ///         RESULT_INVALID_INPUT (-2) for a null cloud or neighborCount < 4
    ///         ("ConsolidatePointCloud::OrientPointCloudNormal: pointCloud == NULL ||
    ///         neighborCount < 4"), a cloud without normals
    ///         ("ConsolidatePointCloud::OrientPointCloudNormal: pointCloud should have
    ///         normal first") or a zero or non-finite cameraDirection
    ///         ("ConsolidatePointCloud::OrientPointCloudNormal: invalid cameraDirection");
    ///         RESULT_FAIL (-1) for an empty cloud
    ///         ("ConsolidatePointCloud::OrientPointCloudNormal invalid pointCount: 0");
    ///         the neighbour step's status ("ConsolidatePointCloud::OrientPointCloudNormal:
    ///         neighbor search failed " and the status).
    static int OrientPointCloudNormal(IPointCloud* pointCloud,
                                      int neighborCount,
                                      const Vector3* cameraDirection = nullptr);

    /// Negates every normal of the cloud.
    /// \return RESULT_OK (0) (also for an empty cloud);
    ///         RESULT_INVALID_INPUT (-2) for a null cloud
    ///         ("ConsolidatePointCloud::ReversePointCloudNormal: pointCloud == NULL") or a
    ///         cloud without normals ("ConsolidatePointCloud::ReversePointCloudNormal:
    ///         pointCloud should have normal first").
    static int ReversePointCloudNormal(IPointCloud* pointCloud);

    // ---- Normal smoothing ----------------------------------------------------------

    /// Smooths the normals by one sparse least-squares solve: each free normal keeps its
    /// old value with weight \p normalWeight and equals the mean of its k - 1 nearest
    /// other points' normals with weight 1; normals listed in \p fixedIndex are pinned.
    /// The free normals are renormalised and written after all three solves succeeded.
    /// Progress 0.1, 0.3, 0.5, 0.65, 0.8, 0.95, 1.0.
    /// \param[in,out] pointCloud the cloud; must have normals.
    /// \param[in] normalWeight weight of the old normal, > REAL_TOL (1e-15).
    /// \param[in] neighborCount k, at least 4 (clamped to the point count).
    /// \param[in] fixedIndex points whose normals stay as they are; null for none.
    /// \return RESULT_OK (0);
    ///         RESULT_INVALID_INPUT (-2): null cloud ("ConsolidatePointCloud::SmoothNormal
    ///         input pointCloud is NULL"), no normals ("ConsolidatePointCloud::SmoothNormal
    ///         pointCloud should have normal first"), normalWeight <= REAL_TOL
    ///         ("ConsolidatePointCloud::SmoothNormal normalWeight should large than
    ///         REAL_TOL: " and the value), neighborCount < 4
    ///         ("ConsolidatePointCloud::SmoothNormal, invalid neighborCount < 4"), a fixed
    ///         index outside the cloud ("ConsolidatePointCloud::SmoothNormal invalid
    ///         fixedIndex: " and the index), checked in this order after the point count;
    ///         RESULT_FAIL (-1) for an empty cloud ("ConsolidatePointCloud::SmoothNormal
    ///         invalid pointCount: 0");
    ///         the neighbour step's status unchanged, e.g. -3 for a NaN coordinate
    ///         ("ConsolidatePointCloud::SmoothNormal: InitAnn failed " or "...:
    ///         FindNearestNeighbors failed " and the status);
    ///         RESULT_STEP_FAIL (-3) when the matrix cannot be built
    ///         ("ConsolidatePointCloud::SmoothNormal: sparse matrix build failed");
    ///         the solver's status when factorisation or a solve fails
    ///         ("ConsolidatePointCloud::SmoothNormal: LeastSquareSparseLUSolver Factorize
    ///         failed ", "... Solve X failed ", "... Solve Y failed ", "... Solve Z failed "
    ///         followed by the status).
    static int SmoothNormal(IPointCloud* pointCloud,
                            double normalWeight,
                            int neighborCount,
                            const std::vector<int>* fixedIndex);
    /// SmoothNormal on the caller's neighbour context (same checks, lines and statuses);
    /// RESULT_INVALID_INPUT (-2) also when \p info already holds the index of a cloud of
    /// another size ("ConsolidatePointCloud::SmoothNormal: info holds the index of another
    /// cloud").
    static int _SmoothNormal(IPointCloud* pointCloud,
                             PointCloudInfo& info,
                             double normalWeight,
                             int neighborCount,
                             const std::vector<int>* fixedIndex);

    // ---- Geometry smoothing --------------------------------------------------------

    /// Feature-preserving smoothing: each selected point moves along its own normal to
    /// the normal component of the weighted mean of itself (weight 1) and its k - 1
    /// nearest other points, weighted (nj . ni - cos(sharpAngle)) / (1 - cos(sharpAngle))
    /// where positive, so neighbours beyond \p sharpAngle do not pull. Neighbourhoods are
    /// found once; each iteration reads the previous iteration's positions. Normals are
    /// not changed. Progress 0.1, 0.3, 0.3 + 0.7 * it / iterationCount, 1.0.
    /// \param[in,out] pointCloud the cloud; must have normals.
    /// \param[in,out] info the cloud's neighbour context.
    /// \param[in] neighborCount k, at least 4 (clamped to the point count).
    /// \param[in] sharpAngle radians in [0, pi].
    /// \param[in] iterationCount passes, at least 1.
    /// \param[in] selectIndex points that move; null for all.
    /// \return RESULT_OK (0);
    ///         RESULT_INVALID_INPUT (-2), checked in this order: null cloud
    ///         ("ConsolidatePointCloud::SmoothGeometryByNormal: input pointCloud is NULL"),
    ///         empty cloud ("ConsolidatePointCloud::SmoothGeometryByNormal: invalid point
    ///         count: 0"), no normals ("ConsolidatePointCloud::SmoothGeometryByNormal: input
    ///         pointCloud should have normal first"), iterationCount < 1
    ///         ("ConsolidatePointCloud::SmoothGeometryByNormal: invalid iterationCount: "
    ///         and the value), neighborCount < 4 ("ConsolidatePointCloud::
    ///         SmoothGeometryByNormal: invalid neighborCount: " and the value), sharpAngle
    ///         outside [0, pi] ("ConsolidatePointCloud::SmoothGeometryByNormal: invalid
    ///         sharpAngle, sharpAngle > 180 * ONE_RADIAN || sharpAngle < 0 - " and the
    ///         value), an empty selection ("SmoothGeometryByNormal: selectIndex is empty"),
    ///         a selected index outside the cloud ("SmoothGeometryByNormal: invalid
    ///         selectIndex: " and the index), \p info holding the index of a cloud of
    ///         another size ("SmoothGeometryByNormal: info holds the index of another
    ///         cloud");
    ///         the neighbour step's status ("SmoothGeometryByNormal: InitAnn Failed ",
    ///         "SmoothGeometryByNormal Ann find nearest neighbor failed " and the status).
    static int _SmoothGeometryByNormal(IPointCloud* pointCloud,
                                       PointCloudInfo& info,
                                       int neighborCount,
                                       double sharpAngle,
                                       int iterationCount,
                                       const std::vector<int>* selectIndex);

    /// Moves every selected point onto the least-squares plane of its \p neighborCount
    /// nearest points, \p iterationCount times (_SmoothGeometry with
    /// SMOOTH_QUALITY_PLANE). A cloud with fewer than 3 or fewer than neighborCount
    /// points is left as it is and RESULT_OK returned.
    /// \param[in] selectIndex points that move (an empty list moves none); null for all.
    /// \return RESULT_OK (0);
    ///         RESULT_INVALID_INPUT (-2) for a null cloud ("ConsolidatePointCloud::
    ///         SmoothGeometry: input pointCloud is NULL") or neighborCount < 3 or
    ///         iterationCount < 1 ("ConsolidatePointCloud::SmoothGeometry: neighborCount < 3
    ///         || iterationCount < 1");
    ///         otherwise _SmoothGeometry's status.
    static int SmoothGeometry(IPointCloud* pointCloud,
                              int neighborCount,
                              int iterationCount,
                              const std::vector<int>* selectIndex);
    /// Plane-projection (quality 0) or bilateral (quality 1) smoothing of the selected
    /// points on the workers (one PlaneProjectMT task per thread, points interleaved);
    /// the neighbourhoods of the selected points are found once, and each iteration
    /// reads the previous iteration's positions. Any other quality leaves the points in
    /// place. Results do not depend on the thread count. Progress 0.1, 0.175, 0.2,
    /// 0.2 + 0.8 * it / iterationCount, 1.0.
    /// \param[in,out] info the cloud's neighbour context.
    /// \param[in] neighborCount k, the point itself included (clamped to the point count).
    /// \param[in] iterationCount passes; none are made below 1.
    /// \param[in] selectIndex points that move (an empty list moves none); null for all.
    /// \return RESULT_OK (0);
    ///         RESULT_INVALID_INPUT (-2) when \p info already holds the index of a cloud of
    ///         another size ("_SmoothGeometry: info holds the index of another cloud") or
    ///         for a selected index outside the cloud
    ///         ("ConsolidatePointCloud::SmoothGeometry: invalid selectIndex: " and the
    ///         index);
    ///         the failing step's status after its line: "_SmoothGeometry: InitAnn Failed ",
    ///         "_SmoothGeometry: ComputeNeighbors Failed ", "_SmoothGeometry:
    ///         _CalculatePointListDensity Failed ", "_SmoothGeometry: GetNeighbor Failed "
    ///         (a list the index cannot give, as for an index built over another cloud)
    ///         with the status;
    ///         RESULT_STEP_FAIL (-3) when no worker starts ("ConsolidatePointCloud::
    ///         SmoothGeometry: invalid thread count = " and the count) or a task cannot be
    ///         queued ("ConsolidatePointCloud::SmoothGeometry: ThreadPool InsertTask
    ///         PlaneProjectMT Failed");
    ///         RESULT_FAIL (-1) when a plane fit fails ("ConsolidatePointCloud::
    ///         SmoothGeometry::EigenSolver failed").
    static int _SmoothGeometry(IPointCloud* pointCloud,
                               PointCloudInfo& info,
                               int neighborCount,
                               int iterationCount,
                               const std::vector<int>* selectIndex,
                               SmoothQuality quality);

    // ---- Measures and clean-up declared for hosts, not provided here ---------------
    // Each answers RESULT_NOT_AVAILABLE (-8) once its arguments pass the checks listed
    // with it, after recording the call when DumpOnce() armed recording.

    /// Isolation of every point: the mean distance to its neighbours over the cloud's
    /// median of that mean, so that stray points stand out with values well above 1.
    /// \param[in] pointCloud the cloud; only read.
    /// \param[in] neighborCount neighbours per point, the point itself included; at least 2.
    /// \param[out] isolation one value per point.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null cloud or
    ///         output ("ConsolidatePointCloud::CalculateIsolation: pointCloud == NULL ||
    ///         isolation == NULL") or neighborCount < 2
    ///         ("ConsolidatePointCloud::CalculateIsolation: neighborCount < 2").
    static int CalculateIsolation(const IPointCloud* pointCloud,
                                  int neighborCount,
                                  std::vector<double>* isolation);

    /// Uniformity of the sampling around every point: 1 where the neighbours are evenly
    /// spaced, towards 0 where they cluster.
    /// \param[in] pointCloud the cloud; only read.
    /// \param[in] neighborCount neighbours per point, the point itself included; at least 3.
    /// \param[out] uniformity one value per point in [0, 1].
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null cloud or
    ///         output ("ConsolidatePointCloud::CalculateUniformity: pointCloud == NULL ||
    ///         uniformity == NULL") or neighborCount < 3
    ///         ("ConsolidatePointCloud::CalculateUniformity: neighborCount < 3").
    static int CalculateUniformity(const IPointCloud* pointCloud,
                                   int neighborCount,
                                   std::vector<double>* uniformity);

    /// Outlier score of every point: its distance to the plane of its neighbours over the
    /// neighbourhood's spread; scores above 1 mark likely outliers.
    /// \param[in] pointCloud the cloud; only read.
    /// \param[in] neighborCount neighbours per point, the point itself included; at least 4.
    /// \param[out] outlierValues one score per point, 0 or more.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null cloud or
    ///         output ("ConsolidatePointCloud::CalculateOutlier: pointCloud == NULL ||
    ///         outlierValues == NULL") or neighborCount < 4
    ///         ("ConsolidatePointCloud::CalculateOutlier: neighborCount < 4").
    static int CalculateOutlier(const IPointCloud* pointCloud,
                                int neighborCount,
                                std::vector<double>* outlierValues);

    /// Cleans one raw range scan in place: removes isolated points and points seen at a
    /// grazing angle steeper than \p maxZAngle, then estimates oriented normals.
    /// \param[in,out] pointCloud the scan.
    /// \param[in] neighborCount neighbours per point, at least 4.
    /// \param[in] maxZAngle radians in [0, 90 degrees].
    /// \param[out] removeIndex the indices, before removal, of the removed points; may be
    ///             null.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), in this order, for a
    ///         null cloud ("ConsolidatePointCloud::ConsolidateRawScanData: pointCloud ==
    ///         NULL"), neighborCount < 4 ("ConsolidatePointCloud::ConsolidateRawScanData:
    ///         neighborCount < 4") or maxZAngle outside [0, 90 degrees] or NaN
    ///         ("ConsolidatePointCloud::ConsolidateRawScanData: maxZAngle < 0 || maxZAngle
    ///         > 90.0").
    static int ConsolidateRawScanData(IPointCloud* pointCloud,
                                      int neighborCount,
                                      double maxZAngle,
                                      std::vector<int>* removeIndex);

    /// Finds, in registered scans, the points that repeat a surface already covered by
    /// an earlier scan of the list (closer than \p overlapDistance to it).
    /// \param[in] pointCloudList the scans in one frame, earlier scans kept; only read.
    /// \param[in] overlapDistance in coordinate units, greater than 0.
    /// \param[out] removeIndexList per scan, the indices of its overlapping points.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), in this order, for
    ///         fewer than 2 scans ("ConsolidatePointCloud::RemoveOverlap: cloudCount < 2"),
    ///         a null scan ("ConsolidatePointCloud::RemoveOverlap: pointCloud is NULL:
    ///         cloudId = " c), a distance not above 0 or NaN
    ///         ("ConsolidatePointCloud::RemoveOverlap: overlapDistance <= 0") or a null
    ///         output ("ConsolidatePointCloud::RemoveOverlap: removeIndexList == NULL").
    static int RemoveOverlap(const std::vector<IPointCloud*>& pointCloudList,
                             double overlapDistance,
                             std::vector<std::vector<int>>* removeIndexList);
};

/// Re-estimates the normals of a cloud whose points have moved (after smoothing, say):
/// each point gets the plane-fit normal of its \p neighborCount nearest points, turned to
/// the side of its old normal; a point whose old normal is zero or perpendicular takes
/// its side from its neighbours. Results do not depend on the thread count.
/// \param[in,out] pointCloud the cloud; must have normals.
/// \param[in] neighborCount points per plane fit, at least 4.
/// \return RESULT_OK (0);
///         RESULT_INVALID_INPUT (-2) for a null cloud or neighborCount < 4
///         ("UpdatePointCloudNormal: pointCloud == NULL || neighborCount < 4") or a cloud
///         without normals ("UpdatePointCloudNormal: pointCloud should has normal first");
///         RESULT_FAIL (-1) for fewer than 3 points ("UpdatePointCloudNormal invalid
///         pointCount: " n);
///         the neighbour step's status ("UpdatePointCloudNormal: neighbor search failed "
///         and the status).
ZOL_API int UpdatePointCloudNormal(IPointCloud* pointCloud, int neighborCount);

}  // namespace ZOL
