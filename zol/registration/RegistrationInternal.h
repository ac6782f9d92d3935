// Internal steps of registration shared between its sources: the closed-form point-pair
// fit, the fast samplers and the sample normals of ICP, its distance tolerance and the
// spacing of landmark marks. Not installed.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/Matrix4x4.h>
#include <zol/core/Vector3.h>

namespace ZOL {

class PointCloudInfo;

/// The fit of RegistratePointCloud::_AlignPointPair without the API frame (no progress,
/// no checks), for the worker threads of coarse alignment.
/// \param[in] count number of pairs, at least 1; the arrays hold that many points.
void AlignPointPairCore(const Vector3* pointsRef,
                        const Vector3* pointsFrom,
                        int count,
                        const Matrix4x4* initTransform,
                        Matrix4x4& resultTransform);

/// Farthest-point sample of a cloud, after reducing it to one point per cell of a grid
/// whose cell is the bounding-box diagonal / \p resolution (the point nearest the cell
/// centre stands for the cell). A reduction still far larger than the samples need (more
/// than 8 points per sample) is thinned once more by a grid coarsened to keep about 4
/// points per sample, so that sampling costs little on dense clouds. When the reduced
/// cloud has fewer than \p sampleCount points the ids repeat cyclically
/// (ids[i] = ids[i mod got]).
/// \param[in] pointCloud the cloud; only read.
/// \param[in] sampleCount number of ids wanted, at least 1.
/// \param[out] sampleIds resized to sampleCount, point ids of \p pointCloud.
/// \param[in] resolution cells along the bounding-box diagonal, at least 1.
/// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for resolution < 1
///         ("FastUniformSample: invalid resolution " and the value), a null cloud
///         ("FastUniformSample: pointCloud is NULL"), an empty cloud, sampleCount < 1 or a
///         null output ("FastUniformSample: empty pointCloud || sampleCount < 1 ||
///         sampleIds == NULL"); the sampler's status after its own line.
int FastUniformSample(const IPointCloud* pointCloud,
                      int sampleCount,
                      std::vector<int>* sampleIds,
                      int resolution);

/// As FastUniformSample around SamplePointCloud::GeometrySample: the share
/// \p sharpPercent of the samples is spread uniformly, the rest goes to points whose
/// normals vary within their \p neighborCount nearest points. \p flag is the sample
/// quality (0 or 1).
/// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for resolution < 1
///         ("FastGeometrySample: invalid resolution " and the value), a null cloud
///         ("FastGeometrySample: pointCloud is NULL"), a cloud without normals, an empty
///         cloud, sampleCount < 1 or a null output ("FastGeometrySample: no normal ||
///         empty pointCloud || sampleCount < 1 || sampleIds == NULL"); the sampler's
///         status after its own line.
int FastGeometrySample(const IPointCloud* pointCloud,
                       int sampleCount,
                       std::vector<int>* sampleIds,
                       int resolution,
                       double sharpPercent,
                       int neighborCount,
                       int flag);

/// One unit normal per sample: the plane fit of its 10 nearest points in \p pointCloud,
/// unoriented (point-to-plane rows do not depend on the sign); (0, 0, 0) where the
/// neighbours span no plane.
/// \param[in,out] pointCloudInfo context of \p pointCloud; its index is built if missing.
/// \param[in] sampleIds sampleCount point ids of \p pointCloud.
/// \param[out] normals resized to sampleCount.
/// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for a null cloud or ids
///         ("ComputeSamplePointNormal: pointCloud == NULL || sampleIndex == NULL") or an
///         id outside the cloud ("ComputeSamplePointNormal: invalid sample id " and the
///         id); the index's status when it cannot be built or read
///         ("ComputeSamplePointNormal: neighbor search failed " and the status).
int ComputeSamplePointNormal(const IPointCloud* pointCloud,
                             PointCloudInfo& pointCloudInfo,
                             int sampleCount,
                             const int* sampleIds,
                             std::vector<Vector3>* normals);

/// The pairing distance unit of ICP: the mean distance from the points of a grid sample
/// of the ref cloud (cell = bounding-box diagonal / 200) to their \p neighborCount
/// nearest points, the point itself included (so about 2/3 of the spacing for 3).
/// \param[in,out] refInfo context of \p pointCloudRef with a built index.
/// \param[out] distanceTol the tolerance.
/// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for a null argument; RESULT_FAIL
///         (-1) for a bounding box without extent ("FastCalculateDistanceTol:
///         pointCloudRef is a singular point"); the bounding box's, the grid sample's
///         ("RegistratePointCloud:: FastCalculateDistanceTol: SamplePointCloud::GridSample Failed:
///         " and the code) or the neighbour query's status.
int FastCalculateDistanceTol(const IPointCloud* pointCloudRef,
                             PointCloudInfo& refInfo,
                             int neighborCount,
                             double* distanceTol);

/// Median distance from each mark to its nearest other mark: the element at (N - 1) / 2
/// of the N distances after a partial sort. A single mark has distance 1.7e308 squared
/// root; no marks give 0.
double CalculateMarkSpacing(const std::vector<Vector3>& marks);

}  // namespace ZOL
