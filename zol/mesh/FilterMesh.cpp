// FilterMesh: the API frame of mesh smoothing and detail enhancement, which this library
// does not provide.
#include <zol/mesh/FilterMesh.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int FilterMesh::LaplaceSmooth(ITriMesh* triMesh,
                              double smoothWeight,
                              int iterationCount,
                              const std::vector<int>* fixedVertexIds) {
    SetProgress(0.0);
    DumpCall<DumpMeshFilterLaplaceSmooth>(triMesh, smoothWeight, iterationCount,
                                          fixedVertexIds);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "FilterMesh::LaplaceSmooth: triMesh == NULL");
    }
    if (!(smoothWeight > 0.0 && smoothWeight <= 1.0)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "FilterMesh::LaplaceSmooth: smoothWeight out of (0, 1]");
    }
    if (iterationCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "FilterMesh::LaplaceSmooth: iterationCount < 1");
    }
    return NotAvailable(Unavailable::FilterMesh_LaplaceSmooth);
}

int FilterMesh::EnhanceDetail(ITriMesh* triMesh, double enhanceRatio, int iterationCount) {
    SetProgress(0.0);
    DumpCall<DumpMeshFilterEnhanceDetail>(triMesh, enhanceRatio, iterationCount);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "FilterMesh::EnhanceDetail: triMesh == NULL");
    }
    if (!(enhanceRatio > 0.0)) {
        return LogFailure(RESULT_INVALID_INPUT, "FilterMesh::EnhanceDetail: enhanceRatio <= 0");
    }
    if (iterationCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "FilterMesh::EnhanceDetail: iterationCount < 1");
    }
    return NotAvailable(Unavailable::FilterMesh_EnhanceDetail);
}

}  // namespace ZOL
