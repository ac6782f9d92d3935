// The binary STL writer reads our own mesh in place and a host's mesh through the
// interface: both paths must give the same bytes.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <zol/core/TriMesh.h>
#include <zol/io/Parser.h>

#include "tests/common/HostContainers.h"
#include "tests/common/TestData.h"

using namespace ZOL;

TEST(StlWriter, HostMeshAndTriMeshGiveTheSameBytes) {
    std::unique_ptr<TriMesh> bunny(Parser::ImportTriMesh(zoltest::DataPath("meshes/bunny.off")));
    ASSERT_NE(bunny, nullptr);
    bunny->UpdateNormal();
    zoltest::HostMesh host(*bunny);
    const std::string own = zoltest::ScratchPath("own.stl");
    const std::string hosted = zoltest::ScratchPath("host.stl");
    ASSERT_EQ(Parser::ExportTriMesh(own, bunny.get()), 0);
    ASSERT_EQ(Parser::ExportTriMesh(hosted, &host), 0);
    const std::string bytes = zoltest::ReadFile(own);
    EXPECT_EQ(bytes.size(), 84u + 50u * 6966u);
    EXPECT_EQ(bytes, zoltest::ReadFile(hosted));
}
