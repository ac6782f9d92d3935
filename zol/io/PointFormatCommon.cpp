// Helpers shared by the point-cloud formats: building a cloud from decoded arrays, the
// flat view writers read, whole-file writing, number scanning and formatting.
#include <zol/io/PointFormatInternal.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include <zol/runtime/LogInternal.h>

namespace ZOL {
namespace pointio {

namespace {
Vector3 FiniteOrZero(const Vector3& v) {
    return Vector3(std::isfinite(v.x) ? v.x : 0.0, std::isfinite(v.y) ? v.y : 0.0,
                   std::isfinite(v.z) ? v.z : 0.0);
}

bool IsFinite(const Vector3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }

PointCloud* BuildGrid(PointData& data, const char* who) {
    const std::int64_t cellCount = std::int64_t(data.width) * data.height;
    PointCloud* cloud = new PointCloud(data.hasNormal, data.hasColor, true);
    cloud->InitGrid(data.width, data.height);
    cloud->ReservePoint(static_cast<int>(data.coords.size()));
    for (std::size_t i = 0; i < data.coords.size(); ++i) {
        if (!IsFinite(data.coords[i])) continue;
        const int cell = data.cells[i];
        if (cell < 0 || cell >= cellCount) {
            LogLine(who, ": grid cell out of range: ", cell);
            delete cloud;
            return nullptr;
        }
        const int x = cell % data.width;
        const int y = cell / data.width;
        if (cloud->IsGridValid(x, y)) {
            LogLine(who, ": grid cell used twice: ", cell);
            delete cloud;
            return nullptr;
        }
        cloud->SetGridCoord(x, y, data.coords[i]);
        const int id = cloud->GetPointCount() - 1;
        if (data.hasNormal) cloud->SetPointNormal(id, FiniteOrZero(data.normals[i]));
        if (data.hasColor) cloud->SetPointColor(id, FiniteOrZero(data.colors[i]));
    }
    return cloud;
}
}  // namespace

PointCloud* BuildPointCloud(PointData& data, const char* who) {
    std::size_t dropped = 0;
    for (const Vector3& c : data.coords) dropped += IsFinite(c) ? 0 : 1;
    PointCloud* cloud = nullptr;
    if (data.width > 0) {
        cloud = BuildGrid(data, who);
        if (cloud == nullptr) return nullptr;
    } else {
        cloud = new PointCloud(data.hasNormal, data.hasColor, false);
        cloud->ReservePoint(static_cast<int>(data.coords.size() - dropped));
        for (std::size_t i = 0; i < data.coords.size(); ++i) {
            if (!IsFinite(data.coords[i])) continue;
            const int id = data.hasNormal
                               ? cloud->InsertPoint(data.coords[i], FiniteOrZero(data.normals[i]))
                               : cloud->InsertPoint(data.coords[i]);
            if (data.hasColor) cloud->SetPointColor(id, FiniteOrZero(data.colors[i]));
        }
    }
    if (dropped > 0) LogLine(who, ": dropped points with non-finite coordinates: ", dropped);
    return cloud;
}

PointView::PointView(const IPointCloud& cloud) {
    IPointCloud& source = const_cast<IPointCloud&>(cloud);  // getters are not const
    count = source.GetPointCount();
    const PointCloud* own = dynamic_cast<const PointCloud*>(&cloud);
    if (own != nullptr) {
        coords = own->GetPointCoordData();
        normals = own->HasNormal() ? own->GetPointNormalData() : nullptr;
    } else {
        mCoords.resize(count);
        for (int i = 0; i < count; ++i) mCoords[i] = source.GetPointCoord(i);
        coords = mCoords.data();
        if (source.HasNormal()) {
            mNormals.resize(count);
            for (int i = 0; i < count; ++i) mNormals[i] = source.GetPointNormal(i);
            normals = mNormals.data();
        }
    }
    if (own != nullptr && own->HasColor()) {
        mColors.resize(count);
        for (int i = 0; i < count; ++i) mColors[i] = own->GetPointColor(i);
        colors = mColors.data();
    }
}

PointView::PointView(const IGridPointCloud& grid) {
    IGridPointCloud& source = const_cast<IGridPointCloud&>(grid);
    width = source.GetWidth();
    height = source.GetHeight();
    const bool hasNormal = source.HasGridNormal();
    const PointCloud* own = dynamic_cast<const PointCloud*>(&grid);
    const bool hasColor = own != nullptr && own->HasColor();
    const int valid = source.GetValidGridCount();
    if (valid > 0) {
        mCoords.reserve(valid);
        mCells.reserve(valid);
    }
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (!source.IsGridValid(x, y)) continue;
            mCells.push_back(y * width + x);
            mCoords.push_back(source.GetGridCoord(x, y));
            if (hasNormal) mNormals.push_back(source.GetGridNormal(x, y));
            if (hasColor) mColors.push_back(own->GetPointColor(own->GetGridPointId(x, y)));
        }
    }
    count = static_cast<int>(mCoords.size());
    coords = mCoords.data();
    cells = mCells.data();
    if (hasNormal) normals = mNormals.data();
    if (hasColor) colors = mColors.data();
}

bool WriteWholeFile(const std::string& fileName, const std::string& bytes) {
    std::FILE* file = std::fopen(fileName.c_str(), "wb");
    if (file == nullptr) return false;
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    const bool closed = std::fclose(file) == 0;
    return written && closed;
}

bool LineReader::Next(std::string_view& line) {
    if (mPos >= mText.size()) return false;
    const std::size_t end = mText.find('\n', mPos);
    const std::size_t stop = end == std::string_view::npos ? mText.size() : end;
    line = mText.substr(mPos, stop - mPos);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    mPos = end == std::string_view::npos ? mText.size() : end + 1;
    ++mLine;
    return true;
}

bool ParseDouble(std::string_view token, double& value) {
    if (!token.empty() && token.front() == '+') token.remove_prefix(1);
    if (token.empty()) return false;
    const char* end = token.data() + token.size();
    const std::from_chars_result r = std::from_chars(token.data(), end, value);
    if (r.ec == std::errc::result_out_of_range) {
        // Beyond the double range: an underflow reads as 0, an overflow as infinity
        // (the point is then dropped as non-finite).
        const std::size_t e = token.find_first_of("eE");
        const bool underflow =
            e != std::string_view::npos && e + 1 < token.size() && token[e + 1] == '-';
        const double magnitude = underflow ? 0.0 : HUGE_VAL;
        value = (token.front() == '-') ? -magnitude : magnitude;
        return r.ptr == end;
    }
    return r.ec == std::errc() && r.ptr == end;
}

bool ParseInt(std::string_view token, std::int64_t& value) {
    if (!token.empty() && token.front() == '+') token.remove_prefix(1);
    if (token.empty()) return false;
    const char* end = token.data() + token.size();
    const std::from_chars_result r = std::from_chars(token.data(), end, value);
    return r.ec == std::errc() && r.ptr == end;
}

void SplitTokens(std::string_view line, std::vector<std::string_view>& tokens) {
    tokens.clear();
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && IsBlank(line[i])) ++i;
        const std::size_t start = i;
        while (i < line.size() && !IsBlank(line[i])) ++i;
        if (i > start) tokens.push_back(line.substr(start, i - start));
    }
}

int ParseNumbers(std::string_view line, double* out, int max) {
    int count = 0;
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && IsBlank(line[i])) ++i;
        const std::size_t start = i;
        while (i < line.size() && !IsBlank(line[i])) ++i;
        if (i == start) break;
        if (count == max) return -1;
        if (!ParseDouble(line.substr(start, i - start), out[count])) return -1;
        ++count;
    }
    return count;
}

void AppendNumber(std::string& out, double v) {
    char buffer[32];
    const std::to_chars_result r = std::to_chars(buffer, buffer + sizeof(buffer), v);
    out.append(buffer, r.ptr);
}

void AppendInt(std::string& out, std::int64_t v) {
    char buffer[24];
    const std::to_chars_result r = std::to_chars(buffer, buffer + sizeof(buffer), v);
    out.append(buffer, r.ptr);
}

void AppendVector(std::string& out, const Vector3& v) {
    AppendNumber(out, v.x);
    out += ' ';
    AppendNumber(out, v.y);
    out += ' ';
    AppendNumber(out, v.z);
}

int ColorToByte(double c) {
    if (!(c > 0.0)) return 0;
    if (c >= 1.0) return 255;
    return static_cast<int>(c * 255.0 + 0.5);
}

void PutU32(std::string& out, std::uint32_t v) {
    const char b[4] = {char(v & 0xFF), char((v >> 8) & 0xFF), char((v >> 16) & 0xFF),
                       char((v >> 24) & 0xFF)};
    out.append(b, 4);
}

void PutU64(std::string& out, std::uint64_t v) {
    PutU32(out, static_cast<std::uint32_t>(v & 0xFFFFFFFFu));
    PutU32(out, static_cast<std::uint32_t>(v >> 32));
}

void PutF64(std::string& out, double v) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &v, sizeof(bits));
    PutU64(out, bits);
}

std::uint32_t GetU32(const unsigned char* p) {
    return std::uint32_t(p[0]) | (std::uint32_t(p[1]) << 8) | (std::uint32_t(p[2]) << 16) |
           (std::uint32_t(p[3]) << 24);
}

std::uint64_t GetU64(const unsigned char* p) {
    return std::uint64_t(GetU32(p)) | (std::uint64_t(GetU32(p + 4)) << 32);
}

double GetF64(const unsigned char* p) {
    const std::uint64_t bits = GetU64(p);
    double v = 0.0;
    std::memcpy(&v, &bits, sizeof(v));
    return v;
}

}  // namespace pointio
}  // namespace ZOL
