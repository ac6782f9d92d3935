// ZBP, the library's own binary point format (documented in docs/formats.md). All
// fields little-endian:
//   0  char[4]  "ZBPC"
//   4  uint32   version (1)
//   8  uint32   flags: bit 0 normals, bit 1 colours; other bits must be 0
//   12 uint32   reserved (0)
//   16 uint64   pointCount
//   24 pointCount x 3 float64 coordinates, then the normals and then the colours
//      (fractions in [0, 1]) in the same layout when their flag is set.
// The file size must match the count exactly, so a wrong count is caught before any
// allocation.
#include <zol/io/PointFormatInternal.h>

#include <cstring>

#include <zol/runtime/LogInternal.h>

namespace ZOL {
namespace pointio {

namespace {
const char* const kWho = "ImportPointCloudByZBP";
constexpr std::size_t kHeaderBytes = 24;
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

PointCloud* ImportPointCloudByZBP(const std::string& bytes) {
    if (bytes.size() < kHeaderBytes || std::memcmp(bytes.data(), "ZBPC", 4) != 0) {
        LogLine(kWho, ": missing ZBPC magic word");
        return nullptr;
    }
    const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::uint32_t version = GetU32(p + 4);
    const std::uint32_t flags = GetU32(p + 8);
    const std::uint64_t count = GetU64(p + 16);
    if (version != 1) {
        LogLine(kWho, ": unsupported version: ", version);
        return nullptr;
    }
    if ((flags & ~(kFlagNormal | kFlagColor)) != 0 || GetU32(p + 12) != 0) {
        LogLine(kWho, ": invalid flags: ", flags);
        return nullptr;
    }
    PointData data;
    data.hasNormal = (flags & kFlagNormal) != 0;
    data.hasColor = (flags & kFlagColor) != 0;
    const std::uint64_t stride =
        24u * (1u + (data.hasNormal ? 1u : 0u) + (data.hasColor ? 1u : 0u));
    const std::uint64_t body = bytes.size() - kHeaderBytes;
    if (count > static_cast<std::uint64_t>(INT_LARGE) || count * stride != body) {
        LogLine(kWho, ": point count ", count, " does not match the file size ", bytes.size());
        return nullptr;
    }
    p += kHeaderBytes;
    ReadBlock(p, count, data.coords);
    if (data.hasNormal) ReadBlock(p, count, data.normals);
    if (data.hasColor) ReadBlock(p, count, data.colors);
    return BuildPointCloud(data, kWho);
}

int ExportPointCloudByZBP(const std::string& fileName, const PointView& view) {
    std::string out;
    const int blocks = 1 + (view.normals ? 1 : 0) + (view.colors ? 1 : 0);
    out.reserve(kHeaderBytes + static_cast<std::size_t>(view.count) * 24 * blocks);
    out.append("ZBPC", 4);
    PutU32(out, 1);
    PutU32(out, (view.normals ? kFlagNormal : 0) | (view.colors ? kFlagColor : 0));
    PutU32(out, 0);
    PutU64(out, static_cast<std::uint64_t>(view.count));
    WriteBlock(out, view.coords, view.count);
    if (view.normals != nullptr) WriteBlock(out, view.normals, view.count);
    if (view.colors != nullptr) WriteBlock(out, view.colors, view.count);
    if (!WriteWholeFile(fileName, out)) {
        LogLine("ExportPointCloudByZBP: file could not open");
        return RESULT_INVALID_INPUT;
    }
    return RESULT_OK;
}

}  // namespace pointio
}  // namespace ZOL
