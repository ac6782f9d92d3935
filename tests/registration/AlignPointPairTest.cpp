// RegistratePointCloud::_AlignPointPair: hand-computed frames for one, two and three
// pairs, which pairs decide the rotation, and the log line of each bad argument.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <zol/registration/RegistratePointCloud.h>
#include <zol/runtime/Constants.h>

#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

Matrix4x4 Translation(double x, double y, double z) {
    Matrix4x4 m;
    m.GenerateTranslation(Vector3(x, y, z));
    return m;
}

void ExpectRows(const Matrix4x4& m, const std::vector<double>& rows, double tolerance) {
    for (int i = 0; i < 12; ++i) EXPECT_NEAR(m.GetValue(i), rows[i], tolerance) << "entry " << i;
    EXPECT_EQ(m.GetValue(3, 3), 1.0);
}

}  // namespace

TEST(AlignPointPairTest, HandComputedFrames) {
    const Matrix4x4 shiftX = Translation(0.5, 0, 0), shiftZ = Translation(0, 0, 2);
    const Matrix4x4 ignored = Translation(9, 9, 9);
    struct Case {
        const char* name;
        std::vector<Vector3> ref, from;
        const Matrix4x4* init;
        std::vector<double> rows;  // expected top three rows
    } cases[] = {
        // One pair: the translation from the moved from point to the ref point.
        {"one pair", {{1, 1, 1}}, {{2, 0, 0}}, nullptr, {1, 0, 0, -1, 0, 1, 0, 1, 0, 0, 1, 1}},
        {"one pair, init",
         {{1, 2, 3}},
         {{0, 0, 0}},
         &shiftX,
         {1, 0, 0, 0.5, 0, 1, 0, 2, 0, 0, 1, 3}},
        // Two pairs: x onto y by the minimal rotation (90 degrees about z), midpoints
        // matched; the roll about the pair axis stays free.
        {"two pairs",
         {{5, 1, 0}, {5, -1, 0}},
         {{1, 0, 0}, {-1, 0, 0}},
         nullptr,
         {0, -1, 0, 5, 1, 0, 0, 0, 0, 0, 1, 0}},
        {"two pairs, init",
         {{5, 1, 0}, {5, -1, 0}},
         {{1, 0, 0}, {-1, 0, 0}},
         &shiftZ,
         {0, -1, 0, 5, 1, 0, 0, 0, 0, 0, 1, -2}},
        // Three pairs: 90 degrees about z and a shift; the initial transform is ignored.
        {"three pairs, init ignored",
         {{1, 3, 3}, {0, 2, 3}, {2, 1, 3}},
         {{1, 0, 0}, {0, 1, 0}, {-1, -1, 0}},
         &ignored,
         {0, -1, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Matrix4x4 result;
        ASSERT_EQ(RegistratePointCloud::_AlignPointPair(c.ref, c.from, &result, c.init), RESULT_OK);
        ExpectRows(result, c.rows, 1e-12);
    }
}

TEST(AlignPointPairTest, OnlyTheFirstTwoPairsAndTheCentroidsDecideTheRotation) {
    std::vector<Vector3> from = {{1, 0, 0}, {0, 2, 0}, {0, 0, 3}, {1, 1, 1}};
    std::vector<Vector3> ref = {{0, 1, 0}, {-2, 0.1, 0}, {0.2, 0, 3}, {3, 1, 0}};
    Matrix4x4 base, tailSwapped, headSwapped;
    ASSERT_EQ(RegistratePointCloud::_AlignPointPair(ref, from, &base, nullptr), RESULT_OK);
    std::swap(from[2], from[3]);
    std::swap(ref[2], ref[3]);
    ASSERT_EQ(RegistratePointCloud::_AlignPointPair(ref, from, &tailSwapped, nullptr), RESULT_OK);
    std::swap(from[0], from[2]);
    std::swap(ref[0], ref[2]);
    ASSERT_EQ(RegistratePointCloud::_AlignPointPair(ref, from, &headSwapped, nullptr), RESULT_OK);
    double tailDifference = 0.0, headDifference = 0.0;
    for (int i = 0; i < 16; ++i) {
        tailDifference += std::abs(base.GetValue(i) - tailSwapped.GetValue(i));
        headDifference += std::abs(base.GetValue(i) - headSwapped.GetValue(i));
    }
    EXPECT_LT(tailDifference, 1e-12);
    EXPECT_GT(headDifference, 0.1);
}

TEST(AlignPointPairTest, BadArgumentsLogTheirLineAndLeaveTheResult) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<Vector3> two = {{0, 0, 0}, {1, 0, 0}}, one = {{0, 0, 0}}, none;
    const std::vector<Vector3> withNan = {{0, 0, 0}, {nan, 0, 0}};
    struct Case {
        std::vector<Vector3> ref, from;
        bool nullResult;
        const char* line;
    } cases[] = {
        {two, one, false,
         "RegistratePointCloud::_AlignPointPair: pointsRef.size() != pointsFrom.size()"},
        {none, none, false, "RegistratePointCloud::_AlignPointPair: pointCount == 0 "},
        {two, two, true, "RegistratePointCloud::_AlignPointPair: resultTransform == NULL"},
        {two, withNan, false, "RegistratePointCloud::_AlignPointPair: non-finite point"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        zoltest::LogCapture log;
        Matrix4x4 result(7.0);
        EXPECT_EQ(RegistratePointCloud::_AlignPointPair(c.ref, c.from,
                                                        c.nullResult ? nullptr : &result, nullptr),
                  RESULT_INVALID_INPUT);
        EXPECT_EQ(log.Lines(), std::vector<std::string>{c.line});
        EXPECT_EQ(result.GetValue(5), 7.0);
    }
}
