// Dump files: names from the clock, tag and counter; the one-shot switch; the exact text
// of record bodies; the record table; and loading of damaged or hostile files.
#include <gtest/gtest.h>

#include <ctime>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <typeinfo>

#include <zol/dump/DumpBase.h>
#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/io/Parser.h>
#include <zol/mesh/FillMeshHole.h>
#include <zol/mesh/MeshQueryTool.h>
#include <zol/mesh/OptimiseCurve.h>
#include <zol/mesh/SubdivideMesh.h>
#include <zol/pointcloud/ConsolidatePointCloud.h>
#include <zol/pointcloud/FitPointCloud.h>
#include <zol/pointcloud/FusePointCloud.h>
#include <zol/pointcloud/SamplePointCloud.h>
#include <zol/pointcloud/SumPointCloud.h>
#include <zol/registration/RegistratePointCloud.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/PointCloudInfo.h>

#include "tests/common/DumpFiles.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

// The triangle (0,0,0), (1,0,0), (0,0.1,0): 0.1 shows the 20 significant digits.
TriMesh SmallMesh() {
    TriMesh mesh;
    mesh.InsertVertex(Vector3(0, 0, 0));
    mesh.InsertVertex(Vector3(1, 0, 0));
    mesh.InsertVertex(Vector3(0, 0.1, 0));
    mesh.InsertTriangle(0, 1, 2);
    return mesh;
}

const char kSmallMeshText[] = "3\n0 0 0\n1 0 0\n0 0.10000000000000000555 0\n1\n0 1 2\n";

// The ctime layout built independently: "Sat Nov  4 19:43:00 2026" with blanks as "_"
// and ":" as "-".
std::string Stamp(std::time_t t) {
    char text[64];
    std::strftime(text, sizeof(text), "%a_%b_%e_%H-%M-%S_%Y", std::localtime(&t));
    std::string s = text;
    for (char& c : s)
        if (c == ' ') c = '_';
    return s;
}

std::string WriteText(const std::string& name, const std::string& text) {
    std::ofstream(name, std::ios::binary) << text;
    return name;
}

// A recorded call and the exact body of its dump file.
// clang-format off
#define RECORDED(name, body, ...) {name, [&] { return __VA_ARGS__; }, body}
// clang-format on

}  // namespace

TEST(DumpBase, FileNameIsClockTagCounterAndExtension) {
    zoltest::DumpDirScope dir;
    const int counter = DumpBase::APICalledTime;
    TriMesh mesh = SmallMesh();
    int status = 0;
    const std::time_t before = std::time(nullptr);
    const auto first = zoltest::RecordCall(
        [&] {
            return FillMeshHole::FillHoles(&mesh, nullptr, FILL_MESH_HOLE_FLAT, nullptr, nullptr);
        },
        &status);
    // The tag without a trailing underscore runs into the counter.
    const auto second = zoltest::RecordCall(
        [&] { return SubdivideMesh::InsertPointsOnMesh(&mesh, {}, nullptr); }, &status);
    const std::time_t after = std::time(nullptr);
    ASSERT_EQ(first.size(), 1u);
    ASSERT_EQ(second.size(), 1u);
    const std::string tail0 = "_Mesh_FillHole_" + std::to_string(counter) + ".dump";
    const std::string tail1 =
        "_Mesh_Subdivision_Insert_Point_On_Mesh" + std::to_string(counter + 1) + ".dump";
    std::set<std::string> names0, names1;
    for (std::time_t t = before; t <= after; ++t) {
        names0.insert(Stamp(t) + tail0);
        names1.insert(Stamp(t) + tail1);
    }
    EXPECT_TRUE(names0.count(first[0])) << first[0];
    EXPECT_TRUE(names1.count(second[0])) << second[0];
    EXPECT_EQ(DumpBase::APICalledTime, counter + 2);
}

TEST(DumpBase, TwoDumpOnceCallsGiveOneFileAndTheSwitchIsSpent) {
    zoltest::DumpDirScope dir;
    TriMesh mesh = SmallMesh();
    DumpOnce();
    int status = 0;
    const auto files =
        zoltest::RecordCall([&] { return SubdivideMesh::Densify(&mesh, 1.0); }, &status);
    EXPECT_EQ(files.size(), 1u);
    const auto before = zoltest::ListDumpFiles();
    SubdivideMesh::Densify(&mesh, 1.0);
    EXPECT_EQ(zoltest::ListDumpFiles(), before);
}

TEST(DumpBase, BodiesHaveTheExactLayout) {
    zoltest::DumpDirScope dir;
    TriMesh mesh = SmallMesh();
    const std::vector<int> seeds = {0, 2};
    const std::vector<double> fields = {0.5, 0.1, -2};
    PointCloud oriented(true, false, false);
    oriented.InsertPoint(Vector3(0.5, 0, 0), Vector3(0, 0, 1));
    oriented.InsertPoint(Vector3(0, 0.25, 0), Vector3(0, 0, 1));
    PointCloud plain;
    plain.InsertPoint(Vector3(1, 2, 3));
    Matrix4x4 shift;
    shift.InitIdentityTransform();
    shift.SetValue(3, 0.25);
    MeshQueryTool tool;
    tool.Init(&mesh);
    SumPointCloud sum(0.5, Vector3(-1, -1, -1), Vector3(1, 1, 1));
    PointCloud out, blank;
    std::vector<PointOnFace> curve;
    const std::vector<int> none;
    PointCloud range(false, false, true);  // a 2 x 1 range image filled right to left
    range.InitGrid(2, 1);
    range.SetGridCoord(1, 0, Vector3(0.5, 0, 0));
    range.SetGridCoord(0, 0, Vector3(0, 0.25, 0));
    const Vector3 camera(0, 0, -1);
    FusePointCloud noGrid, fuse(1, 1, 1, Vector3(0, 0, 0), Vector3(1, 1, 1), false);
    fuse.UpdateFuseFunction(&plain, nullptr, nullptr);
    const std::string m = kSmallMeshText;
    const std::vector<Vector3> marks = {Vector3(1, 2, 3)};
    const int icpIds[] = {0, 0, 7};
    const double tolerance = 0.5;
    Matrix4x4 result;
    PointCloudInfo refInfo, fromInfo;
    const struct {
        const char* name;
        std::function<int()> call;
        std::string body;
    } cases[] = {
        RECORDED("mesh, ids, type and values",
                 "4\n" + m + "2\n0 2 \n1\n3\n0.5 0.10000000000000000555 -2 \n",
                 FillMeshHole::FillHoles(&mesh, &seeds, FILL_MESH_HOLE_SMOOTH, &fields, nullptr)),
        RECORDED(
            "null mesh and null vectors", "4\n-1\n0\n1\n0\n",
            FillMeshHole::FillHoles(nullptr, nullptr, FILL_MESH_HOLE_SMOOTH, nullptr, nullptr)),
        RECORDED("cloud with normals, then a scalar",
                 "123\n2 1\n0.5 0 0 0 0 1\n0 0.25 0 0 0 1\n0.10000000000000000555\n",
                 FitPointCloud::FitUniform(&oriented, 0.1, &out)),
        RECORDED("scalars share a line; cloud without normals; transform",
                 "118\n0.5 -1 -1 -1 1 1 1\n1 0\n1 2 3\n16\n1 0 0 0.25 0 1 0 0 0 0 1 0 0 0 0 1\n",
                 sum.UpdateSumFunction(&plain, &shift)),
        RECORDED("null transform", "118\n0.5 -1 -1 -1 1 1 1\n1 0\n1 2 3\n0\n",
                 sum.UpdateSumFunction(&plain, nullptr)),
        RECORDED("ray query", "29\n" + m + "2\n2\n0 0 0 0 0 1 \n5\n",
                 tool.RayIntersections(Vector3(), Vector3(0, 0, 1), 5, nullptr, nullptr, nullptr)),
        RECORDED("face points and a direction on one line",
                 "208\n" + m + "0 0.25 0.25 0.5 0 1 0 0 0 0 1\n",
                 OptimiseCurve::ConnectFacePointsByCuttingPlane(
                     &mesh, PointOnFace(0, Vector3(0.25, 0.25, 0.5)),
                     PointOnFace(0, Vector3(1, 0, 0)), Vector3(0, 0, 1), &curve)),
        RECORDED("an empty selection keeps its element line", "126\n1 0\n1 2 3\n4 2\n0\n\n",
                 ConsolidatePointCloud::SmoothGeometry(&plain, 4, 2, &none)),
        RECORDED("a null selection is the count line alone", "126\n1 0\n1 2 3\n4 2\n0\n",
                 ConsolidatePointCloud::SmoothGeometry(&plain, 4, 2, nullptr)),
        RECORDED("range image with its cells, then an optional direction",
                 "102\n2 0\n0.5 0 0\n0 0.25 0\n2 1\n2\n1 0 \n8\n1\n0 0 -1 \n",
                 ConsolidatePointCloud::CalculatePointCloudNormal(&range, 8, &camera)),
        RECORDED("an output array given as null", "109\n1 0\n1 2 3\n1 0 5 1\n",
                 SamplePointCloud::UniformSample(&plain, 1, nullptr, 5, SAMPLE_QUALITY_HIGH)),
        RECORDED("a fusion without a grid", "115\n0 0 0 0 0 0 0 0 0 0\n-1\n1 0\n1 2 3\n0\n0\n",
                 noGrid.UpdateFuseFunction(&plain, nullptr, nullptr)),
        RECORDED("a fused state, a blank target and no attributes",
                 "116\n1 1 1 0 0 0 1 1 1 0\nFusePointCloud 1\nresolution 1 1 1\nbbox 0 0 0 1 1 1\n"
                 "fuseNormal 0\nattributes 0\ncells 1\n1 2 3 1 2 3 0 0 0 1\nend FusePointCloud\n"
                 "0 0\n0\n",
                 fuse.ExtractPointCloud(&blank, nullptr)),
        RECORDED(
            "ICP: marks, a result, a pose, sample ids by their count and a tolerance",
            "107\n1 0\n1 2 3\n0\n1 0\n1 2 3\n1\n1 2 3 \n1\n16\n1 0 0 0.25 0 1 0 0 0 0 1 0 0 0 0 1\n"
            "0 2\n2\n0 0 \n1\n0.5 \n3\n",
            RegistratePointCloud::_ICPRegistrate(&plain, refInfo, nullptr, &plain, fromInfo, &marks,
                                                 &result, &shift, false, 2, icpIds, &tolerance, 3)),
    };
    for (const auto& c : cases) {
        int status = 0;
        const auto files = zoltest::RecordCall(c.call, &status);
        ASSERT_EQ(files.size(), 1u) << c.name;
        EXPECT_EQ(zoltest::ReadFile(files[0]), c.body) << c.name;
    }
}

TEST(DumpBase, QueryAndSectionRecordsChooseTagAndValueByCall) {
    zoltest::DumpDirScope dir;
    TriMesh mesh = SmallMesh();
    // The query tool records its mesh, here a real one, and its queries replay.
    std::unique_ptr<TriMesh> bunny(Parser::ImportTriMesh(zoltest::DataPath("meshes/bunny.off")));
    ASSERT_NE(bunny, nullptr);
    MeshQueryTool tool;
    ASSERT_EQ(tool.Init(bunny.get()), RESULT_OK);
    DumpMeshMeasureSectionExact section;
    const std::vector<PointOnFace> points = {PointOnFace(0, Vector3(1, 0, 0))};
    const struct {
        std::function<int()> call;
        const char* tag;
        int value;
    } cases[] = {
        {[&] { return tool.QueryNearestTriangle(Vector3(), nullptr, nullptr); },
         "_Point_To_Mesh_Distance_", 29},
        {[&] { return tool.QueryNearestTriangles({Vector3()}, nullptr, nullptr); },
         "_Point_To_Mesh_Distance_", 29},
        {[&] { return tool.RayIntersections(Vector3(), Vector3(), 1, nullptr, nullptr, nullptr); },
         "_Ray_Intersection_", 29},
        {[&] { return section.DumpApiInfo(&mesh, Vector3(), Vector3(0, 0, 1), false), 0; },
         "_Mesh_Measure_Section_Exact_", 12},
        {[&] { return section.DumpApiInfo(&mesh, Vector3(), Vector3(0, 0, 1), true), 0; },
         "_Mesh_Measure_Section_Exact_", 17},
        {[&] { return section.DumpApiInfo(&mesh, points), 0; }, "_Mesh_Measure_Section_Pof_Exact_",
         41},
    };
    for (const auto& c : cases) {
        int status = 0;
        const auto files = zoltest::RecordCall(c.call, &status);
        TakeDumpOnce();  // the direct DumpApiInfo calls leave the switch armed
        ASSERT_EQ(files.size(), 1u) << c.tag;
        const std::string suffix = c.tag + std::to_string(DumpBase::APICalledTime - 1) + ".dump";
        EXPECT_EQ(files[0].substr(files[0].size() - suffix.size()), suffix);
        std::unique_ptr<DumpBase> record(CreateDumpRecord(c.value, files[0]));
        ASSERT_NE(record, nullptr);
        ASSERT_EQ(record->LoadDumpFile(files[0]), RESULT_OK) << files[0];
        EXPECT_EQ(record->GetApiName(), c.value) << c.tag;
        if (status == 0) continue;  // a direct DumpApiInfo call
        EXPECT_EQ(status, RESULT_NOT_AVAILABLE);
        EXPECT_EQ(record->GetTriMesh(0)->GetTriangleCount(), bunny->GetTriangleCount());
        zoltest::ExpectReplays(files[0], status, c.tag);
    }
}

TEST(DumpRecordTable, EveryRowCreatesItsRecordWithItsValue) {
    const std::vector<DumpRecordRow>& rows = GetDumpRecordRows();
    EXPECT_EQ(rows.size(), 92u);
    std::multiset<int> values;
    std::multiset<std::string> tags;
    int tagsWithoutUnderscore = 0;
    for (const DumpRecordRow& row : rows) {
        std::unique_ptr<DumpBase> record(row.create());
        EXPECT_EQ(record->GetApiName(), row.value) << row.name;
        const std::string file = std::string("x") + row.tag + "0.dump";
        std::unique_ptr<DumpBase> byValue(CreateDumpRecord(row.value, file));
        ASSERT_NE(byValue, nullptr) << row.name;
        EXPECT_EQ(typeid(*byValue), typeid(*record)) << row.name;
        values.insert(row.value);
        tags.insert(row.tag);
        tagsWithoutUnderscore += std::string(row.tag).back() != '_';
    }
    EXPECT_EQ(values.count(11), 2u);
    EXPECT_EQ(values.size(), std::set<int>(values.begin(), values.end()).size() + 1);
    EXPECT_EQ(tags.count("_Point_Consolidate_NormalCalculation_"), 2u);
    EXPECT_EQ(tags.count("_OptimiseMapping_Fuse_ImageColorId_"), 2u);
    EXPECT_EQ(tags.size(), std::set<std::string>(tags.begin(), tags.end()).size() + 2);
    EXPECT_EQ(tagsWithoutUnderscore, 1);
    for (int value : {17, 41}) {
        std::unique_ptr<DumpBase> section(CreateDumpRecord(value, "any.dump"));
        EXPECT_NE(dynamic_cast<DumpMeshMeasureSectionExact*>(section.get()), nullptr);
    }
    for (int unused : {0, 7, 10, 21, 120, 204, 301})
        EXPECT_EQ(CreateDumpRecord(unused, ""), nullptr);
}

TEST(DumpBase, DamagedFilesLoadWithoutCrashAndRunToTheApiFailure) {
    zoltest::DumpDirScope dir;
    const std::string mesh = kSmallMeshText;
    const std::string tail = "2\n0 2 \n1\n0\n";
    const struct {
        const char* name;
        std::string text;
        int load;
        int run;
    } cases[] = {
        {"intact", "4\n" + mesh + tail, RESULT_OK, RESULT_NOT_AVAILABLE},
        {"NaN coordinates are kept for the replay", "4\n1\nnan 0 -inf\n0\n1\n0 \n1\n0\n", RESULT_OK,
         RESULT_NOT_AVAILABLE},
        {"negative vertex count means a null mesh", "4\n-7\n" + tail, RESULT_OK,
         RESULT_INVALID_INPUT},
        {"vertex count larger than the file", "4\n2147483647\n0 0 0\n", RESULT_FAIL,
         RESULT_INVALID_INPUT},
        {"vertex count beyond int", "4\n99999999999\n0 0 0\n", RESULT_FAIL, RESULT_INVALID_INPUT},
        {"huge seed count", "4\n" + mesh + "2000000000\n0 2 \n1\n0\n", RESULT_FAIL,
         RESULT_INVALID_INPUT},
        {"negative seed count", "4\n" + mesh + "-2\n0 2 \n1\n0\n", RESULT_FAIL,
         RESULT_INVALID_INPUT},
        {"text for a coordinate", "4\n1\n0 zero 0\n0\n" + tail, RESULT_FAIL, RESULT_INVALID_INPUT},
        {"number followed by text", "4\n1\n0 1x 0\n0\n" + tail, RESULT_FAIL, RESULT_INVALID_INPUT},
        {"token longer than any number", "4\n1\n" + std::string(200, '1') + " 0 0\n0\n" + tail,
         RESULT_FAIL, RESULT_INVALID_INPUT},
        {"triangle naming a missing vertex", "4\n3\n0 0 0\n1 0 0\n0 1 0\n1\n0 1 3\n" + tail,
         RESULT_FAIL, RESULT_INVALID_INPUT},
        {"missing type line", "4\n" + mesh + "2\n0 2 \n", RESULT_FAIL, RESULT_INVALID_INPUT},
        {"another record's value", "5\n" + mesh + tail, RESULT_INVALID_INPUT, RESULT_INVALID_INPUT},
        {"empty file", "", RESULT_INVALID_INPUT, RESULT_INVALID_INPUT},
    };
    for (const auto& c : cases) {
        const std::string file = WriteText("damaged.dump", c.text);
        std::unique_ptr<DumpBase> record(CreateDumpFillMeshHole());
        EXPECT_EQ(record->LoadDumpFile(file), c.load) << c.name;
        EXPECT_EQ(record->Run(), c.run) << c.name;
    }
    // Every cut of an intact file: a failed load leaves nothing half-loaded.
    const std::string intact = "4\n" + mesh + "2\n0 2 \n1\n3\n0.5 0.25 -2 \n";
    for (size_t n = 0; n < intact.size(); ++n) {
        const std::string file = WriteText("damaged.dump", intact.substr(0, n));
        std::unique_ptr<DumpBase> record(CreateDumpFillMeshHole());
        const int load = record->LoadDumpFile(file);
        const int run = record->Run();
        if (load != RESULT_OK) {
            EXPECT_EQ(run, RESULT_INVALID_INPUT) << n;
            EXPECT_EQ(record->GetTriMesh(0), nullptr) << n;
        }
    }
    std::unique_ptr<DumpBase> record(CreateDumpFillMeshHole());
    ASSERT_EQ(record->LoadDumpFile(WriteText("intact.dump", "4\n" + mesh + tail)), RESULT_OK);
    EXPECT_EQ(static_cast<DumpFillMeshHole&>(*record).GetBoundarySeedIds(),
              (std::vector<int>{0, 2}));
    EXPECT_EQ(record->LoadDumpFile("no/such/file.dump"), RESULT_INVALID_INPUT);
}

TEST(DumpBase, DamagedGridsAndFusionStatesAreRefusedWhole) {
    zoltest::DumpDirScope dir;
    const std::string fuseHead = "116\n1 1 1 0 0 0 1 1 1 0\nFusePointCloud 1\n";
    const struct {
        const char* name;
        std::string text;
        int load;
        int run;
    } cases[] = {
        {"intact range image of one point", "102\n1 0\n0 0 0\n2 1\n1\n1 \n8\n0\n", RESULT_OK,
         RESULT_FAIL},
        {"grid far larger than its points", "102\n1 0\n0 0 0\n100000 100000\n1\n0 \n8\n0\n",
         RESULT_FAIL, RESULT_INVALID_INPUT},
        {"negative grid size", "102\n1 0\n0 0 0\n-2 1\n1\n0 \n8\n0\n", RESULT_FAIL,
         RESULT_INVALID_INPUT},
        {"a cell used twice", "102\n2 0\n0 0 0\n1 0 0\n2 1\n2\n0 0 \n8\n0\n", RESULT_FAIL,
         RESULT_INVALID_INPUT},
        {"a cell outside the grid", "102\n1 0\n0 0 0\n2 1\n1\n2 \n8\n0\n", RESULT_FAIL,
         RESULT_INVALID_INPUT},
        {"fewer cells than points", "102\n2 0\n0 0 0\n1 0 0\n2 1\n1\n0 \n8\n0\n", RESULT_FAIL,
         RESULT_INVALID_INPUT},
        {"two camera directions", "102\n-1\n8\n2\n0 0 1 0 0 1 \n", RESULT_FAIL,
         RESULT_INVALID_INPUT},
        {"damaged fusion header", fuseHead + "resolution 1 1\n", RESULT_FAIL, RESULT_INVALID_INPUT},
        {"fusion without its end line",
         fuseHead + "resolution 1 1 1\nbbox 0 0 0 1 1 1\nfuseNormal 0\nattributes 0\ncells 0\n",
         RESULT_FAIL, RESULT_INVALID_INPUT},
        {"no fusion: extraction meets no grid", "116\n1 1 1 0 0 0 1 1 1 0\n-1\n0 0\n1\n", RESULT_OK,
         RESULT_STEP_FAIL},
    };
    for (const auto& c : cases) {
        const std::string file = WriteText("damaged.dump", c.text);
        int value = 0;
        std::istringstream head(c.text);
        ASSERT_TRUE(DumpBase::ReadInt(head, value)) << c.name;
        std::unique_ptr<DumpBase> record(CreateDumpRecord(value, file));
        EXPECT_EQ(record->LoadDumpFile(file), c.load) << c.name;
        EXPECT_EQ(record->Run(), c.run) << c.name;
    }
}
