// SubTriMesh: building the index maps and forwarding to the parent mesh.
#include <zol/core/SubTriMesh.h>

#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

std::vector<bool> FlagsFromIds(const std::vector<int>& ids, int count) {
    std::vector<bool> flags(static_cast<size_t>(count), false);
    for (int id : ids) {
        if (id >= 0 && id < count) flags[id] = true;
    }
    return flags;
}

int ElementCount(const ITriMesh* parent, BuildSubTriMeshType type) {
    if (parent == nullptr) return 0;
    return type == BUILD_SUBTRIMESH_BY_VERTEX ? parent->GetVertexCount()
                                              : parent->GetTriangleCount();
}

}  // namespace

SubTriMesh::SubTriMesh(ITriMesh* parent, const std::vector<int>& ids, BuildSubTriMeshType type)
    : mpParent(parent) {
    Build(FlagsFromIds(ids, ElementCount(parent, type)), type);
}

SubTriMesh::SubTriMesh(ITriMesh* parent, const std::vector<bool>& flags, BuildSubTriMeshType type)
    : mpParent(parent) {
    Build(flags, type);
}

void SubTriMesh::Build(const std::vector<bool>& flags, BuildSubTriMeshType type) {
    if (mpParent == nullptr) {
        LogLine("SubTriMesh::SubTriMesh: parent == NULL");
        return;
    }
    const int vertexCount = mpParent->GetVertexCount();
    const int triangleCount = mpParent->GetTriangleCount();
    const auto flagged = [&flags](int id) {
        return static_cast<size_t>(id) < flags.size() && flags[id];
    };
    const auto validCorners = [vertexCount](const int ids[3]) {
        for (int k = 0; k < 3; ++k) {
            if (ids[k] < 0 || ids[k] >= vertexCount) return false;
        }
        return true;
    };
    std::vector<bool> useVertex(static_cast<size_t>(vertexCount), false);
    int ids[3];
    if (type == BUILD_SUBTRIMESH_BY_VERTEX) {
        for (int v = 0; v < vertexCount; ++v) useVertex[v] = flagged(v);
        for (int t = 0; t < triangleCount; ++t) {
            mpParent->GetTriangleVertexIds(t, ids);
            if (validCorners(ids) && useVertex[ids[0]] && useVertex[ids[1]] && useVertex[ids[2]]) {
                mTriangleIds.push_back(t);
            }
        }
    } else {
        for (int t = 0; t < triangleCount; ++t) {
            if (!flagged(t)) continue;
            mpParent->GetTriangleVertexIds(t, ids);
            if (!validCorners(ids)) continue;
            mTriangleIds.push_back(t);
            for (int k = 0; k < 3; ++k) useVertex[ids[k]] = true;
        }
    }
    mParentToView.assign(static_cast<size_t>(vertexCount), -1);
    for (int v = 0; v < vertexCount; ++v) {
        if (!useVertex[v]) continue;
        mParentToView[v] = static_cast<int>(mVertexIds.size());
        mVertexIds.push_back(v);
    }
}

int SubTriMesh::GetViewVertexId(int parentVertexId) const {
    if (parentVertexId < 0 || parentVertexId >= static_cast<int>(mParentToView.size())) return -1;
    return mParentToView[parentVertexId];
}

Vector3 SubTriMesh::GetVertexCoord(int vertexId) {
    return mpParent->GetVertexCoord(mVertexIds[vertexId]);
}

void SubTriMesh::SetVertexCoord(int vertexId, const Vector3& coord) {
    if (InView(vertexId)) mpParent->SetVertexCoord(mVertexIds[vertexId], coord);
}

Vector3 SubTriMesh::GetVertexNormal(int vertexId) {
    return mpParent->GetVertexNormal(mVertexIds[vertexId]);
}

void SubTriMesh::SetVertexNormal(int vertexId, const Vector3& normal) {
    // Kept identical to SetVertexCoord on purpose: hosts rely on this behaviour.
    if (InView(vertexId)) mpParent->SetVertexCoord(mVertexIds[vertexId], normal);
}

void SubTriMesh::GetTriangleVertexIds(int triangleId, int vertexIds[3]) const {
    mpParent->GetTriangleVertexIds(mTriangleIds[triangleId], vertexIds);
    for (int k = 0; k < 3; ++k) vertexIds[k] = GetViewVertexId(vertexIds[k]);
}

void SubTriMesh::SetTriangleVertexIds(int triangleId, int vertexId0, int vertexId1, int vertexId2) {
    if (triangleId < 0 || triangleId >= GetTriangleCount()) return;
    if (!InView(vertexId0) || !InView(vertexId1) || !InView(vertexId2)) return;
    mpParent->SetTriangleVertexIds(mTriangleIds[triangleId], mVertexIds[vertexId0],
                                   mVertexIds[vertexId1], mVertexIds[vertexId2]);
}

Vector3 SubTriMesh::GetTriangleNormal(int triangleId) {
    return mpParent->GetTriangleNormal(mTriangleIds[triangleId]);
}

void SubTriMesh::SetTriangleNormal(int triangleId, const Vector3& normal) {
    if (triangleId < 0 || triangleId >= GetTriangleCount()) return;
    mpParent->SetTriangleNormal(mTriangleIds[triangleId], normal);
}

int SubTriMesh::InsertTriangle(int vertexId0, int vertexId1, int vertexId2) {
    // clang-format off
    LogLine("SubTriMesh::InsertTriangle: Please do not use SubTriMesh here. SubTriMesh is not compatiable with this API");
    // clang-format on
    if (mpParent == nullptr || !InView(vertexId0) || !InView(vertexId1) || !InView(vertexId2)) {
        return -1;
    }
    mTriangleIds.push_back(mpParent->InsertTriangle(mVertexIds[vertexId0], mVertexIds[vertexId1],
                                                    mVertexIds[vertexId2]));
    return GetTriangleCount() - 1;
}

int SubTriMesh::InsertVertex(const Vector3& coord) {
    // clang-format off
    LogLine("SubTriMesh::InsertVertex: Please do not use SubTriMesh here. SubTriMesh is not compatiable with this API");
    // clang-format on
    if (mpParent == nullptr) return -1;
    const int parentId = mpParent->InsertVertex(coord);
    if (parentId >= static_cast<int>(mParentToView.size())) {
        mParentToView.resize(static_cast<size_t>(parentId) + 1, -1);
    }
    mParentToView[parentId] = GetVertexCount();
    mVertexIds.push_back(parentId);
    return GetVertexCount() - 1;
}

void SubTriMesh::SwapVertex(int, int) {
    // clang-format off
    LogLine("SubTriMesh::SwapVertex: Please do not use SubTriMesh here. SubTriMesh is not compatiable with this API");
    // clang-format on
}

void SubTriMesh::PopbackVertices(int) {
    // clang-format off
    LogLine("SubTriMesh::PopbackVertices: Please do not use SubTriMesh here. SubTriMesh is not compatiable with this API");
    // clang-format on
}

void SubTriMesh::SwapTriangles(int, int) {
    // clang-format off
    LogLine("SubTriMesh::SwapTriangles: Please do not use SubTriMesh here. SubTriMesh is not compatiable with this API");
    // clang-format on
}

void SubTriMesh::PopbackTriangles(int) {
    // clang-format off
    LogLine("SubTriMesh::PopbackTriangles: Please do not use SubTriMesh here. SubTriMesh is not compatiable with this API");
    // clang-format on
}

void SubTriMesh::UpdateNormal() {
    // clang-format off
    LogLine("SubTriMesh::UpdateNormal(): Please do not use SubTriMesh here. SubTriMesh is not compatiable with this API");
    // clang-format on
}

void SubTriMesh::Clear() {
    mParentToView.clear();
    mVertexIds.clear();
    mTriangleIds.clear();
}

}  // namespace ZOL
