// Point lists over clouds, meshes and subsets, and their flat coordinate copies.
#include <gtest/gtest.h>

#include <vector>

#include <zol/core/IPointList.h>
#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>

#include "tests/common/HostContainers.h"
#include "tests/common/MeshFactory.h"

using namespace ZOL;

namespace {

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
    zoltest::HostCloud host;
    host.SetHasNormal(true);
    ShiftedCloud shifted;
    TriMesh stored;
    zoltest::HostMesh mesh;
    for (int i = 0; i < 7; ++i) {
        const Vector3 p(i * 0.5, i * i, -i);
        cloud.InsertPoint(p, Vector3(0, i, 0));
        host.InsertPoint(p, Vector3(1, 0, i));
        shifted.InsertPoint(p, Vector3(0, i, 0));
        mesh.InsertVertex(p);
        stored.InsertVertex(p);
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
