// ZBG, the library's own binary grid-cloud format (documented in docs/formats.md).
// All fields little-endian:
//   0  char[4]  "ZBGC"
//   4  uint32   version (1)
//   8  uint32   flags: bit 0 normals, bit 1 colours; other bits must be 0
//   12 uint32   grid width
//   16 uint32   grid height
//   20 uint32   reserved (0)
//   24 uint64   pointCount (valid cells)
//   32 pointCount x int32 cell index (y * width + x), each cell at most once, then
//      pointCount x 3 float64 coordinates, then normals and colours (fractions in
//      [0, 1]) in the same layout when their flag is set.
// Points are stored in row-major cell order. The size must match the count exactly,
// and width x height is capped, so no header can make the reader over-allocate.
#include <zol/io/PointFormatInternal.h>

#include <cstring>

#include <zol/runtime/LogInternal.h>

namespace ZOL {
namespace pointio {

namespace {
const char* const kWho = "ImportPointCloudByZBG";
constexpr std::size_t kHeaderBytes = 32;
constexpr std::uint32_t kFlagNormal = 1;
constexpr std::uint32_t kFlagColor = 2;

void ReadBlock(const unsigned char*& p, std::size_t n, std::vector<Vector3>& out) {
    out.resize(n);
    for (std::size_t i = 0; i < n; ++i, p += 24) {
        out[i] = Vector3(GetF64(p), GetF64(p + 8), GetF64(p + 16));
    }
}

void WriteBlock(std::string& out, const Vector3* v, int n) {
    for (int i = 0; i < n; ++i) {
        PutF64(out, v[i].x);
        PutF64(out, v[i].y);
        PutF64(out, v[i].z);
    }
}
}  // namespace

PointCloud* ImportPointCloudByZBG(const std::string& bytes) {
    if (bytes.size() < kHeaderBytes || std::memcmp(bytes.data(), "ZBGC", 4) != 0) {
        LogLine(kWho, ": missing ZBGC magic word");
        return nullptr;
    }
    const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::uint32_t version = GetU32(p + 4);
    const std::uint32_t flags = GetU32(p + 8);
    const std::uint32_t width = GetU32(p + 12);
    const std::uint32_t height = GetU32(p + 16);
    const std::uint64_t count = GetU64(p + 24);
    if (version != 1) {
        LogLine(kWho, ": unsupported version: ", version);
        return nullptr;
    }
    if ((flags & ~(kFlagNormal | kFlagColor)) != 0 || GetU32(p + 20) != 0) {
        LogLine(kWho, ": invalid flags: ", flags);
        return nullptr;
    }
    const std::uint64_t cells = std::uint64_t(width) * height;
    if (width == 0 || height == 0 || cells > static_cast<std::uint64_t>(kMaxGridCells)) {
        LogLine(kWho, ": invalid grid size ", width, " x ", height);
        return nullptr;
    }
    PointData data;
    data.hasNormal = (flags & kFlagNormal) != 0;
    data.hasColor = (flags & kFlagColor) != 0;
    const std::uint64_t stride =
        4u + 24u * (1u + (data.hasNormal ? 1u : 0u) + (data.hasColor ? 1u : 0u));
    if (count > cells || count * stride != bytes.size() - kHeaderBytes) {
        LogLine(kWho, ": point count ", count, " does not match the file size ", bytes.size());
        return nullptr;
    }
    data.width = static_cast<int>(width);
    data.height = static_cast<int>(height);
    p += kHeaderBytes;
    data.cells.resize(count);
    for (std::size_t i = 0; i < count; ++i, p += 4) {
        data.cells[i] = static_cast<std::int32_t>(GetU32(p));
    }
    ReadBlock(p, count, data.coords);
    if (data.hasNormal) ReadBlock(p, count, data.normals);
    if (data.hasColor) ReadBlock(p, count, data.colors);
    return BuildPointCloud(data, kWho);
}

int ExportPointCloudByZBG(const std::string& fileName, const PointView& view) {
    std::string out;
    const int blocks = 1 + (view.normals ? 1 : 0) + (view.colors ? 1 : 0);
    out.reserve(kHeaderBytes + static_cast<std::size_t>(view.count) * (4 + 24 * blocks));
    out.append("ZBGC", 4);
    PutU32(out, 1);
    PutU32(out, (view.normals ? kFlagNormal : 0) | (view.colors ? kFlagColor : 0));
    PutU32(out, static_cast<std::uint32_t>(view.width));
    PutU32(out, static_cast<std::uint32_t>(view.height));
    PutU32(out, 0);
    PutU64(out, static_cast<std::uint64_t>(view.count));
    for (int i = 0; i < view.count; ++i) PutU32(out, static_cast<std::uint32_t>(view.cells[i]));
    WriteBlock(out, view.coords, view.count);
    if (view.normals != nullptr) WriteBlock(out, view.normals, view.count);
    if (view.colors != nullptr) WriteBlock(out, view.colors, view.count);
    if (!WriteWholeFile(fileName, out)) {
        LogLine("ExportPointCloudByZBG: file could not open");
        return RESULT_INVALID_INPUT;
    }
    return RESULT_OK;
}

}  // namespace pointio
}  // namespace ZOL
