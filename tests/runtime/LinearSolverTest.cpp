// Dense matrices, the symmetric eigen solver and the three least-squares solvers:
// known answers, singular systems failing cleanly, and the direct and iterative
// sparse paths agreeing.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <zol/runtime/Constants.h>
#include <zol/runtime/GeneralMatrixInternal.h>
#include <zol/runtime/LeastSquareSolverInternal.h>

#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

// A 1D smoothing system of the shape normal smoothing builds: a data row per unknown
// with weight w and a row x_i - mean(neighbours) = 0, some unknowns pinned at 1e10.
std::vector<SparseTriplet> SmoothingSystem(int n, double w, std::vector<double>& b, int& rows) {
    std::mt19937 rng(7);
    std::normal_distribution<double> noise(0.0, 0.3);
    std::vector<SparseTriplet> t;
    b.assign(n, 0.0);
    rows = n;
    for (int i = 0; i < n; ++i) {
        const double value = std::sin(0.01 * i) + noise(rng);
        const double weight = (i % 97 == 0) ? 1e10 : w;
        t.push_back({i, i, weight});
        b[i] = weight * value;
        if (i % 97 == 0) continue;
        t.push_back({rows, i, 1.0});
        for (int d : {-2, -1, 1, 2}) t.push_back({rows, (i + d + n) % n, -0.25});
        b.push_back(0.0);
        ++rows;
    }
    return t;
}

}  // namespace

TEST(GeneralMatrix, IsColumnMajorZeroFilledAndRefusesWritesBeforeInit) {
    GeneralMatrix m(2, 3);
    m.SetValue(1, 2, 5.0);
    EXPECT_EQ(m.GetData()[2 * 2 + 1], 5.0);
    EXPECT_EQ(m.GetValue(0, 0), 0.0);
    GeneralMatrix3 m3;
    m3.SetValue(0, 1, 4.0);
    EXPECT_EQ(m3.GetData()[3], 4.0);
    GeneralMatrix copy = m;
    m.SetValue(1, 2, 6.0);
    EXPECT_EQ(copy.GetValue(1, 2), 5.0);

    zoltest::LogCapture log;
    GeneralMatrix none;
    none.SetValue(0, 0, 1.0);
    m3.Free();
    m3.SetValue(0, 0, 1.0);
    EXPECT_FALSE(none.IsInitialized());
    EXPECT_EQ(m3.GetValue(0, 0), 0.0);
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{"Error: GeneralMatrix is not initialize: ",
                                                     "Error: GeneralMatrix3 is not initialize: "}));
}

TEST(GeneralMatrixEigenSolver, EigenvaluesAscendWithUnitEigenvectorsAndBadMatricesFail) {
    // Rotated diag(5, 1, 3): eigenvalues 1, 3, 5 belong to the rotated y, z, x axes.
    const double c = std::cos(0.4), s = std::sin(0.4);
    const double r[3][3] = {{c, -s, 0}, {s, c, 0}, {0, 0, 1}};
    const double d[3] = {5, 1, 3};
    GeneralMatrix3 m;
    GeneralMatrix g(3, 3);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            double v = 0;
            for (int k = 0; k < 3; ++k) v += r[i][k] * d[k] * r[j][k];
            m.SetValue(i, j, v);
            g.SetValue(i, j, v);
        }
    GeneralMatrixEigenSolver solver, direct, general;
    ASSERT_EQ(solver.Compute(m), RESULT_OK);
    ASSERT_EQ(direct.ComputeDirect(m), RESULT_OK);
    ASSERT_EQ(general.Compute(g), RESULT_OK);
    const int axisOf[3] = {1, 2, 0};
    const double expected[3] = {1, 3, 5};
    for (const GeneralMatrixEigenSolver* s3 : {&solver, &direct, &general}) {
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(s3->GetEigenValue(i), expected[i], 1e-12);
            const Vector3 v = s3->GetEigenVector(i);
            EXPECT_NEAR(v.Length(), 1.0, 1e-14);
            const Vector3 axis(r[0][axisOf[i]], r[1][axisOf[i]], r[2][axisOf[i]]);
            EXPECT_NEAR(std::abs(v * axis), 1.0, 1e-12);
        }
    }
    // Bad matrices fail; reading a solver that holds no decomposition is logged.
    zoltest::LogCapture log;
    GeneralMatrixEigenSolver bad;
    EXPECT_EQ(bad.GetEigenVector(0), Vector3());
    EXPECT_EQ(log.Lines(), std::vector<std::string>{
                               "Error: GeneralMatrixEigenSolver::GetEigenVector mpImpl is NULL"});
    GeneralMatrix3 nan;
    nan.SetValue(1, 1, std::nan(""));
    EXPECT_EQ(bad.Compute(nan), RESULT_FAIL);
    EXPECT_EQ(bad.ComputeDirect(nan), RESULT_FAIL);
    EXPECT_EQ(bad.Compute(GeneralMatrix(2, 3)), RESULT_INVALID_INPUT);
    EXPECT_EQ(bad.Compute(GeneralMatrix()), RESULT_INVALID_INPUT);
    EXPECT_EQ(bad.GetDimension(), 0);
}

TEST(LeastSquareSolvers, AllThreeGiveTheKnownLeastSquaresAnswers) {
    struct Case {
        const char* name;
        int rows, cols;
        std::vector<SparseTriplet> a;
        std::vector<double> b, x;
    };
    // Line y = 2 x + 1 through six exact samples; entries at one position add up, so
    // (2, 0) comes in two halves.
    std::vector<SparseTriplet> line = {{2, 0, 1.0}};
    for (int i = 0; i < 6; ++i) line.insert(line.end(), {{i, 0, i == 2 ? 1.0 : i}, {i, 1, 1.0}});
    const Case cases[] = {
        {"line", 6, 2, line, {1, 3, 5, 7, 9, 11}, {2, 1}},
        {"x = 1, 2, 6 gives the mean", 3, 1, {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}}, {1, 2, 6}, {3}},
        {"square, tiny pivot", 2, 2, {{0, 0, 1e-6}, {0, 1, 1}, {1, 0, 1}}, {3e-6 + 4, 3}, {3, 4}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        GeneralMatrix dense(c.rows, c.cols);
        for (const SparseTriplet& t : c.a)
            dense.SetValue(t.row, t.col, dense.GetValue(t.row, t.col) + t.value);
        LeastSquareSparseLUSolver lu;
        LeastSquareSparseLLTSolver llt;
        LeastSquareGeneralLDLSolver ldl;
        ASSERT_EQ(lu.Factorize(c.rows, c.cols, c.a), RESULT_OK);
        ASSERT_EQ(llt.Factorize(c.rows, c.cols, c.a), RESULT_OK);
        ASSERT_EQ(ldl.Factorize(dense), RESULT_OK);
        std::vector<double> x[3];
        ASSERT_EQ(lu.Solve(c.b, x[0]), RESULT_OK);
        ASSERT_EQ(llt.Solve(c.b, x[1]), RESULT_OK);
        ASSERT_EQ(ldl.Solve(c.b, x[2]), RESULT_OK);
        for (const std::vector<double>& got : x) {
            ASSERT_EQ(got.size(), c.x.size());
            for (size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], c.x[i], 1e-9);
        }
    }
}

TEST(LeastSquareSolvers, BadArgumentsAndSingularSystemsFailWithoutTouchingTheOutput) {
    std::vector<double> x = {7.0};
    EXPECT_EQ(LeastSquareSparseLUSolver().Solve({1}, x), RESULT_NOT_READY);
    EXPECT_EQ(LeastSquareSparseLLTSolver().Solve({1}, x), RESULT_NOT_READY);
    EXPECT_EQ(LeastSquareGeneralLDLSolver().Solve({1}, x), RESULT_NOT_READY);
    LeastSquareSparseLUSolver lu;
    EXPECT_EQ(lu.Factorize(0, 1, {}), RESULT_INVALID_INPUT);
    EXPECT_EQ(lu.Factorize(2, 1, {{2, 0, 1.0}}), RESULT_INVALID_INPUT);
    EXPECT_EQ(lu.Factorize(2, 1, {{0, -1, 1.0}}), RESULT_INVALID_INPUT);
    EXPECT_EQ(lu.Factorize(2, 1, {{0, 0, std::nan("")}}), RESULT_INVALID_INPUT);
    EXPECT_EQ(LeastSquareGeneralLDLSolver().Factorize(GeneralMatrix()), RESULT_INVALID_INPUT);
    // Duplicate columns, a zero column and near-duplicate columns; a failed factorisation
    // leaves the solver not ready.
    const std::vector<std::vector<SparseTriplet>> singular = {
        {{0, 0, 1}, {0, 1, 1}, {1, 0, 2}, {1, 1, 2}, {2, 0, 3}, {2, 1, 3}},
        {{0, 0, 1}, {1, 0, 2}, {2, 0, 3}},
        {{0, 0, 1}, {0, 1, 1}, {1, 0, 2}, {1, 1, 2 + 1e-12}, {2, 0, 3}, {2, 1, 3}},
    };
    for (const auto& triplets : singular) {
        SCOPED_TRACE(triplets.size());
        GeneralMatrix dense(3, 2);
        for (const SparseTriplet& t : triplets) dense.SetValue(t.row, t.col, t.value);
        LeastSquareSparseLLTSolver llt;
        LeastSquareGeneralLDLSolver ldl;
        EXPECT_EQ(lu.Factorize(3, 2, triplets), RESULT_FAIL);
        EXPECT_EQ(llt.Factorize(3, 2, triplets), RESULT_FAIL);
        EXPECT_EQ(ldl.Factorize(dense), RESULT_FAIL);
        EXPECT_EQ(lu.Solve({1, 2, 3}, x), RESULT_NOT_READY);
        EXPECT_EQ(llt.Solve({1, 2, 3}, x), RESULT_NOT_READY);
        EXPECT_EQ(ldl.Solve({1, 2, 3}, x), RESULT_NOT_READY);
    }
    EXPECT_EQ(x, std::vector<double>{7.0});
    ASSERT_EQ(lu.Factorize(2, 1, {{0, 0, 1.0}, {1, 0, 1.0}}), RESULT_OK);
    EXPECT_EQ(lu.Solve({1.0}, x), RESULT_INVALID_INPUT);
    EXPECT_EQ(lu.Solve({1.0, 3.0}, {0.0, 0.0}, x), RESULT_INVALID_INPUT);
    ASSERT_EQ(lu.Solve({1.0, 3.0}, x), RESULT_OK);
    EXPECT_NEAR(x[0], 2.0, 1e-14);
}

TEST(LeastSquareSparseLUSolver, IterativePathAgreesWithTheDirectFactors) {
    // Above the direct limit the LU solver runs CGLS; the Cholesky factor is the oracle.
    const int n = LeastSquareSparseLUSolver::kDirectLimit + 500;
    std::vector<double> b;
    int rows = 0;
    const std::vector<SparseTriplet> t = SmoothingSystem(n, 0.5, b, rows);
    LeastSquareSparseLLTSolver llt;
    std::vector<double> expected;
    ASSERT_EQ(llt.Factorize(rows, n, t), RESULT_OK);
    ASSERT_EQ(llt.Solve(b, expected), RESULT_OK);

    LeastSquareSparseLUSolver lu;
    ASSERT_EQ(lu.Factorize(rows, n, t), RESULT_OK);
    lu.SetPrecisionDigits(8);
    std::vector<double> start(n, 0.0), x;
    for (int i = 0; i < n; ++i) start[i] = b[i] / (i % 97 == 0 ? 1e10 : 0.5);
    ASSERT_EQ(lu.Solve(b, start, x), RESULT_OK);
    for (int i = 0; i < n; ++i) ASSERT_NEAR(x[i], expected[i], 1e-6) << i;  // NaN fails too
    for (int i = 0; i < n; i += 97) EXPECT_NEAR(x[i], b[i] / 1e10, 1e-8);   // pinned values

    // The same system below the limit goes through the LU factor.
    const int m = 3000;
    const std::vector<SparseTriplet> small = SmoothingSystem(m, 0.5, b, rows);
    ASSERT_EQ(llt.Factorize(rows, m, small), RESULT_OK);
    ASSERT_EQ(llt.Solve(b, expected), RESULT_OK);
    ASSERT_EQ(lu.Factorize(rows, m, small), RESULT_OK);
    ASSERT_EQ(lu.Solve(b, x), RESULT_OK);
    for (int i = 0; i < m; ++i) ASSERT_NEAR(x[i], expected[i], 1e-9);
}
