// The zol command-line tool driven as a user drives it: a subprocess with arguments, files
// in a folder of the test's own, exit codes and messages, and known answers on real scans.
// (`zol replay` is covered with the dump records.)
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <tuple>

#include <zol/zol.h>

#include "tests/common/PointData.h"
#include "tests/common/ScanData.h"
#include "tests/common/TestData.h"

namespace {

namespace fs = std::filesystem;
using ZOL::Vector3;

struct ToolRun {
    int code;
    std::string out;
    std::string err;
};

// Every number of a text, in order ("#" lines skipped).
std::vector<double> Numbers(const std::string& text) {
    std::vector<double> values;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line.substr(0, line.find('#')));
        double value;
        while (words >> value) values.push_back(value);
    }
    return values;
}

// How far the 4 x 4 pose given as 16 numbers from \p at is from bun.conf's bun045 -> bun000.
zoltest::PoseError ErrorOf045(const std::vector<double>& pose, std::size_t at = 0) {
    ZOL::Matrix4x4 found(0.0);
    for (int k = 0; k < 16 && at + k < pose.size(); ++k) found.SetValue(k, pose[at + k]);
    return zoltest::ComparePoses(found, zoltest::BunnyTruth("bun045", "bun000"), Vector3());
}

class ZolCli : public ::testing::Test {
protected:
    void SetUp() override {
        mDir = fs::absolute(zoltest::ScratchPath("dir")).string();
        fs::remove_all(mDir);
        fs::create_directories(mDir);
    }

    // Runs `zol ARGS` in the test's folder; \p env is put before the command.
    ToolRun Run(const std::string& args, const std::string& env = "") {
        return Shell(env + " '" ZOL_TOOL_PATH "' " + args);
    }

    // Runs a shell command in the test's folder, capturing its output.
    ToolRun Shell(const std::string& command) {
        const std::string line =
            "cd '" + mDir + "' && " + command + " </dev/null >stdout.txt 2>stderr.txt";
        const int status = std::system(line.c_str());
        ToolRun run{WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                    zoltest::ReadFile(In("stdout.txt")), zoltest::ReadFile(In("stderr.txt"))};
        // Standard error is a file here: no progress bar may be drawn into it.
        EXPECT_EQ(run.err.find('\r'), std::string::npos) << run.err;
        return run;
    }

    std::string In(const std::string& name) const { return mDir + "/" + name; }

    // Names in the folder other than the captured output.
    std::set<std::string> Listing() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(mDir)) {
            const std::string name = entry.path().filename().string();
            if (name != "stdout.txt" && name != "stderr.txt") names.insert(name);
        }
        return names;
    }

    std::string mDir;
};

const std::string kScan000 = zoltest::DataPath("bunny/bun000.ply");
const std::string kScan045 = zoltest::DataPath("bunny/bun045.ply");
const std::string kSmallCloud = zoltest::DataPath("clouds/bun0.xyzn");

TEST_F(ZolCli, InfoOfARangeScan_PrintsCountsGridAndBox) {
    const ToolRun run = Run("info " + kScan000);
    ASSERT_EQ(run.code, 0) << run.err;
    const std::vector<Vector3> points = zoltest::LoadPlyVertices(kScan000);
    Vector3 lo = points[0], hi = points[0];
    for (const Vector3& p : points) {
        for (int a = 0; a < 3; ++a) lo[a] = std::min(lo[a], p[a]), hi[a] = std::max(hi[a], p[a]);
    }
    char box[256];
    std::snprintf(box, sizeof(box),
                  "  bounding box    (%.6g, %.6g, %.6g) .. (%.6g, %.6g, %.6g)\n"
                  "  size            %.6g x %.6g x %.6g\n",
                  lo.x, lo.y, lo.z, hi.x, hi.y, hi.z, hi.x - lo.x, hi.y - lo.y, hi.z - lo.z);
    EXPECT_EQ(run.out, kScan000 +
                           ": point cloud (ply)\n"
                           "  points          40256\n"
                           "  normals         no\n"
                           "  colours         no\n"
                           "  scanner grid    512 x 400, 40256 cells hold points\n" +
                           box);
}

TEST_F(ZolCli, EverySubcommandAnswersHelp) {
    for (const char* command : {"info", "convert", "normals", "sample", "smooth", "density",
                                "register", "merge", "pov", "demo", "replay"}) {
        const ToolRun run = Run(std::string(command) + " --help");
        EXPECT_EQ(run.code, 0) << command;
        EXPECT_NE(run.out.find("Exit codes: 0 done; 1 an operation failed; 2 bad command line"),
                  std::string::npos)
            << command << "\n"
            << run.out;
    }
}

TEST_F(ZolCli, BadCommandLines_ExitTwoWithTheReason) {
    const std::tuple<std::string, std::string> cases[] = {
        {"info", "file is required"},
        {"sample " + kScan000 + " out.ply -m bogus",
         "--method: bogus not in {uniform,geometry,grid}"},
        {"normals " + kScan000 + " out.ply -k 3", "--neighbors: Value 3 not in range 4 to 1000"},
        {"merge " + kScan000 + " -o out.ply", "zol merge: merge needs at least two scans\n"},
        {"convert " + kScan000 + " out.stl",
         "zol convert: out.stl: cannot write a point cloud as \"stl\" (use asc xyz xyzn casc "
         "xyzrgb obj ply zpc zbp zbg)\n"},
        {"convert " + kSmallCloud + " out.zbg",
         "zol convert: out.zbg: zbg holds scanner-grid clouds only; this cloud has no grid\n"},
        {"sample " + kSmallCloud + " out.ply -n 398",
         "zol sample: --count 398 exceeds the 397 points of " + kSmallCloud + "\n"},
        {"frobnicate", "zol: unknown command \"frobnicate\" (see zol --help)\n"},
    };
    for (const auto& [args, message] : cases) {
        const ToolRun run = Run(args);
        EXPECT_EQ(run.code, 2) << args;
        EXPECT_NE(run.err.find(message), std::string::npos) << args << "\n" << run.err;
        EXPECT_TRUE(Listing().empty()) << args;
    }
}

TEST_F(ZolCli, BadInputs_ExitThreeNamingTheFileAndTheLibraryLine) {
    zoltest::WriteFile(In("damaged.asc"), "0 0 0\n1 0 0\n1 1\n");
    zoltest::WriteFile(In("shifted.xyz"), "0 0 0\n1 x 0\n");
    zoltest::WriteFile(In("short.txt"), "1 0 0\n0 1 0\n0 0 1\n");
    zoltest::WriteFile(In("scan.dat"), "0 0 0\n");
    const std::string empty = zoltest::DataPath("formats/malformed/ply_empty_header.ply");
    const std::tuple<std::string, std::string> cases[] = {
        {"info nothere.ply", "zol info: nothere.ply: no such file\n"},
        {"density scan.dat",
         "zol density: scan.dat: unknown format \"dat\" (meshes: obj off ply stl zpt; point "
         "clouds: asc xyz xyzn casc xyzrgb obj ply zpc zbp zbg)\n"},
        {"normals damaged.asc out.ply",
         "zol normals: damaged.asc: damaged or unsupported point-cloud file\n"
         "  library log: ImportPointCloudByASC: line 3 has 2 values, expected 3\n"},
        {"smooth shifted.xyz out.ply",
         "zol smooth: shifted.xyz: damaged or unsupported point-cloud file\n"
         "  library log: ImportPointCloudByASC: invalid number in line 2\n"},
        {"info " + empty, "zol info: " + empty +
                              ": damaged or unsupported point-cloud file\n"
                              "  library log: ImportPointCloudByPLY: no vertex element\n"},
        {"register " + kSmallCloud + " " + kSmallCloud + " --init short.txt",
         "zol register: short.txt: expected 16 numbers (a 4x4 matrix, row after row), found "
         "9\n"},
        {"merge " + kSmallCloud + " nothere.xyz -o out.ply",
         "zol merge: nothere.xyz: no such file\n"},
    };
    for (const auto& [args, message] : cases) {
        const ToolRun run = Run(args);
        EXPECT_EQ(run.code, 3) << args;
        EXPECT_EQ(run.err, message) << args;
        EXPECT_EQ(run.out, "") << args;
    }
    EXPECT_EQ(Listing(),
              (std::set<std::string>{"damaged.asc", "scan.dat", "shifted.xyz", "short.txt"}));
}

TEST_F(ZolCli, UnwritableOutput_ExitsFourAndLeavesNothingBehind) {
    ToolRun run = Run("convert " + kSmallCloud + " missing/out.ply");
    EXPECT_EQ(run.code, 4);
    EXPECT_EQ(run.err, "zol convert: missing/out.ply: folder missing does not exist\n");
    // A folder in the way of the result: the write goes to a temporary name, the rename fails.
    fs::create_directory(In("taken.xyz"));
    run = Run("convert " + kSmallCloud + " taken.xyz");
    EXPECT_EQ(run.code, 4);
    EXPECT_EQ(run.err.rfind("zol convert: taken.xyz: cannot be written (", 0), 0u) << run.err;
    EXPECT_EQ(Listing(), std::set<std::string>{"taken.xyz"});
}

TEST_F(ZolCli, ConvertKeepsTheScannerGridAndTextReadsBackToTheSameBytes) {
    ASSERT_EQ(Run("convert " + kScan000 + " scan.zbg").code, 0);
    EXPECT_NE(Run("info scan.zbg").out.find("scanner grid    512 x 400, 40256 cells hold points"),
              std::string::npos);
    ASSERT_EQ(Run("convert scan.zbg a.zpc").code, 0);
    ASSERT_EQ(Run("convert a.zpc b.zpc").code, 0);
    EXPECT_EQ(zoltest::ReadFile(In("a.zpc")), zoltest::ReadFile(In("b.zpc")));
    const ToolRun mesh = Run("convert " + zoltest::DataPath("meshes/bunny.off") + " bunny.stl");
    EXPECT_EQ(mesh.out, zoltest::DataPath("meshes/bunny.off") +
                            ": 3485 vertices, 6966 triangles -> bunny.stl\n");
}

TEST_F(ZolCli, NormalsOfARangeScan_FaceTheScanner) {
    ASSERT_EQ(Run("normals " + kScan000 + " normals.xyzn").code, 0);
    const std::vector<double> columns = Numbers(zoltest::ReadFile(In("normals.xyzn")));
    ASSERT_EQ(columns.size(), 6u * 40256);
    int facing = 0;  // the scanner of bun000 looks down the z axis
    for (std::size_t i = 5; i < columns.size(); i += 6) facing += columns[i] > 0.0;
    EXPECT_GT(facing, 0.99 * 40256);
}

TEST_F(ZolCli, SampleKeepsInputPoints_GridSampleIsTheLibrarys) {
    ASSERT_EQ(Run("sample " + kScan000 + " uniform.xyz -n 500").code, 0);
    ASSERT_EQ(Run("sample " + kScan000 + " grid.xyz -m grid --interval 0.004").code, 0);
    const std::vector<Vector3> points = zoltest::LoadPlyVertices(kScan000);
    std::set<std::tuple<double, double, double>> input;
    for (const Vector3& p : points) input.emplace(p.x, p.y, p.z);
    const std::vector<double> uniform = Numbers(zoltest::ReadFile(In("uniform.xyz")));
    ASSERT_EQ(uniform.size(), 3u * 500);
    for (std::size_t i = 0; i < uniform.size(); i += 3)
        EXPECT_EQ(input.count({uniform[i], uniform[i + 1], uniform[i + 2]}), 1u) << i / 3;
    // Text output keeps every digit: the grid sample is the library's, point for point.
    ZOL::PointCloud cloud = zoltest::MakeCloud(points);
    std::vector<int> ids;
    ASSERT_EQ(ZOL::SamplePointCloud::GridSample(&cloud, 0.004, ids), ZOL::RESULT_OK);
    std::vector<double> expected;
    for (int id : ids) expected.insert(expected.end(), {points[id].x, points[id].y, points[id].z});
    EXPECT_EQ(Numbers(zoltest::ReadFile(In("grid.xyz"))), expected);
}

TEST_F(ZolCli, DensityOfASmallCloud_IsTheLibrarysPointSpacingOfEightNeighbours) {
    std::unique_ptr<ZOL::PointCloud> cloud(ZOL::Parser::ImportPointCloud(kSmallCloud));
    ASSERT_NE(cloud, nullptr);
    ZOL::PointCloudPointList list(cloud.get());
    double spacing = 0.0;
    ASSERT_EQ(ZOL::CalculatePointListDensity(&list, 8, spacing), ZOL::RESULT_OK);
    char expected[256];
    std::snprintf(expected, sizeof(expected),
                  "%s: point spacing %.6g (397 points; median of the mean distance to the 7 "
                  "nearest other points)\n",
                  kSmallCloud.c_str(), spacing);
    EXPECT_EQ(Run("density " + kSmallCloud).out, expected);
}

TEST_F(ZolCli, SmoothedCloud_IsTheSameOnOneAndTwoThreads) {
    for (const char* method : {"geometry", "normals"}) {
        const std::string args = std::string("smooth ") + kSmallCloud + " -m " + method;
        ASSERT_EQ(Run("--threads 1 " + args + " one.xyzn").code, 0);
        ASSERT_EQ(Run("--threads 2 " + args + " two.xyzn").code, 0);
        EXPECT_EQ(zoltest::ReadFile(In("one.xyzn")), zoltest::ReadFile(In("two.xyzn"))) << method;
        EXPECT_NE(zoltest::ReadFile(In("one.xyzn")), zoltest::ReadFile(kSmallCloud)) << method;
    }
}

TEST_F(ZolCli, RegisterScan045OntoScan000_FindsTheGroundTruth) {
    ToolRun run = Run("register " + kScan000 + " " + kScan045 + " -o moved.ply --matrix pose.txt");
    ASSERT_EQ(run.code, 0) << run.err;
    zoltest::PoseError error = ErrorOf045(Numbers(zoltest::ReadFile(In("pose.txt"))));
    EXPECT_LT(error.degrees, 0.5);
    EXPECT_LT(error.distance, 0.001);  // metres
    EXPECT_NE(Run("info moved.ply").out.find("points          40097"), std::string::npos);
    // ICP alone from a start three degrees and 5 mm off the truth.
    ZOL::Matrix4x4 nudge;
    nudge.GenerateVectorToVectorRotation(Vector3(1, 0, 0),
                                         Vector3(std::cos(0.0524), std::sin(0.0524), 0));
    nudge.SetValue(0, 3, 0.005);
    const ZOL::Matrix4x4 start = nudge * zoltest::BunnyTruth("bun045", "bun000");
    std::ostringstream text;
    text.precision(17);
    for (int k = 0; k < 16; ++k) text << start.GetValue(k) << (k % 4 == 3 ? "\n" : " ");
    zoltest::WriteFile(In("start.txt"), text.str());
    run = Run("register " + kScan000 + " " + kScan045 + " --init start.txt --matrix refined.txt");
    ASSERT_EQ(run.code, 0) << run.err;
    error = ErrorOf045(Numbers(zoltest::ReadFile(In("refined.txt"))));
    EXPECT_LT(error.degrees, 0.5);
    EXPECT_LT(error.distance, 0.001);
}

TEST_F(ZolCli, MergedScans_MatchTheGroundTruthAndAreTheSameOnOneAndTwoThreads) {
    const std::string args = "merge " + kScan000 + " " + kScan045;
    ToolRun run = Run("--threads 1 " + args + " -o one.zpc --poses poses.txt");
    ASSERT_EQ(run.code, 0) << run.err;
    ASSERT_EQ(Run("--threads 2 " + args + " -o two.zpc").code, 0);
    EXPECT_EQ(zoltest::ReadFile(In("one.zpc")), zoltest::ReadFile(In("two.zpc")));
    const std::vector<double> poses = Numbers(zoltest::ReadFile(In("poses.txt")));
    ASSERT_EQ(poses.size(), 32u);
    EXPECT_EQ(std::vector<double>(poses.begin(), poses.begin() + 16),
              (std::vector<double>{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
    const zoltest::PoseError error = ErrorOf045(poses, 16);
    EXPECT_LT(error.degrees, 0.5);
    EXPECT_LT(error.distance, 0.001);
    EXPECT_NE(run.out.find("merged 2 scans: "), std::string::npos) << run.out;
}

TEST_F(ZolCli, PovScene_RendersWithPovrayOrSaysItIsMissing) {
    const std::string mesh = zoltest::DataPath("meshes/bunny.off");
    ToolRun run = Run("pov " + mesh + " bunny.pov --no-render");
    ASSERT_EQ(run.code, 0) << run.err;
    const std::string scene = zoltest::ReadFile(In("bunny.pov"));
    EXPECT_NE(scene.find("camera {"), std::string::npos);
    EXPECT_NE(scene.find("mesh2 {"), std::string::npos);
    run = Run("pov " + kSmallCloud + " cloud.pov", "PATH=/nonexistent");
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_NE(run.out.find("povray is not installed"), std::string::npos) << run.out;
    if (system("command -v povray >/dev/null") != 0) GTEST_SKIP() << "povray is not installed";
    run = Run("pov " + mesh + " bunny.pov --width 64 --height 48");
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(zoltest::ReadFile(In("bunny.png")).substr(0, 8), "\x89PNG\r\n\x1a\n");
    EXPECT_EQ(Listing(), (std::set<std::string>{"bunny.png", "bunny.pov", "cloud.pov"}));
}

TEST_F(ZolCli, ProgressBar_IsDrawnOnATerminal) {
    if (system("command -v script >/dev/null") != 0) GTEST_SKIP() << "no `script` for a terminal";
    // `script` gives the tool a terminal and copies what it draws to standard output.
    const ToolRun run =
        Shell("script -qec \"'" ZOL_TOOL_PATH "' normals " + kScan000 + " n.ply\" /dev/null");
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_NE(run.out.find("\r\033[Knormals ["), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("%"), std::string::npos);
}

TEST_F(ZolCli, DemoRecoversEveryScanPoseWithinHalfADegree) {
    const ToolRun run = Run("demo --dir demo --seed 3");
    ASSERT_EQ(run.code, 0) << run.out << run.err;
    std::istringstream lines(run.out);
    std::string line;
    int scans = 0;
    while (std::getline(lines, line)) {
        const std::size_t at = line.find(": pose error ");
        if (at == std::string::npos) continue;
        ++scans;
        EXPECT_LT(std::stod(line.substr(at + 13)), 0.5) << line;
    }
    EXPECT_EQ(scans, 7) << run.out;
    for (const char* file : {"merged.ply", "merged.pov", "scan0.ply", "scan7.ply"}) {
        EXPECT_TRUE(fs::exists(In(std::string("demo/") + file))) << file;
    }
    EXPECT_NE(run.out.find("files in demo:"), std::string::npos) << run.out;
}

}  // namespace
