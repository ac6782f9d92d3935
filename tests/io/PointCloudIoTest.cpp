// Point-cloud files: round trips of every format (values and bytes), the real scans and
// clouds with their known counts and values, the grid of a range scan, and malformed
// input that must fail with one log line instead of crashing or over-allocating.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <zol/core/PointCloud.h>
#include <zol/io/Parser.h>

#include "tests/common/TestData.h"

using namespace ZOL;

namespace {
using CloudPtr = std::unique_ptr<PointCloud>;

// A seeded cloud whose colours are multiples of 1/255, so byte formats keep them.
PointCloud MakeCloud(int n, bool normals, bool colors, unsigned seed = 5) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-10.0, 10.0);
    std::uniform_int_distribution<int> byte(0, 255);
    PointCloud cloud(normals, colors, false);
    for (int i = 0; i < n; ++i) {
        Vector3 p(u(rng), u(rng), u(rng) * 1e-3);
        Vector3 nrm(u(rng), u(rng), u(rng));
        nrm.Normalise();
        const int id = normals ? cloud.InsertPoint(p, nrm) : cloud.InsertPoint(p);
        if (colors) cloud.SetPointColor(id, Vector3(byte(rng), byte(rng), byte(rng)) / 255.0);
    }
    return cloud;
}

// A 6 x 4 grid with every other cell filled, in a scrambled insertion order.
PointCloud MakeGridCloud(bool normals, bool colors) {
    PointCloud cloud(normals, colors, true);
    cloud.InitGrid(6, 4);
    for (int k = 23; k >= 0; k -= 2) {
        const int x = k % 6, y = k / 6;
        cloud.SetGridCoord(x, y, Vector3(x * 0.1, y * 0.2, 1.0 / (k + 3)));
        if (normals) cloud.SetGridNormal(x, y, Vector3(0, 0, k % 4 == 1 ? 1 : -1));
        if (colors) cloud.SetPointColor(cloud.GetGridPointId(x, y), Vector3(k, 2 * k, 255) / 255.0);
    }
    return cloud;
}

void ExpectSameCloud(PointCloud& a, PointCloud& b, double colorTol = 0.0) {
    ASSERT_EQ(a.GetPointCount(), b.GetPointCount());
    ASSERT_EQ(a.HasNormal(), b.HasNormal());
    ASSERT_EQ(a.HasColor(), b.HasColor());
    for (int i = 0; i < a.GetPointCount(); ++i) {
        const Vector3 pa = a.GetPointCoord(i), pb = b.GetPointCoord(i);
        ASSERT_TRUE(pa.x == pb.x && pa.y == pb.y && pa.z == pb.z) << "point " << i;
        if (a.HasNormal()) {
            ASSERT_EQ(a.GetPointNormal(i).DistanceSquared(b.GetPointNormal(i)), 0.0);
        }
        if (a.HasColor()) {
            ASSERT_LE(a.GetPointColor(i).Distance(b.GetPointColor(i)), colorTol);
        }
    }
}
}  // namespace

TEST(PointCloudIo, EveryFormatRoundTripsValuesAndBytes) {
    struct Case {
        const char* extension;
        bool normals, colors;
        bool keepsNormals, keepsColors;
    };
    const Case cases[] = {
        {"asc", false, false, false, false}, {"asc", true, false, true, false},
        {"xyz", true, true, true, false},    {"xyzn", true, false, true, false},
        {"casc", false, true, false, true},  {"casc", true, true, true, true},
        {"obj", true, true, true, true},     {"obj", false, false, false, false},
        {"ply", true, true, true, true},     {"ply", false, true, false, true},
        {"zpc", true, true, true, true},     {"zpc", false, false, false, false},
        {"zbp", true, true, true, true},     {"zbp", false, true, false, true},
        {"y.ZBP", true, false, true, false},  // the last dot counts, in any case
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.extension) + (c.normals ? " normals" : "") +
                     (c.colors ? " colours" : ""));
        PointCloud cloud = MakeCloud(257, c.normals, c.colors);
        const std::string first = zoltest::ScratchPath(std::string("a.") + c.extension);
        const std::string second = zoltest::ScratchPath(std::string("b.") + c.extension);
        ASSERT_EQ(Parser::ExportPointCloud(first, &cloud), RESULT_OK);
        CloudPtr back(Parser::ImportPointCloud(first));
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(back->HasNormal(), c.keepsNormals);
        EXPECT_EQ(back->HasColor(), c.keepsColors);
        if (!c.keepsColors) cloud.SetHasColor(false);
        ExpectSameCloud(cloud, *back, 1e-15);
        ASSERT_EQ(Parser::ExportPointCloud(second, back.get()), RESULT_OK);
        EXPECT_EQ(zoltest::ReadFile(first), zoltest::ReadFile(second));

        PointCloud empty(c.normals, c.colors, false);
        ASSERT_EQ(Parser::ExportPointCloud(first, &empty), RESULT_OK);
        back.reset(Parser::ImportPointCloud(first));
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(back->GetPointCount(), 0);
    }
}

TEST(PointCloudIo, TextFormatsWriteShortestExactDigits) {
    PointCloud cloud;
    cloud.InsertPoint(Vector3(0.1, -2.5, 665187.522077));
    cloud.InsertPoint(Vector3(1e-300, 3, 0));
    const std::string path = zoltest::ScratchPath("p.asc");
    ASSERT_EQ(Parser::ExportPointCloud(path, &cloud), RESULT_OK);
    EXPECT_EQ(zoltest::ReadFile(path), "0.1 -2.5 665187.522077\n1e-300 3 0\n");

    PointCloud colored(false, true, false);
    colored.InsertPoint(Vector3(1, 2, 3));
    colored.SetPointColor(0, Vector3(1.0, 0.5, 51 / 255.0));
    const std::string casc = zoltest::ScratchPath("p.casc");
    ASSERT_EQ(Parser::ExportPointCloud(casc, &colored), RESULT_OK);
    EXPECT_EQ(zoltest::ReadFile(casc), "1 2 3 255 128 51\n");
    const std::string zpc = zoltest::ScratchPath("p.zpc");
    ASSERT_EQ(Parser::ExportPointCloud(zpc, &colored), RESULT_OK);
    EXPECT_EQ(zoltest::ReadFile(zpc), "ZPC 1\n1 0 1\n1 2 3 1 0.5 0.2\n");
}

TEST(PointCloudIo, GridCloudRoundTripsThroughZbgAndPly) {
    for (const char* extension : {"zbg", "ply"}) {
        SCOPED_TRACE(extension);
        PointCloud grid = MakeGridCloud(true, true);
        const std::string first = zoltest::ScratchPath(std::string("g.") + extension);
        const std::string second = zoltest::ScratchPath(std::string("h.") + extension);
        ASSERT_EQ(Parser::ExportGridPointCloud(first, &grid), RESULT_OK);
        CloudPtr back(Parser::ImportPointCloud(first));
        ASSERT_NE(back, nullptr);
        ASSERT_TRUE(back->HasGridTopology());
        EXPECT_EQ(back->GetWidth(), 6);
        EXPECT_EQ(back->GetHeight(), 4);
        EXPECT_EQ(back->GetValidGridCount(), 12);
        EXPECT_TRUE(back->HasColor());
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 6; ++x) {
                ASSERT_EQ(back->IsGridValid(x, y), grid.IsGridValid(x, y));
                if (!grid.IsGridValid(x, y)) continue;
                EXPECT_TRUE(back->GetGridCoord(x, y) == grid.GetGridCoord(x, y));
                EXPECT_TRUE(back->GetGridNormal(x, y) == grid.GetGridNormal(x, y));
                EXPECT_LE(back->GetPointColor(back->GetGridPointId(x, y))
                              .Distance(grid.GetPointColor(grid.GetGridPointId(x, y))),
                          1e-15);
            }
        }
        ASSERT_EQ(Parser::ExportGridPointCloud(second, back.get()), RESULT_OK);
        EXPECT_EQ(zoltest::ReadFile(first), zoltest::ReadFile(second));
    }
}

TEST(PointCloudIo, RealFilesLoadWithTheirCountsAttributesAndExactFirstValues) {
    // Text columns and ASCII PLY are read as doubles, not rounded to float.
    const struct {
        const char* file;
        int count;
        bool normals, colors;
        double x, y, z;  // the first point
    } cases[] = {
        {"clouds/Armadillo.ply", 38294, true, false, 5.894578, 11.7884, 27.28324},
        {"clouds/colored_cloud.ply", 1000, false, true, -0.855051517, -0.631508589, 1.46700001},
        {"clouds/milk_color.ply", 13704, false, true, -0.131607607, -0.2095429, 0.772000015},
        {"clouds/sac_plane_test.ply", 3283, false, false, 1.06799996, 0.0947209969, -0.0162310004},
        {"clouds/bun0.xyzn", 397, true, false, 0.00542159984, 0.11349, 0.0407489985},
        {"clouds/sac_plane_test.xyzn", 3268, true, false, 1.06799996, 0.0947209969, -0.0162310004},
        {"clouds/colored_cloud.xyzn", 1000, true, false, -0.855051517, -0.631508589, 1.46700001},
        // The last line has no line end.
        {"formats/xyz/points_cloudcompare.xyz", 101, false, true, 665187.522077, 5648349.895035,
         241.767693},
        {"formats/ply/tet.ply", 4, false, false, 0, -1, 1},
        {"formats/ply/test_sample_ascii.ply", 7, false, false, 0, 8.40703, 0},
        {"formats/ply/fuze_ascii.ply", 502, false, true, 0.002047, -0.002871, 0.004031},
        {"formats/obj/cube_with_vertexcolors.obj", 8, false, true, 0, 0, 0},
    };
    std::map<std::string, CloudPtr> loaded;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        CloudPtr& cloud = loaded[c.file];
        cloud.reset(Parser::ImportPointCloud(zoltest::DataPath(c.file)));
        ASSERT_NE(cloud, nullptr);
        EXPECT_EQ(cloud->GetPointCount(), c.count);
        EXPECT_EQ(cloud->HasNormal(), c.normals);
        EXPECT_EQ(cloud->HasColor(), c.colors);
        EXPECT_FALSE(cloud->HasGridTopology());
        const Vector3 p = cloud->GetPointCoord(0);
        EXPECT_TRUE(p.x == c.x && p.y == c.y && p.z == c.z);
    }
    EXPECT_EQ(loaded["formats/xyz/points_cloudcompare.xyz"]->GetPointColor(0).x, 117 / 255.0);
    EXPECT_EQ(loaded["clouds/colored_cloud.ply"]->GetPointColor(0).y, 109 / 255.0);
    EXPECT_EQ(loaded["clouds/bun0.xyzn"]->GetPointNormal(0).z, -0.876099467);
    EXPECT_EQ(loaded["clouds/Armadillo.ply"]->GetPointNormal(0).y, 0.45391);
    // A range scan fills the grid of its "range_grid" element.
    CloudPtr scan(Parser::ImportPointCloud(zoltest::DataPath("bunny/bun000.ply")));
    ASSERT_NE(scan, nullptr);
    ASSERT_TRUE(scan->HasGridTopology());
    EXPECT_EQ(scan->GetWidth(), 512);   // obj_info num_cols
    EXPECT_EQ(scan->GetHeight(), 400);  // obj_info num_rows
    EXPECT_EQ(scan->GetPointCount(), 40256);
    EXPECT_EQ(scan->GetValidGridCount(), 40256);
    // The first vertex is listed in range_grid line 13952 = 27 * 512 + 128.
    ASSERT_TRUE(scan->IsGridValid(128, 27));
    const Vector3 p = scan->GetGridCoord(128, 27);
    EXPECT_TRUE(p.x == -0.06325 && p.y == 0.0359793 && p.z == 0.0420873);
    EXPECT_FALSE(scan->IsGridValid(0, 0));
}

TEST(PointCloudIo, DispatchFailuresHaveTheirStatusAndLine) {
    zoltest::LogCapture log;
    PointCloud cloud = MakeCloud(3, false, false);
    EXPECT_EQ(Parser::ImportPointCloud("nodot"), nullptr);
    EXPECT_EQ(Parser::ImportPointCloud("cloud.pcd"), nullptr);
    EXPECT_EQ(Parser::ImportPointCloud("missing.zpc"), nullptr);
    EXPECT_EQ(Parser::ExportPointCloud("nodot", &cloud), RESULT_INVALID_INPUT);
    EXPECT_EQ(Parser::ExportPointCloud("a.pcd", &cloud), RESULT_FAIL);
    EXPECT_EQ(Parser::ExportPointCloud("a.zpc", nullptr), RESULT_INVALID_INPUT);
    EXPECT_EQ(Parser::ExportPointCloud("no/such/dir/a.zpc", &cloud), RESULT_INVALID_INPUT);
    EXPECT_EQ(Parser::ExportGridPointCloud("a.zbg", nullptr), RESULT_INVALID_INPUT);
    EXPECT_EQ(Parser::ExportGridPointCloud("a.zbg", &cloud), RESULT_INVALID_INPUT);  // 0 x 0
    PointCloud grid = MakeGridCloud(false, false);
    EXPECT_EQ(Parser::ExportGridPointCloud("a.asc", &grid), RESULT_FAIL);
    const std::vector<std::string> expected = {
        "Parser::ImportPointCloud: invalid fileName: nodot",
        "Parser::ImportPointCloud: non support format: cloud.pcd",
        "Parser::ImportPointCloud: can not open file: missing.zpc",
        "Parser::ExportPointCloud: invalid fileName: nodot",
        "Parser::ExportPointCloud: not support format",
        "Parser::ExportPointCloud: pointCloud is NULL",
        "ExportPointCloudByZPC: file could not open",
        "Parser::ExportGridPointCloud: gridPointCloud is NULL",
        "Parser::ExportGridPointCloud: invalid grid size 0 x 0",
        "Parser::ExportGridPointCloud: not support format",
    };
    EXPECT_EQ(log.Lines(), expected);
}

TEST(PointCloudIo, MalformedFilesFailWithOneLogLine) {
    std::string zbp("ZBPC\1\0\0\0\1\0\0\0\0\0\0\0", 16);
    const std::string zbpHugeCount = zbp + std::string("\xff\xff\xff\xff\xff\xff\xff\x0f", 8);
    std::string zbpOne = zbp + std::string("\1\0\0\0\0\0\0\0", 8) + std::string(48, '\0');
    const std::string zbpTruncated = zbpOne.substr(0, zbpOne.size() - 1);
    std::string zbg("ZBGC\1\0\0\0\0\0\0\0", 12);
    const std::string zbgCellMap =  // 8192 x 8192 needs its cell map, a 32-byte file cannot
        zbg + std::string("\0\x20\0\0\0\x20\0\0", 8) + std::string(12, '\0');
    const std::string zbgTwoPoints =
        zbg + std::string("\2\0\0\0\2\0\0\0\0\0\0\0", 12) + std::string("\2\0\0\0\0\0\0\0", 8);
    const std::string zbgDuplicate =
        zbgTwoPoints + std::string("\3\0\0\0\3\0\0\0", 8) + std::string(48, '\0');
    const std::string zbgOutside =
        zbgTwoPoints + std::string("\3\0\0\0\4\0\0\0", 8) + std::string(48, '\0');
    const std::string plyHeader = "ply\nformat ascii 1.0\nelement vertex ";
    const std::string plyXyz = "\nproperty float x\nproperty float y\nproperty float z\n";
    struct Case {
        const char* name;
        std::string bytes;
        std::string line;
    };
    const Case cases[] = {
        {"bad.zbp", "ZBPX", "ImportPointCloudByZBP: missing ZBPC magic word"},
        {"version.zbp", std::string("ZBPC\2\0\0\0", 8) + std::string(16, '\0'),
         "ImportPointCloudByZBP: unsupported version: 2"},
        {"huge.zbp", zbpHugeCount,
         "ImportPointCloudByZBP: point count 1152921504606846975 does not match the file size 24"},
        {"cut.zbp", zbpTruncated,
         "ImportPointCloudByZBP: point count 1 does not match the file size 71"},
        {"map.zbg", zbgCellMap, "ImportPointCloudByZBG: invalid grid size 8192 x 8192"},
        {"dup.zbg", zbgDuplicate, "ImportPointCloudByZBG: grid cell used twice: 3"},
        {"out.zbg", zbgOutside, "ImportPointCloudByZBG: grid cell out of range: 4"},
        {"magic.zpc", "ZPX 1\n0 0 0\n", "ImportPointCloudByZPC: missing ZPC magic word"},
        {"short.zpc", "ZPC 1\n2 0 0\n1 2 3\n",
         "ImportPointCloudByZPC: file ends after 1 of 2 points"},
        {"cols.zpc", "ZPC 1\n1 1 0\n1 2 3\n", "ImportPointCloudByZPC: invalid point in line 3"},
        {"flags.zpc", "ZPC 1\n1 2 0\n1 2 3\n", "ImportPointCloudByZPC: invalid count line"},
        {"garbage.asc", "1 2 3\n4 five 6\n", "ImportPointCloudByASC: invalid number in line 2"},
        {"ragged.asc", "1 2 3\n4 5 6 7\n",
         "ImportPointCloudByASC: line 2 has 4 values, expected 3"},
        {"binary.xyz", std::string("\x7f\x45\x4c\x46\0\0", 6),
         "ImportPointCloudByASC: invalid number in line 1"},
        {"noply.ply", "plx\n", "ImportPointCloudByPLY: missing ply magic word"},
        {"noend.ply", plyHeader + "1" + plyXyz, "ImportPointCloudByPLY: missing end_header"},
        {"cut.ply", plyHeader + "2" + plyXyz + "end_header\n1 2 3\n4 5\n",
         "ImportPointCloudByPLY: unexpected end of data or invalid value in element vertex"},
        {"list.ply",
         plyHeader + "1" + plyXyz +
             "element face 1\nproperty list uint int vertex_indices\nend_header\n1 2 3\n"
             "4000000000 1 2\n",
         "ImportPointCloudByPLY: unexpected end of data or invalid value in element face"},
        {"bin.ply",
         "ply\nformat binary_little_endian 1.0\nelement vertex 2" + plyXyz + "end_header\n" +
             std::string(20, '\0'),
         "ImportPointCloudByPLY: element vertex count 2 exceeds the file size"},
        {"noxyz.ply", plyHeader + "1\nproperty float nx\nend_header\n1\n",
         "ImportPointCloudByPLY: vertex element lacks x, y or z"},
        {"vobj.obj", "v 1 2\n", "ImportPointCloudByOBJ: invalid vertex in line 1"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = zoltest::ScratchPath(c.name);
        zoltest::WriteFile(path, c.bytes);
        zoltest::LogCapture log;
        EXPECT_EQ(Parser::ImportPointCloud(path), nullptr);
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
    }
}

TEST(PointCloudIo, RangeScanGridWithoutPointsIsRead) {
    const std::string path = zoltest::ScratchPath("empty_scan.zbg");
    zoltest::WriteFile(
        path, std::string("ZBGC\1\0\0\0\0\0\0\0\0\2\0\0\x90\1\0\0", 20) + std::string(12, '\0'));
    CloudPtr empty(Parser::ImportPointCloud(path));
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(empty->GetWidth(), 512);
    EXPECT_EQ(empty->GetHeight(), 400);
    EXPECT_EQ(empty->GetPointCount(), 0);
}

TEST(PointCloudIo, ExtraColumnsAreNormalsOrColoursByValueAndNonFiniteValuesAreDropped) {
    const char* nanText =
        "# comment\n1 2 3 0 0 1\nnan 2 3 0 0 1\n4 5 6 nan 0.6 0.8\n7 8 1e999 0 0 1\n";
    const char* dropped = "ImportPointCloudByASC: dropped points with non-finite coordinates: 2";
    const struct {
        const char* name;
        const char* text;
        bool normals, colors;
        Vector3 second;              // the normal or colour of the second point
        const char* line = nullptr;  // logged, if any
    } cases[] = {
        // Points with a non-finite coordinate are dropped; a non-finite normal entry is 0.
        {"nan.asc", nanText, true, false, {0, 0.6, 0.8}, dropped},
        {"n.asc", "0 0 0 0 0 1\n1 1 1 0.6 0.8 0\n", true, false, {0.6, 0.8, 0}},
        {"c.xyz", "0 0 0 255 0 1\n1 1 1 12 200 30\n", false, true, Vector3(12, 200, 30) / 255.0},
        {"f.xyzrgb", "0 0 0 0.5 0.25 1\n1 1 1 0.5 0.25 1\n", false, true, {0.5, 0.25, 1}},
        {"partial.obj", "# points\nv 1 2 3 1 0 0\nv 4 5 6\nvn 0 0 1\nf 1 2 1\n", false, false, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = zoltest::ScratchPath(c.name);
        zoltest::WriteFile(path, c.text);
        zoltest::LogCapture log;
        CloudPtr cloud(Parser::ImportPointCloud(path));
        ASSERT_NE(cloud, nullptr);
        EXPECT_EQ(log.Lines(),
                  c.line ? std::vector<std::string>{c.line} : std::vector<std::string>{});
        EXPECT_EQ(cloud->GetPointCount(), 2);
        EXPECT_EQ(cloud->HasNormal(), c.normals);
        EXPECT_EQ(cloud->HasColor(), c.colors);
        const Vector3 attribute = c.normals  ? cloud->GetPointNormal(1)
                                  : c.colors ? cloud->GetPointColor(1)
                                             : Vector3();
        EXPECT_EQ(attribute, c.second);
    }
}
