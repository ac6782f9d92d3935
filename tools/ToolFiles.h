// Files for `zol`: which format an extension names, reading any mesh or point cloud the
// library reads (with messages that name the file and the reason), and writing through
// a temporary name so that a failed or interrupted write never leaves a partial file.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>

namespace zoltool {

/// A file's content: a mesh (triangles) or a point cloud; exactly one is set.
struct Model {
    std::unique_ptr<ZOL::TriMesh> mesh;
    std::unique_ptr<ZOL::PointCloud> cloud;
};

/// The extension after the last ".", lower-cased ("" when there is none).
std::string Extension(const std::string& path);

/// The formats, as listed in help texts and messages.
extern const char* const kMeshFormats;   ///< "obj off ply stl zpt"
extern const char* const kCloudFormats;  ///< "asc xyz xyzn casc xyzrgb obj ply zpc zbp zbg"

/// Reads \p path as a mesh when its extension is a mesh-only format or an OBJ or PLY file
/// holds faces, else as a point cloud. Fails with EXIT_BAD_INPUT when the file is
/// missing, unreadable, of an unknown format or damaged (with the library's line).
Model LoadModel(const std::string& path);

/// Reads \p path as a point cloud; a mesh gives its vertices, with the vertex normals
/// when it has triangles, and its vertex colours. Fails with EXIT_BAD_INPUT as LoadModel
/// does, and when the file holds fewer than \p minPoints points.
std::unique_ptr<ZOL::PointCloud> LoadCloud(const std::string& path, int minPoints = 1);

/// Checks before any work that \p path names a format that can hold a point cloud (or,
/// with \p mesh, a mesh), failing with EXIT_USAGE otherwise, and that its folder exists,
/// failing with EXIT_BAD_OUTPUT otherwise. \p gridCloud: the cloud to write has a scanner
/// grid (only such clouds can be written as "zbg").
void CheckOutputName(const std::string& path, bool mesh, bool gridCloud = false);

/// Fails with EXIT_BAD_OUTPUT unless the folder that \p path names (or the working
/// folder) exists.
void CheckOutputFolder(const std::string& path);

/// Writes a cloud in the format of \p path's extension; a cloud with a scanner grid keeps
/// its grid in "zbg" and "ply". Fails with EXIT_BAD_OUTPUT when the file cannot be written.
void WriteCloud(const std::string& path, const ZOL::PointCloud& cloud);

/// Writes a mesh in the format of \p path's extension; a mesh given a point-cloud format
/// writes its vertices (with normals). Fails with EXIT_BAD_OUTPUT as WriteCloud does.
void WriteMesh(const std::string& path, ZOL::TriMesh& mesh);

/// A file written under a temporary name in the target's folder (same extension, so the
/// library picks the same format) and renamed onto the target by Commit. Until then the
/// target is untouched; the destructor removes a temporary file that was not committed, and
/// so does an interrupting signal (SIGINT, SIGTERM, SIGHUP).
class AtomicOutput {
public:
    explicit AtomicOutput(const std::string& target);
    ~AtomicOutput();
    AtomicOutput(const AtomicOutput&) = delete;
    AtomicOutput& operator=(const AtomicOutput&) = delete;

    /// The name to write to.
    const std::string& Path() const { return mTemporary; }
    /// Renames the temporary file onto the target. Fails with EXIT_BAD_OUTPUT.
    void Commit();

private:
    std::string mTarget;
    std::string mTemporary;
    bool mCommitted = false;
    int mSlot = -1;  // in the list a signal handler cleans up
};

/// The points \p ids of \p cloud, in that order, with their normals and colours (no grid).
std::unique_ptr<ZOL::PointCloud> CloudSubset(const ZOL::PointCloud& cloud,
                                             const std::vector<int>& ids);

/// The cloud of a mesh's vertices: vertex normals when it has triangles, vertex colours.
std::unique_ptr<ZOL::PointCloud> MeshVertices(ZOL::TriMesh& mesh);

}  // namespace zoltool
