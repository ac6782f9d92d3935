// TriMesh::FuseVertex: welding of vertices with equal coordinates. Triangle soups (three
// vertices per triangle, as binary STL delivers them) reach millions of vertices, so the
// groups are found with one open-addressing hash table in expected linear time.
#include <zol/core/TriMesh.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

uint64_t Bits(double value) {
    value += 0.0;  // -0 becomes +0 so that both land in the same slot
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
}

uint64_t HashCoord(const Vector3& c) {
    uint64_t h = Bits(c.x) * 0x9E3779B97F4A7C15ull;
    h ^= Bits(c.y) * 0xC2B2AE3D27D4EB4Full;
    h ^= Bits(c.z) * 0x165667B19E3779F9ull;
    h ^= h >> 29;
    h *= 0xBF58476D1CE4E5B9ull;
    h ^= h >> 32;
    return h;
}

bool SameCoord(const Vector3& a, const Vector3& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

// Keeps the entries whose element survives, in order; entries beyond the array's length
// (an attribute that is switched off and shorter) are simply absent.
void CompactEntries(std::vector<Vector3>& values,
                    const std::vector<unsigned char>& keep,
                    size_t entriesPerElement) {
    size_t write = 0;
    for (size_t read = 0; read < values.size(); ++read) {
        if (keep[read / entriesPerElement]) values[write++] = values[read];
    }
    values.resize(write);
}

}  // namespace

int TriMesh::FuseVertex() {
    const size_t vertexCount = mVertices.size();
    if (vertexCount < 3)
        return LogFailure(RESULT_INVALID_INPUT, "TriMesh::FuseVertex: vertexCount < 3");

    size_t capacity = 16;
    while (capacity < 2 * vertexCount) capacity <<= 1;
    const size_t mask = capacity - 1;
    std::vector<int> table(capacity, -1);
    std::vector<int> remap(vertexCount);
    std::vector<unsigned char> survivor(vertexCount, 0);
    int keptCount = 0;
    for (size_t i = 0; i < vertexCount; ++i) {
        const Vector3& coord = mVertices[i]->coord;
        size_t slot = HashCoord(coord) & mask;
        while (table[slot] >= 0 && !SameCoord(mVertices[table[slot]]->coord, coord)) {
            slot = (slot + 1) & mask;
        }
        if (table[slot] < 0) {
            table[slot] = static_cast<int>(i);
            remap[i] = keptCount++;
            survivor[i] = 1;
        } else {
            remap[i] = remap[table[slot]];
        }
    }
    std::vector<int>().swap(table);

    // Survivors get ascending new indices, so the compaction can run in place.
    size_t write = 0;
    for (size_t i = 0; i < vertexCount; ++i) {
        if (survivor[i]) {
            mVertices[write++] = mVertices[i];
        } else {
            mVertexPool.Free(mVertices[i]);
        }
    }
    mVertices.resize(write);
    CompactEntries(mVertexColors, survivor, 1);
    CompactEntries(mVertexTexcoords, survivor, 1);

    const size_t triangleCount = mTriangles.size();
    std::vector<unsigned char> keepTriangle(triangleCount, 0);
    write = 0;
    for (size_t t = 0; t < triangleCount; ++t) {
        TriangleRecord* triangle = mTriangles[t];
        int* ids = triangle->vertexIds;
        for (int k = 0; k < 3; ++k) ids[k] = remap[ids[k]];
        if (ids[0] == ids[1] || ids[1] == ids[2] || ids[2] == ids[0]) {
            mTrianglePool.Free(triangle);
        } else {
            keepTriangle[t] = 1;
            mTriangles[write++] = triangle;
        }
    }
    mTriangles.resize(write);
    CompactEntries(mTriangleColors, keepTriangle, 3);
    CompactEntries(mTriangleTexcoords, keepTriangle, 3);
    return RESULT_OK;
}

}  // namespace ZOL
