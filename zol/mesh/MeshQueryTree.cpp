// Building the box octree: a flat copy of the mesh, principal-axis boxes per node, and a
// depth-first subdivision run on an explicit stack (a chain of lopsided splits on a
// large mesh would otherwise exhaust the call stack).
#include <zol/mesh/MeshQueryTreeInternal.h>

#include <algorithm>
#include <unordered_map>

#include <zol/core/TriMesh.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

const double kHuge = 1.7e308;

// Copies coordinates and corner ids once. \return 0, or -2 for a corner out of range.
int ReadInput(const ITriMesh* triMesh, MeshQueryTreeInput& input) {
    const int vertexCount = triMesh->GetVertexCount();
    const int triangleCount = triMesh->GetTriangleCount();
    input.coords.resize(vertexCount);
    input.vertexIds.resize(3 * static_cast<size_t>(triangleCount));
    if (const TriMesh* mesh = dynamic_cast<const TriMesh*>(triMesh)) {
        for (int v = 0; v < vertexCount; ++v) input.coords[v] = mesh->GetVertexCoordRef(v);
        for (int t = 0; t < triangleCount; ++t) {
            const int* ids = mesh->GetTriangleVertexIdsRef(t);
            std::copy(ids, ids + 3, &input.vertexIds[3 * static_cast<size_t>(t)]);
        }
    } else {
        // The interface's coordinate accessor is not const; reading does not change it.
        ITriMesh* host = const_cast<ITriMesh*>(triMesh);
        for (int v = 0; v < vertexCount; ++v) input.coords[v] = host->GetVertexCoord(v);
        for (int t = 0; t < triangleCount; ++t)
            triMesh->GetTriangleVertexIds(t, &input.vertexIds[3 * static_cast<size_t>(t)]);
    }
    input.centroids.resize(triangleCount);
    for (int t = 0; t < triangleCount; ++t) {
        const int* ids = &input.vertexIds[3 * static_cast<size_t>(t)];
        for (int k = 0; k < 3; ++k) {
            if (ids[k] < 0 || ids[k] >= vertexCount)
                return LogFailure(RESULT_INVALID_INPUT, "MeshQueryTool::Init failed: triangle ", t,
                                  " has vertex id ", ids[k], " out of range.");
        }
        input.centroids[t] =
            (input.coords[ids[0]] + input.coords[ids[1]] + input.coords[ids[2]]) / 3.0;
    }
    return RESULT_OK;
}

}  // namespace

TreeNode::TreeNode() : children{}, depth(0), isLeaf(0) {}

TreeNode* TreeNode::SharedEmptyNode() {
    static TreeNode empty = [] {
        TreeNode node;
        node.isLeaf = 1;
        return node;
    }();
    return &empty;
}

int TreeNode::ComputeBoundingBox(MeshQueryTreeInput& input) {
    if (triangles.empty()) return LogFailure(RESULT_FAIL, "Empty Node. ");
    Vector3 mean;
    for (uint32_t t : triangles) mean += input.centroids[t];
    mean /= static_cast<double>(triangles.size());

    double s[6] = {};  // xx, xy, xz, yy, yz, zz
    for (uint32_t t : triangles) {
        const int* ids = &input.vertexIds[3 * static_cast<size_t>(t)];
        for (int k = 0; k < 3; ++k) {
            const Vector3 d = input.coords[ids[k]] - mean;
            s[0] += d.x * d.x;
            s[1] += d.x * d.y;
            s[2] += d.x * d.z;
            s[3] += d.y * d.y;
            s[4] += d.y * d.z;
            s[5] += d.z * d.z;
        }
    }
    const double inv = 1.0 / static_cast<double>(triangles.size());
    GeneralMatrix3 covariance;
    const int index[3][3] = {{0, 1, 2}, {1, 3, 4}, {2, 4, 5}};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) covariance.SetValue(r, c, s[index[r][c]] * inv);
    const int status = input.eigenSolver.ComputeDirect(covariance);
    if (status != RESULT_OK)
        return LogFailure(status,
                          "TreeNode::ComputeBoundingBox: building self-adjoint eigen solver "
                          "failed. ");

    Vector3 axis0 = input.eigenSolver.GetEigenVector(2);
    Vector3 axis1 = input.eigenSolver.GetEigenVector(1);
    axis0.Normalise();
    axis1.Normalise();
    const Vector3 axis2 = axis0.CrossProduct(axis1);
    axis1 = axis2.CrossProduct(axis0);
    const Vector3 axes[3] = {axis0, axis1, axis2};

    double largest[3] = {-kHuge, -kHuge, -kHuge};
    double smallest[3] = {kHuge, kHuge, kHuge};
    for (uint32_t t : triangles) {
        const int* ids = &input.vertexIds[3 * static_cast<size_t>(t)];
        for (int k = 0; k < 3; ++k) {
            const Vector3 d = input.coords[ids[k]] - mean;
            for (int a = 0; a < 3; ++a) {
                const double p = d * axes[a];
                largest[a] = std::max(largest[a], p);
                smallest[a] = std::min(smallest[a], p);
            }
        }
    }
    // Symmetric about the mean, not centred between the extremes.
    double half[3];
    for (int a = 0; a < 3; ++a) half[a] = std::max(largest[a], -smallest[a]);
    box = Obb(mean, axes, half);
    return RESULT_OK;
}

MeshQueryTree::MeshQueryTree()
    : root(nullptr), mesh(nullptr), maxLeafTriangles(4), maxDistance(kHuge) {}

MeshQueryTree::~MeshQueryTree() {
    for (TreeNode* node : nodes) delete node;
}

int MeshQueryTree::Build(const ITriMesh* triMesh) {
    mesh = triMesh;
    MeshQueryTreeInput input;
    int status = ReadInput(triMesh, input);
    if (status != RESULT_OK) return status;
    root = new TreeNode;
    const int triangleCount = triMesh->GetTriangleCount();
    root->triangles.resize(triangleCount);
    for (int t = 0; t < triangleCount; ++t) root->triangles[t] = static_cast<uint32_t>(t);
    nodes.push_back(root);
    status = root->ComputeBoundingBox(input);
    if (status != RESULT_OK) return status;
    return Subdivide(input);
}

TreeNode* MeshQueryTree::AddTreeNode(TreeNode* parent,
                                     std::vector<uint32_t>&& triangles,
                                     MeshQueryTreeInput& input,
                                     int& status) {
    status = RESULT_OK;
    if (parent == nullptr) {
        LogLine("Invalid input for AddTreeNode. ");
        return nullptr;
    }
    TreeNode* node = new TreeNode;
    node->triangles = std::move(triangles);
    node->depth = parent->depth + 1;
    nodes.push_back(node);
    status = node->ComputeBoundingBox(input);
    return node;
}

int MeshQueryTree::SplitNode(TreeNode* node, MeshQueryTreeInput& input) {
    const size_t count = node->triangles.size();
    if (count <= static_cast<size_t>(maxLeafTriangles)) {
        node->isLeaf = 1;
        return RESULT_OK;
    }
    const Vector3 centre = node->box.mCenter;
    const Vector3* axes = node->box.mAxes;
    std::vector<uint32_t>* octants = input.octants;
    for (int o = 0; o < 8; ++o) {
        octants[o].clear();
        octants[o].reserve(count / 4);
    }

    // Vertex majority: a triangle goes to the side holding two or three of its corners.
    for (uint32_t t : node->triangles) {
        const int* ids = &input.vertexIds[3 * static_cast<size_t>(t)];
        int octant = 0;
        for (int a = 0; a < 3; ++a) {
            int positive = 0;
            for (int k = 0; k < 3; ++k)
                positive += ((input.coords[ids[k]] - centre) * axes[a] >= 0.0) ? 1 : 0;
            if (positive >= 2) octant |= 1 << a;
        }
        octants[octant].push_back(t);
    }
    bool split = std::none_of(octants, octants + 8, [count](const std::vector<uint32_t>& l) {
        return l.size() == count;
    });
    if (!split) {
        // Centroid side: separates triangles that straddle the centre plane differently.
        for (int o = 0; o < 8; ++o) octants[o].clear();
        for (uint32_t t : node->triangles) {
            const Vector3 d = input.centroids[t] - centre;
            int octant = 0;
            for (int a = 0; a < 3; ++a)
                if (d * axes[a] >= 0.0) octant |= 1 << a;
            octants[octant].push_back(t);
        }
        const auto nonEmpty = std::count_if(
            octants, octants + 8, [](const std::vector<uint32_t>& l) { return !l.empty(); });
        split = nonEmpty >= 2;
    }
    if (!split) {
        node->isLeaf = 1;
        return RESULT_OK;
    }
    for (int o = 0; o < 8; ++o) node->children[o] = TreeNode::SharedEmptyNode();
    for (int o = 0; o < 8; ++o) {
        if (octants[o].empty()) continue;
        int status = RESULT_OK;
        // An exact copy: the scratch lists keep their capacity for the next split.
        node->children[o] = AddTreeNode(
            node, std::vector<uint32_t>(octants[o].begin(), octants[o].end()), input, status);
        if (status != RESULT_OK) return status;
    }
    // Inner nodes keep one representative so that memory stays linear in the triangles.
    node->triangles.resize(1);
    node->triangles.shrink_to_fit();
    return RESULT_OK;
}

int MeshQueryTree::Subdivide(MeshQueryTreeInput& input) {
    if (root == nullptr) return LogFailure(RESULT_FAIL, "Please create the root node first. ");
    if (root->triangles.empty()) return RESULT_FAIL;
    // Same order as the recursion: a node, then its children 0..7 each fully.
    std::vector<TreeNode*> stack(1, root);
    while (!stack.empty()) {
        TreeNode* node = stack.back();
        stack.pop_back();
        const int status = SplitNode(node, input);
        if (status != RESULT_OK) return status;
        if (node->isLeaf) continue;
        for (int o = 7; o >= 0; --o) {
            if (node->children[o] != TreeNode::SharedEmptyNode())
                stack.push_back(node->children[o]);
        }
    }
    return RESULT_OK;
}

MeshQueryTree* MeshQueryTree::Clone() const {
    MeshQueryTree* copy = new MeshQueryTree;
    copy->mesh = mesh;
    copy->maxLeafTriangles = maxLeafTriangles;
    copy->maxDistance = maxDistance;
    std::unordered_map<const TreeNode*, TreeNode*> map;
    map[TreeNode::SharedEmptyNode()] = TreeNode::SharedEmptyNode();
    map[nullptr] = nullptr;
    copy->nodes.reserve(nodes.size());
    for (const TreeNode* node : nodes) {
        TreeNode* twin = new TreeNode(*node);
        copy->nodes.push_back(twin);
        map[node] = twin;
    }
    for (TreeNode* twin : copy->nodes)
        for (TreeNode*& child : twin->children) child = map[child];
    copy->root = map[root];
    return copy;
}

}  // namespace ZOL
