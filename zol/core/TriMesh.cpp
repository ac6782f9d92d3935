// TriMesh construction, copying, insertion, swap/pop deletion and attribute arrays.
#include <zol/core/TriMesh.h>

#include <algorithm>
#include <utility>

#include <zol/runtime/BulkMemoryInternal.h>

namespace ZOL {

namespace {

// Attribute arrays may be shorter than the element count while their flag is off, so
// every edit touches only the entries that exist.
void SwapEntries(std::vector<Vector3>& values, size_t a, size_t b) {
    if (a < values.size() && b < values.size()) std::swap(values[a], values[b]);
}

void TruncateEntries(std::vector<Vector3>& values, size_t count) {
    if (values.size() > count) values.resize(count);
}

void GrowEntries(std::vector<Vector3>& values, size_t count) {
    if (values.size() < count) values.resize(count);
}

// Frees the last \p count records (clamped to the size) back to their pool; an emptied
// container drops its chunks at once. \return the number of records kept.
template <typename Record, typename Pool>
size_t PopRecords(std::vector<Record*>& records, Pool& pool, int count) {
    const size_t removed =
        static_cast<size_t>(std::clamp(count, 0, static_cast<int>(records.size())));
    const size_t kept = records.size() - removed;
    if (kept == 0) {
        records.clear();
        pool.Release();
    } else {
        for (size_t i = kept; i < records.size(); ++i) pool.Free(records[i]);
        records.resize(kept);
    }
    return kept;
}

}  // namespace

TriMesh::TriMesh() : TriMesh(false, false, false) {}

TriMesh::TriMesh(bool hasVertexColor, bool hasVertexTexCoord, bool hasTriangleTexCoord)
    : mMeshType(MESH_TYPE_UNKNOWN),
      mHasVertexColor(hasVertexColor),
      mHasVertexTexCoord(hasVertexTexCoord),
      mHasTriangleColor(false),
      mHasTriangleTexCoord(hasTriangleTexCoord),
      mDefaultColor(0.86, 0.86, 0.86) {}

TriMesh::TriMesh(const TriMesh& other) : TriMesh() { CopyFrom(other); }

TriMesh::TriMesh(TriMesh&& other) noexcept : TriMesh() { MoveFrom(other); }

TriMesh& TriMesh::operator=(const TriMesh& other) {
    if (this != &other) CopyFrom(other);
    return *this;
}

TriMesh& TriMesh::operator=(TriMesh&& other) noexcept {
    if (this != &other) MoveFrom(other);
    return *this;
}

TriMesh::~TriMesh() = default;

void TriMesh::FreeRecords() {
    mVertices.clear();
    mTriangles.clear();
    mVertexPool.Release();
    mTrianglePool.Release();
}

void TriMesh::RepackRecords() {
    // Fresh chunks in index order: frees the slots of removed records and restores the
    // contiguity that index-order loops rely on.
    RecordPool<VertexRecord> vertexPool;
    for (VertexRecord*& record : mVertices) {
        VertexRecord* fresh = vertexPool.Allocate();
        *fresh = *record;
        record = fresh;
    }
    mVertexPool = std::move(vertexPool);
    RecordPool<TriangleRecord> trianglePool;
    for (TriangleRecord*& record : mTriangles) {
        TriangleRecord* fresh = trianglePool.Allocate();
        *fresh = *record;
        record = fresh;
    }
    mTrianglePool = std::move(trianglePool);
}

void TriMesh::CopyFrom(const TriMesh& other) {
    FreeRecords();
    // Records are copied in index order into fresh chunks, so the copy is contiguous even
    // when the source has been shuffled by swaps.
    mVertices.resize(other.mVertices.size());
    for (size_t i = 0; i < mVertices.size(); ++i) {
        VertexRecord* record = mVertexPool.Allocate();
        *record = *other.mVertices[i];
        mVertices[i] = record;
    }
    mTriangles.resize(other.mTriangles.size());
    for (size_t i = 0; i < mTriangles.size(); ++i) {
        TriangleRecord* record = mTrianglePool.Allocate();
        *record = *other.mTriangles[i];
        mTriangles[i] = record;
    }
    mMeshType = other.mMeshType;
    mVertexColors = other.mVertexColors;
    mVertexTexcoords = other.mVertexTexcoords;
    mTriangleColors = other.mTriangleColors;
    mTriangleTexcoords = other.mTriangleTexcoords;
    mHasVertexColor = other.mHasVertexColor;
    mHasVertexTexCoord = other.mHasVertexTexCoord;
    mHasTriangleColor = other.mHasTriangleColor;
    mHasTriangleTexCoord = other.mHasTriangleTexCoord;
    mDefaultColor = other.mDefaultColor;
}

void TriMesh::MoveFrom(TriMesh& other) noexcept {
    mMeshType = other.mMeshType;
    mVertices = std::move(other.mVertices);
    mTriangles = std::move(other.mTriangles);
    mVertexColors = std::move(other.mVertexColors);
    mVertexTexcoords = std::move(other.mVertexTexcoords);
    mTriangleColors = std::move(other.mTriangleColors);
    mTriangleTexcoords = std::move(other.mTriangleTexcoords);
    mHasVertexColor = other.mHasVertexColor;
    mHasVertexTexCoord = other.mHasVertexTexCoord;
    mHasTriangleColor = other.mHasTriangleColor;
    mHasTriangleTexCoord = other.mHasTriangleTexCoord;
    mDefaultColor = other.mDefaultColor;
    mVertexPool = std::move(other.mVertexPool);
    mTrianglePool = std::move(other.mTrianglePool);
    other.mVertices.clear();
    other.mTriangles.clear();
    other.mVertexColors.clear();
    other.mVertexTexcoords.clear();
    other.mTriangleColors.clear();
    other.mTriangleTexcoords.clear();
}

int TriMesh::InsertVertex(const Vector3& coord) { return InsertVertex(coord, Vector3()); }

int TriMesh::InsertVertex(const Vector3& coord, const Vector3& normal) {
    VertexRecord* record = mVertexPool.Allocate();
    record->coord = coord;
    record->normal = normal;
    mVertices.push_back(record);
    const size_t count = mVertices.size();
    if (mHasVertexColor) mVertexColors.resize(count);
    if (mHasVertexTexCoord) mVertexTexcoords.resize(count);
    return static_cast<int>(count) - 1;
}

int TriMesh::InsertTriangle(int vertexId0, int vertexId1, int vertexId2) {
    TriangleRecord* record = mTrianglePool.Allocate();
    record->vertexIds[0] = vertexId0;
    record->vertexIds[1] = vertexId1;
    record->vertexIds[2] = vertexId2;
    record->normal = Vector3();
    mTriangles.push_back(record);
    const size_t count = mTriangles.size();
    if (mHasTriangleColor) mTriangleColors.resize(3 * count);
    if (mHasTriangleTexCoord) mTriangleTexcoords.resize(3 * count);
    return static_cast<int>(count) - 1;
}

void TriMesh::Reserve(int vertexCount, int triangleCount) {
    const size_t vertices = static_cast<size_t>(std::max(vertexCount, 0));
    const size_t triangles = static_cast<size_t>(std::max(triangleCount, 0));
    // A mesh of known size (a file being read) gets its records in one block each. Large
    // blocks ask for huge pages: in a virtual machine, faulting in a big mesh page by page
    // costs more than reading its file.
    mVertexPool.Reserve(vertexCount - GetVertexCount(), AdviseHugePages);
    mTrianglePool.Reserve(triangleCount - GetTriangleCount(), AdviseHugePages);
    mVertices.reserve(vertices);
    mTriangles.reserve(triangles);
    AdviseHugePages(mVertices.data(), mVertices.capacity() * sizeof(VertexRecord*));
    AdviseHugePages(mTriangles.data(), mTriangles.capacity() * sizeof(TriangleRecord*));
    if (mHasVertexColor) mVertexColors.reserve(vertices);
    if (mHasVertexTexCoord) mVertexTexcoords.reserve(vertices);
    if (mHasTriangleColor) mTriangleColors.reserve(3 * triangles);
    if (mHasTriangleTexCoord) mTriangleTexcoords.reserve(3 * triangles);
}

void TriMesh::SwapVertex(int vertexId0, int vertexId1) {
    std::swap(mVertices[vertexId0], mVertices[vertexId1]);
    SwapEntries(mVertexColors, vertexId0, vertexId1);
    SwapEntries(mVertexTexcoords, vertexId0, vertexId1);
}

void TriMesh::PopbackVertices(int count) {
    const size_t kept = PopRecords(mVertices, mVertexPool, count);
    TruncateEntries(mVertexColors, kept);
    TruncateEntries(mVertexTexcoords, kept);
}

void TriMesh::SwapTriangles(int triangleId0, int triangleId1) {
    std::swap(mTriangles[triangleId0], mTriangles[triangleId1]);
    for (size_t k = 0; k < 3; ++k) {
        const size_t a = 3 * static_cast<size_t>(triangleId0) + k;
        const size_t b = 3 * static_cast<size_t>(triangleId1) + k;
        SwapEntries(mTriangleColors, a, b);
        SwapEntries(mTriangleTexcoords, a, b);
    }
}

void TriMesh::PopbackTriangles(int count) {
    const size_t kept = PopRecords(mTriangles, mTrianglePool, count);
    TruncateEntries(mTriangleColors, 3 * kept);
    TruncateEntries(mTriangleTexcoords, 3 * kept);
}

void TriMesh::Clear() {
    FreeRecords();
    mVertexColors.clear();
    mVertexTexcoords.clear();
    mTriangleColors.clear();
    mTriangleTexcoords.clear();
}

void TriMesh::SetHasVertexColor(bool has) {
    mHasVertexColor = has;
    if (has) GrowEntries(mVertexColors, mVertices.size());
}

void TriMesh::SetHasVertexTexCoord(bool has) {
    mHasVertexTexCoord = has;
    if (has) GrowEntries(mVertexTexcoords, mVertices.size());
}

void TriMesh::SetHasTriangleColor(bool has) {
    mHasTriangleColor = has;
    if (has) GrowEntries(mTriangleColors, 3 * mTriangles.size());
}

void TriMesh::SetHasTriangleTexCoord(bool has) {
    mHasTriangleTexCoord = has;
    if (has) GrowEntries(mTriangleTexcoords, 3 * mTriangles.size());
}

}  // namespace ZOL
