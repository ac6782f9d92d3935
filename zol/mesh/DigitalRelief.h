// Digital relief: compression of a height field into a shallow relief that keeps its
// visible detail. Declared for hosts; not provided by this library.
#pragma once

#include <vector>

#include <zol/runtime/Export.h>

namespace ZOL {

/// Builds reliefs from height fields.
class ZOL_API DigitalRelief {
public:
    /// Compresses the depth range of a height field, keeping local detail.
    /// \param[in] heights width * height values, row by row, in model units.
    /// \param[in] width, height the grid size, each at least 2.
    /// \param[in] compressRatio target depth range over the input range, in (0, 1].
    /// \param[out] compressedHeights the compressed field, same layout.
    /// \return RESULT_NOT_AVAILABLE (-8) once the arguments pass; RESULT_INVALID_INPUT (-2)
    ///         for a null output ("DigitalRelief::CompressHeightField: compressedHeights ==
    ///         NULL"), a grid too small or not fitting ("DigitalRelief::CompressHeightField:
    ///         width < 2 || height < 2 || heights.size() != width * height") or a ratio outside (0,
    ///         1]
    ///         ("DigitalRelief::CompressHeightField: compressRatio out of (0, 1]").
    static int CompressHeightField(const std::vector<double>& heights,
                                   int width,
                                   int height,
                                   double compressRatio,
                                   std::vector<double>* compressedHeights);
};

}  // namespace ZOL
