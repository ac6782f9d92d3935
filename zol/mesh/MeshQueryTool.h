// Triangle queries against a reference mesh, over a hierarchy of oriented boxes that
// Init builds once.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/PointOnFace.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class MeshQueryTree;

/// Holds a box octree over the triangles of a reference mesh that it does not own (the
/// mesh must outlive the tool and stay unchanged while the tool uses it).
class ZOL_API MeshQueryTool {
public:
    /// No tree, no mesh, status RESULT_NOT_READY (-5), search radius 1.7e308.
    MeshQueryTool();
    /// Frees the tree and all its nodes.
    ~MeshQueryTool();
    /// Copies the mesh pointer, radius and status; the tree is copied node by node, so
    /// both tools own their own tree.
    MeshQueryTool(const MeshQueryTool& other);
    MeshQueryTool& operator=(const MeshQueryTool& other);

    /// Builds the box octree over the triangles of \p referenceMesh, replacing any
    /// earlier tree, and stores the status (see _GetInitializedStatus).
    /// \param[in] referenceMesh the mesh; only read, not owned.
    /// \return RESULT_OK; RESULT_FAIL (-1) for a null mesh, earlier tree kept
    ///         ("MeshQueryTool::Init failed: reference mesh is NULL.") or a mesh without
    ///         triangles ("Empty Node. "); RESULT_INVALID_INPUT (-2) for a triangle naming
    ///         a vertex out of range; the eigen solver's code when a box cannot be computed
    ///         ("TreeNode::ComputeBoundingBox: building self-adjoint eigen solver
    ///         failed. ", non-finite coordinates).
    int Init(const ITriMesh* referenceMesh);

    /// Not provided by this library. \return RESULT_NOT_AVAILABLE (-8).
    int QueryNearestTriangle(const Vector3& point, PointOnFace* nearest, double* distance) const;
    /// Not provided by this library. \return RESULT_NOT_AVAILABLE (-8).
    int QueryNearestTriangles(const std::vector<Vector3>& points,
                              std::vector<PointOnFace>* nearest,
                              std::vector<double>* distances) const;
    /// Not provided by this library. \return RESULT_NOT_AVAILABLE (-8).
    int RayIntersections(const Vector3& origin,
                         const Vector3& direction,
                         int maxHitCount,
                         std::vector<PointOnFace>* hits,
                         std::vector<double>* distances,
                         std::vector<Vector3>* positions) const;

    /// \return the mesh of the last Init that got past its null check (null before).
    const ITriMesh* _GetReferenceMesh() const { return mpReferenceMesh; }
    /// \return the search radius bound, 1.7e308.
    double _GetMaxSearchRadius() const { return mMaxSearchRadius; }
    /// \return RESULT_NOT_READY (-5) before Init, then the status of the last Init.
    int _GetInitializedStatus() const { return mInitializedStatus; }
    /// \return the tree (null before Init); for inspection inside the library.
    const MeshQueryTree* _GetTree() const { return mpTree; }

private:
    MeshQueryTree* mpTree;
    const ITriMesh* mpReferenceMesh;
    double mMaxSearchRadius;
    int mInitializedStatus;
};

}  // namespace ZOL
