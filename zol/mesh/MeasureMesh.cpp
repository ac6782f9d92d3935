// Area and volume as sums over triangles. The library's TriMesh is read through its
// inline record accessors; any other ITriMesh through the interface. Sums run over fixed
// blocks of triangles whose partial sums are added in block order, so the result does
// not depend on how many threads share the blocks.
#include <zol/mesh/MeasureMesh.h>

#include <algorithm>
#include <cmath>
#include <thread>
#include <vector>

#include <zol/core/TriMesh.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ThreadCount.h>

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

// Sum of Term over triangles [first, last) of a TriMesh, without virtual calls.
template <typename Term>
double SumTriMesh(const TriMesh& mesh, int first, int last) {
    const Term term;
    double sum = 0.0;
    for (int t = first; t < last; ++t) {
        const int* ids = mesh.GetTriangleVertexIdsRef(t);
        sum += term(mesh.GetVertexCoordRef(ids[0]), mesh.GetVertexCoordRef(ids[1]),
                    mesh.GetVertexCoordRef(ids[2]));
    }
    return sum;
}

// The same through the interface. Coordinates are read through the non-const accessor of
// the interface; reading does not change the mesh.
template <typename Term>
double SumInterface(const ITriMesh* triMesh, int first, int last) {
    ITriMesh* mesh = const_cast<ITriMesh*>(triMesh);
    const Term term;
    double sum = 0.0;
    int ids[3];
    for (int t = first; t < last; ++t) {
        mesh->GetTriangleVertexIds(t, ids);
        sum += term(mesh->GetVertexCoord(ids[0]), mesh->GetVertexCoord(ids[1]),
                    mesh->GetVertexCoord(ids[2]));
    }
    return sum;
}

template <typename Term>
void SumBlocks(const ITriMesh* triMesh, int blockBegin, int blockEnd, double* out) {
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
// two threads; the block partition keeps the sum identical either way.
template <typename Term>
double SumOverTriangles(const ITriMesh* triMesh) {
    const int count = triMesh->GetTriangleCount();
    if (count <= 0) return 0.0;
    const int blockCount = (count + kBlockSize - 1) / kBlockSize;
    std::vector<double> partial(blockCount, 0.0);
    const bool threaded = count >= kThreadedMinimum && GetThreadCount() > 1 &&
                          dynamic_cast<const TriMesh*>(triMesh) != nullptr;
    if (threaded) {
        const int half = blockCount / 2;
        std::thread worker([&]() { SumBlocks<Term>(triMesh, half, blockCount, partial.data()); });
        SumBlocks<Term>(triMesh, 0, half, partial.data());
        worker.join();
    } else {
        SumBlocks<Term>(triMesh, 0, blockCount, partial.data());
    }
    double sum = 0.0;
    for (double p : partial) sum += p;
    return sum;
}

}  // namespace

int MeasureMesh::ComputeArea(const ITriMesh* triMesh, double& area) {
    SetProgress(0.0);
    if (triMesh == nullptr)
        return LogFailure(RESULT_INVALID_INPUT, "MeasureMesh::ComputeArea input triMesh is NULL");
    area = 0.5 * SumOverTriangles<AreaTerm>(triMesh);
    return RESULT_OK;
}

int MeasureMesh::ComputeVolume(const ITriMesh* triMesh, double& volume) {
    SetProgress(0.0);
    if (triMesh == nullptr)
        return LogFailure(RESULT_INVALID_INPUT, "MeasureMesh::ComputeVolume input triMesh is NULL");
    volume = std::abs(SumOverTriangles<VolumeTerm>(triMesh)) / 6.0;
    return RESULT_OK;
}

}  // namespace ZOL
