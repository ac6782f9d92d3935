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

TEST(PointList, ListsReadThroughToTheirSourceAndFlatCopiesAgreeWithPerPointReads) {
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
    // Lists read their source when asked, and sampled lists map positions to indices.
    cloud.SetPointCoord(6, Vector3(4, 4, 4));
    EXPECT_EQ(sampledCloud.GetPointCoord(0), Vector3(4, 4, 4));
    EXPECT_EQ(sampledShifted.GetPointNormal(1), Vector3(0, -2, 0));
    EXPECT_EQ(sampledHost.GetPointCount(), 4);
    stored.SetVertexNormal(3, Vector3(1, 0, 0));
    EXPECT_EQ(storedList.GetPointNormal(3), Vector3(1, 0, 0));
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
    EXPECT_EQ(TriMeshPointList(nullptr).GetPointCount() +
                  PointCloudPointList(nullptr).GetPointCount() +
                  SampledPointList(nullptr, {1, 2}).GetPointCount(),
              0);
}
