// Reading and writing for `zol`: the format by extension (and, for OBJ and PLY, by whether
// the file holds faces), messages that name the file, and writes through a temporary name.
#include "ToolFiles.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include <zol/io/Parser.h>

#include "ToolCommon.h"

namespace zoltool {

using namespace ZOL;

const char* const kMeshFormats = "obj off ply stl zpt";
const char* const kCloudFormats = "asc xyz xyzn casc xyzrgb obj ply zpc zbp zbg";

namespace {
bool InList(const char* list, const std::string& extension) {
    if (extension.empty()) return false;
    std::istringstream words(list);
    std::string word;
    while (words >> word) {
        if (word == extension) return true;
    }
    return false;
}

// A PLY header that declares at least one face.
bool PlyHasFaces(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::string line;
    for (int i = 0; i < 10000 && std::getline(in, line); ++i) {
        std::istringstream words(line);
        std::string keyword, element;
        long long count = 0;
        words >> keyword;
        if (keyword == "end_header") break;
        if (keyword == "element" && (words >> element >> count) && element == "face") {
            return count > 0;
        }
    }
    return false;
}

// An OBJ file with at least one face line.
bool ObjHasFaces(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::string line;
    while (std::getline(in, line)) {
        if (line.size() > 1 && line[0] == 'f' && (line[1] == ' ' || line[1] == '\t')) return true;
    }
    return false;
}

// Fails with EXIT_BAD_INPUT unless \p path is a readable file of a known format.
void CheckInput(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) Fail(EXIT_BAD_INPUT, path + ": no such file", 0);
    if (std::filesystem::is_directory(status)) Fail(EXIT_BAD_INPUT, path + ": is a folder", 0);
    if (!std::ifstream(path, std::ios::binary)) {
        Fail(EXIT_BAD_INPUT, path + ": cannot be opened for reading", 0);
    }
    const std::string extension = Extension(path);
    if (!InList(kMeshFormats, extension) && !InList(kCloudFormats, extension)) {
        Fail(EXIT_BAD_INPUT,
             path + ": unknown format \"" + extension + "\" (meshes: " + kMeshFormats +
                 "; point clouds: " + kCloudFormats + ")",
             0);
    }
}

bool HoldsMesh(const std::string& path) {
    const std::string extension = Extension(path);
    if (!InList(kCloudFormats, extension)) return true;
    if (extension == "ply") return PlyHasFaces(path);
    if (extension == "obj") return ObjHasFaces(path);
    return false;
}

// Temporary files being written, kept where a signal handler can reach them without
// allocating: an interrupted command (Ctrl-C) removes them before it ends.
namespace PendingFiles {
constexpr int kSlots = 16;
constexpr std::size_t kPathLength = 4096;
char gPaths[kSlots][kPathLength];
volatile std::sig_atomic_t gUsed[kSlots];

void RemoveAll(int signalNumber) {
    for (int i = 0; i < kSlots; ++i) {
        if (gUsed[i]) unlink(gPaths[i]);
    }
    std::signal(signalNumber, SIG_DFL);
    std::raise(signalNumber);
}

int Add(const std::string& path) {
    static const bool installed = [] {
        for (int signalNumber : {SIGINT, SIGTERM, SIGHUP}) std::signal(signalNumber, RemoveAll);
        return true;
    }();
    (void)installed;
    if (path.size() >= kPathLength) return -1;
    for (int i = 0; i < kSlots; ++i) {
        if (gUsed[i]) continue;
        std::memcpy(gPaths[i], path.c_str(), path.size() + 1);
        gUsed[i] = 1;
        return i;
    }
    return -1;
}

void Remove(int slot) {
    if (slot >= 0) gUsed[slot] = 0;
}
}  // namespace PendingFiles

// The temporary sibling of \p target: hidden, tagged with the process id, same extension.
std::string TemporaryName(const std::string& target) {
    const std::filesystem::path path(target);
    const std::string name =
        "." + path.stem().string() + ".zol-" + std::to_string(getpid()) + path.extension().string();
    return (path.parent_path() / name).string();
}
}  // namespace

std::string Extension(const std::string& path) {
    const std::string name = std::filesystem::path(path).filename().string();
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos) return "";
    std::string extension = name.substr(dot + 1);
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

Model LoadModel(const std::string& path) {
    CheckInput(path);
    Model model;
    const std::uint64_t mark = LibraryLog::Mark();
    if (HoldsMesh(path)) {
        model.mesh.reset(Parser::ImportTriMesh(path));
        if (model.mesh) return model;
        // The mesh readers take ASCII PLY only; the point-cloud reader also takes binary
        // PLY, so such a file still gives its vertices.
        if (Extension(path) == "ply") {
            const std::string reason = LibraryLog::LinesSince(mark).empty()
                                           ? std::string()
                                           : LibraryLog::LinesSince(mark).back();
            model.cloud.reset(Parser::ImportPointCloud(path));
            if (model.cloud) {
                std::fprintf(stderr, "zol: %s: faces not read (%s); its vertices are used\n",
                             path.c_str(), reason.c_str());
                return model;
            }
        }
        Fail(EXIT_BAD_INPUT, path + ": damaged or unsupported mesh file", mark);
    }
    model.cloud.reset(Parser::ImportPointCloud(path));
    if (!model.cloud)
        Fail(EXIT_BAD_INPUT, path + ": damaged or unsupported point-cloud file", mark);
    return model;
}

std::unique_ptr<PointCloud> LoadCloud(const std::string& path, int minPoints) {
    Model model = LoadModel(path);
    std::unique_ptr<PointCloud> cloud =
        model.cloud ? std::move(model.cloud) : MeshVertices(*model.mesh);
    if (cloud->GetPointCount() < minPoints) {
        Fail(EXIT_BAD_INPUT,
             path + ": holds " + std::to_string(cloud->GetPointCount()) + " points, at least " +
                 std::to_string(minPoints) + " are needed",
             0);
    }
    return cloud;
}

void CheckOutputName(const std::string& path, bool mesh, bool gridCloud) {
    const std::string extension = Extension(path);
    const bool known =
        InList(kCloudFormats, extension) || (mesh && InList(kMeshFormats, extension));
    if (!known) {
        const std::string formats =
            mesh ? std::string(kMeshFormats) + " or, as points, " + kCloudFormats
                 : std::string(kCloudFormats);
        Fail(EXIT_USAGE,
             path + ": cannot write " + (mesh ? "a mesh" : "a point cloud") + " as \"" + extension +
                 "\" (use " + formats + ")",
             0);
    }
    if (extension == "zbg" && !gridCloud) {
        Fail(EXIT_USAGE, path + ": zbg holds scanner-grid clouds only; this cloud has no grid", 0);
    }
    CheckOutputFolder(path);
}

void CheckOutputFolder(const std::string& path) {
    std::filesystem::path folder = std::filesystem::path(path).parent_path();
    if (folder.empty()) folder = ".";
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) {
        Fail(EXIT_BAD_OUTPUT, path + ": folder " + folder.string() + " does not exist", 0);
    }
}

void WriteCloud(const std::string& path, const PointCloud& cloud) {
    const std::string extension = Extension(path);
    AtomicOutput output(path);
    const std::uint64_t mark = LibraryLog::Mark();
    const bool keepGrid = cloud.HasGridTopology() && (extension == "zbg" || extension == "ply");
    const int status = keepGrid ? Parser::ExportGridPointCloud(output.Path(), &cloud)
                                : Parser::ExportPointCloud(output.Path(), &cloud);
    if (status != 0) Fail(EXIT_BAD_OUTPUT, path + ": cannot be written", mark);
    output.Commit();
}

void WriteMesh(const std::string& path, TriMesh& mesh) {
    if (InList(kCloudFormats, Extension(path)) &&
        !(InList(kMeshFormats, Extension(path)) && mesh.GetTriangleCount() > 0)) {
        WriteCloud(path, *MeshVertices(mesh));
        return;
    }
    AtomicOutput output(path);
    const std::uint64_t mark = LibraryLog::Mark();
    if (Parser::ExportTriMesh(output.Path(), &mesh) != 0) {
        Fail(EXIT_BAD_OUTPUT, path + ": cannot be written", mark);
    }
    output.Commit();
}

AtomicOutput::AtomicOutput(const std::string& target)
    : mTarget(target), mTemporary(TemporaryName(target)) {
    mSlot = PendingFiles::Add(mTemporary);
}

AtomicOutput::~AtomicOutput() {
    PendingFiles::Remove(mSlot);
    if (mCommitted) return;
    std::error_code error;
    std::filesystem::remove(mTemporary, error);
}

void AtomicOutput::Commit() {
    std::error_code error;
    std::filesystem::rename(mTemporary, mTarget, error);
    if (error) Fail(EXIT_BAD_OUTPUT, mTarget + ": cannot be written (" + error.message() + ")", 0);
    mCommitted = true;
    PendingFiles::Remove(mSlot);
}

std::unique_ptr<PointCloud> CloudSubset(const PointCloud& cloud, const std::vector<int>& ids) {
    PointCloud& source = const_cast<PointCloud&>(cloud);  // the getters are not const
    auto subset = std::make_unique<PointCloud>(cloud.HasNormal(), cloud.HasColor(), false);
    subset->ReservePoint(static_cast<int>(ids.size()));
    for (int id : ids) {
        const int added = subset->InsertPoint(source.GetPointCoord(id), source.GetPointNormal(id));
        subset->SetPointColor(added, cloud.GetPointColor(id));
    }
    return subset;
}

std::unique_ptr<PointCloud> MeshVertices(TriMesh& mesh) {
    const bool normals = mesh.GetTriangleCount() > 0;
    if (normals) mesh.UpdateNormal();
    auto cloud = std::make_unique<PointCloud>(normals, mesh.HasVertexColor(), false);
    cloud->ReservePoint(mesh.GetVertexCount());
    for (int v = 0; v < mesh.GetVertexCount(); ++v) {
        const int added = cloud->InsertPoint(mesh.GetVertexCoord(v), mesh.GetVertexNormal(v));
        if (mesh.HasVertexColor()) cloud->SetPointColor(added, mesh.GetVertexColor(v));
    }
    return cloud;
}

}  // namespace zoltool
