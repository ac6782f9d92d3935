// DumpBase: the one-shot switch, dump file names, and the text layout of meshes, clouds
// and vectors. Loading reads tokens straight from the stream buffer and checks every count
// against the bytes left in the file, so a damaged or hostile file is refused, never
// trusted with an allocation.
#include <zol/dump/DumpBase.h>

#include <atomic>
#include <charconv>
#include <cstring>
#include <ctime>
#include <locale>

#include <zol/dump/DumpField.h>
#include <zol/dump/DumpHookInternal.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

std::atomic<bool> gDumpOnce{false};

// Longer than any number the writers produce (20 digits, sign, point, exponent).
constexpr std::size_t kTokenCapacity = 64;

bool IsBlank(int c) {
    return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

// Reads one whitespace-separated token into buf (NUL-terminated). Fails at the end of the
// data or for a token too long to be a number.
bool ReadToken(std::istream& in, char (&buf)[kTokenCapacity]) {
    std::streambuf* sb = in.rdbuf();
    if (sb == nullptr || !in.good()) return false;
    using Traits = std::char_traits<char>;
    Traits::int_type c = sb->sgetc();
    while (!Traits::eq_int_type(c, Traits::eof()) && IsBlank(c)) c = sb->snextc();
    std::size_t n = 0;
    while (!Traits::eq_int_type(c, Traits::eof()) && !IsBlank(c)) {
        if (n + 1 >= kTokenCapacity) {
            in.setstate(std::ios::failbit);
            return false;
        }
        buf[n++] = Traits::to_char_type(c);
        c = sb->snextc();
    }
    buf[n] = '\0';
    if (n == 0) {
        in.setstate(std::ios::eofbit | std::ios::failbit);
        return false;
    }
    return true;
}

// Bytes between the read position and the end of the file; 0 when the stream cannot seek.
long long RemainingBytes(std::istream& in) {
    std::streambuf* sb = in.rdbuf();
    if (sb == nullptr) return 0;
    const std::streampos cur = sb->pubseekoff(0, std::ios::cur, std::ios::in);
    const std::streampos end = sb->pubseekoff(0, std::ios::end, std::ios::in);
    if (cur == std::streampos(-1) || end == std::streampos(-1)) return 0;
    sb->pubseekpos(cur, std::ios::in);
    return static_cast<long long>(end - cur);
}

// Whether count items of tokensPerItem tokens fit in the rest of the file: every token
// takes at least one character and one separator (the last separator may be missing).
bool Fits(std::istream& in, int count, int tokensPerItem) {
    if (count < 0) return false;
    if (count == 0 || tokensPerItem == 0) return true;
    const long long needed = 2LL * count * tokensPerItem - 1;
    return needed <= RemainingBytes(in);
}

void WritePoint(std::ofstream& out, const Vector3& p) { out << p.x << ' ' << p.y << ' ' << p.z; }

// The point lines of a cloud or list: x y z, or x y z nx ny nz.
template <typename Source>
void WritePoints(Source* source, int count, bool withNormal, std::ofstream& out) {
    for (int i = 0; i < count; ++i) {
        WritePoint(out, source->GetPointCoord(i));
        if (withNormal) {
            out << ' ';
            WritePoint(out, source->GetPointNormal(i));
        }
        out << '\n';
    }
}

// Appends count points from the file to the cloud.
bool ReadPoints(IPointCloud* cloud, int count, bool withNormal, std::ifstream& in) {
    if (auto* own = dynamic_cast<PointCloud*>(cloud))
        own->ReservePoint(own->GetPointCount() + count);
    Vector3 coord, normal;
    for (int i = 0; i < count; ++i) {
        if (!DumpText<Vector3>::Read(in, coord)) return false;
        if (withNormal) {
            if (!DumpText<Vector3>::Read(in, normal)) return false;
            cloud->InsertPoint(coord, normal);
        } else {
            cloud->InsertPoint(coord);
        }
    }
    return true;
}

}  // namespace

int DumpBase::APICalledTime = 0;

void DumpOnce() { gDumpOnce.store(true); }

bool TakeDumpOnce() { return gDumpOnce.exchange(false); }

DumpBase::~DumpBase() = default;

TriMesh* DumpBase::GetTriMesh(int /*index*/) { return nullptr; }

PointCloud* DumpBase::GetPointCloud(int /*index*/) { return nullptr; }

std::string DumpBase::MakeDumpFileName(const char* tag) {
    const std::time_t now = std::time(nullptr);
    const char* text = std::ctime(&now);
    std::string name = text ? text : "";
    std::string stamp;
    for (char c : name) {
        if (c == '\n') continue;
        stamp += c == ' ' ? '_' : (c == ':' ? '-' : c);
    }
    return stamp + tag + std::to_string(APICalledTime) + ".dump";
}

void DumpBase::OpenDumpFile(const char* tag, int apiName, std::ofstream& out) {
    out.open(MakeDumpFileName(tag));
    out.imbue(std::locale::classic());
    out.precision(20);
    out << apiName << '\n';
}

void DumpBase::CloseDumpFile(std::ofstream& out) {
    out.close();
    ++APICalledTime;
}

int DumpBase::LogRunResult(const char* recordName, int status) {
    if (status == RESULT_OK) {
        LogLine(recordName, "::Run success");
    } else {
        LogLine(recordName, "::Run failed: ", status);
    }
    return status;
}

int DumpBase::OpenForLoad(const std::string& fileName,
                          const char* recordName,
                          bool (*accepts)(int),
                          std::ifstream& in) {
    in.open(fileName, std::ios::binary);
    in.imbue(std::locale::classic());
    if (!in) {
        return LogFailure(RESULT_INVALID_INPUT, recordName, "::LoadDumpFile: cannot open ",
                          fileName);
    }
    int value = 0;
    if (!ReadInt(in, value) || !accepts(value)) {
        return LogFailure(RESULT_INVALID_INPUT, recordName, "::LoadDumpFile: ", fileName,
                          " does not record this API");
    }
    return RESULT_OK;
}

int DumpBase::LogLoadDamaged(const char* recordName, const std::string& fileName) {
    return LogFailure(RESULT_FAIL, recordName, "::LoadDumpFile: damaged data in ", fileName);
}

bool DumpBase::ReadInt(std::istream& in, int& value) {
    char buf[kTokenCapacity];
    if (!ReadToken(in, buf)) return false;
    const char* end = buf + std::strlen(buf);
    int v = 0;
    const std::from_chars_result result = std::from_chars(buf, end, v);
    if (result.ec != std::errc() || result.ptr != end) return false;
    value = v;
    return true;
}

bool DumpBase::ReadReal(std::istream& in, double& value) {
    char buf[kTokenCapacity];
    if (!ReadToken(in, buf)) return false;
    // Locale-free: a host's decimal comma must not change what a dump file means.
    const char* end = buf + std::strlen(buf);
    double v = 0.0;
    const std::from_chars_result result = std::from_chars(buf, end, v, std::chars_format::general);
    if (result.ec != std::errc() || result.ptr != end) return false;
    value = v;
    return true;
}

bool DumpBase::SkipEmptyElementLine(std::istream& in) {
    std::streambuf* sb = in.rdbuf();
    if (sb == nullptr || !in.good()) return false;
    using Traits = std::char_traits<char>;
    const auto skipSpaces = [sb] {
        Traits::int_type c = sb->sgetc();
        while (c == ' ' || c == '\t' || c == '\r') c = sb->snextc();
        return c;
    };
    if (skipSpaces() != '\n') return false;
    sb->sbumpc();
    if (skipSpaces() != '\n') return false;
    sb->sbumpc();
    return true;
}

bool DumpBase::ReadCount(std::istream& in, int tokensPerItem, int& count) {
    int n = 0;
    if (!ReadInt(in, n) || !Fits(in, n, tokensPerItem)) return false;
    count = n;
    return true;
}

void DumpBase::DumpTriMesh(const ITriMesh* triMesh, std::ofstream& out) {
    if (triMesh == nullptr) {
        out << -1 << '\n';
        return;
    }
    out.precision(20);
    // The interface reads through non-const slots; nothing is changed.
    ITriMesh* mesh = const_cast<ITriMesh*>(triMesh);
    const int vertexCount = mesh->GetVertexCount();
    out << vertexCount << '\n';
    for (int v = 0; v < vertexCount; ++v) {
        WritePoint(out, mesh->GetVertexCoord(v));
        out << '\n';
    }
    const int triangleCount = mesh->GetTriangleCount();
    out << triangleCount << '\n';
    int ids[3];
    for (int t = 0; t < triangleCount; ++t) {
        mesh->GetTriangleVertexIds(t, ids);
        out << ids[0] << ' ' << ids[1] << ' ' << ids[2] << '\n';
    }
}

DumpLoad DumpBase::LoadTriMesh(ITriMesh* triMesh, std::ifstream& in) {
    int vertexCount = 0;
    if (triMesh == nullptr || !ReadInt(in, vertexCount)) return DUMP_LOAD_DAMAGED;
    if (vertexCount < 0) return DUMP_LOAD_NULL;
    if (!Fits(in, vertexCount, 3)) return DUMP_LOAD_DAMAGED;
    const int first = triMesh->GetVertexCount();
    auto* own = dynamic_cast<TriMesh*>(triMesh);
    if (own) own->Reserve(first + vertexCount, own->GetTriangleCount());
    Vector3 coord;
    for (int v = 0; v < vertexCount; ++v) {
        if (!DumpText<Vector3>::Read(in, coord)) return DUMP_LOAD_DAMAGED;
        triMesh->InsertVertex(coord);
    }
    int triangleCount = 0;
    if (!ReadCount(in, 3, triangleCount)) return DUMP_LOAD_DAMAGED;
    if (own) own->Reserve(own->GetVertexCount(), own->GetTriangleCount() + triangleCount);
    int ids[3];
    for (int t = 0; t < triangleCount; ++t) {
        for (int& id : ids) {
            if (!ReadInt(in, id) || id < 0 || id >= vertexCount) return DUMP_LOAD_DAMAGED;
        }
        triMesh->InsertTriangle(first + ids[0], first + ids[1], first + ids[2]);
    }
    return DUMP_LOAD_OK;
}

void DumpBase::DumpPointCloud(const IPointCloud* pointCloud, bool withNormal, std::ofstream& out) {
    if (pointCloud == nullptr) {
        out << -1 << '\n';
        return;
    }
    out.precision(20);
    IPointCloud* cloud = const_cast<IPointCloud*>(pointCloud);
    const int count = cloud->GetPointCount();
    out << count << ' ' << (withNormal ? 1 : 0) << '\n';
    WritePoints(cloud, count, withNormal, out);
}

DumpLoad DumpBase::LoadPointCloud(IPointCloud* pointCloud, std::ifstream& in) {
    int count = 0;
    int withNormal = 0;
    if (pointCloud == nullptr || !ReadInt(in, count)) return DUMP_LOAD_DAMAGED;
    if (count < 0) return DUMP_LOAD_NULL;
    if (!ReadInt(in, withNormal) || !Fits(in, count, withNormal ? 6 : 3)) {
        return DUMP_LOAD_DAMAGED;
    }
    if (withNormal) pointCloud->SetHasNormal(true);
    return ReadPoints(pointCloud, count, withNormal != 0, in) ? DUMP_LOAD_OK : DUMP_LOAD_DAMAGED;
}

void DumpBase::DumpPointList(const IPointList* pointList, bool withNormal, std::ofstream& out) {
    if (pointList == nullptr) {
        out << -1 << '\n';
        return;
    }
    out.precision(20);
    IPointList* list = const_cast<IPointList*>(pointList);
    const int count = list->GetPointCount();
    out << count << '\n';
    WritePoints(list, count, withNormal, out);
}

DumpLoad DumpBase::LoadPointList(PointCloud* pointCloud, bool withNormal, std::ifstream& in) {
    int count = 0;
    if (pointCloud == nullptr || !ReadInt(in, count)) return DUMP_LOAD_DAMAGED;
    if (count < 0) return DUMP_LOAD_NULL;
    if (!Fits(in, count, withNormal ? 6 : 3)) return DUMP_LOAD_DAMAGED;
    if (withNormal) pointCloud->SetHasNormal(true);
    return ReadPoints(pointCloud, count, withNormal, in) ? DUMP_LOAD_OK : DUMP_LOAD_DAMAGED;
}

DumpLoad DumpBase::LoadStlIntVector(std::vector<int>& values, std::ifstream& in) {
    return ReadDumpVector(in, values);
}

void DumpBase::DumpStlIntVector(const std::vector<int>& values, std::ofstream& out) {
    WriteDumpVector(out, values);
}

DumpLoad DumpBase::LoadStlRealVector(std::vector<double>& values, std::ifstream& in) {
    return ReadDumpVector(in, values);
}

void DumpBase::DumpStlRealVector(const std::vector<double>& values, std::ofstream& out) {
    out.precision(20);
    WriteDumpVector(out, values);
}

DumpLoad DumpBase::LoadStlVector3Vector(std::vector<Vector3>& values, std::ifstream& in) {
    return ReadDumpVector(in, values);
}

void DumpBase::DumpStlVector3Vector(const std::vector<Vector3>& values, std::ofstream& out) {
    out.precision(20);
    WriteDumpVector(out, values);
}

DumpLoad DumpBase::LoadStlColor4Vector(std::vector<Color4>& values, std::ifstream& in) {
    return ReadDumpVector(in, values);
}

void DumpBase::DumpStlColor4Vector(const std::vector<Color4>& values, std::ofstream& out) {
    WriteDumpVector(out, values);
}

}  // namespace ZOL
