// IntrinsicColor: colour harmonisation of several scans of one object taken under one
// light, and the RGB / HSV conversions it works with.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Colours are Vector3: (R, G, B) with channels in [0, 1], or (H, S, V) with H in degrees
/// [0, 360) and S, V in [0, 1].
class ZOL_API IntrinsicColor {
public:
    /// RGB to HSV. V is the largest channel; S = 1 - min / max (0 when max < REAL_TOL); H
    /// is 0 for a grey (max - min < REAL_TOL), else measured from the largest channel,
    /// which on a tie is the earliest of R, G, B.
    /// \param[in] rgb channels in [0, 1].
    /// \return (H in degrees [0, 360), S, V).
    static Vector3 ConvertRGB2HSV(const Vector3& rgb);

    /// HSV to RGB by the six 60-degree sectors of H. H is expected in [0, 360): for 360
    /// or more the sector wraps but its fraction does not (H = 390 gives sector 0 with
    /// fraction 6.5), and channels outside [0, V] come out unclamped.
    /// \param[in] hsv (H in degrees, S, V).
    /// \return (R, G, B); black (0, 0, 0) for a negative or non-finite H, which is logged
    ///         ("ConvertHSV2RGB: error h=" followed by H).
    static Vector3 ConvertHSV2RGB(const Vector3& hsv);

    /// Harmonises the colours of registered scans of one object under one light: points
    /// of different scans that overlap end with matching brightness and hue, while each
    /// scan keeps its own detail. Geometry is only read.
    ///
    /// Overlap: a point of scan a and its nearest point in scan b form a pair when their
    /// squared distance is at most 10 d^2, d the larger density of the two scans (the
    /// median spacing over 5 neighbours, CalculatePointListDensity) or \p pointDensity.
    /// Transfer: each scan gets one gain per channel, applied to all its colours (so its
    /// detail is kept): for every two overlapping scans the median, over their pairs, of
    /// the log ratio of the paired channels (pairs with a channel below 0.02 or above
    /// 0.98 are left out: they are clipped or carry no ratio) says how much brighter one
    /// scan is; the gains are the weighted least-squares fit of these medians (weights:
    /// pair counts), anchored as \p keepFirstCloudColor says. Tuned channels are clamped
    /// to [0, 1]. A scan that overlaps no other keeps gain 1. Results do not depend on the
    /// thread count.
    /// \param[in] pointCloudList the scans, in one common frame; only read.
    /// \param[in,out] colorList one RGB colour per point of each scan, tuned in place.
    /// \param[in] keepFirstCloudColor true: scan 0 is the reference and keeps its
    ///            colours (gain 1), the others are matched to it; false: all scans are
    ///            matched to their common middle (the log gains sum to zero over each
    ///            group of overlapping scans).
    /// \param[in] pointDensity the point spacing to use for every scan, in coordinate
    ///            units; null to compute each scan's own.
    /// \param[out] colorGains the per-channel gain applied to each scan; may be null.
    /// \param[out] overlapErrors per scan, the RMS RGB distance between its paired points
    ///             and their partners after tuning (0 for a scan without pairs); may be
    ///             null.
    /// \return RESULT_OK, also for a single scan, which is left as it is ("TuneColorFrom
    ///         SingleLight: cloudCount == 1, no need to process");
    ///         RESULT_INVALID_INPUT (-2), in this order, when the list sizes differ
    ///         ("TuneColorFromSingleLight: cloudCount != colorListCount"), there is no scan
    ///         ("TuneColorFromSingleLight: invalid cloudCount < 1"), *pointDensity is below
    ///         REAL_TOL or not a number ("TuneColorFromSingleLight: (*pointDensity) <
    ///         REAL_TOL"), a scan is null ("TuneColorFromSingleLight: pointCloud is NULL:
    ///         cloudId = " c), has fewer than 2 points ("TuneColorFromSingleLight:
    ///         pointCount < 2: cloudId = " c), its colour list has another length
    ///         ("TuneColorFromSingleLight: colorList size != pointCount: cloudId = " c) or
    ///         it has a NaN or infinite coordinate ("TuneColorFromSingleLight: non-finite
    ///         coordinate: cloudId = " c);
    ///         the failing step's status when an index or a density cannot be made
    ///         ("TuneColorFromSingleLight: density failed: cloudId = " c) or a search fails
    ///         ("TuneColorFromSingleLight: overlap search failed: cloudId = " c).
    ///         On failure the colours are unchanged.
    static int TuneColorFromSingleLight(const std::vector<IPointCloud*>& pointCloudList,
                                        std::vector<std::vector<Vector3>>& colorList,
                                        bool keepFirstCloudColor,
                                        double* pointDensity,
                                        std::vector<Vector3>* colorGains,
                                        std::vector<double>* overlapErrors);
};

}  // namespace ZOL
