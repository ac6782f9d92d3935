// The demo's object: a lumpy clay animal (body, head, snout, ears, tail, legs), each part
// an ellipsoid on a subdivided icosahedron with knobs and dents of its own. Its parts and
// their asymmetry give partial scans enough shape to be placed unambiguously.
#include <array>
#include <cmath>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include <zol/runtime/Constants.h>

#include "Demo.h"

namespace zoldemo {

using namespace ZOL;

namespace {
// One ellipsoid of the figure, in mm and degrees.
struct Part {
    Vector3 centre;
    Vector3 halfAxes;
    Vector3 axis;  // the part is turned by angle degrees about this axis
    double angle;
    int subdivisions;  // 5: 20480 triangles, 6: 81920
};
const Part kParts[] = {
    {Vector3(0, 0, 0), Vector3(62, 38, 34), Vector3(0, 0, 1), 8, 6},       // body
    {Vector3(58, 36, 6), Vector3(26, 24, 23), Vector3(0, 1, 0), 20, 6},    // head
    {Vector3(82, 30, 12), Vector3(15, 10, 11), Vector3(0, 1, 0), 25, 5},   // snout
    {Vector3(56, 68, -6), Vector3(7, 24, 11), Vector3(1, 0, 0), -15, 5},   // ear, up
    {Vector3(44, 58, 24), Vector3(7, 22, 11), Vector3(1, 0, 1), 55, 5},    // ear, bent
    {Vector3(-66, 16, -8), Vector3(16, 9, 9), Vector3(0, 0, 1), 35, 5},    // tail
    {Vector3(38, -36, 20), Vector3(11, 20, 11), Vector3(0, 0, 1), 10, 5},  // legs
    {Vector3(42, -33, -19), Vector3(11, 21, 11), Vector3(0, 0, 1), -8, 5},
    {Vector3(-38, -34, 19), Vector3(12, 20, 12), Vector3(1, 0, 0), 12, 5},
    {Vector3(-34, -36, -18), Vector3(12, 20, 12), Vector3(0, 0, 1), -14, 5},
};
constexpr int kLumpsPerPart = 14;

// A knob (positive height) or dent (negative) on a part: direction, relative height,
// angular width in radians.
struct Lump {
    Vector3 direction;
    double height;
    double width;
};

// A number in [0, 1) from the generator's raw output, the same on every platform.
double Unit(std::mt19937& random) { return random() / 4294967296.0; }

std::vector<Lump> MakeLumps(std::mt19937& random) {
    std::vector<Lump> lumps;
    for (int i = 0; i < kLumpsPerPart; ++i) {
        const double z = 2.0 * Unit(random) - 1.0, phi = 2.0 * ZOL_PI * Unit(random);
        const double r = std::sqrt(1.0 - z * z);
        const double height = -0.08 + 0.2 * Unit(random);
        const double width = 0.2 + 0.25 * Unit(random);
        lumps.push_back({Vector3(r * std::cos(phi), r * std::sin(phi), z), height, width});
    }
    return lumps;
}

// Rotation by \p degrees about \p axis (Rodrigues).
Vector3 Turn(const Vector3& v, Vector3 axis, double degrees) {
    axis.Normalise();
    const double a = degrees * ONE_RADIAN, c = std::cos(a), s = std::sin(a);
    return v * c + axis.CrossProduct(v) * s + axis * ((axis * v) * (1.0 - c));
}

// Unit icosahedron, counter-clockwise seen from outside.
void Icosahedron(std::vector<Vector3>& vertices, std::vector<std::array<int, 3>>& faces) {
    const double t = (1.0 + std::sqrt(5.0)) / 2.0;
    const double raw[12][3] = {{-1, t, 0}, {1, t, 0}, {-1, -t, 0}, {1, -t, 0},
                               {0, -1, t}, {0, 1, t}, {0, -1, -t}, {0, 1, -t},
                               {t, 0, -1}, {t, 0, 1}, {-t, 0, -1}, {-t, 0, 1}};
    for (const auto& r : raw) {
        Vector3 v(r[0], r[1], r[2]);
        v.Normalise();
        vertices.push_back(v);
    }
    faces = {{0, 11, 5},  {0, 5, 1},  {0, 1, 7},  {0, 7, 10}, {0, 10, 11}, {1, 5, 9}, {5, 11, 4},
             {11, 10, 2}, {10, 7, 6}, {7, 1, 8},  {3, 9, 4},  {3, 4, 2},   {3, 2, 6}, {3, 6, 8},
             {3, 8, 9},   {4, 9, 5},  {2, 4, 11}, {6, 2, 10}, {8, 6, 7},   {9, 8, 1}};
}

// Splits every triangle in four, new vertices on the unit sphere.
void Subdivide(std::vector<Vector3>& vertices, std::vector<std::array<int, 3>>& faces) {
    std::map<std::pair<int, int>, int> midpoints;
    const auto midpoint = [&](int a, int b) {
        const std::pair<int, int> key(std::min(a, b), std::max(a, b));
        const auto found = midpoints.find(key);
        if (found != midpoints.end()) return found->second;
        Vector3 m = (vertices[a] + vertices[b]) * 0.5;
        m.Normalise();
        vertices.push_back(m);
        const int id = static_cast<int>(vertices.size()) - 1;
        midpoints.emplace(key, id);
        return id;
    };
    std::vector<std::array<int, 3>> finer;
    finer.reserve(4 * faces.size());
    for (const auto& f : faces) {
        const int ab = midpoint(f[0], f[1]), bc = midpoint(f[1], f[2]), ca = midpoint(f[2], f[0]);
        finer.push_back({f[0], ab, ca});
        finer.push_back({ab, f[1], bc});
        finer.push_back({ca, bc, f[2]});
        finer.push_back({ab, bc, ca});
    }
    faces.swap(finer);
}

}  // namespace

TriMesh MakeFigure() {
    std::vector<Vector3> sphere[7];
    std::vector<std::array<int, 3>> faces[7];
    Icosahedron(sphere[0], faces[0]);
    for (int level = 1; level <= 6; ++level) {
        sphere[level] = sphere[level - 1];
        faces[level] = faces[level - 1];
        Subdivide(sphere[level], faces[level]);
    }
    std::mt19937 random(2017);  // a fixed seed: the figure is always the same
    TriMesh mesh;
    for (const Part& part : kParts) {
        const std::vector<Lump> lumps = MakeLumps(random);
        const int first = mesh.GetVertexCount();
        for (const Vector3& d : sphere[part.subdivisions]) {
            double scale = 1.0;
            for (const Lump& lump : lumps) {
                scale +=
                    lump.height * std::exp((d * lump.direction - 1.0) / (lump.width * lump.width));
            }
            const Vector3 local(d.x * part.halfAxes.x, d.y * part.halfAxes.y,
                                d.z * part.halfAxes.z);
            mesh.InsertVertex(part.centre + Turn(local * scale, part.axis, part.angle));
        }
        for (const auto& f : faces[part.subdivisions]) {
            mesh.InsertTriangle(first + f[0], first + f[1], first + f[2]);
        }
    }
    mesh.UpdateNormal();
    return mesh;
}

}  // namespace zoldemo
