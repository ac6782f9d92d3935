// OBJ as a point file: "v x y z [r g b]" lines give the points, "vn nx ny nz" lines
// their normals (kept only when there is one per point). Colours are kept only when
// every point has them; they are fractions in [0, 1], or bytes when any exceeds 1.
// Every other line (faces, groups, materials, comments) is ignored.
#include <zol/io/PointFormatInternal.h>

#include <algorithm>

#include <zol/io/TextScanInternal.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {
namespace pointio {

namespace {
constexpr int kMaxValues = 8;
}  // namespace

PointCloud* ImportPointCloudByOBJ(std::string_view bytes) {
    PointData data;
    std::vector<Vector3> colors;
    bool everyPointColored = true;
    LineCursor reader(bytes);
    std::string_view line;
    double values[kMaxValues];
    while (reader.Next(line)) {
        const std::size_t first = line.find_first_not_of(" \t");
        if (first == std::string_view::npos) continue;
        line.remove_prefix(first);
        const bool isVertex =
            line.size() > 1 && line[0] == 'v' && (line[1] == ' ' || line[1] == '\t');
        const bool isNormal = line.size() > 2 && line[0] == 'v' && line[1] == 'n' &&
                              (line[2] == ' ' || line[2] == '\t');
        if (!isVertex && !isNormal) continue;
        const int n = ParseNumbers(line.substr(isVertex ? 1 : 2), values, kMaxValues);
        if (n < 3) {
            LogLine("ImportPointCloudByOBJ: invalid ", isVertex ? "vertex" : "normal", " in line ",
                    reader.LineNumber());
            return nullptr;
        }
        if (isNormal) {
            data.normals.emplace_back(values[0], values[1], values[2]);
            continue;
        }
        data.coords.emplace_back(values[0], values[1], values[2]);
        if (n >= 6) {
            colors.emplace_back(values[n - 3], values[n - 2], values[n - 1]);
        } else {
            everyPointColored = false;
        }
    }
    data.hasNormal = !data.coords.empty() && data.normals.size() == data.coords.size();
    if (!data.hasNormal) data.normals.clear();
    if (everyPointColored && !data.coords.empty()) {
        double largest = 0.0;
        for (const Vector3& c : colors) largest = std::max({largest, c.x, c.y, c.z});
        const double scale = largest > 1.0 ? 1.0 / 255.0 : 1.0;
        for (Vector3& c : colors) {
            for (int k = 0; k < 3; ++k) c[k] = std::clamp(c[k] * scale, 0.0, 1.0);
        }
        data.hasColor = true;
        data.colors = std::move(colors);
    }
    return BuildPointCloud(data, "ImportPointCloudByOBJ");
}

int ExportPointCloudByOBJ(const std::string& fileName, const PointView& view) {
    return WritePointFile(fileName, "ExportPointCloudByOBJ", [&](FileWriter& out) {
        for (int i = 0; i < view.count; ++i) {
            out.Put("v ");
            PutPointFields(out, view, i, false, ColorText::Fraction);
            out.Put('\n');
        }
        for (int i = 0; view.normals != nullptr && i < view.count; ++i) {
            out.Put("vn ");
            out.PutExacts(view.normals[i]);
            out.Put('\n');
        }
    });
}

}  // namespace pointio
}  // namespace ZOL
