// A point on a mesh triangle: the triangle index and barycentric weights. Which corner
// each weight belongs to is fixed by the operation that produces the point.
#pragma once

#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class ZOL_API PointOnFace {
public:
    /// Triangle -1 (none), weights zero.
    PointOnFace() : mTriangleId(-1), mBarycentric() {}
    PointOnFace(int triangleId, const Vector3& barycentric)
        : mTriangleId(triangleId), mBarycentric(barycentric) {}

    int GetTriangleId() const { return mTriangleId; }
    void SetTriangleId(int triangleId) { mTriangleId = triangleId; }
    const Vector3& GetBarycentric() const { return mBarycentric; }
    void SetBarycentric(const Vector3& barycentric) { mBarycentric = barycentric; }

    int mTriangleId;
    Vector3 mBarycentric;
};

}  // namespace ZOL
