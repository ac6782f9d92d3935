// ASC point text: one point per line, blank-separated columns. The column count of
// the first data line fixes the layout for the whole file:
//   3 xyz, 4 xyz + intensity (ignored), 6 xyz + normal (or xyz + rgb, see below),
//   7 xyz + rgba, 9 xyz + normal + rgb, 10 xyz + normal + rgba; others: xyz only.
// Six columns are a colour when the file has a coloured extension, or when every
// extra value lies in [0, 255] and some exceed 1.5 (byte colours, which no unit
// normal has); otherwise normals. Colours are bytes (0..255) when any exceeds 1 or all
// are whole numbers, else they are taken as fractions in [0, 1].
// Lines that are empty or start with '#' or "//" are skipped.
#include <zol/io/PointFormatInternal.h>

#include <algorithm>
#include <cmath>

#include <zol/io/TextScanInternal.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {
namespace pointio {

namespace {
constexpr int kMaxColumns = 16;

enum class Extra { None, Normal, Color, Undecided };

struct Layout {
    bool normal = false;  // columns 3..5
    Extra color = Extra::None;
    int colorColumn = 0;
};

Layout LayoutFor(int columns, bool coloredExtension) {
    Layout l;
    switch (columns) {
        case 6:
            l.color = coloredExtension ? Extra::Color : Extra::Undecided;
            l.colorColumn = 3;
            break;
        case 7:
            l.color = Extra::Color;
            l.colorColumn = 3;
            break;
        case 9:
        case 10:
            l.normal = true;
            l.color = Extra::Color;
            l.colorColumn = 6;
            break;
        default:
            break;
    }
    return l;
}

bool IsComment(std::string_view line) {
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == std::string_view::npos) return true;
    return line[first] == '#' || line.substr(first, 2) == "//";
}

// Whole numbers only (as this writer produces) or any value above 1 mean bytes.
void ScaleColors(std::vector<Vector3>& colors) {
    double largest = 0.0;
    bool wholeNumbers = true;
    for (const Vector3& c : colors) {
        largest = std::max({largest, c.x, c.y, c.z});
        for (int k = 0; k < 3; ++k) wholeNumbers = wholeNumbers && c[k] == std::floor(c[k]);
    }
    const double scale = (largest > 1.0 || wholeNumbers) ? 1.0 / 255.0 : 1.0;
    for (Vector3& c : colors) {
        for (int k = 0; k < 3; ++k) c[k] = std::clamp(c[k] * scale, 0.0, 1.0);
    }
}
}  // namespace

PointCloud* ImportPointCloudByASC(std::string_view bytes, bool coloredExtension) {
    PointData data;
    std::vector<Vector3> extra;  // the three columns after xyz, for 6-column files
    LineCursor reader(bytes);
    std::string_view line;
    int columns = 0;
    Layout layout;
    double values[kMaxColumns];
    while (reader.Next(line)) {
        if (IsComment(line)) continue;
        const int n = ParseNumbers(line, values, kMaxColumns);
        if (n < 0) {
            LogLine("ImportPointCloudByASC: invalid number in line ", reader.LineNumber());
            return nullptr;
        }
        if (columns == 0) {
            if (n < 3) {
                LogLine("ImportPointCloudByASC: fewer than 3 values in line ", reader.LineNumber());
                return nullptr;
            }
            columns = n;
            layout = LayoutFor(columns, coloredExtension);
        } else if (n != columns) {
            LogLine("ImportPointCloudByASC: line ", reader.LineNumber(), " has ", n,
                    " values, expected ", columns);
            return nullptr;
        }
        data.coords.emplace_back(values[0], values[1], values[2]);
        if (layout.normal) data.normals.emplace_back(values[3], values[4], values[5]);
        if (layout.color != Extra::None) {
            const int c = layout.colorColumn;
            extra.emplace_back(values[c], values[c + 1], values[c + 2]);
        }
    }
    data.hasNormal = layout.normal;
    if (layout.color == Extra::Undecided) {
        bool bytesOnly = true;
        bool aboveOne = false;
        for (const Vector3& e : extra) {
            for (int k = 0; k < 3; ++k) {
                bytesOnly = bytesOnly && e[k] >= 0.0 && e[k] <= 255.0;
                aboveOne = aboveOne || e[k] > 1.5;
            }
        }
        layout.color = (bytesOnly && aboveOne) ? Extra::Color : Extra::Normal;
    }
    if (layout.color == Extra::Normal) {
        data.hasNormal = true;
        data.normals = std::move(extra);
    } else if (layout.color == Extra::Color) {
        data.hasColor = true;
        ScaleColors(extra);
        data.colors = std::move(extra);
    }
    return BuildPointCloud(data, "ImportPointCloudByASC");
}

int ExportPointCloudByASC(const std::string& fileName, const PointView& view, bool colored) {
    return WritePointFile(fileName, "ExportPointCloudByASC", [&](FileWriter& out) {
        for (int i = 0; i < view.count; ++i) {
            PutPointFields(out, view, i, true, colored ? ColorText::Byte : ColorText::None);
            out.Put('\n');
        }
    });
}

}  // namespace pointio
}  // namespace ZOL
