// Generators of the shared test meshes.
#include "tests/common/MeshFactory.h"

#include <cmath>

#include <zol/io/Parser.h>

using ZOL::TriMesh;
using ZOL::Vector3;

namespace zoltest {

namespace {

constexpr double kPi = 3.14159265358979323846;

const std::vector<std::array<int, 3>> kCubeTriangles = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6},
                                                        {0, 1, 4}, {1, 5, 4}, {2, 6, 3}, {3, 6, 7},
                                                        {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};

Vector3 CubeCorner(int index) { return Vector3(index & 1, (index >> 1) & 1, (index >> 2) & 1); }

}  // namespace

TriMesh MakeMesh(const std::vector<Vector3>& points,
                 const std::vector<std::array<int, 3>>& triangles) {
    TriMesh mesh;
    for (const Vector3& p : points) mesh.InsertVertex(p);
    for (const auto& t : triangles) mesh.InsertTriangle(t[0], t[1], t[2]);
    return mesh;
}

std::vector<int> Corners(const ZOL::ITriMesh& mesh, int triangle) {
    int ids[3];
    mesh.GetTriangleVertexIds(triangle, ids);
    return {ids[0], ids[1], ids[2]};
}

std::unique_ptr<TriMesh> ImportMesh(const std::string& path) {
    return std::unique_ptr<TriMesh>(ZOL::Parser::ImportTriMesh(path));
}

TriMesh MakeUnitCube() {
    std::vector<Vector3> corners;
    for (int i = 0; i < 8; ++i) corners.push_back(CubeCorner(i));
    TriMesh mesh = MakeMesh(corners, kCubeTriangles);
    mesh.UpdateNormal();
    return mesh;
}

TriMesh MakeUnitCubeSoup() {
    TriMesh mesh;
    for (const auto& t : kCubeTriangles) {
        const int first = mesh.InsertVertex(CubeCorner(t[0]));
        mesh.InsertVertex(CubeCorner(t[1]));
        mesh.InsertVertex(CubeCorner(t[2]));
        mesh.InsertTriangle(first, first + 1, first + 2);
    }
    mesh.UpdateNormal();
    return mesh;
}

TriMesh MakeGrid(int nx, int ny, double spacing) {
    TriMesh mesh;
    for (int j = 0; j <= ny; ++j) {
        for (int i = 0; i <= nx; ++i) mesh.InsertVertex(Vector3(i * spacing, j * spacing, 0));
    }
    for (int j = 0; j < ny; ++j) {
        for (int i = 0; i < nx; ++i) {
            const int a = j * (nx + 1) + i;
            mesh.InsertTriangle(a, a + 1, a + nx + 2);
            mesh.InsertTriangle(a, a + nx + 2, a + nx + 1);
        }
    }
    mesh.UpdateNormal();
    return mesh;
}

TriMesh MakeSphere(int slices, int stacks, double radius) {
    TriMesh mesh;
    const int north = mesh.InsertVertex(Vector3(0, 0, radius));
    for (int i = 1; i < stacks; ++i) {
        const double phi = kPi * i / stacks;
        for (int s = 0; s < slices; ++s) {
            const double theta = 2.0 * kPi * s / slices;
            mesh.InsertVertex(Vector3(radius * std::sin(phi) * std::cos(theta),
                                      radius * std::sin(phi) * std::sin(theta),
                                      radius * std::cos(phi)));
        }
    }
    const int south = mesh.InsertVertex(Vector3(0, 0, -radius));
    auto ring = [slices](int i, int s) { return 1 + (i - 1) * slices + s % slices; };
    for (int s = 0; s < slices; ++s) mesh.InsertTriangle(north, ring(1, s), ring(1, s + 1));
    for (int i = 1; i + 1 < stacks; ++i) {
        for (int s = 0; s < slices; ++s) {
            mesh.InsertTriangle(ring(i + 1, s), ring(i + 1, s + 1), ring(i, s + 1));
            mesh.InsertTriangle(ring(i + 1, s), ring(i, s + 1), ring(i, s));
        }
    }
    for (int s = 0; s < slices; ++s) {
        mesh.InsertTriangle(south, ring(stacks - 1, s + 1), ring(stacks - 1, s));
    }
    mesh.UpdateNormal();
    return mesh;
}

}  // namespace zoltest
