// ZBP and ZBG, the library's own binary point formats (documented in docs/formats.md).
// Both start alike and store the same blocks; ZBG adds the grid. Little-endian fields:
//   ZBP:  0 "ZBPC" | 4 u32 version 1 | 8 u32 flags | 12 u32 reserved 0 | 16 u64 count
//   ZBG:  0 "ZBGC" | 4 u32 version 1 | 8 u32 flags | 12 u32 width | 16 u32 height
//         20 u32 reserved 0 | 24 u64 count | 32 count x i32 cell (y * width + x)
// then count x 3 float64 coordinates, and normals and colours (fractions in [0, 1]) in
// the same layout when flag bit 0 / bit 1 is set; other flag bits must be 0. The size
// must match the count exactly, so a wrong count is caught before any allocation.
#include <zol/io/PointFormatInternal.h>

#include <cstring>

#include <zol/io/TextScanInternal.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {
namespace pointio {

namespace {
constexpr std::uint32_t kFlagNormal = 1;
constexpr std::uint32_t kFlagColor = 2;
constexpr std::size_t kVectorBytes = 24;

// Where the two layouts differ.
struct Layout {
    const char* magic;
    std::size_t headerBytes;
    std::size_t reservedAt;
    std::size_t countAt;
};
constexpr Layout kZbp = {"ZBPC", 24, 12, 16};
constexpr Layout kZbg = {"ZBGC", 32, 20, 24};

// Checks magic word, version, flags and the reserved field, and takes the flags into
// \p data. \return false after one log line.
bool ReadHead(std::string_view bytes, const Layout& layout, const char* who, PointData& data) {
    if (bytes.size() < layout.headerBytes || std::memcmp(bytes.data(), layout.magic, 4) != 0) {
        LogLine(who, ": missing ", layout.magic, " magic word");
        return false;
    }
    const std::uint32_t version = GetU32LE(bytes.data() + 4);
    const std::uint32_t flags = GetU32LE(bytes.data() + 8);
    if (version != 1) {
        LogLine(who, ": unsupported version: ", version);
        return false;
    }
    if ((flags & ~(kFlagNormal | kFlagColor)) != 0 ||
        GetU32LE(bytes.data() + layout.reservedAt) != 0) {
        LogLine(who, ": invalid flags: ", flags);
        return false;
    }
    data.hasNormal = (flags & kFlagNormal) != 0;
    data.hasColor = (flags & kFlagColor) != 0;
    return true;
}

// Bytes of the vector blocks per point.
std::uint64_t VectorBytesPerPoint(const PointData& data) {
    return kVectorBytes * (1u + (data.hasNormal ? 1u : 0u) + (data.hasColor ? 1u : 0u));
}

void ReadBlock(const char*& p, std::size_t n, std::vector<Vector3>& out) {
    out.resize(n);
    for (std::size_t i = 0; i < n; ++i, p += kVectorBytes) {
        out[i] = Vector3(GetF64LE(p), GetF64LE(p + 8), GetF64LE(p + 16));
    }
}

void ReadBlocks(const char* p, std::size_t n, PointData& data) {
    ReadBlock(p, n, data.coords);
    if (data.hasNormal) ReadBlock(p, n, data.normals);
    if (data.hasColor) ReadBlock(p, n, data.colors);
}

void WriteHead(FileWriter& out, const char* magic, const PointView& view) {
    out.Put(std::string_view(magic, 4));
    out.PutU32LE(1);
    out.PutU32LE((view.normals ? kFlagNormal : 0) | (view.colors ? kFlagColor : 0));
}

void WriteBlock(FileWriter& out, const Vector3* v, int n) {
    for (int i = 0; i < n; ++i) {
        out.PutF64LE(v[i].x);
        out.PutF64LE(v[i].y);
        out.PutF64LE(v[i].z);
    }
}

void WriteBlocks(FileWriter& out, const PointView& view) {
    WriteBlock(out, view.coords, view.count);
    if (view.normals != nullptr) WriteBlock(out, view.normals, view.count);
    if (view.colors != nullptr) WriteBlock(out, view.colors, view.count);
}

// A grid needs its cell map whatever the number of points, so its size is capped, and
// by the file size too: a header of a few bytes may not cost more than a few MB.
bool GridFitsFile(std::uint64_t cells, std::size_t fileBytes) {
    constexpr std::uint64_t kCellsAnyFile = std::uint64_t(1) << 20;
    constexpr std::uint64_t kCellsPerByte = 16;
    return cells <= static_cast<std::uint64_t>(kMaxGridCells) &&
           (cells <= kCellsAnyFile || cells / kCellsPerByte <= fileBytes);
}
}  // namespace

PointCloud* ImportPointCloudByZBP(std::string_view bytes) {
    const char* const who = "ImportPointCloudByZBP";
    PointData data;
    if (!ReadHead(bytes, kZbp, who, data)) return nullptr;
    const std::uint64_t count = GetU64LE(bytes.data() + kZbp.countAt);
    const std::uint64_t body = bytes.size() - kZbp.headerBytes;
    if (count > static_cast<std::uint64_t>(INT_LARGE) ||
        count * VectorBytesPerPoint(data) != body) {
        LogLine(who, ": point count ", count, " does not match the file size ", bytes.size());
        return nullptr;
    }
    ReadBlocks(bytes.data() + kZbp.headerBytes, count, data);
    return BuildPointCloud(data, who);
}

PointCloud* ImportPointCloudByZBG(std::string_view bytes) {
    const char* const who = "ImportPointCloudByZBG";
    PointData data;
    if (!ReadHead(bytes, kZbg, who, data)) return nullptr;
    const std::uint32_t width = GetU32LE(bytes.data() + 12);
    const std::uint32_t height = GetU32LE(bytes.data() + 16);
    const std::uint64_t cells = std::uint64_t(width) * height;
    if (width == 0 || height == 0 || !GridFitsFile(cells, bytes.size())) {
        LogLine(who, ": invalid grid size ", width, " x ", height);
        return nullptr;
    }
    const std::uint64_t count = GetU64LE(bytes.data() + kZbg.countAt);
    const std::uint64_t stride = 4 + VectorBytesPerPoint(data);
    if (count > cells || count * stride != bytes.size() - kZbg.headerBytes) {
        LogLine(who, ": point count ", count, " does not match the file size ", bytes.size());
        return nullptr;
    }
    data.width = static_cast<int>(width);
    data.height = static_cast<int>(height);
    const char* p = bytes.data() + kZbg.headerBytes;
    data.cells.resize(count);
    for (std::size_t i = 0; i < count; ++i, p += 4) {
        data.cells[i] = static_cast<std::int32_t>(GetU32LE(p));
    }
    ReadBlocks(p, count, data);
    return BuildPointCloud(data, who);
}

int ExportPointCloudByZBP(const std::string& fileName, const PointView& view) {
    return WritePointFile(fileName, "ExportPointCloudByZBP", [&](FileWriter& out) {
        WriteHead(out, kZbp.magic, view);
        out.PutU32LE(0);
        out.PutU64LE(static_cast<std::uint64_t>(view.count));
        WriteBlocks(out, view);
    });
}

int ExportPointCloudByZBG(const std::string& fileName, const PointView& view) {
    return WritePointFile(fileName, "ExportPointCloudByZBG", [&](FileWriter& out) {
        WriteHead(out, kZbg.magic, view);
        out.PutU32LE(static_cast<std::uint32_t>(view.width));
        out.PutU32LE(static_cast<std::uint32_t>(view.height));
        out.PutU32LE(0);
        out.PutU64LE(static_cast<std::uint64_t>(view.count));
        for (int i = 0; i < view.count; ++i)
            out.PutU32LE(static_cast<std::uint32_t>(view.cells[i]));
        WriteBlocks(out, view);
    });
}

}  // namespace pointio
}  // namespace ZOL
