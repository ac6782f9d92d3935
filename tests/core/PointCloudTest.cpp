// PointCloud: points with optional normals and colours, and the grid bookkeeping that
// keeps the cell-to-point and point-to-cell maps consistent.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include <zol/core/PointCloud.h>

#include "tests/common/MeshFactory.h"

using namespace ZOL;

namespace {

/// Checks both grid maps against each other: every point's cell points back to it and
/// every occupied cell's point lives in that cell.
void ExpectMapsConsistent(const PointCloud& cloud) {
    int occupied = 0, withCell = 0;
    for (int c = 0; c < cloud.GetWidth() * cloud.GetHeight(); ++c) {
        const int x = c % cloud.GetWidth(), y = c / cloud.GetWidth(),
                  p = cloud.GetGridPointId(x, y);
        EXPECT_EQ(p >= 0, cloud.IsGridValid(x, y));
        if (p < 0) continue;
        ++occupied;
        ASSERT_LT(p, cloud.GetPointCount());
        EXPECT_EQ(cloud.GetPointGridId(p), c);
    }
    for (int p = 0; p < cloud.GetPointCount(); ++p) withCell += cloud.GetPointGridId(p) >= 0;
    EXPECT_EQ(occupied, withCell);
}

}  // namespace

TEST(PointCloud, InsertPointReturnsItsIndexAndFlagsGrowTheirArrays) {
    PointCloud cloud(true, false, false);
    EXPECT_EQ(cloud.InsertPoint(Vector3(1, 2, 3), Vector3(0, 0, 1)), 0);
    EXPECT_EQ(cloud.InsertPoint(Vector3(4, 5, 6)), 1);
    EXPECT_EQ(cloud.GetPointCoord(1), Vector3(4, 5, 6));
    EXPECT_EQ(cloud.GetPointNormal(0), Vector3(0, 0, 1));
    EXPECT_EQ(cloud.GetPointNormal(1), Vector3(0, 0, 0));

    PointCloud plain;
    plain.InsertPoint(Vector3(1, 0, 0));
    plain.InsertPoint(Vector3(2, 0, 0));
    EXPECT_EQ(plain.GetPointNormalData(), nullptr);
    plain.SetPointNormal(0, Vector3(1, 0, 0));  // normals off: ignored
    plain.SetHasNormal(true);
    plain.SetHasColor(true);
    EXPECT_EQ(plain.GetPointNormal(0), Vector3(0, 0, 0));
    EXPECT_EQ(plain.GetPointColor(1), Vector3(0, 0, 0));
    plain.SetDefaultColor(Vector3(0.25, 0.5, 0.75));
    EXPECT_EQ(plain.GetPointColor(1), Vector3(0.25, 0.5, 0.75));
    plain.InsertPoint(Vector3(3, 0, 0));
    EXPECT_EQ(plain.GetPointColor(2), Vector3(0, 0, 0));
}

TEST(PointCloud, GridCellsFillOnceThenOverwriteAndIndicesOutsideAreIgnored) {
    PointCloud cloud(true, true, false);
    cloud.InsertPoint(Vector3(1, 1, 1));
    cloud.InitGrid(4, 3);
    EXPECT_TRUE(cloud.HasGridTopology());
    EXPECT_EQ(cloud.GetPointCount() + cloud.GetValidGridCount(), 0);
    cloud.SetGridCoord(2, 1, Vector3(1, 2, 3));
    ASSERT_EQ(cloud.GetPointCount(), 1);
    EXPECT_EQ(cloud.GetGridPointId(2, 1), 0);
    EXPECT_EQ(cloud.GetPointGridId(0), 6);
    EXPECT_EQ(cloud.GetPointNormal(0), Vector3(0, 0, 0));
    EXPECT_EQ(cloud.GetPointColor(0), Vector3(0, 0, 0));
    cloud.SetGridCoord(2, 1, Vector3(4, 5, 6));
    cloud.SetGridNormal(2, 1, Vector3(0, 1, 0));
    cloud.SetGridNormal(0, 0, Vector3(1, 0, 0));  // empty cell: ignored
    EXPECT_EQ(cloud.GetGridCoord(2, 1), Vector3(4, 5, 6));
    EXPECT_EQ(cloud.GetGridNormal(2, 1), Vector3(0, 1, 0));
    // The cell index is y * width + x: (-1, 0) is negative, (0, 3) is past the end, while
    // (4, 2) wraps to cell 12, past the end too.
    for (const auto& [x, y] :
         std::vector<std::pair<int, int>>{{-1, 0}, {0, -1}, {0, 3}, {12, 0}, {4, 2}}) {
        EXPECT_FALSE(cloud.IsGridValid(x, y)) << x << "," << y;
        EXPECT_EQ(cloud.GetGridPointId(x, y), -1) << x << "," << y;
        cloud.SetGridCoord(x, y, Vector3(9, 9, 9));
    }
    EXPECT_EQ(cloud.GetPointCount(), 1);
    ExpectMapsConsistent(cloud);
}

TEST(PointCloud, InvalidateMovesTheLastPointIntoTheHole) {
    PointCloud cloud(true, true, false);
    cloud.InitGrid(3, 2);
    for (int i = 0; i < 6; ++i) {
        cloud.SetGridCoord(i % 3, i / 3, Vector3(i, 0, 0));
        cloud.SetPointNormal(i, Vector3(0, 0, i));
        cloud.SetPointColor(i, Vector3(i / 10.0, 0, 0));
    }
    cloud.InvalidateGrid(1, 0);  // point 1
    cloud.InvalidateGrid(1, 0);  // already empty: nothing happens
    ASSERT_EQ(cloud.GetPointCount(), 5);
    // Point 5 (cell (2, 1)) now sits at index 1 with all its attributes.
    EXPECT_EQ(cloud.GetGridPointId(2, 1), 1);
    EXPECT_EQ(cloud.GetPointCoord(1), Vector3(5, 0, 0));
    EXPECT_EQ(cloud.GetPointNormal(1), Vector3(0, 0, 5));
    EXPECT_EQ(cloud.GetPointColor(1), Vector3(0.5, 0, 0));
    ExpectMapsConsistent(cloud);
    for (int c = 0; c < 6; ++c) cloud.InvalidateGrid(c % 3, c / 3);
    EXPECT_EQ(cloud.GetPointCount(), 0);
    ExpectMapsConsistent(cloud);
}

TEST(PointCloud, SwapPopbackAndResizeKeepTheMapsConsistentAndCopiesAreDeep) {
    PointCloud cloud(true, false, false);
    cloud.InitGrid(5, 4);
    for (int c = 0; c < 20; c += 2) cloud.SetGridCoord(c % 5, c / 5, Vector3(c, 0, 0));
    cloud.InsertPoint(Vector3(-1, 0, 0));  // a point without a cell
    PointCloud copy(cloud), assigned;
    assigned = cloud;
    for (const auto& [a, b] :
         std::vector<std::pair<int, int>>{{0, 9}, {3, 10}, {10, 4}, {7, 7}, {1, 8}}) {
        cloud.SwapPoint(a, b);
        ExpectMapsConsistent(cloud);
    }
    // Each coordinate still sits in the cell it was written to.
    for (int c = 0; c < 20; c += 2) EXPECT_EQ(cloud.GetGridCoord(c % 5, c / 5).x, c);
    // The cell-less point went 10 -> 3 and kept having no cell.
    EXPECT_EQ(cloud.GetPointCoord(3).x, -1);
    EXPECT_EQ(cloud.GetPointGridId(3), -1);
    cloud.PopbackPoints(4);
    EXPECT_EQ(cloud.GetPointCount(), 7);
    EXPECT_EQ(cloud.GetValidGridCount(), 7);
    ExpectMapsConsistent(cloud);
    // Resizing shrinks like popping and grows by cell-less points at the origin.
    cloud.ResizePoint(5);
    EXPECT_EQ(cloud.GetValidGridCount(), 5);
    ExpectMapsConsistent(cloud);
    cloud.ResizePoint(7);
    ASSERT_EQ(cloud.GetPointCount(), 7);
    EXPECT_EQ(cloud.GetPointCoord(6), Vector3(0, 0, 0));
    EXPECT_EQ(cloud.GetPointNormal(6), Vector3(0, 0, 0));
    EXPECT_EQ(cloud.GetPointGridId(6), -1);
    ExpectMapsConsistent(cloud);
    // Clear empties the cells but keeps the grid's size; popping more is clamped.
    cloud.Clear();
    cloud.PopbackPoints(100);
    EXPECT_EQ(cloud.GetPointCount() + cloud.GetValidGridCount(), 0);
    EXPECT_TRUE(cloud.HasGridTopology());
    ExpectMapsConsistent(cloud);
    for (PointCloud* c : {&copy, &assigned}) {
        EXPECT_EQ(c->GetPointCount(), 11);
        EXPECT_EQ(c->GetPointCoord(0).x, 0);
        EXPECT_EQ(c->GetGridCoord(3, 3).x, 18);
        EXPECT_TRUE(c->HasNormal());
    }
    cloud.ClearGridTopologyInfo();
    EXPECT_FALSE(cloud.HasGridTopology());
    EXPECT_EQ(cloud.GetWidth(), 0);
}

TEST(PointCloud, UnifyCoordsCentresTheBoxAndScalesItsLargestHalfExtent) {
    PointCloud cloud;
    cloud.InsertPoint(Vector3(1, 1, 1));
    cloud.InsertPoint(Vector3(5, 2, 3));  // box centre (3, 1.5, 2), largest half-extent 2
    double scale = 0;
    Vector3 centre;
    cloud.UnifyCoords(1.0, &scale, &centre);
    EXPECT_DOUBLE_EQ(scale, 0.5);
    EXPECT_EQ(centre, Vector3(3, 1.5, 2));
    EXPECT_EQ(cloud.GetPointCoord(0), Vector3(-1, -0.25, -0.5));
    EXPECT_EQ(cloud.GetPointCoord(1), Vector3(1, 0.25, 0.5));
    PointCloud other;
    other.InsertPoint(Vector3(3, 1.5, 4));
    other.UnifyCoords(scale, centre);
    EXPECT_EQ(other.GetPointCoord(0), Vector3(0, 0, 1));
    PointCloud single;
    single.InsertPoint(Vector3(2, 2, 2));
    single.UnifyCoords(1.0, &scale, nullptr);
    EXPECT_DOUBLE_EQ(scale, 1.0);
    EXPECT_EQ(single.GetPointCoord(0), Vector3(0, 0, 0));
}
