// A host keeping points and meshes in containers of its own (tests/common/HostContainers)
// gets from every algorithm family exactly what the library's PointCloud and TriMesh get.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <zol/runtime/Constants.h>

#include "tests/common/OperationTable.h"

namespace {

using zoltest::Operation;
using zoltest::Outcome;

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
