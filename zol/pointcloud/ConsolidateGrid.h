// Grid consolidation: cleaning of organised (range-scanner) clouds using their grid
// neighbourhoods. Declared for hosts; not provided by this library.
#pragma once

#include <zol/core/IGridPointCloud.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Cleans grid clouds in place. Every member answers RESULT_NOT_AVAILABLE once its
/// arguments pass the checks listed with it.
class ZOL_API ConsolidateGrid {
public:
    /// Invalidates cells with too few valid cells among their eight grid neighbours.
    /// \param[in,out] gridCloud the cloud.
    /// \param[in] minNeighborCount valid neighbours a cell needs to stay, in [1, 8].
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null cloud
    ///         ("ConsolidateGrid::RemoveGridNoise: gridCloud == NULL") or a count outside
    ///         [1, 8] ("ConsolidateGrid::RemoveGridNoise: minNeighborCount out of [1, 8]").
    static int RemoveGridNoise(IGridPointCloud* gridCloud, int minNeighborCount);

    /// Smooths each cell's depth over a square grid window.
    /// \param[in,out] gridCloud the cloud.
    /// \param[in] radius half the window side in cells, at least 1.
    /// \param[in] iterationCount number of passes, at least 1.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null cloud
    ///         ("ConsolidateGrid::SmoothGrid: gridCloud == NULL") or radius or
    ///         iterationCount below 1 ("ConsolidateGrid::SmoothGrid: radius < 1 ||
    ///         iterationCount < 1").
    static int SmoothGrid(IGridPointCloud* gridCloud, int radius, int iterationCount);
};

}  // namespace ZOL
