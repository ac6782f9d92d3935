// The colour transfer behind IntrinsicColor::TuneColorFromSingleLight: overlap pairs
// between scans, one robust brightness ratio per overlapping pair of scans, and the
// per-scan gains that fit those ratios best.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

/// Points of scan \p from paired with their nearest point of scan \p to.
struct ColorOverlap {
    int from;
    int to;
    std::vector<int> fromIds;
    std::vector<int> toIds;
};

/// Pairs every point of scan \p from with its nearest point of scan \p to when their
/// squared distance is at most \p maxSquaredDistance.
/// \param[in] toInfo the neighbour context of scan \p to, its index built.
/// \return RESULT_OK or the search's status.
int FindColorOverlap(IPointCloud* fromCloud,
                     const PointCloudInfo& toInfo,
                     double maxSquaredDistance,
                     ColorOverlap& overlap);

/// The natural-log gains per scan and channel that make paired colours match: for each
/// two scans the median log ratio of their usable pairs (channels within [0.02, 0.98],
/// at least a few pairs), fitted over all scans by weighted least squares.
/// \param[in] keepFirst anchors scan 0 at gain 1; otherwise each group of overlapping
///            scans has log gains summing to zero.
/// \return one (log gain R, G, B) per scan; 0 for a scan without usable pairs.
std::vector<Vector3> FitLogGains(int cloudCount,
                                 const std::vector<std::vector<Vector3>>& colors,
                                 const std::vector<ColorOverlap>& overlaps,
                                 bool keepFirst);

}  // namespace ZOL
