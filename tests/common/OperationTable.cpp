// The rows of the operation table and their shared inputs: small real scans where the
// parallel path starts small, seeded clouds or grids just large enough to reach the
// workers where it starts late, so that the thread sanitizer runs every row quickly.
#include "tests/common/OperationTable.h"

#include <cstring>
#include <fstream>
#include <sstream>
#include <type_traits>

#include <zol/core/IPointList.h>
#include <zol/core/PointCloud.h>
#include <zol/io/Parser.h>
#include <zol/mesh/MeasureMesh.h>
#include <zol/mesh/MeshQueryTool.h>
#include <zol/mesh/MeshQueryTreeInternal.h>
#include <zol/pointcloud/ConsolidatePointCloud.h>
#include <zol/pointcloud/FusePointCloud.h>
#include <zol/pointcloud/IntrinsicColor.h>
#include <zol/pointcloud/PointCloudDensity.h>
#include <zol/pointcloud/PointCloudUtility.h>
#include <zol/pointcloud/SamplePointCloud.h>
#include <zol/registration/RegistratePointCloud.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/PointCloudInfo.h>
#include <zol/shape/DetectShape.h>

#include "tests/common/HostContainers.h"
#include "tests/common/MeshFactory.h"
#include "tests/common/PointData.h"
#include "tests/common/TestData.h"

namespace zoltest {

using namespace ZOL;
using CPC = ConsolidatePointCloud;

namespace {

// ---- Containers -------------------------------------------------------------------

/// Makes clouds of type \p CloudType and meshes of type \p MeshType.
template <typename CloudType, typename MeshType>
class Maker : public ContainerMaker {
public:
    std::unique_ptr<IPointCloud> Cloud(const std::vector<Vector3>& points,
                                       const std::vector<Vector3>* normals) const override {
        if constexpr (std::is_same_v<CloudType, PointCloud>) {
            return std::make_unique<PointCloud>(MakeCloud(points, normals));
        } else {
            return std::make_unique<CloudType>(points, normals);
        }
    }
    std::unique_ptr<ITriMesh> Mesh(const TriMesh& source) const override {
        return std::make_unique<MeshType>(source);
    }
};

// ---- Inputs -----------------------------------------------------------------------

struct Points {
    std::vector<Vector3> points, normals;
};

/// The whole first bunny scan: 40256 points, enough for fusion on the workers.
const std::vector<Vector3>& FullScan() {
    static const std::vector<Vector3> scan = LoadPlyVertices(DataPath("bunny/bun000.ply"));
    return scan;
}

/// Every eighth point of the first bunny scan: 5032 points, no normals.
const std::vector<Vector3>& Scan() {
    static const std::vector<Vector3> scan = [] {
        std::vector<Vector3> every8;
        for (size_t i = 0; i < FullScan().size(); i += 8) every8.push_back(FullScan()[i]);
        return every8;
    }();
    return scan;
}

/// Points and normals of an "x y z nx ny nz" file under the shared data.
Points LoadXyzn(const char* relative) {
    Points read;
    std::ifstream in(DataPath(relative));
    Vector3 p, n;
    while (in >> p.x >> p.y >> p.z >> n.x >> n.y >> n.z) {
        read.points.push_back(p);
        read.normals.push_back(n);
    }
    return read;
}

/// A real cloud with normals, mostly one plane: 3268 points.
const Points& Oriented() {
    static const Points oriented = LoadXyzn("clouds/sac_plane_test.xyzn");
    return oriented;
}

/// A small real bunny with normals: 397 points.
const Points& SmallBunny() {
    static const Points bunny = LoadXyzn("clouds/bun0.xyzn");
    return bunny;
}

/// Seeded points, just enough for the farthest-point sweep (2 x 2^17) and the grid
/// sampling (2 x 2^16) to split over workers.
const std::vector<Vector3>& Many() {
    static const std::vector<Vector3> many = RandomPoints(270000, 10);
    return many;
}

std::unique_ptr<TriMesh> LoadMesh(const char* relative) {
    std::unique_ptr<TriMesh> mesh = ImportMesh(DataPath(relative));
    if (!mesh) mesh = std::make_unique<TriMesh>();
    mesh->UpdateNormal();
    return mesh;
}

// ---- Results ----------------------------------------------------------------------

void Add(Outcome& out, const Vector3& v) { out.values.insert(out.values.end(), {v.x, v.y, v.z}); }

void Add(Outcome& out, const std::vector<int>& ids) {
    out.values.push_back(static_cast<double>(ids.size()));
    out.values.insert(out.values.end(), ids.begin(), ids.end());
}

void Add(Outcome& out, IPointCloud& cloud) {
    out.values.push_back(cloud.GetPointCount());
    out.values.push_back(cloud.HasNormal());
    for (int i = 0; i < cloud.GetPointCount(); ++i) {
        Add(out, cloud.GetPointCoord(i));
        if (cloud.HasNormal()) Add(out, cloud.GetPointNormal(i));
    }
}

Outcome Sampled(const ContainerMaker& maker,
                const std::vector<Vector3>& points,
                int sampleCount,
                int seed,
                SampleQuality quality) {
    std::unique_ptr<IPointCloud> cloud = maker.Cloud(points);
    std::vector<int> ids(sampleCount, -1);
    Outcome out;
    out.statuses.push_back(
        SamplePointCloud::UniformSample(cloud.get(), sampleCount, ids.data(), seed, quality));
    Add(out, ids);
    return out;
}

Outcome GridSampled(const ContainerMaker& maker,
                    const std::vector<Vector3>& points,
                    double interval) {
    std::unique_ptr<IPointCloud> cloud = maker.Cloud(points);
    std::vector<int> ids;
    Outcome out;
    out.statuses.push_back(SamplePointCloud::GridSample(cloud.get(), interval, ids));
    Add(out, ids);
    return out;
}

/// The first \p count points of the oriented cloud (all for -1), or the scan, after
/// \p edit, read back whole.
template <typename Edit>
Outcome Edited(const ContainerMaker& maker, Edit edit, int count = -1, bool scan = false) {
    const Points& input = Oriented();
    const size_t n = count < 0 ? input.points.size() : static_cast<size_t>(count);
    const std::vector<Vector3> points(input.points.begin(), input.points.begin() + n);
    const std::vector<Vector3> normals(input.normals.begin(), input.normals.begin() + n);
    std::unique_ptr<IPointCloud> cloud = scan ? maker.Cloud(Scan()) : maker.Cloud(points, &normals);
    Outcome out;
    out.statuses.push_back(edit(cloud.get()));
    Add(out, *cloud);
    return out;
}

/// The scan after \p edit, read back whole.
template <typename Edit>
Outcome EditedScan(const ContainerMaker& maker, Edit edit) {
    return Edited(maker, edit, -1, true);
}

std::vector<int> EveryOther(int count) {
    std::vector<int> ids;
    for (int i = 0; i < count; i += 2) ids.push_back(i);
    return ids;
}

Matrix4x4 Turn() {
    Matrix4x4 turn;
    turn.GenerateVectorToVectorRotation(Vector3(0, 0, 1), Vector3(0.1, 0.2, 1.0));
    turn.SetValue(0, 3, 0.003);
    turn.SetValue(2, 3, -0.002);
    return turn;
}

void AddFile(Outcome& out, const std::string& name) { out.bytes += name + ":\n" + ReadFile(name); }

// ---- Rows -------------------------------------------------------------------------

Outcome FuseScan(const ContainerMaker& maker) {
    std::unique_ptr<IPointCloud> scan = maker.Cloud(FullScan());
    const Matrix4x4 turn = Turn();
    FusePointCloud fuse(64, 64, 64, Vector3(-0.1, 0.03, -0.07), Vector3(0.07, 0.19, 0.07), false);
    Outcome out;
    out.statuses.push_back(fuse.UpdateFuseFunction(scan.get(), nullptr, nullptr));
    out.statuses.push_back(fuse.UpdateFuseFunction(scan.get(), &turn, nullptr));
    std::unique_ptr<IPointCloud> fused = maker.Cloud({});
    out.statuses.push_back(fuse.ExtractPointCloud(fused.get(), nullptr));
    Add(out, *fused);
    std::ostringstream saved;
    out.statuses.push_back(fuse.DumpInfo(saved));
    out.bytes = saved.str();
    return out;
}

Outcome FuseOriented(const ContainerMaker& maker) {
    const Points& input = Oriented();
    std::unique_ptr<IPointCloud> cloud = maker.Cloud(input.points, &input.normals);
    std::vector<double> attributes;
    for (size_t i = 0; i < input.points.size(); ++i) attributes.push_back(input.points[i].x);
    Vector3 lo = input.points[0], hi = input.points[0];
    for (const Vector3& p : input.points) {
        for (int k = 0; k < 3; ++k) lo[k] = std::min(lo[k], p[k]), hi[k] = std::max(hi[k], p[k]);
    }
    FusePointCloud fuse(24, 24, 24, lo, hi, true);
    Outcome out;
    out.statuses.push_back(fuse.UpdateFuseFunction(cloud.get(), nullptr, &attributes));
    std::unique_ptr<IPointCloud> fused = maker.Cloud({}, &input.normals);
    out.statuses.push_back(fuse.ExtractPointCloud(fused.get(), &out.values));
    Add(out, *fused);
    return out;
}

Outcome TuneColour(const ContainerMaker& maker) {
    static const std::unique_ptr<PointCloud> scan(
        Parser::ImportPointCloud(DataPath("clouds/milk_color.ply")));
    // Two overlapping parts along x, the second darker.
    std::vector<Vector3> points[2];
    std::vector<std::vector<Vector3>> colors(2);
    for (int i = 0; scan && i < scan->GetPointCount(); ++i) {
        const Vector3 p = scan->GetPointCoord(i);
        const Vector3 c = scan->GetPointColor(i);
        if (p.x < -0.04 && (p.x < -0.07 || i % 2 == 0))
            points[0].push_back(p), colors[0].push_back(c);
        if (p.x > -0.07 && (p.x > -0.04 || i % 2 == 1)) {
            points[1].push_back(p);
            colors[1].push_back(Vector3(c.x * 0.5, c.y * 0.6, c.z * 0.7));
        }
    }
    std::unique_ptr<IPointCloud> a = maker.Cloud(points[0]), b = maker.Cloud(points[1]);
    std::vector<Vector3> gains;
    std::vector<double> errors;
    Outcome out;
    out.statuses.push_back(IntrinsicColor::TuneColorFromSingleLight(
        {a.get(), b.get()}, colors, false, nullptr, &gains, &errors));
    for (const auto& list : colors)
        for (const Vector3& c : list) Add(out, c);
    for (const Vector3& g : gains) Add(out, g);
    out.values.insert(out.values.end(), errors.begin(), errors.end());
    return out;
}

Outcome MeasureMeshes(const ContainerMaker& maker) {
    // The grid has enough triangles (2^18) for the sums to run on the workers.
    static const TriMesh grid = [] {
        TriMesh mesh = MakeGrid(363, 363, 0.01);
        for (int v = 0; v < mesh.GetVertexCount(); ++v) {
            Vector3 p = mesh.GetVertexCoord(v);
            p.z = std::sin(3 * p.x) * std::cos(2 * p.y) + 1.0;
            mesh.SetVertexCoord(v, p);
        }
        return mesh;
    }();
    static const std::unique_ptr<TriMesh> bunny = LoadMesh("meshes/bunny.off");
    Outcome out;
    for (const TriMesh* source : {&grid, static_cast<const TriMesh*>(bunny.get())}) {
        std::unique_ptr<ITriMesh> mesh = maker.Mesh(*source);
        double area = 0.0, volume = 0.0;
        out.statuses.push_back(MeasureMesh::ComputeArea(mesh.get(), area));
        out.statuses.push_back(MeasureMesh::ComputeVolume(mesh.get(), volume));
        out.values.insert(out.values.end(), {area, volume});
    }
    return out;
}

Outcome QueryTree(const ContainerMaker& maker) {
    static const std::unique_ptr<TriMesh> bunny = LoadMesh("meshes/bunny.off");
    std::unique_ptr<ITriMesh> mesh = maker.Mesh(*bunny);
    MeshQueryTool tool;
    Outcome out;
    out.statuses.push_back(tool.Init(mesh.get()));
    const MeshQueryTree* tree = tool._GetTree();
    for (size_t i = 0; tree && i < tree->nodes.size(); ++i) {
        const TreeNode& node = *tree->nodes[i];
        out.values.insert(out.values.end(), {double(node.depth), double(node.isLeaf)});
        out.values.insert(out.values.end(), node.triangles.begin(), node.triangles.end());
        Add(out, node.box.GetCenter());
        for (int k = 0; k < 3; ++k) {
            Add(out, node.box.GetAxis(k));
            out.values.push_back(node.box.GetHalfExtent(k));
        }
    }
    return out;
}

Outcome TangentFaces(const ContainerMaker& maker) {
    static const std::unique_ptr<TriMesh> knight = LoadMesh("meshes/decimated-knight.off");
    std::unique_ptr<ITriMesh> mesh = maker.Mesh(*knight);
    Outcome out;
    for (int seed : {0, 500, 999}) {
        std::vector<int> selected;
        out.statuses.push_back(
            DetectShape::SelectTangentFace(mesh.get(), seed, 20 * ONE_RADIAN, &selected));
        Add(out, selected);
    }
    return out;
}

/// \p points and \p normals moved by \p motion.
Points Moved(const std::vector<Vector3>& points,
             const std::vector<Vector3>& normals,
             const Matrix4x4& motion) {
    Points moved;
    for (size_t i = 0; i < points.size(); ++i) {
        moved.points.push_back(motion.TransformPoint(points[i]));
        if (i < normals.size()) moved.normals.push_back(motion.RotateVector(normals[i]));
    }
    return moved;
}

void Add(Outcome& out, const Matrix4x4& transform) {
    for (int i = 0; i < 16; ++i) out.values.push_back(transform.GetValue(i));
}

/// ICP of the scan (no normals: sample normals are estimated) and of the oriented cloud
/// (normals given) onto themselves moved by a small turn.
Outcome Icp(const ContainerMaker& maker) {
    Outcome out;
    for (bool hasNormal : {false, true}) {
        const std::vector<Vector3>& points = hasNormal ? Oriented().points : Scan();
        const std::vector<Vector3>* normals = hasNormal ? &Oriented().normals : nullptr;
        const Points moved = Moved(points, normals ? *normals : std::vector<Vector3>(), Turn());
        std::unique_ptr<IPointCloud> ref = maker.Cloud(points, normals);
        std::unique_ptr<IPointCloud> from =
            maker.Cloud(moved.points, hasNormal ? &moved.normals : nullptr);
        Matrix4x4 result;
        out.statuses.push_back(RegistratePointCloud::ICPRegistrate(
            ref.get(), nullptr, from.get(), nullptr, &result, nullptr, hasNormal));
        Add(out, result);
    }
    return out;
}

/// Coarse alignment of two copies of the small bunny, side by side and turned, onto one
/// bunny: half the check points miss under any pose, so the search never stops early and
/// every stage, the checks of the queued candidates included, runs on the workers.
Outcome CoarseAlignment(const ContainerMaker& maker) {
    const Points& bunny = SmallBunny();
    Matrix4x4 motion;
    motion.GenerateVectorToVectorRotation(Vector3(0, 0, 1), Vector3(0.3, -0.8, -0.5));
    Points pair = Moved(bunny.points, bunny.normals, motion);
    motion.SetValue(1, 3, 0.3);
    const Points second = Moved(bunny.points, bunny.normals, motion);
    pair.points.insert(pair.points.end(), second.points.begin(), second.points.end());
    pair.normals.insert(pair.normals.end(), second.normals.begin(), second.normals.end());
    std::unique_ptr<IPointCloud> ref = maker.Cloud(bunny.points, &bunny.normals);
    std::unique_ptr<IPointCloud> from = maker.Cloud(pair.points, &pair.normals);
    Matrix4x4 result;
    Outcome out;
    out.statuses.push_back(
        RegistratePointCloud::AlignPointCloud(ref.get(), from.get(), &result, 0.0));
    Add(out, result);
    return out;
}

Outcome ExportMesh(const ContainerMaker& maker) {
    static const std::unique_ptr<TriMesh> sphere = LoadMesh("meshes/sphere.obj");
    std::unique_ptr<ITriMesh> mesh = maker.Mesh(*sphere);
    Outcome out;
    for (const char* extension : {"obj", "stl", "off", "ply"}) {
        const std::string name = ScratchPath(std::string("sphere.") + extension);
        out.statuses.push_back(Parser::ExportTriMesh(name, mesh.get()));
        AddFile(out, name);
    }
    return out;
}

Outcome ExportCloud(const ContainerMaker& maker) {
    const Points& input = Oriented();
    std::unique_ptr<IPointCloud> cloud = maker.Cloud(input.points, &input.normals);
    Outcome out;
    for (const char* extension : {"asc", "casc", "obj", "ply", "zpc", "zbp"}) {
        const std::string name = ScratchPath(std::string("cloud.") + extension);
        out.statuses.push_back(Parser::ExportPointCloud(name, cloud.get()));
        AddFile(out, name);
    }
    return out;
}

std::vector<Operation> MakeOperations() {
    using M = const ContainerMaker&;
    return {
        {"Sampling", "UniformSampleLow", true,
         [](M m) { return Sampled(m, Scan(), 300, 11, SAMPLE_QUALITY_LOW); }},
        {"Sampling", "UniformSampleHigh", true,
         [](M m) { return Sampled(m, Scan(), 600, 5, SAMPLE_QUALITY_HIGH); }},
        {"Sampling", "UniformSampleOfManyPoints", true,
         [](M m) { return Sampled(m, Many(), 300, 3, SAMPLE_QUALITY_LOW); }},
        {"Sampling", "GeometrySample", true,
         [](M m) {
             std::unique_ptr<IPointCloud> cloud = m.Cloud(Oriented().points, &Oriented().normals);
             std::vector<int> ids(400, -1);
             Outcome out;
             out.statuses.push_back(SamplePointCloud::GeometrySample(
                 cloud.get(), 400, ids.data(), 0.3, 9, 1, SAMPLE_QUALITY_LOW));
             Add(out, ids);
             return out;
         }},
        {"Sampling", "GridSample", false, [](M m) { return GridSampled(m, Scan(), 0.002); }},
        {"Sampling", "GridSampleOfManyPoints", true,
         [](M m) { return GridSampled(m, Many(), 0.05); }},
        {"Sampling", "CalculateFlatness", true,
         [](M m) {
             std::unique_ptr<IPointCloud> cloud = m.Cloud(Oriented().points, &Oriented().normals);
             PointCloudPointList list(cloud.get());
             Outcome out;
             out.statuses.push_back(CalculateFlatness(&list, 9, &out.values));
             return out;
         }},
        {"Utilities", "EstimateCameraDirection", false,
         [](M m) {
             Vector3 direction;
             Outcome out = Edited(m, [&](IPointCloud* cloud) {
                 return EstimateCameraDirection(cloud, nullptr, direction);
             });
             Add(out, direction);
             return out;
         }},
        {"Utilities", "DetectBoundaryPointByZAngle", false,
         [](M m) {
             std::vector<int> ids;
             Outcome out = Edited(m, [&](IPointCloud* cloud) {
                 return DetectBoundaryPointByZAngle(cloud, 60 * ONE_RADIAN, nullptr, ids);
             });
             Add(out, ids);
             return out;
         }},
        {"Utilities", "DeletePointCloudElements", false,
         [](M m) {
             return Edited(m, [](IPointCloud* cloud) {
                 std::vector<int> doomed = EveryOther(cloud->GetPointCount());
                 doomed.insert(doomed.end(), {1, 7, 3001, 2});
                 return DeletePointCloudElements(cloud, doomed);
             });
         }},
        {"Utilities", "CopyAndTransformPointCloud", false,
         [](M m) {
             std::unique_ptr<IPointCloud> copy = m.Cloud(Scan());
             Outcome out = Edited(m, [&](IPointCloud* cloud) {
                 TransformPointCloud(cloud, Turn());
                 return CopyPointCloud(cloud, copy.get());
             });
             Add(out, *copy);
             return out;
         }},
        {"Utilities", "CalculatePointListBoundingBox", false,
         [](M m) {
             std::unique_ptr<IPointCloud> cloud = m.Cloud(Scan());
             PointCloudPointList list(cloud.get());
             Vector3 lo, hi;
             Outcome out;
             out.statuses.push_back(CalculatePointListBoundingBox(&list, lo, hi));
             Add(out, lo);
             Add(out, hi);
             return out;
         }},
        {"Density", "CalculatePointListDensity", true,
         [](M m) {
             std::unique_ptr<IPointCloud> cloud = m.Cloud(Scan());
             PointCloudPointList list(cloud.get());
             Outcome out;
             out.values.push_back(0.0);
             out.statuses.push_back(CalculatePointListDensity(&list, 6, out.values[0]));
             return out;
         }},
        {"Density", "CalculatePointListDensityOfASelection", true,
         [](M m) {
             std::unique_ptr<IPointCloud> cloud = m.Cloud(Scan());
             const std::vector<int> selection = EveryOther(cloud->GetPointCount());
             PointCloudInfo info;
             Outcome out;
             out.values.push_back(0.0);
             out.statuses.push_back(
                 _CalculatePointListDensity(cloud.get(), info, 8, out.values[0], &selection));
             return out;
         }},
        {"Normals", "CalculatePointCloudNormal", true,
         [](M m) {
             return EditedScan(
                 m, [](IPointCloud* c) { return CPC::CalculatePointCloudNormal(c, 10); });
         }},
        {"Normals", "CalculatePointCloudNormalTowardsACamera", true,
         [](M m) {
             return EditedScan(m, [](IPointCloud* c) {
                 const Vector3 camera(0, 0, -1);
                 return CPC::CalculatePointCloudNormal(c, 10, &camera);
             });
         }},
        {"Normals", "OrientPointCloudNormal", true,
         [](M m) {
             return Edited(m, [](IPointCloud* c) { return CPC::OrientPointCloudNormal(c, 8); });
         }},
        {"Normals", "UpdatePointCloudNormal", true,
         [](M m) {
             return Edited(m, [](IPointCloud* c) { return UpdatePointCloudNormal(c, 8); });
         }},
        {"Normals", "ReversePointCloudNormal", false,
         [](M m) {
             return Edited(m, [](IPointCloud* c) { return CPC::ReversePointCloudNormal(c); });
         }},
        {"Smoothing", "SmoothNormal", true,
         [](M m) {
             // A part of the cloud: the solve is serial and slow under the sanitizer.
             return Edited(
                 m,
                 [](IPointCloud* c) {
                     const std::vector<int> fixed = {0, 1, 2, 3, 500};
                     return CPC::SmoothNormal(c, 1.0, 8, &fixed);
                 },
                 1000);
         }},
        {"Smoothing", "SmoothGeometry", true,
         [](M m) {
             return EditedScan(
                 m, [](IPointCloud* c) { return CPC::SmoothGeometry(c, 10, 2, nullptr); });
         }},
        {"Smoothing", "SmoothGeometryBilateralOfASelection", true,
         [](M m) {
             return EditedScan(m, [](IPointCloud* c) {
                 const std::vector<int> selection = EveryOther(c->GetPointCount());
                 PointCloudInfo info;
                 return CPC::_SmoothGeometry(c, info, 8, 2, &selection,
                                             CPC::SMOOTH_QUALITY_BILATERAL);
             });
         }},
        {"Smoothing", "SmoothGeometryByNormal", true,
         [](M m) {
             return Edited(m, [](IPointCloud* c) {
                 PointCloudInfo info;
                 return CPC::_SmoothGeometryByNormal(c, info, 8, 0.5, 2, nullptr);
             });
         }},
        {"Fusion", "FuseScanTwice", true, FuseScan},
        {"Fusion", "FuseNormalsAndAttributes", false, FuseOriented},
        {"Colour", "TuneColorFromSingleLight", true, TuneColour},
        {"MeshMeasurement", "ComputeAreaAndVolume", true, MeasureMeshes},
        {"MeshQuery", "QueryTreeOfTheBunny", false, QueryTree},
        {"TangentFaces", "SelectTangentFace", false, TangentFaces},
        {"FileExport", "ExportTriMesh", false, ExportMesh},
        {"FileExport", "ExportPointCloud", false, ExportCloud},
        {"Registration", "ICPRegistrate", true, Icp},
        {"Registration", "AlignPointCloud", true, CoarseAlignment},
    };
}

}  // namespace

const ContainerMaker& LibraryContainers() {
    static const Maker<PointCloud, TriMesh> maker;
    return maker;
}

const ContainerMaker& HostContainers() {
    static const Maker<HostCloud, HostMesh> maker;
    return maker;
}

std::string Difference(const Outcome& expected, const Outcome& actual) {
    std::ostringstream out;
    if (expected.statuses != actual.statuses) {
        out << "statuses differ";
    } else if (expected.values.size() != actual.values.size()) {
        out << expected.values.size() << " values, then " << actual.values.size();
    } else if (expected.bytes != actual.bytes) {
        out << "file bytes differ";
    } else {
        for (size_t i = 0; i < expected.values.size(); ++i) {
            if (std::memcmp(&expected.values[i], &actual.values[i], sizeof(double)) != 0) {
                out.precision(17);
                out << "value " << i << " of " << expected.values.size() << ": "
                    << expected.values[i] << ", then " << actual.values[i];
                break;
            }
        }
    }
    return out.str();
}

const std::vector<Operation>& Operations() {
    static const std::vector<Operation> operations = MakeOperations();
    return operations;
}

}  // namespace zoltest
