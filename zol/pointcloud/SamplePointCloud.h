// SamplePointCloud: picks a subset of a cloud's points and returns their indices, by
// farthest-point sampling (uniform spread), by normal variation (features first) or one
// point per grid cell. The cloud is only read.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/IPointList.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// How hard farthest-point sampling works. Any value other than these two is rejected
/// (the fixed underlying type makes such a value well defined, so it can be checked).
enum SampleQuality : int {
    /// Partitions jobs of at least 200 samples and 100000 work units (candidates x
    /// samples) into farthest-point cells sampled separately.
    SAMPLE_QUALITY_LOW = 0,
    /// Partitions only from 512 samples and 1000000 work units; UniformSample first
    /// draws up to 20 % extra samples and thins those (see UniformSample).
    SAMPLE_QUALITY_HIGH = 1
};

/// Point sampling. Distances are squared Euclidean distances between the list's
/// coordinates. Results never depend on the thread count (SetThreadCount).
class ZOL_API SamplePointCloud {
public:
    /// Farthest-point sampling of a cloud: each new sample is the point farthest from the
    /// samples taken so far, starting from point |seedId| mod pointCount. Large jobs are
    /// split into cells that are sampled in parallel (see UniformSampleSubpart).
    /// \param[in] pointCloud the cloud; null counts as an empty cloud.
    /// \param[in] sampleCount number of samples, 1 .. point count.
    /// \param[out] sampleIndex at least sampleCount ints. With SAMPLE_QUALITY_LOW, point
    ///             indices of the cloud. With SAMPLE_QUALITY_HIGH, when sampleCount plus
    ///             its extra (min(20 % of sampleCount, 10000), truncated) stays below the
    ///             point count and the extra is not 0, the values are POSITIONS within a
    ///             first-stage farthest-point subset of sampleCount + extra points, not
    ///             point indices of the cloud; otherwise point indices.
    /// \param[in] seedId chooses the first sample; |seedId| mod the candidate count.
    /// \param[in] quality SAMPLE_QUALITY_LOW or SAMPLE_QUALITY_HIGH.
    /// \return RESULT_OK (0);
    ///         RESULT_INVALID_INPUT (-2) when the cloud is empty or sampleCount exceeds
    ///         the point count ("SamplePointCloud::UniformSample pointCount < 1 ||
    ///         sampleCount > pointCount "), for a quality other than 0 or 1
    ///         ("SamplePointCloud::UniformSample: invalid quality parameter: " and the
    ///         value), for sampleCount < 1 ("SamplePointCloud::UniformSample: sampleCount
    ///         < 1: " and the value), or for a null sampleIndex on the two-stage path
    ///         ("SamplePointCloud::UniformSample sampleIndex is NULL");
    ///         otherwise the code of the failed stage after its own line and
    ///         "SamplePointCloud::UniformSample failed" (single stage) or
    ///         "SamplePointCloud::_UniformSamplePointList failed" (two stages), e.g. -2
    ///         for a null sampleIndex or a non-finite coordinate.
    static int UniformSample(const IPointCloud* pointCloud,
                             int sampleCount,
                             int* sampleIndex,
                             int seedId,
                             SampleQuality quality);

    /// Farthest-point sampling of a point list (the internal step of UniformSample, also
    /// used directly on point lists): candidates are all points, the seed is |seedId|.
    /// \param[in] pointList the points; only read.
    /// \param[in] sampleCount number of samples. The argument check accepts any count
    ///            once the list has a point; a count < 1 or above the point count then
    ///            fails in UniformSampleSubpart.
    /// \param[out] sampleIndex at least sampleCount ints; receives point indices of the
    ///             list (may hold partial results after a failure).
    /// \param[in] seedId chooses the first sample.
    /// \param[in] quality SAMPLE_QUALITY_LOW or SAMPLE_QUALITY_HIGH (thresholds only).
    /// \return RESULT_OK (0);
    ///         RESULT_INVALID_INPUT (-2) for a null list
    ///         ("SamplePointCloud::_UniformSamplePointList input pointList is NULL"), a
    ///         bad quality ("SamplePointCloud::_UniformSamplePointList: invalid quality
    ///         parameter: " and the value) or a null sampleIndex
    ///         ("SamplePointCloud::_UniformSamplePointList sampleIndex is NULL");
    ///         RESULT_FAIL (-1) for an empty list ("SamplePointCloud::_UniformSamplePointList
    ///         invalid pointCount: " and the count);
    ///         otherwise UniformSampleSubpart's code after its line and
    ///         "SamplePointCloud::_UniformSamplePointList failed".
    static int _UniformSamplePointList(const IPointList* pointList,
                                       int sampleCount,
                                       int* sampleIndex,
                                       int seedId,
                                       SampleQuality quality);

    /// Sampling that favours features: truncate(sampleCount * uniformWeight) samples
    /// spread uniformly, the rest by farthest-point sampling among points whose
    /// flatness (CalculateFlatness) exceeds 0.01. Falls back to plain uniform sampling
    /// when no sample goes to features or no point is a feature.
    /// \param[in] pointCloud the cloud; must carry normals.
    /// \param[in] sampleCount number of samples, 1 .. point count.
    /// \param[out] sampleIndex at least sampleCount ints: the feature samples first, then
    ///             the others, as point indices of the cloud.
    /// \param[in] uniformWeight share of uniform samples, in [0, 1].
    /// \param[in] neighborCount neighbours (the point itself included) for the flatness.
    /// \param[in] seedId chooses the first sample of each farthest-point run.
    /// \param[in] quality SAMPLE_QUALITY_LOW or SAMPLE_QUALITY_HIGH (thresholds only).
    /// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for a null cloud or one without
    ///         normals ("SamplePointCloud::GeometrySample: pointCloud == NULL ||
    ///         pointCloud->HasNormal() == false"); otherwise as _GeometrySamplePointList.
    static int GeometrySample(const IPointCloud* pointCloud,
                              int sampleCount,
                              int* sampleIndex,
                              double uniformWeight,
                              int neighborCount,
                              int seedId,
                              SampleQuality quality);

    /// GeometrySample over a point list (normals from GetPointNormal).
    /// \return RESULT_OK (0);
    ///         RESULT_INVALID_INPUT (-2) for a null list
    ///         ("SamplePointCloud::_GeometrySamplePointList input pointList is NULL"), a
    ///         null sampleIndex ("SamplePointCloud::_GeometrySamplePointList sampleIndex
    ///         is NULL") or uniformWeight outside [0, 1] or NaN
    ///         ("SamplePointCloud::_GeometrySamplePointList uniformWeight < 0 ||
    ///         uniformWeight > 1");
    ///         RESULT_FAIL (-1) for an empty list
    ///         ("SamplePointCloud::_GeometrySamplePointList invalid pointCount: " and the
    ///         count);
    ///         the failing step's code after its line and one of
    ///         "SamplePointCloud::_GeometrySamplePointList CalculateFlatness Failed",
    ///         "... Geometry Sample Process Failed", "... Uniform Sample Process Failed"
    ///         (each prefixed "SamplePointCloud::_GeometrySamplePointList"); the uniform
    ///         fallback returns _UniformSamplePointList's code as it is.
    static int _GeometrySamplePointList(const IPointList* pointList,
                                        int sampleCount,
                                        int* sampleIndex,
                                        double uniformWeight,
                                        int neighborCount,
                                        int seedId,
                                        SampleQuality quality);

    /// One point per cell of a regular grid of cell size \p interval anchored just below
    /// the bounding-box minimum; in each cell the point nearest to the cell's lower
    /// corner wins (the lower index on a tie).
    /// \param[in] pointCloud the cloud; only read.
    /// \param[in] interval cell size in the cloud's length unit; infinite for one cell.
    /// \param[out] sampleIndex cleared, then the winning point indices in the order of
    ///             their cell's hash bucket, then of the cell key (ix, iy, iz).
    /// \return RESULT_OK (0), also with an empty result for an empty cloud;
    ///         RESULT_INVALID_INPUT (-2) for a null cloud ("SamplePointCloud::GridSample:
    ///         pointCloud == NULL"), interval below REAL_TOL
    ///         ("SamplePointCloud::GridSample: interval < REAL_TOL") or NaN
    ///         ("SamplePointCloud::GridSample: interval is NaN"); otherwise as _GridSample.
    static int GridSample(const IPointCloud* pointCloud,
                          double interval,
                          std::vector<int>& sampleIndex);

    /// GridSample over a point list. Cells are found as follows: u = (p - m) / interval
    /// with m the per-axis minimum minus 1e-15; (ix, iy, iz) = u truncated to 64-bit
    /// integers; score = |u - (ix, iy, iz)|^2; bucket = ((ix * 73856093) ^ (iy *
    /// 19349669) ^ (iz * 83492791)) in 32-bit unsigned arithmetic (each factor taken as
    /// a 32-bit int) modulo 2560000.
    /// \param[out] sampleIndex cleared, then filled as for GridSample (left empty on a
    ///             failure).
    /// \return RESULT_OK (0); also for an empty list ("SamplePointCloud::_GridSample:
    ///         pointCount is 0", empty result);
    ///         RESULT_INVALID_INPUT (-2) for a null list ("SamplePointCloud::_GridSample
    ///         input pointList is NULL"), an interval below REAL_TOL or NaN
    ///         ("SamplePointCloud::_GridSample: interval < REAL_TOL || interval is NaN"),
    ///         a non-finite coordinate ("SamplePointCloud::_GridSample: point "
    ///         and the index, " has a non-finite coordinate"), or an interval so small
    ///         that a cell index would not fit in 63 bits
    ///         ("SamplePointCloud::_GridSample: interval too small for the extent of the
    ///         points"); RESULT_STEP_FAIL (-3) when the workers cannot run
    ///         ("SamplePointCloud::_GridSample: invalid thread count = " and the count).
    static int _GridSample(const IPointList* pointList,
                           double interval,
                           std::vector<int>& sampleIndex);

    /// The farthest-point core. With N candidates and S samples, work W = (N - S/2) * S
    /// decides the scheme: when S and W reach the quality's minimum (200 and 100000 for
    /// SAMPLE_QUALITY_LOW, 512 and 1000000 for SAMPLE_QUALITY_HIGH) the candidates are
    /// split into P = min(32, truncate(sqrt(W / minimum work) + 1)) cells around P
    /// farthest-point seeds grown from candidate 0, each cell gets samples in proportion
    /// to its size and is sampled by a recursive call (cells of coincident points fall
    /// back to round-robin cells); otherwise plain farthest-point sampling from
    /// candidate |seedId| mod N, ties going to the lower candidate position. Cells run
    /// in parallel on GetThreadCount() workers; their results are appended in cell
    /// order, so the result does not depend on the thread count.
    /// \param[in] pointList the points; only read.
    /// \param[in] candidateIndex point indices to choose from, in the order that breaks
    ///            ties.
    /// \param[in] sampleCount S, 1 .. candidate count.
    /// \param[out] sampleIndex resized to S and filled with the chosen point indices
    ///             (partial content after a failure).
    /// \param[in] seedId chooses the first sample of the plain scheme.
    /// \param[in] quality selects the thresholds; any value other than 1 counts as 0.
    /// \return RESULT_OK (0);
    ///         RESULT_INVALID_INPUT (-2) for a null list or no candidates
    ///         ("UniformSampleSubpart: pointList == NULL || candidateIndex is empty"), a
    ///         candidate outside the list ("UniformSampleSubpart: candidate out of range:
    ///         " and the index), S < 1 or S > N ("UniformSampleSubpart: sampleCount < 1
    ///         || sampleCount > candidateCount: " and both numbers) or a non-finite
    ///         coordinate ("UniformSampleSubpart: point " and the index, " has a
    ///         non-finite coordinate");
    ///         RESULT_STEP_FAIL (-3) when a scheme does not reach S samples
    ///         ("UniformSampleSubpart: sampleCount != sampleIndex.size(): ",
    ///         "UniformSampleSubpart: subSampleCount != subSampleIndex.size(): " or
    ///         "UniformSampleSubpart: sampleCount != alreadySampledCount: ", each followed
    ///         by both numbers) or the workers cannot run ("UniformSampleSubpart: invalid
    ///         thread count = " and the count started).
    static int UniformSampleSubpart(const IPointList* pointList,
                                    const std::vector<int>& candidateIndex,
                                    int sampleCount,
                                    std::vector<int>& sampleIndex,
                                    int seedId,
                                    SampleQuality quality);

    /// Simplifies a cloud to about \p targetCount points spread evenly over its surface:
    /// the grid interval is searched so that grid sampling keeps about that many points.
    /// Declared for hosts, not provided here: answers RESULT_NOT_AVAILABLE (-8) once the
    /// arguments pass, after recording the call when DumpOnce() armed recording.
    /// \param[in] pointCloud the cloud; only read.
    /// \param[in] targetCount the number of points wanted, at least 1.
    /// \param[out] sampleIndex the kept point indices.
    /// \param[out] interval the grid interval found, in coordinate units; may be null.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null cloud or
    ///         output ("SamplePointCloud::Simplify: pointCloud == NULL || sampleIndex ==
    ///         NULL") or targetCount < 1 ("SamplePointCloud::Simplify: targetCount < 1").
    static int Simplify(const IPointCloud* pointCloud,
                        int targetCount,
                        std::vector<int>* sampleIndex,
                        double* interval);
};

/// Normal variation around every point: value[i] = 1 - (sum over the k nearest points j
/// of i, i itself included, of |n_i . n_j|) / k with k = min(point count,
/// neighborCount). 0 on a flat patch (normals consistent or flipped), larger where the
/// normals vary.
/// \param[in] pointList points with normals (GetPointNormal); only read.
/// \param[in] neighborCount k before clamping to the point count; at least 1.
/// \param[out] flatness resized to the point count.
/// \return RESULT_OK (0); RESULT_INVALID_INPUT (-2) for a null list or output
///         ("CalculateFlatness: invalid input") or neighborCount < 1 ("CalculateFlatness:
///         neighborCount < 1: " and the value); RESULT_FAIL (-1) for an empty list
///         ("CalculateFlatness invalid pointCount: " and the count); the index's code
///         when it cannot be built, e.g. -5 for a non-finite coordinate
///         ("CalculateFlatness: Ann initialize failed") or queried ("CalculateFlatness
///         Ann find nearest neighbor failed"); RESULT_STEP_FAIL (-3) when the workers
///         cannot run ("CalculateFlatness: invalid thread count = " and the count).
ZOL_API int CalculateFlatness(const IPointList* pointList,
                              int neighborCount,
                              std::vector<double>* flatness);

}  // namespace ZOL
