// Triangulation: the API frame of planar and surface triangulation, which this library
// does not provide.
#include <zol/mesh/Triangulation.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int Triangulation::ConstrainedDelaunayOptimization(
    ITriMesh* triMesh, const std::vector<int>* constrainedEdgeVertexIds) {
    SetProgress(0.0);
    DumpCall<DumpTriangulationConstrainedDelaunayOptimization>(
        triMesh, constrainedEdgeVertexIds);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Triangulation::ConstrainedDelaunayOptimization: triMesh == NULL");
    }
    if (constrainedEdgeVertexIds != nullptr && constrainedEdgeVertexIds->size() % 2 != 0) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Triangulation::ConstrainedDelaunayOptimization: "
                          "constrainedEdgeVertexIds size is odd");
    }
    return NotAvailable(Unavailable::Triangulation_ConstrainedDelaunayOptimization);
}

int Triangulation::MutualTessellation(ITriMesh* triMeshA, ITriMesh* triMeshB) {
    SetProgress(0.0);
    DumpCall<DumpTriangulationMutualTessellation>(triMeshA, triMeshB);  // dump hook
    if (triMeshA == nullptr || triMeshB == nullptr) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "Triangulation::MutualTessellation: triMeshA == NULL || triMeshB == NULL");
    }
    return NotAvailable(Unavailable::Triangulation_MutualTessellation);
}

int Triangulation::CentroidVoronoiOptimization(ITriMesh* triMesh,
                                               int iterationCount,
                                               const std::vector<int>* fixedVertexIds) {
    SetProgress(0.0);
    DumpCall<DumpTriangulationCentroidVoronoiOptimization>(triMesh, iterationCount,
                                                           fixedVertexIds);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Triangulation::CentroidVoronoiOptimization: triMesh == NULL");
    }
    if (iterationCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Triangulation::CentroidVoronoiOptimization: iterationCount < 1");
    }
    return NotAvailable(Unavailable::Triangulation_CentroidVoronoiOptimization);
}

int Triangulation::ConstrainedDelaunay2D(const std::vector<Vector2>& points,
                                         const std::vector<int>& constrainedEdges,
                                         ITriMesh* triMesh) {
    SetProgress(0.0);
    DumpCall<DumpTriangulationConstrainedDelaunay2D>(points, constrainedEdges);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Triangulation::ConstrainedDelaunay2D: triMesh == NULL");
    }
    if (points.size() < 3) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Triangulation::ConstrainedDelaunay2D: points.size() < 3");
    }
    bool edgesValid = constrainedEdges.size() % 2 == 0;
    for (int id : constrainedEdges) edgesValid = edgesValid && id >= 0 && id < int(points.size());
    if (!edgesValid) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Triangulation::ConstrainedDelaunay2D: invalid constrainedEdges");
    }
    return NotAvailable(Unavailable::Triangulation_ConstrainedDelaunay2D);
}

}  // namespace ZOL
