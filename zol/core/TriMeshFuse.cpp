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

bool HasNaN(const Vector3& c) { return c.x != c.x || c.y != c.y || c.z != c.z; }

bool SameCoord(const Vector3& a, const Vector3& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

// Open addressing with linear probing from coordinates to the first vertex that has them;
// kept at most half full.
class HashTable {
public:
    explicit HashTable(size_t expected) {
        size_t capacity = 64;
        while (capacity < 2 * expected) capacity <<= 1;
        mSlots.assign(capacity, Slot{0, -1});
    }

    // \return the vertex already stored with \p coord, or \p index after storing it.
    template <typename Records>
    int FindOrInsert(const Vector3& coord, int index, const Records& records) {
        const uint64_t hash = HashCoord(coord);
        const Slot slot = {static_cast<uint32_t>(hash >> 32), index};
        const size_t mask = mSlots.size() - 1;
        size_t at = hash & mask;
        for (; mSlots[at].index >= 0; at = (at + 1) & mask) {
            const Slot& probe = mSlots[at];
            if (probe.tag == slot.tag && SameCoord(records[probe.index]->coord, coord)) {
                return probe.index;
            }
        }
        mSlots[at] = slot;
        if (2 * ++mCount > mSlots.size()) Grow(records);
        return index;
    }

private:
    struct Slot {
        uint32_t tag;  // high half of the coordinate hash
        int index;     // first vertex with these coordinates, -1 when empty
    };

    void Store(const Slot& slot, uint64_t hash) {
        const size_t mask = mSlots.size() - 1;
        size_t at = hash & mask;
        while (mSlots[at].index >= 0) at = (at + 1) & mask;
        mSlots[at] = slot;
    }

    template <typename Records>
    void Grow(const Records& records) {
        std::vector<Slot> old(4 * mSlots.size(), Slot{0, -1});
        old.swap(mSlots);
        for (const Slot& slot : old) {
            if (slot.index >= 0) Store(slot, HashCoord(records[slot.index]->coord));
        }
    }

    std::vector<Slot> mSlots;
    size_t mCount = 0;
};

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
    for (size_t t = 0; t < mTriangles.size(); ++t) {
        for (const int id : mTriangles[t]->vertexIds) {
            if (id < 0 || static_cast<size_t>(id) >= vertexCount) {
                return LogFailure(RESULT_INVALID_INPUT, "TriMesh::FuseVertex: invalid vertex id ",
                                  id, " in triangle ", t);
            }
        }
    }

    // Each slot keeps a vertex index and 32 bits of its hash, so most probes settle
    // without touching coordinates. The table holds distinct positions only and grows
    // with them: a soup has about six times fewer than vertices, and a small table stays
    // in cache.
    HashTable table(vertexCount / 8);
    std::vector<int> remap(vertexCount);
    std::vector<unsigned char> survivor(vertexCount, 1);
    int keptCount = 0;
    for (size_t i = 0; i < vertexCount; ++i) {
        const Vector3& coord = mVertices[i]->coord;
        if (HasNaN(coord)) {  // equal to nothing, not even itself: always kept
            remap[i] = keptCount++;
            continue;
        }
        const int first = table.FindOrInsert(coord, static_cast<int>(i), mVertices);
        if (first == static_cast<int>(i)) {
            remap[i] = keptCount++;
        } else {
            remap[i] = remap[first];
            survivor[i] = 0;
        }
    }
    table = HashTable(0);

    // Survivors get ascending new indices, so the compaction can run in place.
    size_t write = 0;
    for (size_t i = 0; i < vertexCount; ++i) {
        if (survivor[i]) mVertices[write++] = mVertices[i];
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
        if (ids[0] != ids[1] && ids[1] != ids[2] && ids[2] != ids[0]) {
            keepTriangle[t] = 1;
            mTriangles[write++] = triangle;
        }
    }
    mTriangles.resize(write);
    CompactEntries(mTriangleColors, keepTriangle, 3);
    CompactEntries(mTriangleTexcoords, keepTriangle, 3);
    // Dropped records are not handed back one by one: repacking releases their chunks.
    if (mVertices.size() < vertexCount || mTriangles.size() < triangleCount) RepackRecords();
    return RESULT_OK;
}

}  // namespace ZOL
