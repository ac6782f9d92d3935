// RegistratePointCloud: rigid registration of two point clouds. A coarse pose from any
// start (congruent triangles of feature points), its refinement by point-to-plane ICP
// (optionally pulled by landmark marks), and the exact fit to a few point pairs.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/Matrix4x4.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class PointCloudInfo;

/// Rigid alignment of a "from" cloud onto a "ref" cloud. Every result transform is the
/// correction applied AFTER the initial transform: a from point p lands on the ref cloud
/// at result * (init * p); compose result * init to get the whole pose. No initial
/// transform means the identity. The clouds are only read.
class ZOL_API RegistratePointCloud {
public:
    /// Refines the pose of \p pointCloudFrom onto \p pointCloudRef by point-to-plane ICP:
    /// up to 10 tries of iterations on a sample of the from cloud (about a thousandth of
    /// it, at least 1024 points), each pairing the samples with their nearest ref points
    /// within a distance that widens while too few pairs are found, optionally pulled by
    /// marks. Runs _ICPRegistrate with automatic sampling and distance tolerance.
    /// Progress 0.2 (index), 0.4 (samples), 0.6 (tolerance), then rising to 1.0.
    /// \param[in] pointCloudRef the target cloud, at least 3 points.
    /// \param[in] refMarks landmark points on the ref cloud; null for none. Marks are used
    ///            only when both lists hold at least 2; every ref/from mark pair closer
    ///            than 1/100 of the summed median mark spacings pulls as a point pair.
    /// \param[in] pointCloudFrom the moving cloud, at least 3 points.
    /// \param[in] fromMarks landmark points on the from cloud (raw coordinates, before
    ///            the initial transform); null for none.
    /// \param[out] resultTransform the correction after \p initTransform; must not be
    ///             null. Set to the identity once the preparation succeeded.
    /// \param[in] initTransform the starting pose of the from cloud; null for identity.
    /// \param[in] hasNormal true: both clouds carry normals, used as they are, and pairs
    ///            whose normals disagree by more than 30 (later 10) degrees are dropped;
    ///            false: the normals of the from samples are estimated from their
    ///            neighbours and no angle test is made.
    /// \return RESULT_OK (0), also when ICP finds too few pairs to move (the result then
    ///         stays the identity);
    ///         RESULT_INVALID_INPUT (-2), checked in this order, for a null cloud or result
    ///         ("ICPRegistrate: pointCloudRef == NULL || pointCloudFrom == NULL ||
    ///         resultTransform == NULL"), fewer than 3 points in a cloud
    ///         ("ICPRegistrateWithNormal fromPointCount < 3 || refPointCount < 3"),
    ///         hasNormal for a cloud without normals ("ICPRegistrateWithNormal hasNormal ==
    ///         true but a cloud has no normal"), or a non-finite coordinate
    ///         ("ICPRegistrateWithNormal pointCloudRef has a non-finite coordinate", then
    ///         likewise for pointCloudFrom);
    ///         RESULT_STEP_FAIL (-3) when the ref index cannot be built
    ///         ("ICPRegistrateWithNormal Ann initialize failed") or the from cloud cannot
    ///         be sampled ("ICPRegistrate sample pointCloudFrom failed");
    ///         RESULT_FAIL (-1) when all ref points coincide ("FastCalculateDistanceTol:
    ///         pointCloudRef is a singular point");
    ///         the sample normal estimate's status after its own line.
    static int ICPRegistrate(const IPointCloud* pointCloudRef,
                             const std::vector<Vector3>* refMarks,
                             const IPointCloud* pointCloudFrom,
                             const std::vector<Vector3>* fromMarks,
                             Matrix4x4* resultTransform,
                             const Matrix4x4* initTransform,
                             bool hasNormal);

    /// The ICP worker with every parameter, on the caller's neighbour contexts (a caller
    /// that registers many pairs builds each index once). See ICPRegistrate.
    /// \param[in,out] refInfo context of \p pointCloudRef: its index is built if missing
    ///                and its cache laid out for at least 3 neighbours.
    /// \param[in,out] fromInfo context of \p pointCloudFrom, used only to estimate sample
    ///                normals when \p hasNormal is false.
    /// \param[in] fromSampleCount from points per iteration; 0 for automatic (point count
    ///            / 1000, at least 1024); capped at the from point count.
    /// \param[in] fromSampleIds fromSampleCount point ids to use instead of sampling; null
    ///            to sample.
    /// \param[in] distanceTol pairing distance unit in the clouds' length unit; null to
    ///            derive it from the ref point spacing (FastCalculateDistanceTol). Values
    ///            below 1e-15, negative ones included, are raised to 1e-15.
    /// \param[in] tryCount outer passes; below 1 means 1.
    /// \return as ICPRegistrate, and RESULT_INVALID_INPUT (-2) for a NaN distanceTol
    ///         ("ICPRegistrateWithNormal invalid distanceTol: " and the value; checked
    ///         before the coordinates), and after the index is built
    ///         for fromSampleCount < 0 ("invalid fromSampleCount: " and the value),
    ///         sample ids with a count of 0 ("ICPRegistrateWithNormal fromSampleIds given
    ///         with fromSampleCount 0") or a sample id outside the from cloud
    ///         ("ICPRegistrateWithNormal invalid fromSampleIds: " and the id).
    static int _ICPRegistrate(const IPointCloud* pointCloudRef,
                              PointCloudInfo& refInfo,
                              const std::vector<Vector3>* refMarks,
                              const IPointCloud* pointCloudFrom,
                              PointCloudInfo& fromInfo,
                              const std::vector<Vector3>* fromMarks,
                              Matrix4x4* resultTransform,
                              const Matrix4x4* initTransform,
                              bool hasNormal,
                              int fromSampleCount,
                              const int* fromSampleIds,
                              const double* distanceTol,
                              int tryCount);

    /// Finds the pose of \p pointCloudFrom on \p pointCloudRef from any start, with no
    /// initial guess. Both clouds are reduced to voxel means (the ref cloud to about
    /// 200 to 500 points, by accuracy; the from cloud on the same voxels) with
    /// plane-fit, then smoothed, normals and per-point curvature descriptors. Triangles
    /// of from feature points are matched with congruent triangles of ref points of
    /// similar curvature; each match gives a pose, and the pose under which the fewest
    /// check points miss wins. A check point (drawn from a 2.5 times finer reduction of
    /// the from cloud) misses when no point of the equally fine ref reduction lies within
    /// one voxel of it, or when their normals differ by more than about 15 degrees. The
    /// search stops early once fewer than 34 % of the check points miss. The result is
    /// coarse (a few degrees); refine it with ICPRegistrate. The same input gives the same
    /// result on any thread count. Progress 0.05, 0.15, 0.2, up to 0.85 while
    /// searching, 1.0.
    /// \param[in] pointCloudRef the target cloud; at least 3 points, with normals
    ///            oriented consistently with those of the from cloud (both outward, say).
    /// \param[in] pointCloudFrom the moving cloud; at least 3 points, with normals.
    /// \param[out] resultTransform the pose found; the identity when no match improves
    ///             on missing every check point; must not be null.
    /// \param[in] accuracy effort in [0, 1]: 0 reduces the ref cloud to about 200 points
    ///            and tries at most 500 from triangles, 20 ref points per triangle corner
    ///            and 3 candidates per triangle; 1 about 500 points, 2000 triangles, 30
    ///            ref points and 15 candidates. 0.5 is a good balance on range scans.
    /// \return RESULT_OK (0), also when nothing matched;
    ///         RESULT_INVALID_INPUT (-2), checked in this order, for a null argument
    ///         ("AlignPointCloud pointCloudRef == NULL || pointCloudFrom == NULL ||
    ///         resultTransform == NULL"), fewer than 3 points ("AlignPointCloud invalid
    ///         pointCloud count"), a cloud without normals ("error: pointCloudRef and
    ///         pointCloudFrom should have normal"), accuracy outside [0, 1] or NaN
    ///         ("invalid accuracy: " and the value), or a non-finite coordinate or
    ///         normal ("AlignPointCloud pointCloudRef has a non-finite coordinate or
    ///         normal", likewise for pointCloudFrom);
    ///         RESULT_STEP_FAIL (-3) when a cloud does not reduce to 3 points, e.g. all
    ///         its points coincide ("AlignPointCloud: simplify pointCloudRef failed",
    ///         "AlignPointCloud: simplify pointCloudFrom failed"), or a parallel step fails
    ///         (its line, then "AlignPointCloud: PrepareAlignFreeMT failed",
    ///         "AlignPointCloud FindCongruent Failed" or "AlignPointCloud VerifyTriPairMap
    ///         Failed");
    ///         the normal smoothing's status after its own line.
    static int AlignPointCloud(const IPointCloud* pointCloudRef,
                               const IPointCloud* pointCloudFrom,
                               Matrix4x4* resultTransform,
                               double accuracy);

    /// Internal step, exported for the library's own modules and its replay records; not
    /// part of the host API. The exact rigid fit to point pairs (ref[i] <-> from[i]):
    /// - 1 pair: the translation taking init * from[0] onto ref[0];
    /// - 2 pairs: midpoint onto midpoint and the (init-turned) direction from[0] - from[1]
    ///   onto ref[0] - ref[1] by the minimal rotation (the roll about that axis is free);
    /// - 3 or more: centroid onto centroid, then the rotation carrying the frame (first
    ///   point, normal of the plane through the centroid and the first two points) of the
    ///   from side onto that of the ref side. Only the centroids and the first two pairs
    ///   count (not a least-squares fit), and \p initTransform is NOT applied: the result
    ///   maps the raw from points.
    /// \param[out] resultTransform the transform; must not be null.
    /// \param[in] initTransform pose of the from points for 1 or 2 pairs; null for none.
    /// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) when the lists differ in size
    ///         ("RegistratePointCloud::_AlignPointPair: pointsRef.size() !=
    ///         pointsFrom.size()"), are empty ("RegistratePointCloud::_AlignPointPair:
    ///         pointCount == 0 "), the result is null ("RegistratePointCloud::
    ///         _AlignPointPair: resultTransform == NULL") or a point is not finite
    ///         ("RegistratePointCloud::_AlignPointPair: non-finite point").
    static int _AlignPointPair(const std::vector<Vector3>& pointsRef,
                               const std::vector<Vector3>& pointsFrom,
                               Matrix4x4* resultTransform,
                               const Matrix4x4* initTransform);

    /// Pose of \p pointCloudFrom on \p pointCloudRef from landmark marks whose pairing is
    /// not known (the marks of both clouds are matched by their mutual distances), refined
    /// by ICP. Not provided by this library: it answers after its argument checks.
    /// \param[in] pointCloudRef the target cloud, at least 3 points.
    /// \param[in] refMarks marks on the ref cloud, at least 3.
    /// \param[in] pointCloudFrom the moving cloud, at least 3 points.
    /// \param[in] fromMarks marks on the from cloud, at least 3, in its raw coordinates.
    /// \param[out] resultTransform the pose of the from cloud; must not be null.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), checked in this order,
    ///         for a null cloud or result ("RegistratePointCloud::AlignPointCloudByMark:
    ///         pointCloudRef == NULL || pointCloudFrom == NULL || resultTransform == NULL"),
    ///         fewer than 3 marks on a side ("RegistratePointCloud::AlignPointCloudByMark:
    ///         refMarks.size() < 3 || fromMarks.size() < 3") or a non-finite mark
    ///         ("RegistratePointCloud::AlignPointCloudByMark: non-finite mark").
    static int AlignPointCloudByMark(const IPointCloud* pointCloudRef,
                                     const std::vector<Vector3>& refMarks,
                                     const IPointCloud* pointCloudFrom,
                                     const std::vector<Vector3>& fromMarks,
                                     Matrix4x4* resultTransform);

    /// Poses of several overlapping scans at once: every overlapping pair is registered
    /// by ICP and the poses are relaxed together so that the loop errors spread over all
    /// pairs; the first cloud keeps its pose. Not provided by this library: it answers
    /// after its argument checks.
    /// \param[in] pointCloudList the scans, at least 2, none null.
    /// \param[in] initTransformList a starting pose per scan; null for identities.
    /// \param[in] maxIterationCount relaxation rounds, at least 1.
    /// \param[out] resultTransformList the pose of every scan; must not be null.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), checked in this order,
    ///         for fewer than 2 scans ("RegistratePointCloud::GlobalRegistrate:
    ///         pointCloudList.size() < 2"), a null scan ("RegistratePointCloud::
    ///         GlobalRegistrate: pointCloud is NULL: cloudId = " and its index), a null
    ///         result ("RegistratePointCloud::GlobalRegistrate: resultTransformList ==
    ///         NULL"), starting poses not one per scan ("RegistratePointCloud::
    ///         GlobalRegistrate: initTransformList size != pointCloudList size") or
    ///         maxIterationCount < 1 ("RegistratePointCloud::GlobalRegistrate:
    ///         maxIterationCount < 1").
    static int GlobalRegistrate(const std::vector<const IPointCloud*>& pointCloudList,
                                const std::vector<Matrix4x4>* initTransformList,
                                int maxIterationCount,
                                std::vector<Matrix4x4>* resultTransformList);

    /// Bends \p pointCloudFrom onto \p pointCloudRef: after the initial pose, every from
    /// point moves towards its nearest ref points while neighbouring points keep their
    /// relative offsets, as stiff as \p stiffness asks. Not provided by this library: it
    /// answers after its argument checks.
    /// \param[in] pointCloudRef the target cloud, at least 3 points.
    /// \param[in] pointCloudFrom the cloud to bend, at least 3 points; only read.
    /// \param[in] initTransform the starting pose of the from cloud; null for identity.
    /// \param[in] stiffness weight of keeping neighbouring offsets, above 0; larger
    ///            values bend less.
    /// \param[out] deformedPoints one position per from point; must not be null.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), checked in this order,
    ///         for a null cloud or output ("RegistratePointCloud::NonRigidICP:
    ///         pointCloudRef == NULL || pointCloudFrom == NULL || deformedPoints == NULL"),
    ///         fewer than 3 points ("RegistratePointCloud::NonRigidICP: fromPointCount < 3
    ///         || refPointCount < 3") or a stiffness that is not above 0
    ///         ("RegistratePointCloud::NonRigidICP: invalid stiffness: " and the value).
    static int NonRigidICP(const IPointCloud* pointCloudRef,
                           const IPointCloud* pointCloudFrom,
                           const Matrix4x4* initTransform,
                           double stiffness,
                           std::vector<Vector3>* deformedPoints);

    /// Registers several scans of a moving or soft object together: rigid poses as
    /// GlobalRegistrate finds them, then every scan bent onto the others as NonRigidICP
    /// does. Not provided by this library: it answers after its argument checks.
    /// \param[in] pointCloudList the scans, at least 2, none null.
    /// \param[in] initTransformList a starting pose per scan; null to find them first.
    /// \param[in] stiffness as for NonRigidICP, above 0.
    /// \param[out] resultTransformList the rigid pose of every scan; must not be null.
    /// \param[out] deformedPointsList the bent points of every scan; must not be null.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), checked in this order,
    ///         for fewer than 2 scans ("RegistratePointCloud::NonRigidGlobalRegistrate:
    ///         pointCloudList.size() < 2"), a null scan ("RegistratePointCloud::
    ///         NonRigidGlobalRegistrate: pointCloud is NULL: cloudId = " and its index), a
    ///         null output ("RegistratePointCloud::NonRigidGlobalRegistrate:
    ///         resultTransformList == NULL || deformedPointsList == NULL"), starting poses
    ///         not one per scan ("RegistratePointCloud::NonRigidGlobalRegistrate:
    ///         initTransformList size != pointCloudList size") or a stiffness that is not
    ///         above 0 ("RegistratePointCloud::NonRigidGlobalRegistrate: invalid
    ///         stiffness: " and the value).
    static int NonRigidGlobalRegistrate(const std::vector<const IPointCloud*>& pointCloudList,
                                        const std::vector<Matrix4x4>* initTransformList,
                                        double stiffness,
                                        std::vector<Matrix4x4>* resultTransformList,
                                        std::vector<std::vector<Vector3>>* deformedPointsList);
};

}  // namespace ZOL
