// Free point-cloud utilities that other operations build on: the viewing direction of a
// scan and the points seen at a grazing angle, deletion, copying, rigid transformation
// and the bounding box of a point list.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/IPointList.h>
#include <zol/core/Matrix4x4.h>
#include <zol/core/PointCloud.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Estimates the direction a scan was taken from: the normals are grid-sampled
/// (SamplePointCloud::GridSample, cell 0.05) so that dense regions do not dominate, and
/// the direction is minus the normalised sum of the normals of the sampled points.
/// The sampled positions are used as point indices of \p depthData as they are; with a
/// selection they are positions within the selection, so the normals summed are those
/// of the cloud's points whose indices equal those positions, not of the selected points.
/// \param[in] depthData the cloud; must carry normals.
/// \param[in] selectIndex point indices whose normals are grid-sampled, in this order;
///            null for all points.
/// \param[out] direction unit vector (zero for an empty cloud or an empty selection).
/// \return RESULT_OK (0);
///         RESULT_INVALID_INPUT (-2) for a null cloud or one without normals
///         ("EstimateCameraDirection: depthData == NULL || depthData->HasNormal() ==
///         false"), a selected index outside the cloud ("EstimateCameraDirection: selectIndex out
///         of range: " and the index) or a sampled position outside the cloud, possible
///         only with a selection longer than the cloud ("EstimateCameraDirection:
///         sampled position out of range: " and the position);
///         GridSample's code after "EstimateCameraDirection: sample failed" (e.g. -2 for
///         a non-finite normal).
ZOL_API int EstimateCameraDirection(const IPointCloud* depthData,
                                    const std::vector<int>* selectIndex,
                                    Vector3& direction);

/// Lists the points seen at a grazing angle: those whose normal makes an angle greater
/// than \p maxZAngle with the viewing direction, i.e. |n . direction| < cos(maxZAngle).
/// \param[in] pointCloud the cloud; must carry normals. Only read.
/// \param[in] maxZAngle in radians, 0 .. 90 degrees (90 * ONE_RADIAN).
/// \param[in] cameraDirection unit viewing direction; null to estimate it with
///            EstimateCameraDirection over all points.
/// \param[out] boundaryIndex cleared, then the point indices ascending; untouched for a
///             cloud of fewer than 3 points.
/// \return RESULT_OK (0), also for fewer than 3 points;
///         RESULT_INVALID_INPUT (-2) for a null cloud, no normals, or maxZAngle below 0,
///         above 90 degrees or NaN ("RemoveBoundaryPoint invalid input: pointCloud ==
///         NULL || (!pointCloud->HasNormal()) || maxZAngle < 0 || maxZAngle > 90.0");
///         EstimateCameraDirection's code when it fails.
ZOL_API int DetectBoundaryPointByZAngle(IPointCloud* pointCloud,
                                        double maxZAngle,
                                        const Vector3* cameraDirection,
                                        std::vector<int>& boundaryIndex);

/// Deletes the listed points by compaction from both ends: walking up from point 0, each
/// point to delete is swapped (SwapPoint) with the last point that survives, then the
/// deleted points are popped off the end. Survivors do NOT keep their order: each
/// deleted slot below the last survivor is filled by the last survivor.
/// \param[in] pointCloud the cloud to edit.
/// \param[in] deleteIndex point indices; duplicates count once; empty deletes nothing.
/// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for a null cloud
///         ("DeletePointCloudElements: input point cloud is null") or an index outside
///         the cloud ("DeletePointCloudElements: deleteIndex out of range: " and the
///         index; the cloud is left as it was).
ZOL_API int DeletePointCloudElements(IPointCloud* pointCloud, const std::vector<int>& deleteIndex);

/// Replaces the content of \p copyCloud by the points of \p pointCloud, in order, with
/// their normals when the source has normals (the target's has-normal flag follows the
/// source). Colours and grid data are not copied. Copying a cloud onto itself does
/// nothing.
/// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) when either cloud is null
///         ("CopyPointCloud: pointCloud == NULL || copyCloud == NULL").
ZOL_API int CopyPointCloud(const IPointCloud* pointCloud, IPointCloud* copyCloud);

/// A new PointCloud holding the copy made by the two-argument form.
/// \param[in] pointCloud the source; null gives null ("CopyPointCloud: pointCloud ==
///            NULL" is logged).
/// \return the copy, owned by the caller (delete it), or null.
ZOL_API PointCloud* CopyPointCloud(const PointCloud* pointCloud);

/// Moves every point by \p transform (Matrix4x4::TransformPoint) and, when the cloud has
/// normals, turns every normal (Matrix4x4::RotateVector, not renormalised).
/// \param[in] pointCloud the cloud to edit; null is logged ("TransformPointCloud:
///            pointCloud is NULL") and ignored.
ZOL_API void TransformPointCloud(IPointCloud* pointCloud, const Matrix4x4& transform);

/// Axis-aligned bounding box of a point list.
/// \param[out] bboxMin smallest x, y, z.
/// \param[out] bboxMax largest x, y, z.
/// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for a null list
///         ("CalculatePointCloudBoundingBox: pointList is NULL"), an empty list
///         ("CalculatePointCloudBoundingBox: pointCount is 0") or a non-finite
///         coordinate ("CalculatePointCloudBoundingBox: point " and the index, " has a
///         non-finite coordinate"); the outputs are then untouched.
ZOL_API int CalculatePointListBoundingBox(const IPointList* pointList,
                                          Vector3& bboxMin,
                                          Vector3& bboxMax);

}  // namespace ZOL
