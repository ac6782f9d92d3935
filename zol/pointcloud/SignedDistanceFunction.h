// The signed distance function: range scans merged into a truncated signed distance grid,
// whose zero level is extracted as a mesh. Declared for hosts; not provided by this
// library.
#pragma once

#include <zol/core/IPointCloud.h>
#include <zol/core/ITriMesh.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// A truncated signed distance grid over a box. Every operation answers
/// RESULT_NOT_AVAILABLE once its arguments pass the checks listed with it.
class ZOL_API SignedDistanceFunction {
public:
    /// An empty grid over [\p bboxMin, \p bboxMax] with cubic cells of side \p resolution
    /// (model units). The values are checked by the operations.
    SignedDistanceFunction(double resolution, const Vector3& bboxMin, const Vector3& bboxMax);
    ~SignedDistanceFunction();
    SignedDistanceFunction(const SignedDistanceFunction&) = delete;
    SignedDistanceFunction& operator=(const SignedDistanceFunction&) = delete;

    /// Merges one scan seen from \p viewPoint into the grid.
    /// \param[in] pointCloud the scan; only read.
    /// \param[in] viewPoint the scanner position, in the cloud's frame.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null cloud
    ///         ("SignedDistanceFunction::UpdateFunction: pointCloud == NULL") or a box or
    ///         cell size that holds no cell ("SignedDistanceFunction::UpdateFunction:
    ///         resolution <= 0 || bboxMin above bboxMax").
    int UpdateFunction(const IPointCloud* pointCloud, const Vector3& viewPoint);

    /// Extracts the zero level of the grid as a mesh.
    /// \param[out] triMesh receives the surface (cleared first).
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("SignedDistanceFunction::ExtractTriMesh: triMesh == NULL") or a box or cell
    ///         size that holds no cell ("SignedDistanceFunction::ExtractTriMesh: resolution
    ///         <= 0 || bboxMin above bboxMax").
    int ExtractTriMesh(ITriMesh* triMesh);

    /// Empties the grid; the box and cell size stay.
    void Clear();

    double GetResolution() const { return mResolution; }
    const Vector3& GetBBoxMin() const { return mBBoxMin; }
    const Vector3& GetBBoxMax() const { return mBBoxMax; }

private:
    double mResolution;
    Vector3 mBBoxMin;
    Vector3 mBBoxMax;
};

}  // namespace ZOL
