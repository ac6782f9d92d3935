// Shared pieces of the point-cloud file formats: the decoded point arrays a reader
// fills, the flat view a writer reads, whole-file I/O, number scanning and shortest
// round-trip number text. Not installed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <zol/core/IGridPointCloud.h>
#include <zol/core/IPointCloud.h>
#include <zol/core/PointCloud.h>
#include <zol/core/Vector3.h>

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
/// count); non-finite normal or colour components become 0. Returns null after a log
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

/// Writes \p bytes as the whole file; false when it cannot be opened or written.
bool WriteWholeFile(const std::string& fileName, const std::string& bytes);

/// Splits text into lines (LF or CRLF); the last line may lack its end.
class LineReader {
public:
    explicit LineReader(std::string_view text) : mText(text) {}
    /// \return false at the end of the text.
    bool Next(std::string_view& line);
    /// 1-based number of the line last returned.
    int LineNumber() const { return mLine; }
    /// Bytes not yet returned.
    std::size_t Remaining() const { return mText.size() - mPos; }
    std::size_t Position() const { return mPos; }

private:
    std::string_view mText;
    std::size_t mPos = 0;
    int mLine = 0;
};

/// Parses the blank- or tab-separated numbers of \p line into \p out (at most \p max).
/// \return the number of values, or -1 when a token is not a number or there are more
///         than \p max. Accepts a leading '+', "nan" and "inf".
int ParseNumbers(std::string_view line, double* out, int max);
/// Splits \p line into blank- or tab-separated tokens.
void SplitTokens(std::string_view line, std::vector<std::string_view>& tokens);
/// Parses one whole token as a double / a 64-bit integer; false when it is not one.
bool ParseDouble(std::string_view token, double& value);
bool ParseInt(std::string_view token, std::int64_t& value);

/// Appends the shortest text that reads back as exactly \p v.
void AppendNumber(std::string& out, double v);
void AppendInt(std::string& out, std::int64_t v);
/// Appends x, y, z separated by blanks.
void AppendVector(std::string& out, const Vector3& v);
/// A colour component in [0, 1] as a byte, rounded to nearest (so k / 255 writes k).
int ColorToByte(double c);

/// Little-endian fields of the binary formats.
void PutU32(std::string& out, std::uint32_t v);
void PutU64(std::string& out, std::uint64_t v);
void PutF64(std::string& out, double v);
std::uint32_t GetU32(const unsigned char* p);
std::uint64_t GetU64(const unsigned char* p);
double GetF64(const unsigned char* p);

// Per-format readers: parse the whole file held in \p bytes; null after one log line.
PointCloud* ImportPointCloudByASC(const std::string& bytes, bool coloredExtension);
PointCloud* ImportPointCloudByOBJ(const std::string& bytes);
PointCloud* ImportPointCloudByPLY(const std::string& bytes);
PointCloud* ImportPointCloudByZPC(const std::string& bytes);
PointCloud* ImportPointCloudByZBP(const std::string& bytes);
PointCloud* ImportPointCloudByZBG(const std::string& bytes);

// Per-format writers: format the view and write the file; 0, or -2 after a log line.
int ExportPointCloudByASC(const std::string& fileName, const PointView& view, bool colored);
int ExportPointCloudByOBJ(const std::string& fileName, const PointView& view);
int ExportPointCloudByPLY(const std::string& fileName, const PointView& view);
int ExportPointCloudByZPC(const std::string& fileName, const PointView& view);
int ExportPointCloudByZBP(const std::string& fileName, const PointView& view);
int ExportPointCloudByZBG(const std::string& fileName, const PointView& view);

}  // namespace pointio
}  // namespace ZOL
