// The box octree of MeshQueryTool: every node carries an oriented box fitted to its
// triangles (principal axes of their vertices, centred on the mean of their centroids);
// leaves hold at most maxLeafTriangles triangles unless no split separates them, inner
// nodes keep one representative triangle.
#pragma once

#include <cstdint>
#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/Obb.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/GeneralMatrixInternal.h>

namespace ZOL {

/// Flat copy of the mesh taken once per build, so that the many passes over the
/// triangles read arrays instead of calling the interface.
struct MeshQueryTreeInput {
    std::vector<Vector3> coords;           // per vertex
    std::vector<int> vertexIds;            // 3 per triangle
    std::vector<Vector3> centroids;        // per triangle, (a + b + c) / 3
    GeneralMatrixEigenSolver eigenSolver;  // reused by every node's box
    /// Octant lists of the node being split, reused from node to node so that a split
    /// allocates only the exact lists of its children.
    std::vector<uint32_t> octants[8];
};

class TreeNode {
public:
    TreeNode();

    /// Fits box to the node's triangles.
    /// \return RESULT_OK; RESULT_FAIL (-1) for a node without triangles (logs "Empty
    ///         Node. "); the eigen solver's code when it fails (logged).
    int ComputeBoundingBox(MeshQueryTreeInput& input);

    /// Child per octant: bit k set = non-negative side of box axis k. Empty octants point
    /// at SharedEmptyNode().
    TreeNode* children[8];
    std::vector<uint32_t> triangles;
    Obb box;
    int depth;
    unsigned char isLeaf;

    /// The one static empty node that stands for every empty octant; never freed.
    static TreeNode* SharedEmptyNode();
};

class MeshQueryTree {
public:
    MeshQueryTree();
    /// Frees every node in \p nodes.
    ~MeshQueryTree();
    MeshQueryTree(const MeshQueryTree&) = delete;
    MeshQueryTree& operator=(const MeshQueryTree&) = delete;

    /// Builds the whole tree over \p triMesh: root, boxes, subdivision, then inner lists
    /// cut to one representative.
    /// \return RESULT_OK; RESULT_FAIL (-1) for a mesh without triangles; a box failure's code.
    int Build(const ITriMesh* triMesh);
    /// Deep copy of this tree (nodes re-linked; empty octants keep the shared node).
    MeshQueryTree* Clone() const;

    TreeNode* root;
    const ITriMesh* mesh;
    /// Every allocated node, root first, then in creation order; owned.
    std::vector<TreeNode*> nodes;
    int maxLeafTriangles;
    double maxDistance;

private:
    /// Splits \p node into octants (vertex majority, else centroid side) and creates the
    /// children. \return 0 (also when the node stays a leaf) or a child box's code.
    int SplitNode(TreeNode* node, MeshQueryTreeInput& input);
    /// Appends a child of \p parent taking \p triangles; null for a null parent (logs
    /// "Invalid input for AddTreeNode. ").
    TreeNode* AddTreeNode(TreeNode* parent,
                          std::vector<uint32_t>&& triangles,
                          MeshQueryTreeInput& input,
                          int& status);
    int Subdivide(MeshQueryTreeInput& input);
};

}  // namespace ZOL
