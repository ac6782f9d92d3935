// SplitMesh: the API frame of mesh cutting, which this library does not provide.
#include <zol/mesh/SplitMesh.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int SplitMesh::SplitByLines(const ITriMesh* triMesh,
                            const std::vector<std::vector<int>>& lineVertexIds,
                            std::vector<int>* triangleParts) {
    SetProgress(0.0);
    DumpCall<DumpMeshSplitByLines>(triMesh, lineVertexIds);  // dump hook
    if (triMesh == nullptr || triangleParts == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SplitMesh::SplitByLines: triMesh == NULL || triangleParts == NULL");
    }
    if (lineVertexIds.empty()) {
        return LogFailure(RESULT_INVALID_INPUT, "SplitMesh::SplitByLines: lineVertexIds is empty");
    }
    return NotAvailable(Unavailable::SplitMesh_SplitByLines);
}

int SplitMesh::InsertSplitLineByEdgePoints(ITriMesh* triMesh,
                                           const std::vector<PointOnEdge>& edgePoints,
                                           std::vector<int>* /*lineVertexIds*/) {
    SetProgress(0.0);
    DumpCall<DumpMeshSplitInsertSplitLineByEdgePoints>(triMesh, edgePoints);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SplitMesh::InsertSplitLineByEdgePoints: triMesh == NULL");
    }
    if (edgePoints.size() < 2) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SplitMesh::InsertSplitLineByEdgePoints: edgePoints.size() < 2");
    }
    return NotAvailable(Unavailable::SplitMesh_InsertSplitLineByEdgePoints);
}

int SplitMesh::SplitByPlane(const ITriMesh* triMesh,
                            const Plane3& plane,
                            ITriMesh* positiveMesh,
                            ITriMesh* negativeMesh) {
    SetProgress(0.0);
    DumpCall<DumpMeshSplitByPlane>(triMesh, plane);  // dump hook
    if (triMesh == nullptr || positiveMesh == nullptr || negativeMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SplitMesh::SplitByPlane: triMesh == NULL || positiveMesh == NULL || "
                          "negativeMesh == NULL");
    }
    if (!(plane.GetNormal().Length() > REAL_TOL)) {
        return LogFailure(RESULT_INVALID_INPUT, "SplitMesh::SplitByPlane: plane normal is zero");
    }
    return NotAvailable(Unavailable::SplitMesh_SplitByPlane);
}

int SplitMesh::GenerateAtlasSplitLines(const ITriMesh* triMesh,
                                       int chartCount,
                                       std::vector<std::vector<int>>* lineVertexIds) {
    SetProgress(0.0);
    DumpCall<DumpMeshSplitGenerateAtlasSplitLines>(triMesh, chartCount);  // dump hook
    if (triMesh == nullptr || lineVertexIds == nullptr) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "SplitMesh::GenerateAtlasSplitLines: triMesh == NULL || lineVertexIds == NULL");
    }
    if (chartCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SplitMesh::GenerateAtlasSplitLines: chartCount < 1");
    }
    return NotAvailable(Unavailable::SplitMesh_GenerateAtlasSplitLines);
}

int SplitMesh::InsertSplitLinesByFacePoints(ITriMesh* triMesh,
                                            const std::vector<std::vector<PointOnFace>>& faceLines,
                                            std::vector<std::vector<int>>* /*lineVertexIds*/) {
    SetProgress(0.0);
    DumpCall<DumpMeshSplitInsertSplitLinesByFacePoints>(triMesh, faceLines);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SplitMesh::InsertSplitLinesByFacePoints: triMesh == NULL");
    }
    const int triangleCount = triMesh->GetTriangleCount();
    for (const std::vector<PointOnFace>& line : faceLines) {
        for (const PointOnFace& point : line) {
            if (point.mTriangleId < 0 || point.mTriangleId >= triangleCount) {
                return LogFailure(
                    RESULT_INVALID_INPUT,
                    "SplitMesh::InsertSplitLinesByFacePoints: triangle id out of range");
            }
        }
    }
    return NotAvailable(Unavailable::SplitMesh_InsertSplitLinesByFacePoints);
}

}  // namespace ZOL
