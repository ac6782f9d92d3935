// The box check shared by the volumetric accumulators (sum map, distance grid, depth-video
// fusion): a grid over [bboxMin, bboxMax] with cells of side resolution.
#pragma once

#include <zol/core/Vector3.h>

namespace ZOL {

/// \return whether the box holds at least one cell: a positive cell size and min not above
///         max on any axis (NaN fails both).
inline bool IsValidVolumeBox(double resolution, const Vector3& bboxMin, const Vector3& bboxMax) {
    return resolution > 0.0 && bboxMin.x <= bboxMax.x && bboxMin.y <= bboxMax.y &&
           bboxMin.z <= bboxMax.z;
}

}  // namespace ZOL
