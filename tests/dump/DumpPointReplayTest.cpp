// Recorded point-cloud operations on real scans: each call is recorded, its file loaded
// and run, and the replay must answer the call's status, write the same file again and
// give exactly the call's results (normals, moved points, sample indices, fused cells,
// tuned colours).
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <zol/dump/DumpPointRecords.h>
#include <zol/zol.h>

#include "tests/common/DumpFiles.h"
#include "tests/common/PointData.h"
#include "tests/common/ScanData.h"
#include "tests/common/TestData.h"

using namespace ZOL;
using CPC = ConsolidatePointCloud;

namespace {

// Every coordinate and normal, for exact comparison.
std::vector<double> Values(PointCloud* cloud) {
    std::vector<double> values;
    if (cloud == nullptr) return values;
    for (int i = 0; i < cloud->GetPointCount(); ++i) {
        for (const Vector3& v : {cloud->GetPointCoord(i), cloud->GetPointNormal(i)})
            values.insert(values.end(), {v.x, v.y, v.z});
    }
    return values;
}

std::unique_ptr<PointCloud> Import(const std::string& relative) {
    return std::unique_ptr<PointCloud>(Parser::ImportPointCloud(zoltest::DataPath(relative)));
}

std::vector<double> Entries(const Matrix4x4& m) {
    std::vector<double> values;
    for (int i = 0; i < 16 && !m.IsEmpty(); ++i) values.push_back(m.GetValue(i));
    return values;
}

template <typename Record>
Record& As(DumpBase& record) {
    return dynamic_cast<Record&>(record);
}

}  // namespace

TEST(PointDumpReplay, EveryRecordedOperationReplaysToItsStatusAndResults) {
    zoltest::DumpDirScope dir;
    std::unique_ptr<PointCloud> scan = Import("bunny/bun000.ply");
    ASSERT_TRUE(scan && scan->HasGridTopology());
    PointCloud oriented = zoltest::MakeCloud(
        zoltest::LoadPlyVertices(zoltest::DataPath("bunny/bun_zipper_res3.ply")));
    ASSERT_EQ(CPC::CalculatePointCloudNormal(&oriented, 8), RESULT_OK);
    const int n = oriented.GetPointCount();

    // In-place operations work on copies; each case compares the replay with its copy.
    PointCloud work[8] = {oriented, *scan, oriented, oriented, oriented, oriented, *scan, oriented};
    ASSERT_EQ(CPC::CalculatePointCloudNormal(&work[6], 8), RESULT_OK);
    for (int i = 0; i < work[6].GetPointCount(); i += 3)
        work[6].SetPointNormal(i, -work[6].GetPointNormal(i));
    const std::vector<int> fixed = {0, 10, 20}, selection = {1, 5, 9, 400}, none;
    const Vector3 camera(0.1, -0.2, -1.0);
    std::vector<int> sampled(200);
    std::vector<int> gridSampled;

    // A fusion with a first cloud already in it: the recorded update must meet that state.
    std::vector<double> heights(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) heights[i] = oriented.GetPointCoord(i).y;
    FusePointCloud fuse(40, 40, 40, Vector3(-0.1, 0.03, -0.07), Vector3(0.07, 0.19, 0.07), true);
    ASSERT_EQ(fuse.UpdateFuseFunction(&oriented, nullptr, &heights), RESULT_OK);
    Matrix4x4 pose;
    pose.InitIdentityTransform();
    pose.SetValue(3, 0.004);
    FusePointCloud noGrid;
    PointCloud extracted, blank, notBlank;
    notBlank.InsertPoint(Vector3(1, 2, 3));
    std::vector<double> extractedHeights;

    // Two overlapping parts of a coloured scan, the second darkened.
    std::unique_ptr<PointCloud> milk = Import("clouds/milk_color.ply");
    ASSERT_TRUE(milk && milk->HasColor());
    std::vector<Vector3> parts[2];
    std::vector<std::vector<Vector3>> colors(2);
    for (int i = 0; i < milk->GetPointCount(); ++i) {
        const Vector3 p = milk->GetPointCoord(i);
        for (int k = 0; k < 2; ++k) {
            if (k == 0 ? p.x < -0.04 : p.x > -0.07) {
                parts[k].push_back(p);
                colors[k].push_back(milk->GetPointColor(i) * (k == 0 ? 1.0 : 0.6));
            }
        }
    }
    PointCloud partA = zoltest::MakeCloud(parts[0]), partB = zoltest::MakeCloud(parts[1]);
    std::vector<Vector3> gains;

    // bun045 onto bun000 from a few degrees off the bun.conf pose, pulled by three marks
    // and run on given sample ids; a coarse search for the scan in a random pose.
    PointCloud ref = zoltest::BunnyScan("bun000"), from = zoltest::BunnyScan("bun045");
    const Matrix4x4 truth = zoltest::BunnyTruth("bun045", "bun000");
    const Matrix4x4 start =
        truth * zoltest::RigidMotion(Vector3(0, 1, 0), 3.0, zoltest::Centroid(from));
    std::vector<Vector3> fromMarks, refMarks;
    std::vector<int> sampleIds;
    for (int i = 0; i < from.GetPointCount(); i += 97) sampleIds.push_back(i);
    for (int i : {sampleIds[5], sampleIds[50], sampleIds[200]}) {
        fromMarks.push_back(from.GetPointCoord(i));
        refMarks.push_back(truth.TransformPoint(from.GetPointCoord(i)));
    }
    const double tolerance = 0.002;
    const PointCloud lost =
        zoltest::Moved(from, zoltest::RandomMotion(5, 120.0, zoltest::Centroid(from), 0.05));
    Matrix4x4 icp, coarse, pairFit;

    const auto sameCloud = [](PointCloud& expected) {
        return
            [&expected](DumpBase& r) { EXPECT_EQ(Values(r.GetPointCloud(0)), Values(&expected)); };
    };
    const struct {
        const char* name;
        std::function<int()> call;
        int status;
        std::function<void(DumpBase&)> same;
        const char* note = nullptr;
    } cases[] = {
        {"normal smoothing with fixed points",
         [&] { return CPC::SmoothNormal(&work[0], 0.25, 8, &fixed); }, RESULT_OK,
         sameCloud(work[0])},
        {"normal estimation on a range image, oriented by its grid",
         [&] { return CPC::CalculatePointCloudNormal(&work[1], 8); }, RESULT_OK,
         sameCloud(work[1])},
        {"smoothing along the normals of a selection",
         [&] {
             PointCloudInfo info;
             return CPC::_SmoothGeometryByNormal(&work[2], info, 8, 0.6, 2, &selection);
         },
         RESULT_OK, sameCloud(work[2])},
        {"normal reversal", [&] { return CPC::ReversePointCloudNormal(&work[3]); }, RESULT_OK,
         sameCloud(work[3])},
        {"plane smoothing", [&] { return CPC::SmoothGeometry(&work[4], 8, 2, nullptr); }, RESULT_OK,
         sameCloud(work[4])},
        {"plane smoothing of an empty selection moves nothing",
         [&] { return CPC::SmoothGeometry(&work[5], 8, 1, &none); }, RESULT_OK, sameCloud(work[5])},
        {"orientation of a range image by its grid",
         [&] { return CPC::OrientPointCloudNormal(&work[6], 8); }, RESULT_OK, sameCloud(work[6])},
        {"orientation towards a camera",
         [&] { return CPC::OrientPointCloudNormal(&work[7], 8, &camera); }, RESULT_OK,
         sameCloud(work[7])},
        {"normal estimation of a cloud of one point",
         [&] { return CPC::CalculatePointCloudNormal(&notBlank, 8); }, RESULT_FAIL, nullptr},
        {"uniform sampling",
         [&] {
             return SamplePointCloud::UniformSample(&oriented, 200, sampled.data(), 7,
                                                    SAMPLE_QUALITY_LOW);
         },
         RESULT_OK,
         [&](DumpBase& r) {
             EXPECT_EQ(As<DumpPointCloudSamplingUniform>(r).GetSampleIndex(), sampled);
             ASSERT_EQ(r.GetPointCloud(0)->GetPointCount(), 200);
             EXPECT_EQ(r.GetPointCloud(0)->GetPointCoord(199).x,
                       oriented.GetPointCoord(sampled[199]).x);
         }},
        {"uniform sampling into no array",
         [&] {
             return SamplePointCloud::UniformSample(&oriented, 20, nullptr, 7, SAMPLE_QUALITY_LOW);
         },
         RESULT_INVALID_INPUT, nullptr},
        {"geometry sampling",
         [&] {
             return SamplePointCloud::GeometrySample(&oriented, 150, sampled.data(), 0.4, 8, 3,
                                                     SAMPLE_QUALITY_HIGH);
         },
         RESULT_OK,
         [&](DumpBase& r) {
             const std::vector<int> expected(sampled.begin(), sampled.begin() + 150);
             EXPECT_EQ(As<DumpPointCloudSamplingGeometry>(r).GetSampleIndex(), expected);
         }},
        {"grid sampling",
         [&] { return SamplePointCloud::GridSample(&oriented, 0.004, gridSampled); }, RESULT_OK,
         [&](DumpBase& r) {
             EXPECT_EQ(As<DumpPointCloudSamplingGrid>(r).GetSampleIndex(), gridSampled);
         }},
        {"fusion update over a fused state",
         [&] { return fuse.UpdateFuseFunction(&oriented, &pose, &heights); }, RESULT_OK,
         [&](DumpBase& r) {
             PointCloud expected;
             std::vector<double> attributes;
             ASSERT_EQ(fuse.ExtractPointCloud(&expected, &attributes), RESULT_OK);
             EXPECT_EQ(Values(r.GetPointCloud(0)), Values(&expected));
             EXPECT_EQ(As<DumpFusePointCloudUpdate>(r).GetPointAttributes(), attributes);
         }},
        {"fusion extraction with attributes",
         [&] { return fuse.ExtractPointCloud(&extracted, &extractedHeights); }, RESULT_OK,
         [&](DumpBase& r) {
             EXPECT_EQ(Values(r.GetPointCloud(0)), Values(&extracted));
             EXPECT_EQ(As<DumpFusePointCloudExtract>(r).GetPointAttributes(), extractedHeights);
         }},
        {"fusion extraction into a cloud that is not blank",
         [&] { return fuse.ExtractPointCloud(&notBlank, nullptr); }, RESULT_INVALID_INPUT,
         sameCloud(notBlank)},
        {"fusion update without a grid",
         [&] { return noGrid.UpdateFuseFunction(&oriented, nullptr, nullptr); }, RESULT_STEP_FAIL,
         nullptr, "DumpFusePointCloudUpdate::Run: fuse is NULL"},
        {"fusion extraction without a grid",
         [&] { return noGrid.ExtractPointCloud(&blank, nullptr); }, RESULT_STEP_FAIL, nullptr,
         "DumpFusePointCloudExtract::Run: fuse is NULL"},
        {"single-light colour tuning",
         [&] {
             return IntrinsicColor::TuneColorFromSingleLight({&partA, &partB}, colors, true,
                                                             nullptr, &gains, nullptr);
         },
         RESULT_OK,
         [&](DumpBase& r) {
             auto& tuned = As<DumpTuneColorFromSingleLight>(r);
             EXPECT_TRUE(tuned.GetColorList() == colors);
             EXPECT_TRUE(tuned.GetColorGains() == gains);
             EXPECT_TRUE(tuned.GetOverlapErrors().empty());
             EXPECT_TRUE(r.GetPointCloud(1)->GetPointColor(7) == colors[1][7]);
         }},
        {"point-pair fit of three pairs",
         [&] {
             return RegistratePointCloud::_AlignPointPair(refMarks, fromMarks, &pairFit, &start);
         },
         RESULT_OK,
         [&](DumpBase& r) {
             EXPECT_EQ(
                 Entries(As<DumpPointCloudRegistrationAlignPointPair>(r).GetResultTransform()),
                 Entries(pairFit));
         }},
        {"point-pair fit into no result",
         [&] {
             return RegistratePointCloud::_AlignPointPair(refMarks, fromMarks, nullptr, nullptr);
         },
         RESULT_INVALID_INPUT, nullptr},
        {"ICP with marks, sample ids and a tolerance",
         [&] {
             PointCloudInfo refInfo, fromInfo;
             return RegistratePointCloud::_ICPRegistrate(
                 &ref, refInfo, &refMarks, &from, fromInfo, &fromMarks, &icp, &start, true,
                 static_cast<int>(sampleIds.size()), sampleIds.data(), &tolerance, 3);
         },
         RESULT_OK,
         [&](DumpBase& r) {
             EXPECT_EQ(Entries(As<DumpPointCloudRegistrationICP>(r).GetResultTransform()),
                       Entries(icp));
             PointCloud expected = zoltest::Moved(from, icp * start);
             EXPECT_EQ(Values(r.GetPointCloud(0)), Values(&expected));
         }},
        {"ICP given sample ids with no count",
         [&] {
             PointCloudInfo refInfo, fromInfo;
             return RegistratePointCloud::_ICPRegistrate(&ref, refInfo, nullptr, &from, fromInfo,
                                                         nullptr, &icp, nullptr, false, 0,
                                                         sampleIds.data(), nullptr, 1);
         },
         RESULT_INVALID_INPUT, nullptr},
        {"coarse alignment of a scan in a random pose",
         [&] { return RegistratePointCloud::AlignPointCloud(&from, &lost, &coarse, 0.2); },
         RESULT_OK,
         [&](DumpBase& r) {
             EXPECT_EQ(
                 Entries(As<DumpPointCloudRegistrationAlignPointCloud>(r).GetResultTransform()),
                 Entries(coarse));
             EXPECT_EQ(r.GetPointCloud(0)->GetPointCount(), lost.GetPointCount());
         }},
    };
    for (const auto& c : cases) {
        int status = 0;
        const std::vector<std::string> files = zoltest::RecordCall(c.call, &status);
        ASSERT_EQ(status, c.status) << c.name;
        ASSERT_EQ(files.size(), 1u) << c.name;
        std::unique_ptr<DumpBase> record =
            zoltest::ExpectReplays(files[0], c.status, c.name, c.note ? c.note : "");
        if (record && c.same) c.same(*record);
    }
}
