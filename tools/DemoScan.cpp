// Demo steps over a generated scan: a unit sphere resting on a 4 x 4 table, delivered
// as a triangle soup (three fresh vertices per triangle, as a scanner's STL file is),
// then welded, measured, searched for shapes and written in every mesh format.
#include <cmath>
#include <cstdio>
#include <vector>

#include "Demo.h"

namespace zoldemo {

using namespace ZOL;

namespace {
constexpr int kRings = 120;      // sphere rings from pole to pole
constexpr int kSegments = 240;   // sphere segments around the axis
constexpr int kTableCells = 59;  // odd, so no table vertex meets the sphere's south pole
constexpr double kTableHalf = 2.0;
const Vector3 kSphereCenter(0, 0, 1);

// Ring 0 and ring kRings are the poles, written exactly so that their copies weld.
Vector3 SpherePoint(int ring, int segment) {
    if (ring == 0) return kSphereCenter + Vector3(0, 0, 1);
    if (ring == kRings) return kSphereCenter - Vector3(0, 0, 1);
    const double theta = ZOL_PI * ring / kRings;
    const double phi = 2.0 * ZOL_PI * (segment % kSegments) / kSegments;
    return kSphereCenter + Vector3(std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi),
                                   std::cos(theta));
}

Vector3 TablePoint(int i, int j) {
    const double step = 2.0 * kTableHalf / kTableCells;
    return Vector3(-kTableHalf + i * step, -kTableHalf + j * step, 0.0);
}

void InsertSoupTriangle(TriMesh& mesh, const Vector3& a, const Vector3& b, const Vector3& c) {
    const int first = mesh.InsertVertex(a);
    mesh.InsertVertex(b);
    mesh.InsertVertex(c);
    mesh.InsertTriangle(first, first + 1, first + 2);
}

// Counter-clockwise seen from outside; the triangles that would collapse at a pole
// are left out.
void AddSphere(TriMesh& mesh) {
    for (int r = 0; r < kRings; ++r) {
        for (int s = 0; s < kSegments; ++s) {
            const Vector3 a = SpherePoint(r, s), b = SpherePoint(r + 1, s);
            const Vector3 c = SpherePoint(r + 1, s + 1), d = SpherePoint(r, s + 1);
            if (r != kRings - 1) InsertSoupTriangle(mesh, a, b, c);
            if (r != 0) InsertSoupTriangle(mesh, a, c, d);
        }
    }
}

void AddTable(TriMesh& mesh) {
    for (int i = 0; i < kTableCells; ++i) {
        for (int j = 0; j < kTableCells; ++j) {
            InsertSoupTriangle(mesh, TablePoint(i, j), TablePoint(i + 1, j),
                               TablePoint(i + 1, j + 1));
            InsertSoupTriangle(mesh, TablePoint(i, j), TablePoint(i + 1, j + 1),
                               TablePoint(i, j + 1));
        }
    }
}

bool IsTableVertex(const Vector3& p) { return p.z == 0.0 && p.Length() > 1e-9; }

// Points and normals of the table's vertices, or of the sphere's.
void CollectOrientedPoints(TriMesh& mesh,
                           bool table,
                           std::vector<Vector3>& points,
                           std::vector<Vector3>& normals) {
    for (int v = 0; v < mesh.GetVertexCount(); ++v) {
        if (IsTableVertex(mesh.GetVertexCoord(v)) != table) continue;
        points.push_back(mesh.GetVertexCoord(v));
        normals.push_back(mesh.GetVertexNormal(v));
    }
}

double MaxVertexDistance(TriMesh& a, TriMesh& b) {
    if (a.GetVertexCount() != b.GetVertexCount()) return -1.0;
    double worst = 0.0;
    for (int v = 0; v < a.GetVertexCount(); ++v) {
        worst = std::fmax(worst, a.GetVertexCoord(v).Distance(b.GetVertexCoord(v)));
    }
    return worst;
}
}  // namespace

StepResult GenerateScan(DemoContext& context) {
    TriMesh& mesh = context.scene;
    mesh.Clear();
    AddSphere(mesh);
    context.sphereTriangleCount = mesh.GetTriangleCount();
    AddTable(mesh);
    context.tableTriangleCount = mesh.GetTriangleCount() - context.sphereTriangleCount;
    std::printf("  sphere r = 1 on a table z = 0: %d + %d triangles, %d unshared vertices\n",
                context.sphereTriangleCount, context.tableTriangleCount, mesh.GetVertexCount());
    return {mesh.GetVertexCount() == 3 * mesh.GetTriangleCount(),
            Format("%d triangles", mesh.GetTriangleCount())};
}

StepResult FuseScan(DemoContext& context) {
    const int before = context.scene.GetVertexCount();
    const int status = context.scene.FuseVertex();
    const int after = context.scene.GetVertexCount();
    const int expected = (kRings - 1) * kSegments + 2 + (kTableCells + 1) * (kTableCells + 1);
    std::printf("  FuseVertex: status %d, %d vertices welded into %d (expected %d)\n", status,
                before, after, expected);
    return {status == 0 && after == expected, Format("%d -> %d vertices", before, after)};
}

StepResult UpdateScanNormals(DemoContext& context) {
    TriMesh& mesh = context.scene;
    mesh.UpdateNormal();
    double worst = 0.0;  // angle between a sphere vertex's normal and its radius
    for (int v = 0; v < mesh.GetVertexCount(); ++v) {
        const Vector3 p = mesh.GetVertexCoord(v);
        if (IsTableVertex(p)) continue;
        Vector3 radial = p - kSphereCenter;
        radial.Normalise();
        const double c = std::fmin(1.0, mesh.GetVertexNormal(v) * radial);
        worst = std::fmax(worst, std::acos(c) / ONE_RADIAN);
    }
    std::printf("  UpdateNormal: sphere vertex normals within %.3f degrees of the radius\n", worst);
    return {worst < 3.0, Format("worst normal %.3f degrees off", worst)};
}

StepResult MeasureScan(DemoContext& context) {
    double area = 0.0, volume = 0.0;
    const int areaStatus = MeasureMesh::ComputeArea(&context.scene, area);
    const int volumeStatus = MeasureMesh::ComputeVolume(&context.scene, volume);
    const double tableArea = 4.0 * kTableHalf * kTableHalf;
    std::printf("  area %.5f (sphere 4 pi = %.5f plus table %g), status %d\n", area, 4.0 * ZOL_PI,
                tableArea, areaStatus);
    std::printf("  volume %.5f (sphere 4/3 pi = %.5f; the table at z = 0 adds none), status %d\n",
                volume, 4.0 / 3.0 * ZOL_PI, volumeStatus);
    const bool close = std::abs(area - tableArea - 4.0 * ZOL_PI) < 0.02 * 4.0 * ZOL_PI &&
                       std::abs(volume - 4.0 / 3.0 * ZOL_PI) < 0.03 * 4.0 / 3.0 * ZOL_PI;
    return {areaStatus == 0 && volumeStatus == 0 && close,
            Format("area %.4f, volume %.4f", area, volume)};
}

StepResult BuildQueryTree(DemoContext& context) {
    MeshQueryTool tool;
    const int status = tool.Init(&context.scene);
    std::printf("  MeshQueryTool::Init over %d triangles: status %d\n",
                context.scene.GetTriangleCount(), status);
    return {status == 0, Format("box tree built, status %d", status)};
}

StepResult DetectScanShapes(DemoContext& context) {
    std::vector<int> table, sphere;
    const int tableStatus = DetectShape::SelectTangentFace(
        &context.scene, context.sphereTriangleCount, 5.0 * ONE_RADIAN, &table);
    const int sphereStatus =
        DetectShape::SelectTangentFace(&context.scene, 0, 10.0 * ONE_RADIAN, &sphere);
    std::printf("  tangent faces from a table triangle (5 deg): %zu of %d table triangles\n",
                table.size(), context.tableTriangleCount);
    std::printf("  tangent faces from a sphere triangle (10 deg): %zu of %d sphere triangles\n",
                sphere.size(), context.sphereTriangleCount);

    std::vector<Vector3> points, normals;
    CollectOrientedPoints(context.scene, true, points, normals);
    Vector3 center, normal;
    const bool planeOk = DetectShape::FitPlane(points, normals, center, normal);
    std::printf("  plane fit to the table: normal (%.4f, %.4f, %.4f), height %.2g\n", normal.x,
                normal.y, normal.z, center.z);
    points.clear();
    normals.clear();
    CollectOrientedPoints(context.scene, false, points, normals);
    double radius = 0.0;
    const bool sphereOk = DetectShape::FitSphere(points, normals, center, radius);
    std::printf("  sphere fit: centre (%.4f, %.4f, %.4f), radius %.4f\n", center.x, center.y,
                center.z, radius);
    const bool ok = tableStatus == 0 && sphereStatus == 0 && planeOk && sphereOk &&
                    static_cast<int>(table.size()) == context.tableTriangleCount &&
                    std::abs(radius - 1.0) < 0.01 && center.Distance(kSphereCenter) < 0.01;
    return {ok, Format("table %zu faces, sphere radius %.4f", table.size(), radius)};
}

StepResult RoundTripMeshFiles(DemoContext& context) {
    bool ok = true;
    std::string summary;
    for (const char* extension : {"obj", "off", "ply", "stl", "zpt"}) {
        const std::string name = (context.workDir / (std::string("scan.") + extension)).string();
        const int status = Parser::ExportTriMesh(name, &context.scene);
        TriMesh* back = Parser::ImportTriMesh(name);
        double area = 0.0;
        if (back != nullptr) MeasureMesh::ComputeArea(back, area);
        const double error = back ? MaxVertexDistance(context.scene, *back) : -1.0;
        const std::string match = error < 0 ? "one vertex per corner, as STL stores them"
                                            : Format("largest vertex error %.2g", error);
        std::printf("  %-4s write %d, read %5d vertices %5d triangles, area %.5f, %s\n", extension,
                    status, back ? back->GetVertexCount() : -1,
                    back ? back->GetTriangleCount() : -1, area, match.c_str());
        ok = ok && status == 0 && back != nullptr &&
             back->GetTriangleCount() == context.scene.GetTriangleCount();
        summary += summary.empty() ? extension : std::string(" ") + extension;
        delete back;
    }
    return {ok, summary + " written and read"};
}

}  // namespace zoldemo
