// Matrix4x4: the empty-matrix rules and their log lines, deep copies, the log layout of
// Print, inversion and the rotation generators.
#include <gtest/gtest.h>

#include <random>

#include <zol/core/Matrix4x4.h>

#include "tests/common/MeshFactory.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {
Matrix4x4 FromRows(std::initializer_list<double> values) {
    Matrix4x4 m(0.0);
    int i = 0;
    for (double v : values) m.SetValue(i++, v);
    return m;
}

void ExpectIdentity(const Matrix4x4& a, double tol) {
    ASSERT_FALSE(a.IsEmpty());
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(a.GetValue(i), i % 5 == 0 ? 1.0 : 0.0, tol) << i;
}

Vector3 Unit(Vector3 v) {
    v.Normalise();
    return v;
}

// A rotation is orthonormal with zero translation: its affine inverse is its transpose.
void ExpectRotation(const Matrix4x4& r) {
    const Matrix4x4 inv = r.AffineInverse();
    ExpectIdentity(r * inv, 1e-12);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) EXPECT_NEAR(inv.GetValue(i, j), r.GetValue(j, i), 1e-12);
    }
    EXPECT_EQ(r.GetTranslation().Length(), 0.0);
}
}  // namespace

TEST(Matrix4x4, TranslationAndScaleMoveAPoint) {
    Matrix4x4 m;
    m.GenerateTranslation(Vector3(1, 2, 3));
    EXPECT_EQ(m.TransformPoint(Vector3(1, 1, 1)), Vector3(2, 3, 4));
    EXPECT_EQ(m.RotateVector(Vector3(1, 1, 1)), Vector3(1, 1, 1));
    m.GenerateScale(Vector3(2, 3, 4));
    EXPECT_EQ(m.TransformPoint(Vector3(1, 1, 1)), Vector3(2, 3, 4));
}

TEST(Matrix4x4, EmptyMatricesAreRefusedWithTheirLogLine) {
    zoltest::LogCapture log;
    Matrix4x4 target(5.0);
    const double* before = target.mpValues;
    target = Matrix4x4();
    EXPECT_EQ(target.mpValues, before);
    EXPECT_EQ(target.GetValue(15), 5.0);
    Matrix4x4 m;
    m.GetValue(3);
    m.GetValue(0, 1);
    m.SetValue(3, 1.0);
    m.SetValue(0, 1, 1.0);
    EXPECT_EQ(m.TransformPoint(Vector3(1, 2, 3)).y, 2.0);
    m.RotateVector(Vector3(1, 2, 3));
    EXPECT_EQ(m.QuadricValue(Vector3(1, 2, 3)), 0.0);
    EXPECT_TRUE(m.AffineInverse().IsEmpty());
    EXPECT_TRUE(Matrix4x4(1.0).AffineInverse().IsEmpty());
    EXPECT_TRUE(m.IsEmpty());
    const std::vector<std::string> expected = {
        "Error: Matrix4x4::operator = right matrix is empty",
        "Matrix4x4::GetValue: error matrix value is null",
        "Matrix4x4::GetValue: error matrix value is null",
        "Matrix4x4::SetValue: error matrix value is null",
        "Matrix4x4::SetValue: error matrix value is null",
        "Matrix4x4::TransformPoint: error matrix value is null",
        "Matrix4x4::RotateVector: error matrix value is null",
        "Matrix4x4::QuadricValue: error matrix is null",
        "Matrix4x4::AffineInverse: error matrix value is null",
        "Matrix4x4::AffineInverse: matrix is singular"};
    EXPECT_EQ(log.Lines(), expected);
}

TEST(Matrix4x4, PrintWritesRowsWithTrailingBlanksAndZeroForTinyEntries) {
    zoltest::LogCapture log;
    Matrix4x4 m = FromRows({1, 0.5, 1e-16, -2,         //
                            0, -1e-16, 3.25, 1234567,  //
                            0, 0, 1, 0,                //
                            0, 0, 0, 1});
    m.Print();
    Matrix4x4().Print();
    const std::vector<std::string> expected = {
        "Matrix4x4::Print: ", "1 0.5 0 -2 ", "0 0 3.25 1.23457e+06 ",
        "0 0 1 0 ",           "0 0 0 1 ",    "Matrix4x4::Print: mpValues == NULL"};
    EXPECT_EQ(log.Lines(), expected);
}

TEST(Matrix4x4, ArithmeticMatchesHandComputedValues) {
    const Matrix4x4 a = FromRows({1, 2, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    const Matrix4x4 b = FromRows({1, 0, 0, 0, 3, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    const Matrix4x4 ab = a * b;  // this on the left
    EXPECT_EQ(ab.GetValue(0, 0), 7.0);
    EXPECT_EQ(ab.GetValue(0, 1), 2.0);
    EXPECT_EQ(ab.GetValue(1, 0), 3.0);
    EXPECT_EQ((b * a).GetValue(1, 1), 7.0);
    EXPECT_EQ((a + b).GetValue(1, 0), 3.0);
    EXPECT_EQ((a - b).GetValue(0, 1), 2.0);
    EXPECT_EQ((a * 3.0).GetValue(0, 1), 6.0);
    Matrix4x4 c(a), d;
    d = b;
    c *= b;  // also this on the left
    c += a;
    c *= 0.5;
    d.SetValue(1, 0, 8.0);
    EXPECT_EQ(c.GetValue(0, 0), 4.0);
    EXPECT_EQ(c.GetValue(1, 0), 1.5);
    EXPECT_EQ(a.GetValue(0, 0) + b.GetValue(1, 0), 4.0);  // copies are deep
    EXPECT_TRUE(Matrix4x4(Matrix4x4()).IsEmpty());
    // n n^T for the plane z = 2 gives the squared distance.
    const Matrix4x4 q = FromRows({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, -2, 0, 0, -2, 4});
    EXPECT_EQ(q.QuadricValue(Vector3(7, -3, 5)), 9.0);
    EXPECT_EQ(q.QuadricValue(Vector3(1, 1, 2)), 0.0);
}

TEST(Matrix4x4, AffineInverseTimesMatrixIsIdentity) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(-2.0, 2.0);
    for (int trial = 0; trial < 20; ++trial) {
        Matrix4x4 m(0.0);
        for (int i = 0; i < 12; ++i) m.SetValue(i, u(rng));
        m.SetValue(0, 0, 0.0);  // forces a row exchange in the elimination
        m.SetValue(12, 9.0);    // the bottom row is ignored: (0, 0, 0, 1) is used
        const Matrix4x4 inv = m.AffineInverse();
        Matrix4x4 affine(m);
        affine.SetValue(12, 0.0);
        affine.SetValue(15, 1.0);
        ExpectIdentity(inv * affine, 1e-9);
        ExpectIdentity(affine * inv, 1e-9);
        EXPECT_EQ(inv.GetValue(3, 3), 1.0);
    }
}

TEST(Matrix4x4, VectorToVectorRotationTakesFromOntoTo) {
    const Vector3 pairs[][2] = {{{1, 0, 0}, {0, 1, 0}},
                                {Unit({1, 2, 3}), Unit({-3, 0.5, 2})},
                                {Unit({0, 0, 1}), Unit({0.01, 0, -1})}};
    for (const auto& pair : pairs) {
        Matrix4x4 r;
        r.GenerateVectorToVectorRotation(pair[0], pair[1]);
        EXPECT_NEAR(r.RotateVector(pair[0]).Distance(pair[1]), 0.0, 1e-12);
        ExpectRotation(r);
        EXPECT_EQ(r.GetValue(3, 3), 1.0);
    }
    // Opposite or equal vectors give the identity.
    Matrix4x4 r(3.0);
    r.GenerateVectorToVectorRotation(Vector3(1, 0, 0), Vector3(-1, 0, 0));
    ExpectIdentity(r, 0.0);
    r.GenerateVectorToVectorRotation(Vector3(0, 1, 0), Vector3(0, 1, 0));
    ExpectIdentity(r, 0.0);
}

TEST(Matrix4x4, LShapeRotationEndsWithTheSecondLegAligned) {
    const Vector3 p[3] = {{0.1, 0.2, 0.3}, {1.0, -0.4, 0.5}, {0.2, 0.9, -0.7}};
    const Vector3 shift(5, 6, 7);
    Matrix4x4 r;
    r.GenerateLShapeRotation(p[0], p[1], p[2], p[0] + shift, p[1] + shift, p[2] + shift);
    ExpectIdentity(r, 1e-15);

    Matrix4x4 truth;
    truth.GenerateVectorToVectorRotation(Unit({1, 1, 0}), Unit({0, 0.3, 1}));
    Vector3 q[3];
    for (int i = 0; i < 3; ++i) q[i] = truth.TransformPoint(p[i]) + shift;
    r.GenerateLShapeRotation(p[0], p[1], p[2], q[0], q[1], q[2]);
    EXPECT_NEAR(Unit(r.RotateVector(p[2] - p[0])).Distance(Unit(q[2] - q[0])), 0.0, 1e-12);
    ExpectRotation(r);
}
