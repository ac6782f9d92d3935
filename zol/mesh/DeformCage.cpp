// DeformCage: the API frame of cage-based deformation, which this library does not provide.
#include <zol/mesh/DeformCage.h>

#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

DeformCage::DeformCage() = default;
DeformCage::~DeformCage() = default;

int DeformCage::Init(const ITriMesh* cageMesh, const ITriMesh* triMesh) {
    SetProgress(0.0);
    // dump hook: cage deformation has no record.
    if (cageMesh == nullptr || triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "DeformCage::Init: cageMesh == NULL || triMesh == NULL");
    }
    if (cageMesh->GetTriangleCount() < 4) {
        return LogFailure(RESULT_INVALID_INPUT, "DeformCage::Init: cage triangleCount < 4");
    }
    return NotAvailable(Unavailable::DeformCage_Init);
}

int DeformCage::Deform(const ITriMesh* deformedCage, ITriMesh* triMesh) {
    SetProgress(0.0);
    // dump hook: cage deformation has no record.
    if (deformedCage == nullptr || triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "DeformCage::Deform: deformedCage == NULL || triMesh == NULL");
    }
    return NotAvailable(Unavailable::DeformCage_Deform);
}

}  // namespace ZOL
