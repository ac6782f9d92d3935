// MeshQueryTool: life cycle and Init of the box octree. The queries themselves are not
// provided by this library; they record their call when asked and answer -8.
#include <zol/mesh/MeshQueryTool.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/mesh/MeshQueryTreeInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>
#include <zol/runtime/Profiler.h>

namespace ZOL {

MeshQueryTool::MeshQueryTool()
    : mpTree(nullptr),
      mpReferenceMesh(nullptr),
      mMaxSearchRadius(1.7e308),
      mInitializedStatus(RESULT_NOT_READY) {}

MeshQueryTool::~MeshQueryTool() { delete mpTree; }

MeshQueryTool::MeshQueryTool(const MeshQueryTool& other)
    : mpTree(other.mpTree ? other.mpTree->Clone() : nullptr),
      mpReferenceMesh(other.mpReferenceMesh),
      mMaxSearchRadius(other.mMaxSearchRadius),
      mInitializedStatus(other.mInitializedStatus) {}

MeshQueryTool& MeshQueryTool::operator=(const MeshQueryTool& other) {
    if (this == &other) return *this;
    MeshQueryTree* tree = other.mpTree ? other.mpTree->Clone() : nullptr;
    delete mpTree;
    mpTree = tree;
    mpReferenceMesh = other.mpReferenceMesh;
    mMaxSearchRadius = other.mMaxSearchRadius;
    mInitializedStatus = other.mInitializedStatus;
    return *this;
}

int MeshQueryTool::Init(const ITriMesh* referenceMesh) {
    SetProgress(0.0);
    if (referenceMesh == nullptr) {
        mInitializedStatus = RESULT_FAIL;
        return LogFailure(RESULT_FAIL, "MeshQueryTool::Init failed: reference mesh is NULL.");
    }
    const double start = Profiler::GetTime();
    mpReferenceMesh = referenceMesh;
    delete mpTree;
    mpTree = new MeshQueryTree;
    mInitializedStatus = mpTree->Build(referenceMesh);
    LogAt(LOG_TRACE, "MeshQueryTool::Init: ", mpTree->nodes.size(), " nodes in ",
          Profiler::GetTime() - start, " s");
    return mInitializedStatus;
}

int MeshQueryTool::QueryNearestTriangle(const Vector3& point,
                                        PointOnFace* /*nearest*/,
                                        double* /*distance*/) const {
    SetProgress(0.0);
    DumpCall<DumpMeshQueryTool>(mpReferenceMesh, point);  // dump hook
    return NotAvailable(Unavailable::MeshQueryTool_QueryNearestTriangle);
}

int MeshQueryTool::QueryNearestTriangles(const std::vector<Vector3>& points,
                                         std::vector<PointOnFace>* /*nearest*/,
                                         std::vector<double>* /*distances*/) const {
    SetProgress(0.0);
    DumpCall<DumpMeshQueryTool>(mpReferenceMesh, points);  // dump hook
    return NotAvailable(Unavailable::MeshQueryTool_QueryNearestTriangles);
}

int MeshQueryTool::RayIntersections(const Vector3& origin,
                                    const Vector3& direction,
                                    int maxHitCount,
                                    std::vector<PointOnFace>* /*hits*/,
                                    std::vector<double>* /*distances*/,
                                    std::vector<Vector3>* /*positions*/) const {
    SetProgress(0.0);
    DumpCall<DumpMeshQueryTool>(mpReferenceMesh, origin, direction, maxHitCount);  // dump hook
    return NotAvailable(Unavailable::MeshQueryTool_RayIntersections);
}

}  // namespace ZOL
