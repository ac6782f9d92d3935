// POV-Ray scenes of meshes and clouds for `zol pov` and `zol demo`: one self-contained
// .pov file (camera, lights, the object as a library-written mesh2), rendered to PNG by
// the `povray` program when it is installed.
#pragma once

#include <string>

#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>

namespace zoltool {

/// Writes a scene of \p mesh seen from the side its normals face on the whole.
void WriteMeshScene(const std::string& path, ZOL::TriMesh& mesh, const std::string& title);

/// Writes a scene of \p cloud as small squares across the point normals (estimated first
/// when the cloud has none), in the points' colours when it has them.
void WriteCloudScene(const std::string& path, ZOL::PointCloud& cloud, const std::string& title);

/// \return the full path of \p program found on PATH, or "" when it is not installed.
std::string FindProgram(const std::string& program);

/// Renders \p scene to the PNG \p png (\p width x \p height pixels) with povray, through a
/// temporary name. \return false when povray is not installed; fails with EXIT_FAILED
/// when it does not render and EXIT_BAD_OUTPUT when the image cannot be written.
bool RenderScene(const std::string& scene, const std::string& png, int width, int height);

}  // namespace zoltool
