// Mesh filters: Laplacian smoothing and detail enhancement of vertex positions. Declared
// for hosts; not provided by this library.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Moves mesh vertices in place. Every member answers RESULT_NOT_AVAILABLE once its
/// arguments pass the checks listed with it.
class ZOL_API FilterMesh {
public:
    /// Moves each vertex towards the mean of its neighbours.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] smoothWeight share of the move applied per iteration, in (0, 1].
    /// \param[in] iterationCount number of passes, at least 1.
    /// \param[in] fixedVertexIds vertices that stay; null for none.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("FilterMesh::LaplaceSmooth: triMesh == NULL"), a weight outside (0, 1]
    ///         ("FilterMesh::LaplaceSmooth: smoothWeight out of (0, 1]") or
    ///         iterationCount < 1 ("FilterMesh::LaplaceSmooth: iterationCount < 1").
    static int LaplaceSmooth(ITriMesh* triMesh,
                             double smoothWeight,
                             int iterationCount,
                             const std::vector<int>* fixedVertexIds);

    /// Amplifies the fine detail of the surface relative to its smoothed form.
    /// \param[in,out] triMesh the mesh.
    /// \param[in] enhanceRatio gain of the detail layer, greater than 0 (1 keeps the mesh).
    /// \param[in] iterationCount smoothing passes that separate the detail, at least 1.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null mesh
    ///         ("FilterMesh::EnhanceDetail: triMesh == NULL"), enhanceRatio <= 0
    ///         ("FilterMesh::EnhanceDetail: enhanceRatio <= 0") or iterationCount < 1
    ///         ("FilterMesh::EnhanceDetail: iterationCount < 1").
    static int EnhanceDetail(ITriMesh* triMesh, double enhanceRatio, int iterationCount);
};

}  // namespace ZOL
