// Shared pieces of the point-cloud file formats: the decoded point arrays a reader
// fills, the flat view a writer reads and the per-point text both text writers share.
// Files are read and written through TextScanInternal.h and TextWriterInternal.h.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <zol/core/IGridPointCloud.h>
#include <zol/core/IPointCloud.h>
#include <zol/core/PointCloud.h>
#include <zol/core/Vector3.h>
#include <zol/io/TextWriterInternal.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {
namespace pointio {

/// Largest grid (width x height cells) a reader accepts; bounds the cell map a
/// malformed header can make us allocate.
constexpr std::int64_t kMaxGridCells = std::int64_t(1) << 26;

/// What a reader decoded, before it becomes a PointCloud. Normals and colours are
/// empty unless their flag is set; colours are in [0, 1]. With width > 0 the points
/// sit in the cells given by `cells` (y * width + x, one per point).
struct PointData {
    std::vector<Vector3> coords;
    std::vector<Vector3> normals;
    std::vector<Vector3> colors;
    bool hasNormal = false;
    bool hasColor = false;
    int width = 0;
    int height = 0;
    std::vector<int> cells;
};

/// Turns decoded points into a new PointCloud (with grid topology when the data has a
/// grid). Points with a non-finite coordinate are dropped (one log line names the
/// count); non-finite normal or colour components become 0 and colour components are
/// held to [0, 1]. Returns null after a log
/// line when the grid cells are out of range or repeated. \p who prefixes log lines.
PointCloud* BuildPointCloud(PointData& data, const char* who);

/// Flat read-only view of a cloud for the writers: contiguous arrays, read once.
class PointView {
public:
    /// View of any IPointCloud; colours are included for a PointCloud that has them.
    explicit PointView(const IPointCloud& cloud);
    /// View of the valid cells of a grid cloud, in row-major cell order, with the cells.
    explicit PointView(const IGridPointCloud& grid);
    PointView(const PointView&) = delete;
    PointView& operator=(const PointView&) = delete;

    int count = 0;
    const Vector3* coords = nullptr;
    const Vector3* normals = nullptr;  ///< null without normals
    const Vector3* colors = nullptr;   ///< null without colours; components in [0, 1]
    int width = 0;                     ///< > 0 for a grid view
    int height = 0;
    const int* cells = nullptr;  ///< per point its cell, for a grid view

private:
    std::vector<Vector3> mCoords;
    std::vector<Vector3> mNormals;
    std::vector<Vector3> mColors;
    std::vector<int> mCells;
};

/// How a text writer puts a colour after a point's coordinates (and normal).
enum class ColorText {
    None,      ///< no colour columns
    Fraction,  ///< three numbers in [0, 1]
    Byte,      ///< three integers 0..255, rounded; black when the view has no colours
};

/// Writes the fields of point \p i: x y z, then nx ny nz when \p withNormal and the
/// view has normals, then the colour as \p colorText says, separated by one blank.
void PutPointFields(
    FileWriter& out, const PointView& view, int i, bool withNormal, ColorText colorText);

/// A colour component in [0, 1] as a byte, rounded to nearest (so k / 255 writes k).
int ColorToByte(double c);

/// Opens \p fileName, lets \p put write the content and closes the file.
/// \return RESULT_OK, or RESULT_INVALID_INPUT (-2) after the line "<writer>: file could
///         not open" when the file could not be opened or not every byte was written.
template <typename Put>
int WritePointFile(const std::string& fileName, const char* writer, Put put) {
    FileWriter out(fileName);
    if (out.IsOpen()) {
        put(out);
        if (out.Close()) return RESULT_OK;
    }
    LogLine(writer, ": file could not open");
    return RESULT_INVALID_INPUT;
}

// Per-format readers: parse the whole file held in \p bytes; null after one log line.
PointCloud* ImportPointCloudByASC(std::string_view bytes, bool coloredExtension);
PointCloud* ImportPointCloudByOBJ(std::string_view bytes);
PointCloud* ImportPointCloudByPLY(std::string_view bytes);
PointCloud* ImportPointCloudByZPC(std::string_view bytes);
PointCloud* ImportPointCloudByZBP(std::string_view bytes);
PointCloud* ImportPointCloudByZBG(std::string_view bytes);

// Per-format writers: format the view and write the file; 0, or -2 after a log line.
int ExportPointCloudByASC(const std::string& fileName, const PointView& view, bool colored);
int ExportPointCloudByOBJ(const std::string& fileName, const PointView& view);
int ExportPointCloudByPLY(const std::string& fileName, const PointView& view);
int ExportPointCloudByZPC(const std::string& fileName, const PointView& view);
int ExportPointCloudByZBP(const std::string& fileName, const PointView& view);
int ExportPointCloudByZBG(const std::string& fileName, const PointView& view);

}  // namespace pointio
}  // namespace ZOL
