// Neighbour searches that let the caller work on each batch of answers at once, on the
// worker that found them, while the rows and the points they name are still in that
// worker's cache: a second pass over all rows would fetch them again. Internal.
#pragma once

#include <vector>

#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

/// Work on freshly filled neighbour rows.
class NeighborBatchVisitor {
public:
    virtual ~NeighborBatchVisitor() = default;
    /// Called on a worker once the cache rows of \p points[0 .. count) are filled.
    /// Workers call it at the same time for different points; each point comes once.
    /// \param worker the task number, in [0, ParallelTaskCount()).
    virtual void Visit(int worker, const int* points, int count) = 0;
};

class NeighborBatchSearch {
public:
    /// info.FindNearestNeighbors(neighborCount, pointCloud, selection), with \p visitor
    /// called for every batch of rows as it is filled.
    static int Run(PointCloudInfo& info,
                   int neighborCount,
                   const IPointCloud* pointCloud,
                   const std::vector<int>* selection,
                   NeighborBatchVisitor* visitor) {
        return info.FindNearestNeighbors(neighborCount, pointCloud, selection, visitor);
    }
};

}  // namespace ZOL
