// Colour harmonisation: the RGB / HSV conversions over one table, recovery of a known
// gain on a real coloured scan split in two, the meaning of the anchor flag, and the
// exact line and code of every refused call.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include <zol/core/PointCloud.h>
#include <zol/io/Parser.h>
#include <zol/pointcloud/IntrinsicColor.h>
#include <zol/runtime/Constants.h>

#include "tests/common/PointData.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

// A 20 x 20 patch of the plane z = 0 at spacing 0.01, starting at x0, with a colour that
// varies over it, scaled by gain.
PointCloud Patch(double x0, std::vector<Vector3>& colors, const Vector3& gain) {
    std::vector<Vector3> points;
    colors.clear();
    for (int r = 0; r < 20; ++r) {
        for (int c = 0; c < 20; ++c) {
            points.push_back(Vector3(x0 + 0.01 * c, 0.01 * r, 0.0));
            const double x = points.back().x;
            colors.push_back(
                Vector3((0.3 + 2 * x) * gain.x, (0.5 - 0.01 * r) * gain.y, 0.4 * gain.z));
        }
    }
    return zoltest::MakeCloud(points);
}

}  // namespace

TEST(IntrinsicColor, DarkerOverlappingScanIsBroughtToTheReference) {
    std::vector<std::vector<Vector3>> colors(2);
    PointCloud bright = Patch(0.0, colors[0], Vector3(1, 1, 1));
    PointCloud dark = Patch(0.1, colors[1], Vector3(0.5, 0.5, 0.5));
    std::vector<Vector3> gains;
    ASSERT_EQ(IntrinsicColor::TuneColorFromSingleLight({&bright, &dark}, colors, true, nullptr,
                                                       &gains, nullptr),
              RESULT_OK);
    EXPECT_EQ(gains[0], Vector3(1, 1, 1));
    EXPECT_NEAR(gains[1].Distance(Vector3(2, 2, 2)), 0.0, 1e-6);
    EXPECT_NEAR(colors[1][0].Distance(Vector3(0.5, 0.5, 0.4)), 0.0, 1e-6);
}

TEST(IntrinsicColor, ConversionsFollowTheSectorsAndTieRules) {
    const struct {
        Vector3 rgb, hsv;
    } pairs[] = {
        {{0.5, 0.5, 0.5}, {0, 0, 0.5}},  // grey
        {{0, 0, 0}, {0, 0, 0}},          // black
        {{1, 0, 0}, {0, 1, 1}},          // the primaries
        {{0, 1, 0}, {120, 1, 1}},
        {{0, 0, 1}, {240, 1, 1}},
        {{1, 0, 0.5}, {330, 1, 1}},           // red largest, blue above green: + 360
        {{1, 1, 0}, {60, 1, 1}},              // tie of red and green
        {{1, 0, 1}, {300, 1, 1}},             // tie of red and blue
        {{0.2, 0.4, 0.1}, {100, 0.75, 0.4}},  // green largest
    };
    for (const auto& p : pairs) {
        EXPECT_NEAR(IntrinsicColor::ConvertRGB2HSV(p.rgb).Distance(p.hsv), 0.0, 1e-12) << p.hsv.x;
        EXPECT_NEAR(IntrinsicColor::ConvertHSV2RGB(p.hsv).Distance(p.rgb), 0.0, 1e-12) << p.hsv.x;
    }
    const struct {
        Vector3 hsv, rgb;
        const char* line;
    } hsvOnly[] = {
        // From 360 on the sector wraps but its fraction does not: f = 6.5 for 390.
        {{390, 1, 1}, {1, 6.5, 0}, nullptr},
        {{390, 0.5, 0.8}, {0.8, 3.0, 0.4}, nullptr},
        {{360, 1, 1}, {1, 6, 0}, nullptr},
        {{-30, 1, 1}, {0, 0, 0}, "ConvertHSV2RGB: error h=-30"},
        {{-120, 0.5, 0.5}, {0, 0, 0}, "ConvertHSV2RGB: error h=-120"},
    };
    for (const auto& c : hsvOnly) {
        zoltest::LogCapture log;
        EXPECT_NEAR(IntrinsicColor::ConvertHSV2RGB(c.hsv).Distance(c.rgb), 0.0, 1e-12) << c.hsv.x;
        EXPECT_EQ(log.Lines(),
                  c.line ? std::vector<std::string>{c.line} : std::vector<std::string>{});
    }
}

TEST(IntrinsicColor, RecoversAKnownGainOnARealScanSplitInTwo) {
    std::unique_ptr<PointCloud> scan(
        Parser::ImportPointCloud(zoltest::DataPath("clouds/milk_color.ply")));
    ASSERT_TRUE(scan && scan->HasColor());
    // Two overlapping parts along x; in the overlap each part keeps every other point,
    // so paired points are different samples of the surface.
    std::vector<Vector3> points[2], original[2];
    for (int i = 0; i < scan->GetPointCount(); ++i) {
        const Vector3 p = scan->GetPointCoord(i);
        const bool inA = p.x < -0.04 && (p.x < -0.07 || i % 2 == 0);
        const bool inB = p.x > -0.07 && (p.x > -0.04 || i % 2 == 1);
        if (inA) points[0].push_back(p), original[0].push_back(scan->GetPointColor(i));
        if (inB) points[1].push_back(p), original[1].push_back(scan->GetPointColor(i));
    }
    PointCloud a = zoltest::MakeCloud(points[0]), b = zoltest::MakeCloud(points[1]);
    const Vector3 darken(0.5, 0.6, 0.7);
    std::vector<std::vector<Vector3>> darkened = {original[0], original[1]};
    for (Vector3& c : darkened[1]) c = Vector3(c.x * darken.x, c.y * darken.y, c.z * darken.z);

    {
        std::vector<std::vector<Vector3>> colors = darkened;
        std::vector<Vector3> gains;
        std::vector<double> errors;
        ASSERT_EQ(IntrinsicColor::TuneColorFromSingleLight({&a, &b}, colors, true, nullptr, &gains,
                                                           &errors),
                  RESULT_OK);
        EXPECT_TRUE(colors[0] == original[0]);
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(gains[1][k] * darken[k], 1.0, 0.01) << k;
        // Stated error of the recovered colours: mean below 0.002, every point below 0.01.
        double sum = 0.0, worst = 0.0;
        for (size_t i = 0; i < colors[1].size(); ++i) {
            for (int k = 0; k < 3; ++k) {
                const double e = std::abs(colors[1][i][k] - original[1][i][k]);
                sum += e, worst = std::max(worst, e);
            }
        }
        EXPECT_LT(sum / (3.0 * colors[1].size()), 0.002);
        EXPECT_LT(worst, 0.01);
        // What remains between paired points is the texture of the surface itself.
        std::vector<std::vector<Vector3>> untouched = {original[0], original[1]};
        std::vector<double> textureErrors;
        ASSERT_EQ(IntrinsicColor::TuneColorFromSingleLight({&a, &b}, untouched, true, nullptr,
                                                           nullptr, &textureErrors),
                  RESULT_OK);
        EXPECT_NEAR(errors[1] / textureErrors[1], 1.0, 0.05);
    }
    // Unanchored, both parts meet half-way: log gains sum to zero, ratio unchanged.
    std::vector<std::vector<Vector3>> colors = darkened;
    std::vector<Vector3> gains;
    ASSERT_EQ(
        IntrinsicColor::TuneColorFromSingleLight({&a, &b}, colors, false, nullptr, &gains, nullptr),
        RESULT_OK);
    for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(std::log(gains[0][k]) + std::log(gains[1][k]), 0.0, 1e-6) << k;
        EXPECT_NEAR(gains[1][k] / gains[0][k] * darken[k], 1.0, 0.02) << k;
    }
    EXPECT_EQ(a.GetPointCoord(7), points[0][7]);
}

TEST(IntrinsicColor, RefusedCallsLogOneLineAndKeepTheColours) {
    std::vector<Vector3> ca, cb;
    PointCloud a = Patch(0.0, ca, Vector3(1, 1, 1)), b = Patch(0.1, cb, Vector3(0.5, 0.5, 0.5));
    PointCloud single = zoltest::MakeCloud({{0, 0, 0}});
    PointCloud holed = zoltest::MakeCloud({{0, 0, 0}, {NAN, 0, 0}});
    double zero = 0.0, nan = NAN, good = 0.01;
    const std::vector<std::vector<Vector3>> two = {ca, cb}, cut = {ca, {cb.begin(), cb.end() - 1}};
    const int bad = RESULT_INVALID_INPUT;
    const struct {
        int code;
        std::string line;  // after "TuneColorFromSingleLight: "
        std::vector<IPointCloud*> clouds;
        std::vector<std::vector<Vector3>> colors;
        double* density;
    } cases[] = {
        {bad, "cloudCount != colorListCount", {&a, &b}, {ca}, nullptr},
        {bad, "invalid cloudCount < 1", {}, {}, nullptr},
        {RESULT_OK, "cloudCount == 1, no need to process", {&a}, {ca}, &zero},
        {bad, "(*pointDensity) < REAL_TOL", {&a, &b}, two, &zero},
        {bad, "(*pointDensity) < REAL_TOL", {&a, &b}, two, &nan},
        {bad, "pointCloud is NULL: cloudId = 1", {&a, nullptr}, two, &good},
        {bad, "pointCount < 2: cloudId = 0", {&single, &b}, {{Vector3()}, cb}, nullptr},
        {bad, "colorList size != pointCount: cloudId = 1", {&a, &b}, cut, nullptr},
        {bad, "non-finite coordinate: cloudId = 1", {&a, &holed}, {ca, {{}, {}}}, nullptr},
    };
    for (const auto& c : cases) {
        zoltest::LogCapture log;
        std::vector<std::vector<Vector3>> colors = c.colors;
        std::vector<Vector3> gains = {Vector3(7, 7, 7)};
        EXPECT_EQ(IntrinsicColor::TuneColorFromSingleLight(c.clouds, colors, true, c.density,
                                                           &gains, nullptr),
                  c.code)
            << c.line;
        EXPECT_EQ(log.Lines(), std::vector<std::string>{"TuneColorFromSingleLight: " + c.line});
        EXPECT_TRUE(colors == c.colors) << c.line;
        EXPECT_EQ(gains, std::vector<Vector3>{Vector3(7, 7, 7)}) << c.line;
    }
}
