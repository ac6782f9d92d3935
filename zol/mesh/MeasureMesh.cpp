// Area and volume as sums over triangles. The library's TriMesh is read through its
// inline record accessors; any other ITriMesh through the interface. Sums run over fixed
// blocks of triangles whose partial sums are added in block order, so the result does
// not depend on how many threads share the blocks.
#include <zol/mesh/MeasureMesh.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <zol/core/TriMesh.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

namespace {

const int kBlockSize = 1 << 16;
// Below this many triangles a second thread costs more than it saves.
const int kThreadedMinimum = 1 << 18;

struct AreaTerm {
    double operator()(const Vector3& a, const Vector3& b, const Vector3& c) const {
        return (b - a).CrossProduct(c - a).Length();
    }
};

struct VolumeTerm {
    double operator()(const Vector3& a, const Vector3& b, const Vector3& c) const {
        return a.x * b.y * c.z + b.x * c.y * a.z + c.x * a.y * b.z - c.x * b.y * a.z -
               a.x * c.y * b.z - b.x * a.y * c.z;
    }
};

// Partial sum of one block, and the first triangle of the block naming a vertex out of
// range (-1 for none); such triangles are skipped rather than read.
struct BlockSum {
    double sum = 0.0;
    int badTriangle = -1;
};

inline bool InRange(const int* ids, unsigned vertexCount) {
    return static_cast<unsigned>(ids[0]) < vertexCount &&
           static_cast<unsigned>(ids[1]) < vertexCount &&
           static_cast<unsigned>(ids[2]) < vertexCount;
}

// Sum of Term over triangles [first, last) of a TriMesh, without virtual calls.
template <typename Term>
BlockSum SumTriMesh(const TriMesh& mesh, int first, int last) {
    const Term term;
    const unsigned vertexCount = static_cast<unsigned>(mesh.GetVertexCount());
    BlockSum block;
    double sum = 0.0;
    for (int t = first; t < last; ++t) {
#if defined(__GNUC__)
        // The records sit behind a pointer array; asking for them a few triangles ahead
        // keeps the loop from waiting on each pointer in turn.
        if (t + 16 < last) __builtin_prefetch(mesh.GetTriangleVertexIdsRef(t + 16));
#endif
        const int* ids = mesh.GetTriangleVertexIdsRef(t);
        if (!InRange(ids, vertexCount)) {
            if (block.badTriangle < 0) block.badTriangle = t;
            continue;
        }
        sum += term(mesh.GetVertexCoordRef(ids[0]), mesh.GetVertexCoordRef(ids[1]),
                    mesh.GetVertexCoordRef(ids[2]));
    }
    block.sum = sum;
    return block;
}

// The same through the interface. Coordinates are read through the non-const accessor of
// the interface; reading does not change the mesh.
template <typename Term>
BlockSum SumInterface(const ITriMesh* triMesh, int first, int last) {
    ITriMesh* mesh = const_cast<ITriMesh*>(triMesh);
    const Term term;
    const unsigned vertexCount = static_cast<unsigned>(triMesh->GetVertexCount());
    BlockSum block;
    int ids[3];
    for (int t = first; t < last; ++t) {
        mesh->GetTriangleVertexIds(t, ids);
        if (!InRange(ids, vertexCount)) {
            if (block.badTriangle < 0) block.badTriangle = t;
            continue;
        }
        block.sum += term(mesh->GetVertexCoord(ids[0]), mesh->GetVertexCoord(ids[1]),
                          mesh->GetVertexCoord(ids[2]));
    }
    return block;
}

template <typename Term>
void SumBlocks(const ITriMesh* triMesh, int blockBegin, int blockEnd, BlockSum* out) {
    const int count = triMesh->GetTriangleCount();
    const TriMesh* fast = dynamic_cast<const TriMesh*>(triMesh);
    for (int b = blockBegin; b < blockEnd; ++b) {
        const int first = b * kBlockSize;
        const int last = std::min(count, first + kBlockSize);
        out[b] =
            fast ? SumTriMesh<Term>(*fast, first, last) : SumInterface<Term>(triMesh, first, last);
    }
}

// Host meshes may not be safe for concurrent reads, so only TriMesh is shared between
// workers, each taking a contiguous run of blocks; the block partition keeps the sum
// identical for any thread count.
// \return the first triangle naming a vertex out of range, -1 when \p sum is valid, or
//         -2 when the workers could not run (logged with \p lines).
template <typename Term>
int SumOverTriangles(const ITriMesh* triMesh, const ParallelLines& lines, double& sum) {
    sum = 0.0;
    const int count = triMesh->GetTriangleCount();
    if (count <= 0) return -1;
    const int blockCount = (count + kBlockSize - 1) / kBlockSize;
    std::vector<BlockSum> partial(blockCount);
    const bool threaded =
        count >= kThreadedMinimum && dynamic_cast<const TriMesh*>(triMesh) != nullptr;
    if (threaded) {
        const auto body = [&](int t, int n) {
            SumBlocks<Term>(triMesh, SliceBegin(blockCount, t, n), SliceBegin(blockCount, t + 1, n),
                            partial.data());
        };
        if (ParallelFor(ParallelTaskCount(blockCount), body, lines) != RESULT_OK) return -2;
    } else {
        SumBlocks<Term>(triMesh, 0, blockCount, partial.data());
    }
    for (const BlockSum& block : partial) {
        if (block.badTriangle >= 0) return block.badTriangle;
        sum += block.sum;
    }
    return -1;
}

}  // namespace

int MeasureMesh::ComputeArea(const ITriMesh* triMesh, double& area) {
    SetProgress(0.0);
    if (triMesh == nullptr)
        return LogFailure(RESULT_INVALID_INPUT, "MeasureMesh::ComputeArea input triMesh is NULL");
    double sum = 0.0;
    const int bad = SumOverTriangles<AreaTerm>(
        triMesh,
        {"MeasureMesh::ComputeArea", "MeasureMesh::ComputeArea: ThreadPool InsertTask Failed"},
        sum);
    if (bad == -2) return RESULT_STEP_FAIL;
    if (bad >= 0)
        return LogFailure(RESULT_INVALID_INPUT,
                          "MeasureMesh::ComputeArea: invalid vertex id in triangle ", bad);
    area = 0.5 * sum;
    return RESULT_OK;
}

int MeasureMesh::ComputeVolume(const ITriMesh* triMesh, double& volume) {
    SetProgress(0.0);
    if (triMesh == nullptr)
        return LogFailure(RESULT_INVALID_INPUT, "MeasureMesh::ComputeVolume input triMesh is NULL");
    double sum = 0.0;
    const int bad = SumOverTriangles<VolumeTerm>(
        triMesh,
        {"MeasureMesh::ComputeVolume", "MeasureMesh::ComputeVolume: ThreadPool InsertTask Failed"},
        sum);
    if (bad == -2) return RESULT_STEP_FAIL;
    if (bad >= 0)
        return LogFailure(RESULT_INVALID_INPUT,
                          "MeasureMesh::ComputeVolume: invalid vertex id in triangle ", bad);
    volume = std::abs(sum) / 6.0;
    return RESULT_OK;
}

}  // namespace ZOL
