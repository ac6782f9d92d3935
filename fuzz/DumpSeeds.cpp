// Seeds of the dump-loader fuzz target. Each call below runs with one-shot recording armed
// in the seed folder, so its record writes the file the loader will be fuzzed from; the
// calls are chosen for the fields their records hold, not for their results.
#include "fuzz/DumpSeeds.h"

#include <filesystem>
#include <functional>
#include <vector>

#include <zol/zol.h>

namespace fs = std::filesystem;
using namespace ZOL;

namespace zolfuzz {
namespace {

TriMesh Tetrahedron() {
    TriMesh mesh;
    const Vector3 corners[] = {{0, 0, 0}, {1.5, 0, 0}, {0, 2.25, 0}, {0, 0, -0.125}};
    for (const Vector3& c : corners) mesh.InsertVertex(c);
    const int faces[4][3] = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {0, 3, 2}};
    for (const auto& f : faces) mesh.InsertTriangle(f[0], f[1], f[2]);
    mesh.UpdateNormal();
    return mesh;
}

PointCloud OrientedCloud() {
    PointCloud cloud(true, false, false);
    for (int i = 0; i < 12; ++i) {
        cloud.InsertPoint(Vector3(i % 4, i / 4, 0.01 * i), Vector3(0, 0, 1));
    }
    return cloud;
}

}  // namespace

void WriteDumpSeeds(const std::string& dir) {
    const fs::path home = fs::current_path();
    fs::current_path(dir);
    const std::vector<std::function<void()>> calls = {
        [] {
            TriMesh mesh = Tetrahedron();
            FilterMesh::EnhanceDetail(&mesh, 0.5, 2);
        },
        [] {
            TriMesh mesh = Tetrahedron();
            const std::vector<int> seeds = {0, 2};
            const std::vector<double> fields = {0.5, 1, 1.5, 2};
            FillMeshHole::FillHoles(&mesh, &seeds, FILL_MESH_HOLE_SMOOTH, &fields, nullptr);
        },
        [] {
            TriMesh mesh = Tetrahedron();
            const std::vector<PointOnFace> points = {PointOnFace(1, Vector3(0.2, 0.3, 0.5))};
            SubdivideMesh::InsertPointsOnMesh(&mesh, points, nullptr);
        },
        [] {
            PointCloud cloud = OrientedCloud();
            ConsolidatePointCloud::CalculatePointCloudNormal(&cloud, 5);
        },
        [] {
            PointCloud cloud = OrientedCloud();
            const std::vector<int> fixed = {1, 7};
            ConsolidatePointCloud::SmoothNormal(&cloud, 0.5, 5, &fixed);
        },
        [] {
            PointCloud cloud = OrientedCloud();
            std::vector<int> samples(4);
            SamplePointCloud::UniformSample(&cloud, 4, samples.data(), 0, SAMPLE_QUALITY_LOW);
        },
        [] {
            PointCloud cloud = OrientedCloud();
            PointCloudInfo refInfo, fromInfo;
            const std::vector<Vector3> marks = {Vector3(0, 0, 0), Vector3(3, 2, 0.11)};
            const int ids[] = {0, 5, 11};
            const double tolerance = 0.5;
            Matrix4x4 result;
            RegistratePointCloud::_ICPRegistrate(&cloud, refInfo, &marks, &cloud, fromInfo, &marks,
                                                 &result, nullptr, true, 3, ids, &tolerance, 2);
        },
        [] {
            PointCloud cloud = OrientedCloud();
            FusePointCloud fuse(4, 3, 2, Vector3(0, 0, 0), Vector3(3, 2, 0.11), true);
            fuse.UpdateFuseFunction(&cloud, nullptr, nullptr);
            DumpOnce();  // the first update recorded an empty fusion, this one a fused state
            fuse.UpdateFuseFunction(&cloud, nullptr, nullptr);
        },
    };
    for (const auto& call : calls) {
        DumpOnce();
        call();
    }
    fs::current_path(home);
}

}  // namespace zolfuzz
