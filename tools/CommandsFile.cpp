// `zol info`, `zol convert` and `zol pov`: what a file holds, the same content in another
// format, and a picture of it.
#include <cstdio>
#include <filesystem>

#include <zol/core/IPointList.h>
#include <zol/core/MeshUtility.h>
#include <zol/mesh/MeasureMesh.h>
#include <zol/pointcloud/PointCloudUtility.h>

#include "Commands.h"
#include "PovScene.h"
#include "ToolCommon.h"
#include "ToolFiles.h"

namespace zoltool {

using namespace ZOL;

namespace {
const char* YesNo(bool value) { return value ? "yes" : "no"; }

void PrintBox(bool ok, const Vector3& lo, const Vector3& hi) {
    if (!ok) {
        std::printf("  bounding box    none\n");
        return;
    }
    std::printf("  bounding box    (%.6g, %.6g, %.6g) .. (%.6g, %.6g, %.6g)\n", lo.x, lo.y, lo.z,
                hi.x, hi.y, hi.z);
    std::printf("  size            %.6g x %.6g x %.6g\n", hi.x - lo.x, hi.y - lo.y, hi.z - lo.z);
}

void PrintMesh(TriMesh& mesh) {
    std::printf("  vertices        %d\n", mesh.GetVertexCount());
    std::printf("  triangles       %d\n", mesh.GetTriangleCount());
    std::printf("  vertex colours  %s\n", YesNo(mesh.HasVertexColor()));
    std::printf("  texture coords  %s\n",
                YesNo(mesh.HasVertexTexCoord() || mesh.HasTriangleTexCoord()));
    Vector3 lo, hi;
    PrintBox(mesh.GetVertexCount() > 0 && CalculateTriMeshBoundingBox(&mesh, &lo, &hi) == 0, lo,
             hi);
    double area = 0.0;
    if (mesh.GetTriangleCount() > 0 && MeasureMesh::ComputeArea(&mesh, area) == 0) {
        std::printf("  surface area    %.6g\n", area);
    }
}

void PrintCloud(PointCloud& cloud) {
    std::printf("  points          %d\n", cloud.GetPointCount());
    std::printf("  normals         %s\n", YesNo(cloud.HasNormal()));
    std::printf("  colours         %s\n", YesNo(cloud.HasColor()));
    if (cloud.HasGridTopology()) {
        std::printf("  scanner grid    %d x %d, %d cells hold points\n", cloud.GetWidth(),
                    cloud.GetHeight(), cloud.GetValidGridCount());
    } else {
        std::printf("  scanner grid    no\n");
    }
    PointCloudPointList list(&cloud);
    Vector3 lo, hi;
    PrintBox(cloud.GetPointCount() > 0 && CalculatePointListBoundingBox(&list, lo, hi) == 0, lo,
             hi);
}
}  // namespace

void RunInfo(const std::string& file) {
    Model model = LoadModel(file);
    std::printf("%s: %s (%s)\n", file.c_str(), model.mesh ? "triangle mesh" : "point cloud",
                Extension(file).c_str());
    if (model.mesh) {
        PrintMesh(*model.mesh);
    } else {
        PrintCloud(*model.cloud);
    }
}

void RunConvert(const std::string& in, const std::string& out) {
    // The output name is checked against what the input holds, so read first; a wrong
    // output folder still fails before anything is written.
    Model model = LoadModel(in);
    CheckOutputName(out, model.mesh != nullptr,
                    model.cloud != nullptr && model.cloud->HasGridTopology());
    if (model.mesh) {
        WriteMesh(out, *model.mesh);
        Say("%s: %d vertices, %d triangles -> %s\n", in.c_str(), model.mesh->GetVertexCount(),
            model.mesh->GetTriangleCount(), out.c_str());
    } else {
        WriteCloud(out, *model.cloud);
        Say("%s: %d points -> %s\n", in.c_str(), model.cloud->GetPointCount(), out.c_str());
    }
}

void RunPov(const PovOptions& options) {
    Model model = LoadModel(options.in);
    CheckOutputFolder(options.out);
    std::string png = options.png;
    if (png.empty()) {
        png = std::filesystem::path(options.out).replace_extension(".png").string();
    }
    if (options.render) CheckOutputFolder(png);
    if (model.mesh) {
        WriteMeshScene(options.out, *model.mesh, options.in);
    } else {
        WriteCloudScene(options.out, *model.cloud, options.in);
    }
    std::printf("scene of %s -> %s\n", options.in.c_str(), options.out.c_str());
    if (!options.render) return;
    if (RenderScene(options.out, png, options.width, options.height)) {
        std::printf("rendered %d x %d -> %s\n", options.width, options.height, png.c_str());
    } else {
        std::printf("povray is not installed; render later with: povray +I%s +O%s\n",
                    options.out.c_str(), png.c_str());
    }
}

}  // namespace zoltool
