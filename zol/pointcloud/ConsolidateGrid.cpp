// ConsolidateGrid: the API frame of grid-cloud cleaning, which this library does not
// provide. Grid consolidation has no dump record.
#include <zol/pointcloud/ConsolidateGrid.h>

#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int ConsolidateGrid::RemoveGridNoise(IGridPointCloud* gridCloud, int minNeighborCount) {
    SetProgress(0.0);
    if (gridCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidateGrid::RemoveGridNoise: gridCloud == NULL");
    }
    if (minNeighborCount < 1 || minNeighborCount > 8) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidateGrid::RemoveGridNoise: minNeighborCount out of [1, 8]");
    }
    return NotAvailable(Unavailable::ConsolidateGrid_RemoveGridNoise);
}

int ConsolidateGrid::SmoothGrid(IGridPointCloud* gridCloud, int radius, int iterationCount) {
    SetProgress(0.0);
    if (gridCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "ConsolidateGrid::SmoothGrid: gridCloud == NULL");
    }
    if (radius < 1 || iterationCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidateGrid::SmoothGrid: radius < 1 || iterationCount < 1");
    }
    return NotAvailable(Unavailable::ConsolidateGrid_SmoothGrid);
}

}  // namespace ZOL
