// MeshQueryTool: state before and after Init, failures, and the invariants of the box
// octree on a real scan (partition into leaves, leaf size, boxes containing their
// subtree, orthonormal axes, depths, node list, shared empty node).
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>

#include <zol/io/Parser.h>
#include <zol/mesh/MeshQueryTool.h>
#include <zol/mesh/MeshQueryTreeInternal.h>
#include <zol/runtime/Constants.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

// Largest distance by which a point lies outside the box (0 inside).
double Outside(const Obb& box, const Vector3& p) {
    double worst = 0.0;
    for (int a = 0; a < 3; ++a) {
        const double q = std::abs((p - box.GetCenter()) * box.GetAxis(a));
        worst = std::max(worst, q - box.GetHalfExtent(a));
    }
    return worst;
}

// Checks one node and, recursively, its subtree; returns the subtree's triangles.
// Each leaf holding triangle t adds one to leafCount[t].
std::vector<uint32_t> Walk(TriMesh& mesh,
                           const TreeNode* node,
                           std::vector<int>& leafCount,
                           std::set<const TreeNode*>& reached) {
    reached.insert(node);
    const Obb& box = node->box;
    for (int a = 0; a < 3; ++a) {
        EXPECT_NEAR(box.GetAxis(a).Length(), 1.0, 1e-12);
        EXPECT_NEAR(box.GetAxis(a) * box.GetAxis((a + 1) % 3), 0.0, 1e-12);
    }
    std::vector<uint32_t> subtree;
    if (node->isLeaf) {
        subtree = node->triangles;
        EXPECT_LE(subtree.size(), 4u);
        for (uint32_t t : subtree) ++leafCount[t];
    } else {
        for (const TreeNode* child : node->children) {
            if (child == TreeNode::SharedEmptyNode()) continue;
            EXPECT_EQ(child->depth, node->depth + 1);
            const std::vector<uint32_t> part = Walk(mesh, child, leafCount, reached);
            subtree.insert(subtree.end(), part.begin(), part.end());
        }
        // An inner node keeps one representative triangle of its subtree.
        EXPECT_TRUE(node->triangles.size() == 1 &&
                    std::count(subtree.begin(), subtree.end(), node->triangles[0]) == 1);
    }
    double worstOutside = 0.0;
    for (uint32_t t : subtree) {
        int ids[3];
        mesh.GetTriangleVertexIds(static_cast<int>(t), ids);
        for (int id : ids)
            worstOutside = std::max(worstOutside, Outside(box, mesh.GetVertexCoord(id)));
    }
    EXPECT_LT(worstOutside, 1e-12);
    return subtree;
}

}  // namespace

TEST(MeshQueryTool, FailedInitsLogAndStoreTheirStatus) {
    zoltest::LogCapture log;
    TriMesh cube = zoltest::MakeUnitCube();
    MeshQueryTool tool;
    EXPECT_EQ(tool._GetInitializedStatus(), RESULT_NOT_READY);
    ASSERT_EQ(tool.Init(&cube), RESULT_OK);
    const MeshQueryTree* tree = tool._GetTree();
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(tool.Init(nullptr), RESULT_FAIL);
    EXPECT_EQ(tool._GetInitializedStatus(), RESULT_FAIL);
    EXPECT_EQ(tool._GetReferenceMesh(), &cube);
    EXPECT_EQ(tool._GetTree(), tree);
    TriMesh empty = zoltest::MakeMesh({{0, 0, 0}}, {});  // no triangles: no root box
    EXPECT_EQ(tool.Init(&empty), RESULT_FAIL);
    EXPECT_EQ(tool._GetInitializedStatus(), RESULT_FAIL);
    EXPECT_EQ(tool._GetReferenceMesh(), &empty);
    TriMesh broken = zoltest::MakeUnitCube();
    broken.SetVertexCoord(3, Vector3(std::nan(""), 0, 0));
    EXPECT_EQ(tool.Init(&broken), RESULT_FAIL);
    EXPECT_EQ(log.Lines(),
              (std::vector<std::string>{
                  "MeshQueryTool::Init failed: reference mesh is NULL.", "Empty Node. ",
                  "TreeNode::ComputeBoundingBox: building self-adjoint eigen solver failed. "}));
    EXPECT_EQ(tool.Init(&cube), RESULT_OK);  // a later good Init recovers
}

TEST(MeshQueryTool, SmallOrUnsplittableMeshesGiveASingleLeaf) {
    TriMesh four = zoltest::MakeMesh(
        {{0, 0, 0}, {1, 1, 0.5}, {2, 4, 1}, {3, 9, 1.5}, {4, 16, 2}, {5, 25, 2.5}},
        {{0, 1, 2}, {1, 2, 3}, {2, 3, 4}, {3, 4, 5}});
    // Ten copies of one triangle share every centroid and every side; six triangles
    // collapsed onto one point have a zero covariance and no side to split by.
    TriMesh copies = zoltest::MakeMesh({{0, 0, 0}, {1, 0, 0}, {0, 2, 0}},
                                       std::vector<std::array<int, 3>>(10, {0, 1, 2}));
    TriMesh point =
        zoltest::MakeMesh({{1, 2, 3}, {1, 2, 3}, {1, 2, 3}},
                          {{0, 1, 2}, {1, 2, 0}, {2, 0, 1}, {0, 1, 2}, {1, 2, 0}, {2, 0, 1}});
    for (TriMesh* mesh : {&four, &copies, &point}) {
        MeshQueryTool tool;
        ASSERT_EQ(tool.Init(mesh), RESULT_OK);
        const MeshQueryTree* tree = tool._GetTree();
        ASSERT_EQ(tree->nodes.size(), 1u);
        EXPECT_EQ(tree->root, tree->nodes[0]);
        EXPECT_TRUE(tree->root->isLeaf);
        EXPECT_EQ(tree->root->triangles.size(), size_t(mesh->GetTriangleCount()));
        EXPECT_EQ(tree->maxLeafTriangles, 4);
    }
}

TEST(MeshQueryTool, RootBoxIsThePrincipalBoxSymmetricAboutTheMeanCentroid) {
    // An octahedron stretched to +8 on x and moved to (1, 2, 3): the mean centroid is
    // (1 + 2/3, 2, 3), the axes stay x, y, z (largest spread first) and the x half-extent
    // reaches the farther tip, 8 - 2/3, not half the span.
    const Vector3 offset(1, 2, 3);
    TriMesh octahedron = zoltest::MakeMesh(
        {{8, 0, 0}, {-4, 0, 0}, {0, 2, 0}, {0, -2, 0}, {0, 0, 1}, {0, 0, -1}},
        {{0, 2, 4}, {0, 2, 5}, {0, 3, 4}, {0, 3, 5}, {1, 2, 4}, {1, 2, 5}, {1, 3, 4}, {1, 3, 5}});
    for (int v = 0; v < 6; ++v) octahedron.SetVertexCoord(v, octahedron.GetVertexCoord(v) + offset);
    MeshQueryTool tool;
    ASSERT_EQ(tool.Init(&octahedron), RESULT_OK);
    const Obb& box = tool._GetTree()->root->box;
    EXPECT_NEAR(std::abs(box.GetAxis(0).x), 1.0, 1e-12);
    EXPECT_NEAR(std::abs(box.GetAxis(1).y), 1.0, 1e-12);
    EXPECT_NEAR((box.GetAxis(0).CrossProduct(box.GetAxis(1)) - box.GetAxis(2)).Length(), 0, 1e-12);
    EXPECT_NEAR((box.GetCenter() - (offset + Vector3(2.0 / 3, 0, 0))).Length(), 0.0, 1e-14);
    EXPECT_NEAR(box.GetHalfExtent(0), 8 - 2.0 / 3, 1e-12);
    EXPECT_NEAR(box.GetHalfExtent(1), 2.0, 1e-12);
    EXPECT_NEAR(box.GetHalfExtent(2), 1.0, 1e-12);
}

TEST(MeshQueryTool, BunnyTreePartitionsTrianglesIntoBoxedLeavesAlsoInCopies) {
    std::unique_ptr<TriMesh> mesh = zoltest::ImportMesh(zoltest::DataPath("meshes/bunny.off"));
    ASSERT_NE(mesh, nullptr);
    TriMesh& bunny = *mesh;
    MeshQueryTool tool;
    ASSERT_EQ(tool.Init(&bunny), RESULT_OK);
    MeshQueryTool copy;
    {
        MeshQueryTool original = tool;
        copy = original;
        EXPECT_NE(copy._GetTree(), original._GetTree());
    }
    const MeshQueryTree* reference = tool._GetTree();
    for (const MeshQueryTree* tree : {reference, copy._GetTree()}) {
        ASSERT_NE(tree, nullptr);
        EXPECT_EQ(tree->root, tree->nodes[0]);
        EXPECT_EQ(tree->root->depth, 0);
        std::vector<int> leafCount(bunny.GetTriangleCount(), 0);
        std::set<const TreeNode*> reached;
        Walk(bunny, tree->root, leafCount, reached);
        EXPECT_EQ(leafCount, std::vector<int>(bunny.GetTriangleCount(), 1));
        // The node list holds exactly the reachable allocated nodes, never the shared one.
        EXPECT_EQ(std::set<const TreeNode*>(tree->nodes.begin(), tree->nodes.end()), reached);
        EXPECT_EQ(reached.size(), tree->nodes.size());
        EXPECT_EQ(reached.count(TreeNode::SharedEmptyNode()), 0u);
        ASSERT_EQ(tree->nodes.size(), reference->nodes.size());
        for (size_t i = 0; i < tree->nodes.size(); ++i)
            EXPECT_EQ(tree->nodes[i]->triangles, reference->nodes[i]->triangles);
    }
    EXPECT_TRUE(TreeNode::SharedEmptyNode()->triangles.empty());
    EXPECT_EQ(copy._GetInitializedStatus(), RESULT_OK);
}
