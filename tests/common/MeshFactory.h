// Small meshes of known geometry, counter-clockwise seen from outside, normals updated;
// reading corners and files back.
#pragma once

#include <array>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <zol/core/TriMesh.h>

namespace ZOL {
/// Readable vectors in test failures.
inline void PrintTo(const Vector3& v, std::ostream* out) {
    *out << "(" << v.x << ", " << v.y << ", " << v.z << ")";
}
}  // namespace ZOL

namespace zoltest {

/// A mesh of \p points and \p triangles (corner ids, not checked); normals left zero.
ZOL::TriMesh MakeMesh(const std::vector<ZOL::Vector3>& points,
                      const std::vector<std::array<int, 3>>& triangles);
/// The three corner ids of \p triangle.
std::vector<int> Corners(const ZOL::ITriMesh& mesh, int triangle);
/// The mesh read by Parser::ImportTriMesh, owned (null when it failed).
std::unique_ptr<ZOL::TriMesh> ImportMesh(const std::string& path);

/// The cube [0, 1]^3: 8 vertices (index x + 2y + 4z for corner (x, y, z)) and 12
/// outward triangles, two per face in the order -z, +z, -y, +y, -x, +x.
ZOL::TriMesh MakeUnitCube();
/// The same 12 triangles with three vertices of their own each (36 vertices).
ZOL::TriMesh MakeUnitCubeSoup();
/// A flat grid of (nx + 1) x (ny + 1) vertices in z = 0 with spacing \p spacing, two
/// triangles per cell (2 nx ny), normals +z. Vertex (i, j) has index j (nx + 1) + i.
ZOL::TriMesh MakeGrid(int nx, int ny, double spacing = 1.0);
/// A closed UV sphere about the origin: two poles and (stacks - 1) rings of \p slices
/// vertices; 2 slices (stacks - 1) triangles.
ZOL::TriMesh MakeSphere(int slices, int stacks, double radius);

}  // namespace zoltest
