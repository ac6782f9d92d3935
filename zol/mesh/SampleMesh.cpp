// SampleMesh: the API frame of mesh sampling, which this library does not provide.
#include <zol/mesh/SampleMesh.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int SampleMesh::UniformSample(const ITriMesh* triMesh, int sampleCount, IPointCloud* samplePoints) {
    SetProgress(0.0);
    DumpCall<DumpMeshSamplingUniform>(triMesh, sampleCount);  // dump hook
    if (triMesh == nullptr || samplePoints == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "SampleMesh::UniformSample: triMesh == NULL || samplePoints == NULL");
    }
    if (triMesh->GetTriangleCount() < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "SampleMesh::UniformSample: triangleCount < 1");
    }
    if (sampleCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "SampleMesh::UniformSample: sampleCount < 1");
    }
    return NotAvailable(Unavailable::SampleMesh_UniformSample);
}

}  // namespace ZOL
