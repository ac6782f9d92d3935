// ZPC, the library's own text point format (documented in docs/formats.md):
//   line 1: "ZPC 1" (magic word and version)
//   line 2: pointCount hasNormal hasColor (flags 0 or 1)
//   then one line per point: x y z [nx ny nz] [r g b], colours as fractions in [0, 1].
// Numbers are written as the shortest text that reads back as the same double, so a
// cloud survives a write and read unchanged.
#include <zol/io/PointFormatInternal.h>

#include <cmath>

#include <zol/io/TextScanInternal.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {
namespace pointio {

namespace {
const char* const kWho = "ImportPointCloudByZPC";
constexpr std::size_t kMinPointLineBytes = 6;  // "0 0 0\n"
}  // namespace

PointCloud* ImportPointCloudByZPC(std::string_view bytes) {
    LineCursor reader(bytes);
    std::string_view line;
    if (!reader.Next(line)) {
        LogLine(kWho, ": empty file");
        return nullptr;
    }
    TokenCursor tokens(line);
    std::string_view magic, version;
    if (!tokens.Next(magic) || !tokens.Next(version) || tokens.HasNext() || magic != "ZPC") {
        LogLine(kWho, ": missing ZPC magic word");
        return nullptr;
    }
    if (version != "1") {
        LogLine(kWho, ": unsupported version: ", version);
        return nullptr;
    }
    double head[3];
    if (!reader.Next(line) || ParseNumbers(line, head, 3) != 3) {
        LogLine(kWho, ": invalid count line");
        return nullptr;
    }
    const double count = head[0];
    const bool flagsValid =
        (head[1] == 0.0 || head[1] == 1.0) && (head[2] == 0.0 || head[2] == 1.0);
    // A whole number of any size passes here; the file size bounds it next, before it is
    // converted to an integer.
    if (!flagsValid || !(count >= 0.0) || count != std::floor(count)) {
        LogLine(kWho, ": invalid count line");
        return nullptr;
    }
    if (count > static_cast<double>(reader.Rest().size() / kMinPointLineBytes + 1)) {
        LogLine(kWho, ": point count ", count, " exceeds the file size");
        return nullptr;
    }
    PointData data;
    data.hasNormal = head[1] == 1.0;
    data.hasColor = head[2] == 1.0;
    const int columns = 3 + (data.hasNormal ? 3 : 0) + (data.hasColor ? 3 : 0);
    const std::size_t n = static_cast<std::size_t>(count);
    data.coords.reserve(n);
    if (data.hasNormal) data.normals.reserve(n);
    if (data.hasColor) data.colors.reserve(n);
    double v[9];
    for (std::size_t i = 0; i < n; ++i) {
        if (!reader.Next(line)) {
            LogLine(kWho, ": file ends after ", i, " of ", n, " points");
            return nullptr;
        }
        if (ParseNumbers(line, v, 9) != columns) {
            LogLine(kWho, ": invalid point in line ", reader.LineNumber());
            return nullptr;
        }
        data.coords.emplace_back(v[0], v[1], v[2]);
        const double* rest = v + 3;
        if (data.hasNormal) {
            data.normals.emplace_back(rest[0], rest[1], rest[2]);
            rest += 3;
        }
        if (data.hasColor) data.colors.emplace_back(rest[0], rest[1], rest[2]);
    }
    while (reader.Next(line)) {
        if (line.find_first_not_of(" \t") != std::string_view::npos) {
            LogLine(kWho, ": unexpected data after the points in line ", reader.LineNumber());
            return nullptr;
        }
    }
    return BuildPointCloud(data, kWho);
}

int ExportPointCloudByZPC(const std::string& fileName, const PointView& view) {
    return WritePointFile(fileName, "ExportPointCloudByZPC", [&](FileWriter& out) {
        out.Put("ZPC 1\n");
        out.PutInt(view.count);
        out.Put(view.normals != nullptr ? " 1" : " 0");
        out.Put(view.colors != nullptr ? " 1\n" : " 0\n");
        for (int i = 0; i < view.count; ++i) {
            PutPointFields(out, view, i, true, ColorText::Fraction);
            out.Put('\n');
        }
    });
}

}  // namespace pointio
}  // namespace ZOL
