// Free mesh utilities. Deletions work on flag arrays and move survivors into the freed
// slots, so each runs in time linear in the mesh size.
#include <zol/core/MeshUtility.h>

#include <algorithm>

#include <zol/core/TriMesh.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

std::vector<unsigned char> FlagsOf(const std::vector<int>& ids, int count) {
    std::vector<unsigned char> flags(static_cast<size_t>(count), 0);
    for (int id : ids) {
        if (id >= 0 && id < count) flags[id] = 1;
    }
    return flags;
}

// Pairs each doomed slot below the surviving count with a survivor above it.
// \return the surviving count; moves[i] = (doomed slot, survivor) in ascending order.
int PlanCompaction(const std::vector<unsigned char>& doomed,
                   std::vector<std::pair<int, int>>& moves) {
    const int count = static_cast<int>(doomed.size());
    const int kept = count - static_cast<int>(std::count(doomed.begin(), doomed.end(), 1));
    int source = kept;
    for (int slot = 0; slot < kept; ++slot) {
        if (!doomed[slot]) continue;
        while (doomed[source]) ++source;
        moves.emplace_back(slot, source++);
    }
    return kept;
}

void DeleteTriangleFlags(ITriMesh* triMesh, const std::vector<unsigned char>& doomed) {
    std::vector<std::pair<int, int>> moves;
    const int kept = PlanCompaction(doomed, moves);
    for (const auto& [slot, source] : moves) triMesh->SwapTriangles(slot, source);
    triMesh->PopbackTriangles(static_cast<int>(doomed.size()) - kept);
}

}  // namespace

int CopyTriMesh(ITriMesh* fromMesh, ITriMesh* toMesh) {
    if (fromMesh == nullptr || toMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "CopyTriMesh: fromMesh == NULL || toMesh == NULL");
    }
    if (fromMesh == toMesh) return RESULT_OK;
    TriMesh* fromTriMesh = dynamic_cast<TriMesh*>(fromMesh);
    TriMesh* toTriMesh = dynamic_cast<TriMesh*>(toMesh);
    if (fromTriMesh != nullptr && toTriMesh != nullptr) {
        *toTriMesh = *fromTriMesh;
        return RESULT_OK;
    }
    toMesh->Clear();
    const int vertexCount = fromMesh->GetVertexCount();
    const int triangleCount = fromMesh->GetTriangleCount();
    for (int v = 0; v < vertexCount; ++v) {
        const int id = toMesh->InsertVertex(fromMesh->GetVertexCoord(v));
        toMesh->SetVertexNormal(id, fromMesh->GetVertexNormal(v));
    }
    int ids[3];
    for (int t = 0; t < triangleCount; ++t) {
        fromMesh->GetTriangleVertexIds(t, ids);
        const int id = toMesh->InsertTriangle(ids[0], ids[1], ids[2]);
        toMesh->SetTriangleNormal(id, fromMesh->GetTriangleNormal(t));
    }
    return RESULT_OK;
}

int DeleteTriMeshTriangles(ITriMesh* triMesh, const std::vector<int>& deleteIndex) {
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "DeleteTriMeshTriangles: triMesh == NULL");
    }
    DeleteTriangleFlags(triMesh, FlagsOf(deleteIndex, triMesh->GetTriangleCount()));
    return RESULT_OK;
}

int DeleteTriMeshVertices(ITriMesh* triMesh, const std::vector<int>& deleteIndex) {
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "DeleteTriMeshVertices: triMesh == NULL");
    }
    const int vertexCount = triMesh->GetVertexCount();
    const int triangleCount = triMesh->GetTriangleCount();
    const std::vector<unsigned char> doomed = FlagsOf(deleteIndex, vertexCount);

    std::vector<unsigned char> doomedTriangles(static_cast<size_t>(triangleCount), 0);
    int ids[3];
    for (int t = 0; t < triangleCount; ++t) {
        triMesh->GetTriangleVertexIds(t, ids);
        for (int k = 0; k < 3; ++k) {
            if (ids[k] >= 0 && ids[k] < vertexCount && doomed[ids[k]]) doomedTriangles[t] = 1;
        }
    }
    DeleteTriangleFlags(triMesh, doomedTriangles);

    std::vector<std::pair<int, int>> moves;
    const int kept = PlanCompaction(doomed, moves);
    if (moves.empty() && kept == vertexCount) return RESULT_OK;
    std::vector<int> newId(static_cast<size_t>(vertexCount - kept), -1);
    for (const auto& [slot, source] : moves) {
        triMesh->SwapVertex(slot, source);
        newId[source - kept] = slot;
    }
    // Only corners that point above the surviving count moved.
    const int remaining = triMesh->GetTriangleCount();
    for (int t = 0; t < remaining; ++t) {
        triMesh->GetTriangleVertexIds(t, ids);
        bool changed = false;
        for (int k = 0; k < 3; ++k) {
            if (ids[k] >= kept && ids[k] < vertexCount) {
                ids[k] = newId[ids[k] - kept];
                changed = true;
            }
        }
        if (changed) triMesh->SetTriangleVertexIds(t, ids[0], ids[1], ids[2]);
    }
    triMesh->PopbackVertices(vertexCount - kept);
    return RESULT_OK;
}

int FindIsolatedVertices(ITriMesh* triMesh, std::vector<int>* isolatedIds) {
    if (triMesh == nullptr || isolatedIds == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FindIsolatedVertices: triMesh == NULL || isolatedIds == NULL");
    }
    const int vertexCount = triMesh->GetVertexCount();
    std::vector<unsigned char> used(static_cast<size_t>(vertexCount), 0);
    int ids[3];
    for (int t = 0; t < triMesh->GetTriangleCount(); ++t) {
        triMesh->GetTriangleVertexIds(t, ids);
        for (int k = 0; k < 3; ++k) {
            if (ids[k] >= 0 && ids[k] < vertexCount) used[ids[k]] = 1;
        }
    }
    isolatedIds->clear();
    for (int v = 0; v < vertexCount; ++v) {
        if (!used[v]) isolatedIds->push_back(v);
    }
    return RESULT_OK;
}

int CalculateTriMeshBoundingBox(ITriMesh* triMesh, Vector3* bboxMin, Vector3* bboxMax) {
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "CalculateTriMeshBoundingBox: triMesh == NULL");
    }
    if (bboxMin == nullptr || bboxMax == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "CalculateTriMeshBoundingBox: bboxMin == NULL || bboxMax == NULL");
    }
    const int vertexCount = triMesh->GetVertexCount();
    if (vertexCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "CalculateTriMeshBoundingBox: vertexCount < 1");
    }
    Vector3 lo = triMesh->GetVertexCoord(0);
    Vector3 hi = lo;
    for (int v = 1; v < vertexCount; ++v) {
        const Vector3 p = triMesh->GetVertexCoord(v);
        for (int k = 0; k < 3; ++k) {
            lo[k] = std::min(lo[k], p[k]);
            hi[k] = std::max(hi[k], p[k]);
        }
    }
    *bboxMin = lo;
    *bboxMax = hi;
    return RESULT_OK;
}

int CalculateTriMeshAverageEdgeLength(ITriMesh* triMesh, double* averageLength) {
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "CalculateTriMeshAverageEdgeLength: triMesh == NULL");
    }
    if (averageLength == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "CalculateTriMeshAverageEdgeLength: averageLength == NULL");
    }
    const int triangleCount = triMesh->GetTriangleCount();
    if (triangleCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "CalculateTriMeshAverageEdgeLength: triangleCount < 1");
    }
    const int vertexCount = triMesh->GetVertexCount();
    double sum = 0.0;
    int ids[3];
    for (int t = 0; t < triangleCount; ++t) {
        triMesh->GetTriangleVertexIds(t, ids);
        for (const int id : ids) {
            if (id < 0 || id >= vertexCount) {
                return LogFailure(RESULT_INVALID_INPUT,
                                  "CalculateTriMeshAverageEdgeLength: invalid vertex id ", id,
                                  " in triangle ", t);
            }
        }
        const Vector3 p0 = triMesh->GetVertexCoord(ids[0]);
        const Vector3 p1 = triMesh->GetVertexCoord(ids[1]);
        const Vector3 p2 = triMesh->GetVertexCoord(ids[2]);
        sum += p0.Distance(p1) + p1.Distance(p2) + p2.Distance(p0);
    }
    *averageLength = sum / (3.0 * triangleCount);
    return RESULT_OK;
}

bool IsTriangleOverlap2D(const Vector2 triangle0[3], const Vector2 triangle1[3], double tolerance) {
    const Vector2* triangles[2] = {triangle0, triangle1};
    // Do the two shadows on the line through origin along normal overlap by more than the
    // tolerance? Projections are taken relative to a corner and along the unnormalised
    // side normal, so both ends of that side, and every corner the triangles share with
    // them, project to exactly 0: neighbours that share a side come out exactly touching.
    // NaN coordinates make the comparison false, i.e. separated.
    const auto overlaps = [&triangles, tolerance](const Vector2& origin, const Vector2& normal) {
        double lo[2];
        double hi[2];
        for (int m = 0; m < 2; ++m) {
            lo[m] = hi[m] = (triangles[m][0] - origin) * normal;
            for (int c = 1; c < 3; ++c) {
                const double d = (triangles[m][c] - origin) * normal;
                lo[m] = std::min(lo[m], d);
                hi[m] = std::max(hi[m], d);
            }
        }
        return std::min(hi[0], hi[1]) - std::max(lo[0], lo[1]) > tolerance * normal.Length();
    };
    // Two convex polygons with disjoint interiors are split by a line through a side of
    // one of them, so the six side normals decide; the coordinate axes only matter when
    // sides have collapsed and give no direction (a triangle shrunk to a point).
    if (!overlaps(triangle0[0], Vector2(1, 0)) || !overlaps(triangle0[0], Vector2(0, 1))) {
        return false;
    }
    for (const Vector2* owner : triangles) {
        for (int k = 0; k < 3; ++k) {
            const Vector2 side = owner[(k + 1) % 3] - owner[k];
            const Vector2 normal(-side.y, side.x);
            if (normal.Length() < REAL_TOL) continue;
            if (!overlaps(owner[k], normal)) return false;
        }
    }
    return true;
}

}  // namespace ZOL
