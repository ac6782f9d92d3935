// Remesh: the API frame of uniform remeshing, which this library does not provide.
#include <zol/mesh/Remesh.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int Remesh::UniformRemesh(ITriMesh* triMesh, double targetEdgeLength, int iterationCount) {
    SetProgress(0.0);
    DumpCall<DumpRemeshUniform>(triMesh, targetEdgeLength, iterationCount);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "Remesh::UniformRemesh: triMesh == NULL");
    }
    if (!(targetEdgeLength > 0.0)) {
        return LogFailure(RESULT_INVALID_INPUT, "Remesh::UniformRemesh: targetEdgeLength <= 0");
    }
    if (iterationCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "Remesh::UniformRemesh: iterationCount < 1");
    }
    return NotAvailable(Unavailable::Remesh_UniformRemesh);
}

}  // namespace ZOL
