// TriMesh normal recomputation with repair of vertices whose normal vanishes, and the
// coordinate normalisation helpers.
#include <zol/core/TriMesh.h>

#include <algorithm>
#include <vector>

namespace ZOL {

namespace {

// A broken triangle (corner outside the mesh) takes no part, so that a mesh in the middle
// of an edit by the caller cannot make the recomputation read out of bounds.
bool CornersInRange(const int* ids, size_t vertexCount) {
    return static_cast<size_t>(ids[0]) < vertexCount && static_cast<size_t>(ids[1]) < vertexCount &&
           static_cast<size_t>(ids[2]) < vertexCount;
}

}  // namespace

void TriMesh::UpdateNormal() {
    const size_t vertexCount = mVertices.size();
    for (VertexRecord* vertex : mVertices) vertex->normal = Vector3();

    // Unnormalised face normals weigh each triangle by its area in the vertex sums.
    for (TriangleRecord* triangle : mTriangles) {
        const int* ids = triangle->vertexIds;
        if (!CornersInRange(ids, vertexCount)) continue;
        VertexRecord* v0 = mVertices[ids[0]];
        VertexRecord* v1 = mVertices[ids[1]];
        VertexRecord* v2 = mVertices[ids[2]];
        Vector3 normal = (v1->coord - v0->coord).CrossProduct(v2->coord - v0->coord);
        v0->normal += normal;
        v1->normal += normal;
        v2->normal += normal;
        normal.Normalise();
        triangle->normal = normal;
    }

    // Flags are only needed when some vertex sum vanished, which is rare.
    std::vector<unsigned char> valid;
    int invalidCount = 0;
    for (size_t i = 0; i < vertexCount; ++i) {
        if (mVertices[i]->normal.Normalise() < REAL_TOL) {
            if (valid.empty()) valid.assign(vertexCount, 1);
            valid[i] = 0;
            ++invalidCount;
        }
    }

    // Hand valid normals across triangles to invalid corners until nothing changes:
    // isolated vertices and purely degenerate components stay zero.
    while (invalidCount > 0) {
        const int before = invalidCount;
        for (TriangleRecord* triangle : mTriangles) {
            const int* ids = triangle->vertexIds;
            if (!CornersInRange(ids, vertexCount)) continue;
            int lastValid = -1;
            bool anyInvalid = false;
            for (int k = 0; k < 3; ++k) {
                if (valid[ids[k]]) {
                    lastValid = k;
                } else {
                    anyInvalid = true;
                }
            }
            if (lastValid < 0 || !anyInvalid) continue;
            const Vector3 normal = mVertices[ids[lastValid]]->normal;
            for (int k = 0; k < 3; ++k) {
                if (valid[ids[k]]) continue;
                mVertices[ids[k]]->normal = normal;
                valid[ids[k]] = 1;
                --invalidCount;
            }
        }
        if (invalidCount == before) break;
    }
}

void TriMesh::UnifyCoords(double bboxSize, double* scaleValue, Vector3* objCenter) {
    Vector3 center;
    double scale = 1.0;
    if (!mVertices.empty()) {
        Vector3 lo = mVertices[0]->coord;
        Vector3 hi = lo;
        for (const VertexRecord* vertex : mVertices) {
            for (int k = 0; k < 3; ++k) {
                lo[k] = std::min(lo[k], vertex->coord[k]);
                hi[k] = std::max(hi[k], vertex->coord[k]);
            }
        }
        center = (lo + hi) * 0.5;
        const double halfExtent = 0.5 * std::max(std::max(hi.x - lo.x, hi.y - lo.y), hi.z - lo.z);
        if (halfExtent > REAL_TOL) scale = bboxSize / halfExtent;
    }
    UnifyCoords(scale, center);
    if (scaleValue != nullptr) *scaleValue = scale;
    if (objCenter != nullptr) *objCenter = center;
}

void TriMesh::UnifyCoords(double scaleValue, const Vector3& objCenter) {
    for (VertexRecord* vertex : mVertices) {
        vertex->coord = (vertex->coord - objCenter) * scaleValue;
    }
}

}  // namespace ZOL
