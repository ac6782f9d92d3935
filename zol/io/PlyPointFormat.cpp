// PLY as a point file. The reader takes ASCII and binary (little- or big-endian)
// files with any element layout: the vertex element gives x, y, z and optionally
// nx, ny, nz and red, green, blue (integer colours are bytes, float colours fractions);
// a range-scanner "range_grid" element (one list per cell, empty or holding the cell's
// vertex index) together with "obj_info num_cols / num_rows" makes the result a grid
// cloud. Other elements are skipped. The writer produces ASCII with double coordinates
// and uchar colours, and for grid clouds the same range_grid element.
#include <zol/io/PointFormatInternal.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include <zol/io/TextScanInternal.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {
namespace pointio {

namespace {
const char* const kWho = "ImportPointCloudByPLY";

enum class Type { Int8, UInt8, Int16, UInt16, Int32, UInt32, Float32, Float64, Invalid };

Type ParseType(std::string_view name) {
    if (name == "char" || name == "int8") return Type::Int8;
    if (name == "uchar" || name == "uint8") return Type::UInt8;
    if (name == "short" || name == "int16") return Type::Int16;
    if (name == "ushort" || name == "uint16") return Type::UInt16;
    if (name == "int" || name == "int32") return Type::Int32;
    if (name == "uint" || name == "uint32") return Type::UInt32;
    if (name == "float" || name == "float32") return Type::Float32;
    if (name == "double" || name == "float64") return Type::Float64;
    return Type::Invalid;
}

int TypeSize(Type t) {
    switch (t) {
        case Type::Int8:
        case Type::UInt8:
            return 1;
        case Type::Int16:
        case Type::UInt16:
            return 2;
        case Type::Int32:
        case Type::UInt32:
        case Type::Float32:
            return 4;
        case Type::Float64:
            return 8;
        default:
            return 0;
    }
}

bool IsFloat(Type t) { return t == Type::Float32 || t == Type::Float64; }

struct Property {
    std::string name;
    Type type = Type::Invalid;
    bool isList = false;
    Type countType = Type::Invalid;
};

struct Element {
    std::string name;
    std::int64_t count = 0;
    std::vector<Property> properties;
};

enum class Format { Ascii, BinaryLittle, BinaryBig };

struct Header {
    Format format = Format::Ascii;
    std::vector<Element> elements;
    std::int64_t numCols = 0;
    std::int64_t numRows = 0;
    std::string_view body;  ///< everything after the end_header line
};

void SplitTokens(std::string_view line, std::vector<std::string_view>& tokens) {
    tokens.clear();
    TokenCursor cursor(line);
    std::string_view token;
    while (cursor.Next(token)) tokens.push_back(token);
}

bool ParseHeader(std::string_view bytes, Header& header) {
    LineCursor reader(bytes);
    std::string_view line;
    std::vector<std::string_view> tokens;
    if (!reader.Next(line) || line != "ply") {
        LogLine(kWho, ": missing ply magic word");
        return false;
    }
    bool sawFormat = false;
    while (reader.Next(line)) {
        SplitTokens(line, tokens);
        if (tokens.empty() || tokens[0] == "comment") continue;
        const std::string_view key = tokens[0];
        if (key == "end_header") {
            header.body = reader.Rest();
            if (!sawFormat) LogLine(kWho, ": missing format line");
            return sawFormat;
        }
        if (key == "format" && tokens.size() >= 2) {
            if (tokens[1] == "ascii") {
                header.format = Format::Ascii;
            } else if (tokens[1] == "binary_little_endian") {
                header.format = Format::BinaryLittle;
            } else if (tokens[1] == "binary_big_endian") {
                header.format = Format::BinaryBig;
            } else {
                LogLine(kWho, ": unknown format: ", tokens[1]);
                return false;
            }
            sawFormat = true;
        } else if (key == "obj_info" && tokens.size() >= 3) {
            std::int64_t v = 0;
            if (tokens[1] == "num_cols" && ParseInt64Token(tokens[2], v)) header.numCols = v;
            if (tokens[1] == "num_rows" && ParseInt64Token(tokens[2], v)) header.numRows = v;
        } else if (key == "element" && tokens.size() == 3) {
            Element e;
            e.name = std::string(tokens[1]);
            if (!ParseInt64Token(tokens[2], e.count) || e.count < 0) {
                LogLine(kWho, ": invalid element count in header line ", reader.LineNumber());
                return false;
            }
            header.elements.push_back(std::move(e));
        } else if (key == "property" && !header.elements.empty()) {
            Property p;
            if (tokens.size() == 5 && tokens[1] == "list") {
                p.isList = true;
                p.countType = ParseType(tokens[2]);
                p.type = ParseType(tokens[3]);
                p.name = std::string(tokens[4]);
                if (p.countType == Type::Invalid || IsFloat(p.countType)) p.type = Type::Invalid;
            } else if (tokens.size() == 3) {
                p.type = ParseType(tokens[1]);
                p.name = std::string(tokens[2]);
            }
            if (p.type == Type::Invalid) {
                LogLine(kWho, ": invalid property in header line ", reader.LineNumber());
                return false;
            }
            header.elements.back().properties.push_back(std::move(p));
        } else if (key != "obj_info") {
            LogLine(kWho, ": invalid header line ", reader.LineNumber());
            return false;
        }
    }
    LogLine(kWho, ": missing end_header");
    return false;
}

// Reads the values of the body one at a time, in ASCII or binary.
class BodyReader {
public:
    BodyReader(std::string_view body, Format format)
        : mBody(body), mLines(body), mTokens(std::string_view()), mFormat(format) {}

    /// Starts the next element instance. In ASCII that is the next non-empty line: its
    /// values are read from it alone and whatever it holds beyond the declared
    /// properties is ignored. False when no line is left.
    bool BeginInstance() {
        if (mFormat != Format::Ascii) return true;
        std::string_view line;
        while (mLines.Next(line)) {
            mTokens = TokenCursor(line);
            if (mTokens.HasNext()) return true;
        }
        mTokens = TokenCursor(std::string_view());
        return false;
    }

    /// False at the end of data or on a malformed value.
    bool Read(Type type, double& value) {
        if (mFormat == Format::Ascii) {
            std::string_view token;
            return mTokens.Next(token) && ParseDoubleToken(token, value);
        }
        const std::size_t size = static_cast<std::size_t>(TypeSize(type));
        if (mBody.size() - mPos < size) return false;
        char b[8];
        std::memcpy(b, mBody.data() + mPos, size);
        mPos += size;
        if (mFormat == Format::BinaryBig) std::reverse(b, b + size);
        value = Decode(type, b);
        return true;
    }
    /// Reads a list length; false unless it is a whole number the rest of the data can hold.
    bool ReadListCount(Type type, int& count) {
        double value = 0.0;
        if (!Read(type, value)) return false;
        if (!(value >= 0.0 && value <= static_cast<double>(Remaining()))) return false;
        count = static_cast<int>(value);
        return count == value;
    }
    /// Bytes not yet read.
    std::size_t Remaining() const {
        if (mFormat != Format::Ascii) return mBody.size() - mPos;
        return mTokens.Rest().size() + mLines.Rest().size();
    }
    bool IsAscii() const { return mFormat == Format::Ascii; }

private:
    static double Decode(Type type, const char* b) {
        switch (type) {
            case Type::Int8:
                return static_cast<std::int8_t>(b[0]);
            case Type::UInt8:
                return static_cast<unsigned char>(b[0]);
            case Type::Int16: {
                std::int16_t v;
                std::memcpy(&v, b, 2);
                return v;
            }
            case Type::UInt16: {
                std::uint16_t v;
                std::memcpy(&v, b, 2);
                return v;
            }
            case Type::Int32:
                return static_cast<std::int32_t>(GetU32LE(b));
            case Type::UInt32:
                return GetU32LE(b);
            case Type::Float32:
                return GetF32LE(b);
            default:
                return GetF64LE(b);
        }
    }

    std::string_view mBody;
    LineCursor mLines;     // ASCII: the lines not yet begun
    TokenCursor mTokens;   // ASCII: the rest of the current instance's line
    std::size_t mPos = 0;  // binary: bytes read
    Format mFormat;
};

// Slots of the vertex properties we keep: x y z nx ny nz red green blue.
int VertexSlot(const std::string& name) {
    static const char* const kNames[] = {"x", "y", "z", "nx", "ny", "nz", "red", "green", "blue"};
    for (int i = 0; i < 9; ++i) {
        if (name == kNames[i]) return i;
    }
    if (name == "diffuse_red" || name == "r") return 6;
    if (name == "diffuse_green" || name == "g") return 7;
    if (name == "diffuse_blue" || name == "b") return 8;
    return -1;
}

// Minimum bytes one instance of \p e takes, so that counts larger than the file can
// hold are refused before anything is allocated for them.
std::int64_t MinInstanceBytes(const Element& e, bool ascii) {
    std::int64_t bytes = 0;
    for (const Property& p : e.properties) {
        bytes += ascii ? 2 : (p.isList ? TypeSize(p.countType) : TypeSize(p.type));
    }
    return bytes;
}

bool HasCoordinates(const Element& e) {
    int found = 0;
    for (const Property& p : e.properties) {
        if (!p.isList && (p.name == "x" || p.name == "y" || p.name == "z")) ++found;
    }
    return found == 3;
}

// Reads every instance of \p e, calling visit(instance, property, j, value) for each
// value, where j is -1 for a scalar property and the position in the list otherwise.
// \return false at the end of data or on a malformed value.
template <typename Visit>
bool ReadInstances(BodyReader& body, const Element& e, Visit visit) {
    if (e.properties.empty()) return true;  // nothing stored per instance
    double value = 0.0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(e.count); ++i) {
        if (!body.BeginInstance()) return false;
        for (std::size_t k = 0; k < e.properties.size(); ++k) {
            const Property& p = e.properties[k];
            if (!p.isList) {
                if (!body.Read(p.type, value)) return false;
                visit(i, k, -1, value);
                continue;
            }
            int count = 0;
            if (!body.ReadListCount(p.countType, count)) return false;
            for (int j = 0; j < count; ++j) {
                if (!body.Read(p.type, value)) return false;
                visit(i, k, j, value);
            }
        }
    }
    return true;
}

bool ReadVertices(BodyReader& body, const Element& e, PointData& data) {
    std::vector<int> slots;
    bool has[9] = {};
    bool floatColor = false;
    for (const Property& p : e.properties) {
        const int s = p.isList ? -1 : VertexSlot(p.name);
        slots.push_back(s);
        if (s >= 0) has[s] = true;
        if (s >= 6) floatColor = floatColor || IsFloat(p.type);
    }
    data.hasNormal = has[3] && has[4] && has[5];
    data.hasColor = has[6] && has[7] && has[8];
    const std::size_t n = static_cast<std::size_t>(e.count);
    data.coords.resize(n);
    if (data.hasNormal) data.normals.resize(n);
    if (data.hasColor) data.colors.resize(n);
    // Per slot the array it fills, null for the normal or colour that is incomplete.
    std::vector<Vector3>* const arrays[3] = {&data.coords, data.hasNormal ? &data.normals : nullptr,
                                             data.hasColor ? &data.colors : nullptr};
    const bool read = ReadInstances(body, e, [&](std::size_t i, std::size_t k, int j, double v) {
        const int s = slots[k];
        if (j < 0 && s >= 0 && arrays[s / 3] != nullptr) (*arrays[s / 3])[i][s % 3] = v;
    });
    const double colorScale = floatColor ? 1.0 : 1.0 / 255.0;
    for (Vector3& c : data.colors) {
        for (int k = 0; k < 3; ++k) c[k] = std::clamp(c[k] * colorScale, 0.0, 1.0);
    }
    return read;
}

// Reads the range grid: per cell a list that is empty or holds the cell's vertex.
// \p vertexCell receives per vertex its cell, -1 if none; false on malformed data.
bool ReadRangeGrid(BodyReader& body,
                   const Element& e,
                   std::size_t vertexCount,
                   std::vector<int>& vertexCell,
                   bool& consistent) {
    vertexCell.assign(vertexCount, -1);
    consistent = true;
    return ReadInstances(body, e, [&](std::size_t cell, std::size_t k, int j, double v) {
        if (j != 0 || e.properties[k].name != "vertex_indices") return;
        if (!(v >= 0.0 && v < static_cast<double>(vertexCount)) ||
            vertexCell[static_cast<std::size_t>(v)] != -1) {
            consistent = false;
            return;
        }
        vertexCell[static_cast<std::size_t>(v)] = static_cast<int>(cell);
    });
}

bool SkipElement(BodyReader& body, const Element& e) {
    return ReadInstances(body, e, [](std::size_t, std::size_t, int, double) {});
}
}  // namespace

PointCloud* ImportPointCloudByPLY(std::string_view bytes) {
    Header header;
    if (!ParseHeader(bytes, header)) return nullptr;
    BodyReader body(header.body, header.format);
    PointData data;
    bool sawVertex = false;
    const Element* grid = nullptr;
    std::vector<int> vertexCell;
    bool gridConsistent = true;
    for (const Element& e : header.elements) {
        const std::int64_t minBytes = MinInstanceBytes(e, body.IsAscii());
        // ASCII: the last value needs no separator after it.
        const std::int64_t slack = body.IsAscii() ? 1 : 0;
        if (minBytes > 0 &&
            e.count > static_cast<std::int64_t>(body.Remaining() / minBytes) + slack) {
            LogLine(kWho, ": element ", e.name, " count ", e.count, " exceeds the file size");
            return nullptr;
        }
        if (e.count > INT_LARGE) {
            LogLine(kWho, ": element ", e.name, " count ", e.count, " too large");
            return nullptr;
        }
        bool ok = true;
        if (e.name == "vertex" && !sawVertex) {
            if (!HasCoordinates(e)) {
                LogLine(kWho, ": vertex element lacks x, y or z");
                return nullptr;
            }
            sawVertex = true;
            ok = ReadVertices(body, e, data);
        } else if (e.name == "range_grid" && sawVertex && grid == nullptr) {
            grid = &e;
            ok = ReadRangeGrid(body, e, data.coords.size(), vertexCell, gridConsistent);
        } else {
            ok = SkipElement(body, e);
        }
        if (!ok) {
            LogLine(kWho, ": unexpected end of data or invalid value in element ", e.name);
            return nullptr;
        }
    }
    if (!sawVertex) {
        LogLine(kWho, ": no vertex element");
        return nullptr;
    }
    if (grid != nullptr) {
        const bool coversAll =
            std::find(vertexCell.begin(), vertexCell.end(), -1) == vertexCell.end();
        const std::int64_t cells = grid->count;
        std::int64_t width = header.numCols;
        std::int64_t height = header.numRows;
        // Compared by division: the header's numbers may be large enough to overflow.
        if (width <= 0 || height <= 0 || cells % width != 0 || cells / width != height) {
            width = cells;
            height = 1;
        }
        if (!gridConsistent || !coversAll || cells < 1 || cells > kMaxGridCells) {
            LogLine(kWho, ": range_grid does not map every vertex to one cell, grid ignored");
        } else {
            data.width = static_cast<int>(width);
            data.height = static_cast<int>(height);
            data.cells = std::move(vertexCell);
        }
    }
    return BuildPointCloud(data, kWho);
}

int ExportPointCloudByPLY(const std::string& fileName, const PointView& view) {
    return WritePointFile(fileName, "ExportPointCloudByPLY", [&](FileWriter& out) {
        const bool gridView = view.width > 0;
        out.Put("ply\nformat ascii 1.0\ncomment zolc2017 point cloud\n");
        if (gridView) {
            out.Put("obj_info num_cols ");
            out.PutInt(view.width);
            out.Put("\nobj_info num_rows ");
            out.PutInt(view.height);
            out.Put('\n');
        }
        out.Put("element vertex ");
        out.PutInt(view.count);
        out.Put("\nproperty double x\nproperty double y\nproperty double z\n");
        if (view.normals != nullptr)
            out.Put("property double nx\nproperty double ny\nproperty double nz\n");
        if (view.colors != nullptr)
            out.Put("property uchar red\nproperty uchar green\nproperty uchar blue\n");
        if (gridView) {
            out.Put("element range_grid ");
            out.PutInt(std::int64_t(view.width) * view.height);
            out.Put("\nproperty list uchar int vertex_indices\n");
        }
        out.Put("end_header\n");
        const ColorText colorText = view.colors != nullptr ? ColorText::Byte : ColorText::None;
        for (int i = 0; i < view.count; ++i) {
            PutPointFields(out, view, i, true, colorText);
            out.Put('\n');
        }
        if (!gridView) return;
        std::vector<int> cellPoint(static_cast<std::size_t>(view.width) * view.height, -1);
        for (int i = 0; i < view.count; ++i) cellPoint[view.cells[i]] = i;
        for (int p : cellPoint) {
            if (p < 0) {
                out.Put("0\n");
            } else {
                out.Put("1 ");
                out.PutInt(p);
                out.Put('\n');
            }
        }
    });
}

}  // namespace pointio
}  // namespace ZOL
