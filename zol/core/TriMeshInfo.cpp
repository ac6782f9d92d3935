// Edge records of TriMeshInfo. The 3n triangle sides are bucketed by their smaller
// vertex (counting sort), then each small bucket is sorted by the larger vertex, so
// the build is linear up to the bucket sorts and allocates only flat arrays.
#include <zol/core/TriMeshInfo.h>

#include <algorithm>
#include <cstdint>

#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

// Side key: larger vertex in the high half, side id (3 t + corner) in the low half, so a
// plain sort orders a bucket by larger vertex and then by triangle.
uint64_t SideKey(int larger, size_t side) {
    return (static_cast<uint64_t>(static_cast<uint32_t>(larger)) << 32) |
           static_cast<uint64_t>(side);
}

void SortBucket(uint64_t* first, uint64_t* last) {
    if (last - first > 16) {
        std::sort(first, last);
        return;
    }
    for (uint64_t* i = first + 1; i < last; ++i) {
        const uint64_t key = *i;
        uint64_t* j = i;
        for (; j > first && *(j - 1) > key; --j) *j = *(j - 1);
        *j = key;
    }
}

}  // namespace

void TriMeshInfo::ClearEdgeInfos() {
    mHasEdgeInfos = false;
    mVertexCount = 0;
    mTriangleCount = 0;
    std::vector<int>().swap(mEdgeVertexIds);
    std::vector<int>().swap(mEdgeTriangleOffsets);
    std::vector<int>().swap(mEdgeTriangleIds);
    std::vector<int>().swap(mTriangleEdgeIds);
}

int TriMeshInfo::CacheDataForEdgeInfos(const ITriMesh* triMesh) {
    // Emptied but not freed: a rebuild after an edit reuses the memory of the last build.
    mHasEdgeInfos = false;
    mVertexCount = 0;
    mTriangleCount = 0;
    mEdgeVertexIds.clear();
    mEdgeTriangleOffsets.clear();
    mEdgeTriangleIds.clear();
    mTriangleEdgeIds.clear();
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TriMeshInfo::CacheDataForEdgeInfos: triMesh == NULL");
    }
    const int vertexCount = triMesh->GetVertexCount();
    const int triangleCount = triMesh->GetTriangleCount();
    if (triangleCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TriMeshInfo::CacheDataForEdgeInfos: triangleCount < 1");
    }
    const size_t sideCount = 3 * static_cast<size_t>(triangleCount);
    std::vector<int> corners(sideCount);
    for (int t = 0; t < triangleCount; ++t) {
        int* ids = &corners[3 * static_cast<size_t>(t)];
        triMesh->GetTriangleVertexIds(t, ids);
        for (int k = 0; k < 3; ++k) {
            if (ids[k] < 0 || ids[k] >= vertexCount) {
                return LogFailure(RESULT_INVALID_INPUT,
                                  "TriMeshInfo::CacheDataForEdgeInfos: invalid vertex id ", ids[k],
                                  " in triangle ", t);
            }
        }
    }

    // Counting sort of the sides by their smaller vertex.
    std::vector<int> bucketStart(static_cast<size_t>(vertexCount) + 1, 0);
    for (size_t side = 0; side < sideCount; ++side) {
        const int a = corners[side];
        const int b = corners[side - side % 3 + (side + 1) % 3];
        if (a != b) ++bucketStart[std::min(a, b) + 1];
    }
    for (int v = 0; v < vertexCount; ++v) bucketStart[v + 1] += bucketStart[v];
    const size_t usedSides = static_cast<size_t>(bucketStart[vertexCount]);
    std::vector<uint64_t> keys(usedSides);
    {
        std::vector<int> fill(bucketStart.begin(), bucketStart.end() - 1);
        for (size_t side = 0; side < sideCount; ++side) {
            const int a = corners[side];
            const int b = corners[side - side % 3 + (side + 1) % 3];
            if (a != b) keys[fill[std::min(a, b)]++] = SideKey(std::max(a, b), side);
        }
    }

    mTriangleEdgeIds.assign(sideCount, -1);
    mEdgeTriangleIds.resize(usedSides);
    mEdgeTriangleOffsets.reserve(usedSides / 2 + 2);
    mEdgeVertexIds.reserve(usedSides + 4);
    int edgeId = -1;
    for (int v = 0; v < vertexCount; ++v) {
        uint64_t* first = keys.data() + bucketStart[v];
        uint64_t* last = keys.data() + bucketStart[v + 1];
        SortBucket(first, last);
        int previousLarger = -1;
        for (uint64_t* key = first; key < last; ++key) {
            const int larger = static_cast<int>(*key >> 32);
            const size_t side = static_cast<size_t>(*key & 0xFFFFFFFFu);
            const size_t slot = static_cast<size_t>(key - keys.data());
            if (larger != previousLarger) {
                ++edgeId;
                mEdgeVertexIds.push_back(v);
                mEdgeVertexIds.push_back(larger);
                mEdgeTriangleOffsets.push_back(static_cast<int>(slot));
                previousLarger = larger;
            }
            mEdgeTriangleIds[slot] = static_cast<int>(side / 3);
            mTriangleEdgeIds[side] = edgeId;
        }
    }
    mEdgeTriangleOffsets.push_back(static_cast<int>(usedSides));
    mVertexCount = vertexCount;
    mTriangleCount = triangleCount;
    mHasEdgeInfos = true;
    return RESULT_OK;
}

int TriMeshInfo::FindEdge(int vertexId0, int vertexId1) const {
    const int lo = std::min(vertexId0, vertexId1);
    const int hi = std::max(vertexId0, vertexId1);
    int first = 0;
    int count = GetEdgeCount();
    while (count > 0) {  // lower bound on (smaller, larger)
        const int step = count / 2;
        const int mid = first + step;
        const int* ids = &mEdgeVertexIds[2 * static_cast<size_t>(mid)];
        if (ids[0] < lo || (ids[0] == lo && ids[1] < hi)) {
            first = mid + 1;
            count -= step + 1;
        } else {
            count = step;
        }
    }
    if (first < GetEdgeCount() && mEdgeVertexIds[2 * static_cast<size_t>(first)] == lo &&
        mEdgeVertexIds[2 * static_cast<size_t>(first) + 1] == hi) {
        return first;
    }
    return -1;
}

}  // namespace ZOL
