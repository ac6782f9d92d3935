// Matrix4x4: the empty-matrix rules and their log lines, deep copies, the log layout of
// Print, inversion and the rotation generators.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <zol/core/Matrix4x4.h>

#include "tests/common/TestData.h"

using namespace ZOL;

namespace {
Matrix4x4 FromRows(std::initializer_list<double> values) {
    Matrix4x4 m(0.0);
    int i = 0;
    for (double v : values) m.SetValue(i++, v);
    return m;
}

void ExpectNear(const Matrix4x4& a, const Matrix4x4& b, double tol) {
    ASSERT_FALSE(a.IsEmpty());
    ASSERT_FALSE(b.IsEmpty());
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(a.GetValue(i), b.GetValue(i), tol) << "entry " << i;
}

Matrix4x4 Identity() {
    Matrix4x4 m;
    m.InitIdentityTransform();
    return m;
}

Vector3 Unit(Vector3 v) {
    v.Normalise();
    return v;
}
}  // namespace

TEST(Matrix4x4, TranslationMovesAPoint) {
    Matrix4x4 m;
    m.GenerateTranslation(Vector3(1, 2, 3));
    const Vector3 p = m.TransformPoint(Vector3(1, 1, 1));
    EXPECT_EQ(p.x, 2.0);
    EXPECT_EQ(p.y, 3.0);
    EXPECT_EQ(p.z, 4.0);
    EXPECT_EQ(m.GetTranslation().z, 3.0);
    EXPECT_EQ(m.RotateVector(Vector3(1, 1, 1)).x, 1.0);
}

TEST(Matrix4x4, DefaultIsEmptyAndCopiesAreDeep) {
    Matrix4x4 empty;
    EXPECT_TRUE(empty.IsEmpty());
    Matrix4x4 copyOfEmpty(empty);
    EXPECT_TRUE(copyOfEmpty.IsEmpty());

    Matrix4x4 a(2.0);
    Matrix4x4 b(a);
    ASSERT_NE(a.mpValues, b.mpValues);
    b.SetValue(1, 2, 7.0);
    EXPECT_EQ(a.GetValue(6), 2.0);
    EXPECT_EQ(b.GetValue(6), 7.0);
    Matrix4x4 c;
    c = b;
    ASSERT_NE(c.mpValues, b.mpValues);
    EXPECT_EQ(c.GetValue(1, 2), 7.0);
    c.Free();
    EXPECT_TRUE(c.IsEmpty());
}

TEST(Matrix4x4, AssigningAnEmptyMatrixIsLoggedAndKeepsTheTarget) {
    zoltest::LogCapture log;
    Matrix4x4 target(5.0);
    const double* before = target.mpValues;
    target = Matrix4x4();
    EXPECT_EQ(target.mpValues, before);
    EXPECT_EQ(target.GetValue(15), 5.0);
    EXPECT_EQ(log.Lines(),
              std::vector<std::string>{"Error: Matrix4x4::operator = right matrix is empty"});
}

TEST(Matrix4x4, EmptyMatrixAccessWritesItsLogLine) {
    zoltest::LogCapture log;
    Matrix4x4 m;
    m.GetValue(3);
    m.GetValue(0, 1);
    m.SetValue(3, 1.0);
    m.SetValue(0, 1, 1.0);
    const Vector3 p = m.TransformPoint(Vector3(1, 2, 3));
    m.RotateVector(Vector3(1, 2, 3));
    EXPECT_EQ(m.QuadricValue(Vector3(1, 2, 3)), 0.0);
    EXPECT_TRUE(m.IsEmpty());
    EXPECT_EQ(p.y, 2.0);
    const std::vector<std::string> expected = {
        "Matrix4x4::GetValue: error matrix value is null",
        "Matrix4x4::GetValue: error matrix value is null",
        "Matrix4x4::SetValue: error matrix value is null",
        "Matrix4x4::SetValue: error matrix value is null",
        "Matrix4x4::TransformPoint: error matrix value is null",
        "Matrix4x4::RotateVector: error matrix value is null",
        "Matrix4x4::QuadricValue: error matrix is null"};
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
    const Matrix4x4 ba = b * a;
    EXPECT_EQ(ba.GetValue(0, 0), 1.0);
    EXPECT_EQ(ba.GetValue(1, 1), 7.0);
    EXPECT_EQ((a + b).GetValue(1, 0), 3.0);
    EXPECT_EQ((a - b).GetValue(0, 1), 2.0);
    EXPECT_EQ((a * 3.0).GetValue(0, 1), 6.0);
    Matrix4x4 c(a);
    c *= b;
    ExpectNear(c, ab, 0.0);
    c += a;
    EXPECT_EQ(c.GetValue(0, 0), 8.0);
    c -= a;
    c *= 0.5;
    EXPECT_EQ(c.GetValue(0, 0), 3.5);
}

TEST(Matrix4x4, QuadricValueOfDistanceToPlane) {
    // M = n n^T for the plane z = 2 gives the squared distance.
    Matrix4x4 m(0.0);
    m.SetValue(2, 2, 1.0);
    m.SetValue(2, 3, -2.0);
    m.SetValue(3, 2, -2.0);
    m.SetValue(3, 3, 4.0);
    EXPECT_EQ(m.QuadricValue(Vector3(7, -3, 5)), 9.0);
    EXPECT_EQ(m.QuadricValue(Vector3(1, 1, 2)), 0.0);
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
        ExpectNear(inv * affine, Identity(), 1e-9);
        ExpectNear(affine * inv, Identity(), 1e-9);
        EXPECT_EQ(inv.GetValue(3, 3), 1.0);
    }
}

TEST(Matrix4x4, AffineInverseOfSingularOrEmptyIsEmptyAndLogged) {
    zoltest::LogCapture log;
    EXPECT_TRUE(Matrix4x4(1.0).AffineInverse().IsEmpty());
    EXPECT_TRUE(Matrix4x4().AffineInverse().IsEmpty());
    EXPECT_EQ(log.Lines().size(), 2u);
}

TEST(Matrix4x4, VectorToVectorRotationTakesFromOntoTo) {
    const Vector3 pairs[][2] = {{{1, 0, 0}, {0, 1, 0}},
                                {Unit({1, 2, 3}), Unit({-3, 0.5, 2})},
                                {Unit({0, 0, 1}), Unit({0.01, 0, -1})}};
    for (const auto& pair : pairs) {
        Matrix4x4 r;
        r.GenerateVectorToVectorRotation(pair[0], pair[1]);
        const Vector3 mapped = r.RotateVector(pair[0]);
        EXPECT_NEAR(mapped.Distance(pair[1]), 0.0, 1e-12);
        // Orthonormal block, zero translation, affine last row.
        const Matrix4x4 rrt = r * r.AffineInverse();
        ExpectNear(rrt, Identity(), 1e-12);
        EXPECT_NEAR(r.AffineInverse().GetValue(0, 1), r.GetValue(1, 0), 1e-12);
        EXPECT_EQ(r.GetTranslation().Length(), 0.0);
        EXPECT_EQ(r.GetValue(3, 3), 1.0);
    }
}

TEST(Matrix4x4, OppositeOrEqualVectorsGiveTheIdentity) {
    Matrix4x4 r(3.0);
    r.GenerateVectorToVectorRotation(Vector3(1, 0, 0), Vector3(-1, 0, 0));
    ExpectNear(r, Identity(), 0.0);
    r.GenerateVectorToVectorRotation(Vector3(0, 1, 0), Vector3(0, 1, 0));
    ExpectNear(r, Identity(), 0.0);
}

TEST(Matrix4x4, LShapeRotationOfATranslatedLIsTheIdentity) {
    const Vector3 p[3] = {{0.1, 0.2, 0.3}, {1.0, -0.4, 0.5}, {0.2, 0.9, -0.7}};
    const Vector3 shift(5, 6, 7);
    Matrix4x4 r;
    r.GenerateLShapeRotation(p[0], p[1], p[2], p[0] + shift, p[1] + shift, p[2] + shift);
    ExpectNear(r, Identity(), 1e-15);
}

TEST(Matrix4x4, LShapeRotationEndsWithTheSecondLegAligned) {
    // The second step turns the rotated second leg onto the target's second leg.
    Matrix4x4 truth;
    truth.GenerateVectorToVectorRotation(Unit({1, 1, 0}), Unit({0, 0.3, 1}));
    const Vector3 p[3] = {{0.1, 0.2, 0.3}, {1.0, -0.4, 0.5}, {0.2, 0.9, -0.7}};
    Vector3 q[3];
    for (int i = 0; i < 3; ++i) q[i] = truth.TransformPoint(p[i]) + Vector3(5, 6, 7);
    Matrix4x4 r;
    r.GenerateLShapeRotation(p[0], p[1], p[2], q[0], q[1], q[2]);
    EXPECT_NEAR(Unit(r.RotateVector(p[2] - p[0])).Distance(Unit(q[2] - q[0])), 0.0, 1e-12);
    ExpectNear(r * r.AffineInverse(), Identity(), 1e-12);
    EXPECT_NEAR(r.AffineInverse().GetValue(2, 0), r.GetValue(0, 2), 1e-12);  // orthogonal
    EXPECT_EQ(r.GetTranslation().Length(), 0.0);
}

TEST(Matrix4x4, ScaleScalesEachAxis) {
    Matrix4x4 s;
    s.GenerateScale(Vector3(2, 3, 4));
    const Vector3 p = s.TransformPoint(Vector3(1, 1, 1));
    EXPECT_EQ(p.x, 2.0);
    EXPECT_EQ(p.y, 3.0);
    EXPECT_EQ(p.z, 4.0);
}
