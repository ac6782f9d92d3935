// A host that keeps its points and meshes in containers of its own (tests/common
// HostContainers: separate arrays per component, reached only through IPointCloud and
// ITriMesh) gets from every algorithm family exactly what the library's PointCloud and
// TriMesh get: no algorithm relies on the library's own container.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <zol/pointcloud/ConsolidatePointCloud.h>
#include <zol/runtime/Constants.h>

#include "tests/common/HostContainers.h"
#include "tests/common/OperationTable.h"
#include "tests/common/PointData.h"

namespace {

using zoltest::Operation;
using zoltest::Outcome;

TEST(HostContainer, HostCloudTakesNormalsFromTheLibrary) {
    zoltest::HostCloud cloud(zoltest::RandomPoints(200, 3));
    ASSERT_EQ(ZOL::ConsolidatePointCloud::CalculatePointCloudNormal(&cloud, 8), ZOL::RESULT_OK);
    EXPECT_TRUE(cloud.HasNormal());
    EXPECT_NEAR(cloud.GetPointNormal(0).Length(), 1.0, 1e-12);
}

std::vector<std::string> Families() {
    std::vector<std::string> families;
    for (const Operation& operation : zoltest::Operations()) {
        if (families.empty() || families.back() != operation.family)
            families.push_back(operation.family);
    }
    return families;
}

class HostContainerFamily : public ::testing::TestWithParam<std::string> {};

TEST_P(HostContainerFamily, GivesTheResultsOfTheLibraryContainers) {
    int rows = 0;
    for (const Operation& operation : zoltest::Operations()) {
        if (GetParam() != operation.family) continue;
        SCOPED_TRACE(operation.name);
        ++rows;
        const Outcome expected = operation.run(zoltest::LibraryContainers());
        for (int status : expected.statuses) EXPECT_EQ(status, ZOL::RESULT_OK);
        EXPECT_FALSE(expected.values.empty() && expected.bytes.empty());
        EXPECT_EQ(zoltest::Difference(expected, operation.run(zoltest::HostContainers())), "");
    }
    EXPECT_GT(rows, 0);
}

INSTANTIATE_TEST_SUITE_P(Families,
                         HostContainerFamily,
                         ::testing::ValuesIn(Families()),
                         [](const ::testing::TestParamInfo<std::string>& row) {
                             return row.param;
                         });

}  // namespace
