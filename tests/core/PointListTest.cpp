// Point lists over clouds, meshes and subsets, and their flat coordinate copies.
#include <gtest/gtest.h>

#include <vector>

#include <zol/core/IPointList.h>
#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/MeshHelpers.h"

using namespace ZOL;

namespace {

/// A host cloud that is not a PointCloud, to exercise the generic copy path.
class HostCloud : public IPointCloud {
public:
    std::vector<Vector3> coords;
    int GetPointCount() const override { return static_cast<int>(coords.size()); }
    Vector3 GetPointCoord(int i) override { return coords[i]; }
    void SetPointCoord(int i, const Vector3& c) override { coords[i] = c; }
    Vector3 GetPointNormal(int) override { return Vector3(0, 0, 1); }
    void SetPointNormal(int, const Vector3&) override {}
    bool HasNormal() const override { return true; }
    void SetHasNormal(bool) override {}
    int InsertPoint(const Vector3& c, const Vector3&) override { return InsertPoint(c); }
    int InsertPoint(const Vector3& c) override {
        coords.push_back(c);
        return GetPointCount() - 1;
    }
    void SwapPoint(int, int) override {}
    void PopbackPoints(int) override {}
    void Clear() override { coords.clear(); }
};

/// A host cloud built on PointCloud that serves its points moved: its reads, not the
/// stored arrays, are what a list over it must see.
class ShiftedCloud : public PointCloud {
public:
    ShiftedCloud() : PointCloud(true, false, false) {}
    Vector3 GetPointCoord(int i) override {
        return PointCloud::GetPointCoord(i) + Vector3(9, 0, 0);
    }
    Vector3 GetPointNormal(int i) override { return PointCloud::GetPointNormal(i) * -1.0; }
};

}  // namespace

TEST(PointList, ListsReadThroughToTheirSourceAndSampledListsMapTheirIndices) {
    PointCloud cloud(true, false, false);
    cloud.InsertPoint(Vector3(1, 2, 3), Vector3(0, 1, 0));
    PointCloudPointList list(&cloud);
    cloud.SetPointCoord(0, Vector3(4, 4, 4));
    EXPECT_EQ(list.GetPointCount(), 1);
    EXPECT_EQ(list.GetPointCoord(0), Vector3(4, 4, 4));
    EXPECT_EQ(list.GetPointNormal(0), Vector3(0, 1, 0));

    TriMesh mesh;
    for (int i = 0; i < 5; ++i) mesh.InsertVertex(Vector3(i, -i, 0));
    mesh.SetVertexNormal(3, Vector3(1, 0, 0));
    TriMeshPointList meshList(&mesh);
    SampledPointList sampled(&meshList, {3, 0, 3});
    EXPECT_EQ(sampled.GetPointCount(), 3);
    EXPECT_EQ(sampled.GetPointCoord(0), Vector3(3, -3, 0));
    EXPECT_EQ(sampled.GetPointCoord(1), Vector3(0, 0, 0));
    EXPECT_EQ(sampled.GetPointNormal(2), Vector3(1, 0, 0));
    EXPECT_EQ(TriMeshPointList(nullptr).GetPointCount() +
                  PointCloudPointList(nullptr).GetPointCount() +
                  SampledPointList(nullptr, {1, 2}).GetPointCount(),
              0);
}

TEST(PointList, FlatCopiesAgreeWithPerPointReadsOnEverySource) {
    PointCloud cloud(true, false, false);
    HostCloud host;
    ShiftedCloud shifted;
    TriMesh stored;
    zoltest::ForwardingMesh mesh(stored);
    for (int i = 0; i < 7; ++i) {
        const Vector3 p(i * 0.5, i * i, -i);
        cloud.InsertPoint(p, Vector3(0, i, 0));
        host.InsertPoint(p);
        shifted.InsertPoint(p, Vector3(0, i, 0));
        mesh.InsertVertex(p);
    }
    PointCloudPointList cloudList(&cloud);
    PointCloudPointList hostList(&host);
    PointCloudPointList shiftedList(&shifted);
    TriMeshPointList meshList(&mesh);
    TriMeshPointList storedList(&stored);
    SampledPointList sampledCloud(&cloudList, {6, 1, 1, 0});
    SampledPointList sampledHost(&hostList, {6, 1, 1, 0});
    SampledPointList sampledShifted(&shiftedList, {5, 2});
    for (IPointList* list :
         std::vector<IPointList*>{&cloudList, &hostList, &shiftedList, &meshList, &storedList,
                                  &sampledCloud, &sampledHost, &sampledShifted}) {
        std::vector<double> xyz{42.0}, nxyz;
        CopyPointListCoords(list, &xyz);
        CopyPointListNormals(list, &nxyz);
        ASSERT_EQ(xyz.size(), 3u * list->GetPointCount());
        ASSERT_EQ(nxyz.size(), xyz.size());
        for (int i = 0; i < list->GetPointCount(); ++i) {
            const Vector3 p = list->GetPointCoord(i);
            const Vector3 n = list->GetPointNormal(i);
            EXPECT_EQ(Vector3(xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]), p);
            EXPECT_EQ(Vector3(nxyz[3 * i], nxyz[3 * i + 1], nxyz[3 * i + 2]), n);
        }
    }
    std::vector<double> xyz{1.0};
    CopyPointListCoords(nullptr, &xyz);
    EXPECT_TRUE(xyz.empty());
}
