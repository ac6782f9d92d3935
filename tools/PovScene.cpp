// Scene files for the POV-Ray ray tracer and their rendering. The object itself is the
// library's mesh2 fragment (Parser::ExportTriMeshToPovray); a cloud becomes one small
// square per point across its normal. The camera, lights and framing are added here.
#include "PovScene.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

#include <zol/core/IPointList.h>
#include <zol/core/MeshUtility.h>
#include <zol/io/Parser.h>
#include <zol/pointcloud/PointCloudDensity.h>
#include <zol/pointcloud/PointCloudUtility.h>

#include "Merge.h"
#include "ToolCommon.h"
#include "ToolFiles.h"

extern char** environ;

namespace zoltool {

using namespace ZOL;

namespace {
const Vector3 kClay(0.85, 0.72, 0.55);

// POV-Ray is left-handed: x is negated, as the library's fragments do.
std::string Pov(const Vector3& p) {
    char text[128];
    std::snprintf(text, sizeof(text), "<%.9g, %.9g, %.9g>", -p.x, p.y, p.z);
    return text;
}

// The scene around the object in \p fragmentPath: the camera looks at the box along
// \p view (from the camera towards the object), framing the box's sphere.
void WriteScene(const std::string& path,
                const std::string& fragmentPath,
                const Vector3& lo,
                const Vector3& hi,
                Vector3 view,
                const std::string& title) {
    const Vector3 centre = (lo + hi) * 0.5;
    const double radius = std::max(0.5 * hi.Distance(lo), 1e-12);
    if (view.Normalise() < 1e-9) view = Vector3(0, 0, -1);
    Vector3 up(0, 1, 0);
    if (std::abs(view * up) > 0.9) up = Vector3(0, 0, 1);
    const Vector3 eye = centre - view * (4.0 * radius);
    Vector3 side = view.CrossProduct(up);
    side.Normalise();
    const Vector3 key = eye + up * (2.0 * radius) - side * (2.0 * radius);
    const Vector3 fill = eye - up * radius + side * (3.0 * radius);

    std::ifstream fragment(fragmentPath, std::ios::binary);
    std::ostringstream object;
    object << fragment.rdbuf();

    AtomicOutput output(path);
    std::ofstream out(output.Path(), std::ios::binary);
    out << "// " << title << ", written by zol\n"
        << "#version 3.7;\n"
        << "global_settings { assumed_gamma 1.0 }\n"
        << "#default { finish { ambient 0.15 diffuse 0.75 specular 0.15 roughness 0.05 } }\n"
        << "background { color rgb <1, 1, 1> }\n"
        << "camera { perspective location " << Pov(eye) << " look_at " << Pov(centre) << " sky "
        << Pov(up) << " angle 35 right x*image_width/image_height }\n"
        << "light_source { " << Pov(key) << " color rgb <1, 1, 1> }\n"
        << "light_source { " << Pov(fill) << " color rgb <0.45, 0.45, 0.45> shadowless }\n"
        << "object {\n"
        << object.str() << "}\n";
    out.close();
    if (!out) Fail(EXIT_BAD_OUTPUT, path + ": cannot be written", 0);
    output.Commit();
}

// Two triangles per point: a square of half-size \p half across the point's normal.
TriMesh Splats(PointCloud& cloud, double half) {
    TriMesh mesh(cloud.HasColor(), false, false);
    const int count = cloud.GetPointCount();
    mesh.Reserve(4 * count, 2 * count);
    for (int i = 0; i < count; ++i) {
        const Vector3 p = cloud.GetPointCoord(i);
        Vector3 n = cloud.GetPointNormal(i);
        if (n.Normalise() < 1e-12) n = Vector3(0, 0, 1);
        Vector3 u = std::abs(n.x) < 0.9 ? n.CrossProduct(Vector3(1, 0, 0))
                                        : n.CrossProduct(Vector3(0, 1, 0));
        u.Normalise();
        const Vector3 v = n.CrossProduct(u);
        const int first = mesh.InsertVertex(p + (u + v) * half);
        mesh.InsertVertex(p + (v - u) * half);
        mesh.InsertVertex(p - (u + v) * half);
        mesh.InsertVertex(p + (u - v) * half);
        mesh.InsertTriangle(first, first + 1, first + 2);
        mesh.InsertTriangle(first, first + 2, first + 3);
        for (int k = 0; cloud.HasColor() && k < 4; ++k) {
            mesh.SetVertexColor(first + k, cloud.GetPointColor(i));
        }
    }
    return mesh;
}

// Writes \p mesh as the library's mesh2 fragment next to \p scene and the scene around it.
void WriteAround(const std::string& scene,
                 TriMesh& mesh,
                 const Vector3& view,
                 const std::string& title) {
    Vector3 lo, hi;
    if (mesh.GetVertexCount() == 0 || CalculateTriMeshBoundingBox(&mesh, &lo, &hi) != 0) {
        Fail(EXIT_BAD_INPUT, title + ": nothing to show", 0);
    }
    AtomicOutput fragment(scene + ".inc");  // never committed: removed once the scene is out
    Vector3 clay = kClay;
    const std::uint64_t mark = LibraryLog::Mark();
    if (Parser::ExportTriMeshToPovray(fragment.Path(), &mesh,
                                      mesh.HasVertexColor() ? nullptr : &clay) != 0) {
        Fail(EXIT_BAD_OUTPUT, scene + ": cannot be written", mark);
    }
    WriteScene(scene, fragment.Path(), lo, hi, view, title);
}
}  // namespace

void WriteMeshScene(const std::string& path, TriMesh& mesh, const std::string& title) {
    mesh.UpdateNormal();
    Vector3 sum;
    for (int v = 0; v < mesh.GetVertexCount(); ++v) sum += mesh.GetVertexNormal(v);
    // A closed mesh has no side of its own: it is seen from the front, a little above.
    const bool open = sum.Length() > 0.3 * mesh.GetVertexCount();
    WriteAround(path, mesh, open ? -sum : Vector3(-0.3, -0.35, -1.0), title);
}

void WriteCloudScene(const std::string& path, PointCloud& cloud, const std::string& title) {
    if (cloud.GetPointCount() < 3) Fail(EXIT_BAD_INPUT, title + ": too few points to show", 0);
    EnsureNormals(cloud, title);
    PointCloudPointList list(&cloud);
    double spacing = 0.0;
    const std::uint64_t mark = LibraryLog::Mark();
    CheckStatus(CalculatePointListDensity(&list, 8, spacing), "point spacing of " + title, mark);
    Vector3 sum;
    for (int i = 0; i < cloud.GetPointCount(); ++i) sum += cloud.GetPointNormal(i);
    const bool open = sum.Length() > 0.3 * cloud.GetPointCount();
    TriMesh splats = Splats(cloud, 0.8 * spacing);
    WriteAround(path, splats, open ? -sum : Vector3(-0.3, -0.35, -1.0), title);
}

std::string FindProgram(const std::string& program) {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path ? path : "");
    std::string folder;
    while (std::getline(folders, folder, ':')) {
        if (folder.empty()) continue;
        const std::string candidate = folder + "/" + program;
        if (access(candidate.c_str(), X_OK) == 0) return candidate;
    }
    return "";
}

bool RenderScene(const std::string& scene, const std::string& png, int width, int height) {
    const std::string povray = FindProgram("povray");
    if (povray.empty()) return false;
    AtomicOutput image(png);
    std::vector<std::string> args = {"povray",
                                     "+I" + scene,
                                     "+O" + image.Path(),
                                     "+W" + std::to_string(width),
                                     "+H" + std::to_string(height),
                                     "+FN",
                                     "+A0.3",
                                     "-D",
                                     "-P",
                                     "-V",
                                     "-GA"};
    std::vector<char*> argv;
    for (std::string& arg : args) argv.push_back(arg.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int spawned =
        posix_spawn(&child, povray.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (spawned != 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0 || access(image.Path().c_str(), F_OK) != 0) {
        Fail(EXIT_FAILED, scene + ": povray could not render it", 0);
    }
    image.Commit();
    return true;
}

}  // namespace zoltool
