// Tangent-face selection: breadth-first growth from a seed triangle across two-sided
// edges, comparing each triangle with the neighbour it is reached from, so that a slowly
// bending surface is taken whole while a crease stops the growth.
#include <zol/shape/DetectShape.h>

#include <cmath>

#include <zol/core/TriMesh.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

// Triangle normals read once into a flat array: the growth reads each of them about
// three times, and a TriMesh serves them without a virtual call.
void ReadTriangleNormals(const ITriMesh* triMesh, std::vector<Vector3>& normals) {
    const int count = triMesh->GetTriangleCount();
    normals.resize(count);
    if (const TriMesh* mesh = dynamic_cast<const TriMesh*>(triMesh)) {
        for (int t = 0; t < count; ++t) normals[t] = mesh->GetTriangleNormalRef(t);
        return;
    }
    // The interface's normal accessor is not const; reading does not change the mesh.
    ITriMesh* mesh = const_cast<ITriMesh*>(triMesh);
    for (int t = 0; t < count; ++t) normals[t] = mesh->GetTriangleNormal(t);
}

}  // namespace

int DetectShape::SelectTangentFace(const ITriMesh* triMesh,
                                   int selectFaceId,
                                   double angleTol,
                                   std::vector<int>* indexRes) {
    TriMeshInfo info;
    return _SelectTangentFace(triMesh, info, selectFaceId, angleTol, indexRes);
}

int DetectShape::_SelectTangentFace(const ITriMesh* triMesh,
                                    TriMeshInfo& triMeshInfo,
                                    int selectFaceId,
                                    double angleTol,
                                    std::vector<int>* indexRes) {
    // Hosts call this member directly with a cache of their own, so it opens the frame.
    SetProgress(0.0);
    if (triMesh == nullptr || indexRes == nullptr)
        return LogFailure(RESULT_INVALID_INPUT,
                          "SelectTangentFace: triMesh == NULL || indexRes == NULL");
    const int vertexCount = triMesh->GetVertexCount();
    const int faceCount = triMesh->GetTriangleCount();
    if (vertexCount < 3 || faceCount < 1)
        return LogFailure(RESULT_INVALID_INPUT,
                          "SelectTangentFace: invalid triMesh, vertexCount=", vertexCount,
                          " faceCount=", faceCount);
    if (selectFaceId < 0 || selectFaceId >= faceCount)
        return LogFailure(RESULT_INVALID_INPUT, "SelectTangentFace: invalid selectFaceId ",
                          selectFaceId, " / ", faceCount);
    const int cacheStatus = triMeshInfo.CacheDataForEdgeInfos(triMesh);
    if (cacheStatus != RESULT_OK)
        return LogFailure(cacheStatus, "SelectTangentFace: CacheDataForEdgeInfos failed ",
                          cacheStatus);

    // Two-sided edges per triangle, as a compressed list (offsets, then edge ids).
    const int edgeCount = triMeshInfo.GetEdgeCount();
    std::vector<int> offsets(static_cast<size_t>(faceCount) + 1, 0);
    for (int e = 0; e < edgeCount; ++e) {
        if (triMeshInfo.GetEdgeTriangleCount(e) != 2) continue;
        const int* tris = triMeshInfo.GetEdgeTriangleIds(e);
        ++offsets[tris[0] + 1];
        ++offsets[tris[1] + 1];
    }
    for (int t = 0; t < faceCount; ++t) offsets[t + 1] += offsets[t];
    std::vector<int> faceEdges(offsets[faceCount]);
    {
        std::vector<int> fill(offsets.begin(), offsets.end() - 1);
        for (int e = 0; e < edgeCount; ++e) {
            if (triMeshInfo.GetEdgeTriangleCount(e) != 2) continue;
            const int* tris = triMeshInfo.GetEdgeTriangleIds(e);
            faceEdges[fill[tris[0]]++] = e;
            faceEdges[fill[tris[1]]++] = e;
        }
    }

    std::vector<Vector3> normals;
    ReadTriangleNormals(triMesh, normals);
    const double cosTol = std::cos(angleTol);
    std::vector<bool> visited(faceCount, false);
    indexRes->clear();
    indexRes->push_back(selectFaceId);
    visited[selectFaceId] = true;
    std::vector<int> front(1, selectFaceId);
    std::vector<int> next;
    while (!front.empty()) {
        next.clear();
        for (int f : front) {
            const Vector3& nf = normals[f];
            for (int k = offsets[f]; k < offsets[f + 1]; ++k) {
                const int* tris = triMeshInfo.GetEdgeTriangleIds(faceEdges[k]);
                for (int side = 0; side < 2; ++side) {
                    const int g = tris[side];
                    if (visited[g]) continue;
                    // Not marked when too steep: g may still be reached through another
                    // neighbour that bends less.
                    if (nf * normals[g] < cosTol) continue;
                    visited[g] = true;
                    next.push_back(g);
                    indexRes->push_back(g);
                }
            }
        }
        front.swap(next);
    }
    return RESULT_OK;
}

}  // namespace ZOL
