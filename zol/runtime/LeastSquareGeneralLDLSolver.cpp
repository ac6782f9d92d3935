// Dense least squares for tall, thin systems (6 unknowns in ICP, 4 in sphere fits):
// the small normal matrix is formed once, equilibrated to a unit diagonal and factored
// by a pivoted L D L^T, whose D tells singular and indefinite cases apart from sound ones.
#include <zol/runtime/LeastSquareSolverInternal.h>

#include <cmath>

#include <Eigen/Dense>

#include <zol/runtime/Constants.h>

namespace ZOL {

namespace {

// Pivots of the unit-diagonal normal matrix below this count as zero.
const double kPivotTol = 1e-13;

}  // namespace

struct LeastSquareGeneralLDLSolverImpl {
    Eigen::MatrixXd a;  // scaled copy of A
    Eigen::VectorXd scale;
    Eigen::LDLT<Eigen::MatrixXd> ldlt;
};

LeastSquareGeneralLDLSolver::LeastSquareGeneralLDLSolver() : mpImpl(nullptr) {}

LeastSquareGeneralLDLSolver::~LeastSquareGeneralLDLSolver() { delete mpImpl; }

int LeastSquareGeneralLDLSolver::Factorize(const GeneralMatrix& A) {
    delete mpImpl;
    mpImpl = nullptr;
    if (!A.IsInitialized()) return RESULT_INVALID_INPUT;
    const int rows = A.GetRowCount();
    const int cols = A.GetColCount();
    const Eigen::Map<const Eigen::MatrixXd> source(A.GetData(), rows, cols);
    if (!source.allFinite()) return RESULT_INVALID_INPUT;

    auto* impl = new LeastSquareGeneralLDLSolverImpl;
    impl->a = source;
    impl->scale.resize(cols);
    for (int c = 0; c < cols; ++c) {
        const double norm = impl->a.col(c).norm();
        if (!(norm > 0.0) || !std::isfinite(norm)) {
            delete impl;
            return RESULT_FAIL;
        }
        impl->scale[c] = 1.0 / norm;
        impl->a.col(c) *= impl->scale[c];
    }
    Eigen::MatrixXd normal(cols, cols);
    normal.setZero();
    normal.selfadjointView<Eigen::Lower>().rankUpdate(impl->a.transpose());
    impl->ldlt.compute(normal.selfadjointView<Eigen::Lower>());
    bool ok = impl->ldlt.info() == Eigen::Success;
    if (ok) {
        const Eigen::VectorXd d = impl->ldlt.vectorD();
        for (int c = 0; c < cols && ok; ++c) ok = std::isfinite(d[c]) && d[c] >= kPivotTol;
    }
    if (!ok) {
        delete impl;
        return RESULT_FAIL;
    }
    mpImpl = impl;
    return RESULT_OK;
}

int LeastSquareGeneralLDLSolver::Solve(const std::vector<double>& b, std::vector<double>& x) const {
    if (mpImpl == nullptr) return RESULT_NOT_READY;
    const Eigen::Index rows = mpImpl->a.rows();
    if (static_cast<Eigen::Index>(b.size()) != rows) return RESULT_INVALID_INPUT;
    const Eigen::Map<const Eigen::VectorXd> rhs(b.data(), rows);
    const Eigen::VectorXd c = mpImpl->a.transpose() * rhs;
    Eigen::VectorXd y = mpImpl->ldlt.solve(c);
    // One refinement pass recovers the digits lost to squaring the condition number.
    const Eigen::VectorXd residual = c - mpImpl->a.transpose() * (mpImpl->a * y);
    y += mpImpl->ldlt.solve(residual);
    const Eigen::VectorXd result = y.cwiseProduct(mpImpl->scale);
    if (!result.allFinite()) return RESULT_STEP_FAIL;
    x.assign(result.data(), result.data() + result.size());
    return RESULT_OK;
}

}  // namespace ZOL
