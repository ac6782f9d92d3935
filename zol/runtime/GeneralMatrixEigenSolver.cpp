// Symmetric eigen decomposition over Eigen's self-adjoint solver. The 3 x 3 case, run
// once per point by the covariance fits, uses fixed-size storage and allocates only
// the first time a solver object is used.
#include <zol/runtime/GeneralMatrixInternal.h>

#include <cmath>

#include <Eigen/Dense>

#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

struct GeneralMatrixEigenSolverImpl {
    int dimension = 0;
    Eigen::VectorXd values;   // ascending
    Eigen::MatrixXd vectors;  // unit columns, column i belongs to values[i]
};

namespace {

bool AllFinite(const double* values, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (!std::isfinite(values[i])) return false;
    }
    return true;
}

}  // namespace

GeneralMatrixEigenSolver::GeneralMatrixEigenSolver() : mpImpl(nullptr) {}

GeneralMatrixEigenSolver::~GeneralMatrixEigenSolver() { delete mpImpl; }

int GeneralMatrixEigenSolver::Compute(const GeneralMatrix3& matrix) {
    return Compute3(matrix, false);
}

int GeneralMatrixEigenSolver::ComputeDirect(const GeneralMatrix3& matrix) {
    return Compute3(matrix, true);
}

int GeneralMatrixEigenSolver::Compute3(const GeneralMatrix3& matrix, bool direct) {
    // Keep the allocation of a previous success: the solver is reused per point.
    GeneralMatrixEigenSolverImpl* impl = mpImpl;
    mpImpl = nullptr;
    if (!matrix.IsInitialized()) {
        delete impl;
        return RESULT_INVALID_INPUT;
    }
    if (!AllFinite(matrix.GetData(), 9)) {
        delete impl;
        return RESULT_FAIL;
    }
    const Eigen::Map<const Eigen::Matrix3d> m(matrix.GetData());
    Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver;
    if (direct)
        solver.computeDirect(m, Eigen::ComputeEigenvectors);
    else
        solver.compute(m, Eigen::ComputeEigenvectors);
    if (solver.info() != Eigen::Success || !solver.eigenvectors().allFinite()) {
        delete impl;
        return RESULT_FAIL;
    }
    if (impl == nullptr) impl = new GeneralMatrixEigenSolverImpl;
    impl->dimension = 3;
    impl->values = solver.eigenvalues();
    impl->vectors = solver.eigenvectors();
    mpImpl = impl;
    return RESULT_OK;
}

int GeneralMatrixEigenSolver::Compute(const GeneralMatrix& matrix) {
    delete mpImpl;
    mpImpl = nullptr;
    const int n = matrix.GetRowCount();
    if (!matrix.IsInitialized() || n != matrix.GetColCount()) return RESULT_INVALID_INPUT;
    if (!AllFinite(matrix.GetData(), static_cast<size_t>(n) * n)) return RESULT_FAIL;
    const Eigen::Map<const Eigen::MatrixXd> m(matrix.GetData(), n, n);
    Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(m, Eigen::ComputeEigenvectors);
    if (solver.info() != Eigen::Success) return RESULT_FAIL;
    mpImpl = new GeneralMatrixEigenSolverImpl;
    mpImpl->dimension = n;
    mpImpl->values = solver.eigenvalues();
    mpImpl->vectors = solver.eigenvectors();
    return RESULT_OK;
}

int GeneralMatrixEigenSolver::GetDimension() const {
    return mpImpl == nullptr ? 0 : mpImpl->dimension;
}

double GeneralMatrixEigenSolver::GetEigenValue(int i) const {
    if (mpImpl == nullptr || i < 0 || i >= mpImpl->dimension) return 0.0;
    return mpImpl->values[i];
}

Vector3 GeneralMatrixEigenSolver::GetEigenVector(int i) const {
    if (mpImpl == nullptr) {
        LogLine("Error: GeneralMatrixEigenSolver::GetEigenVector mpImpl is NULL");
        return Vector3();
    }
    if (i < 0 || i >= mpImpl->dimension) return Vector3();
    Vector3 v;
    for (int k = 0; k < 3 && k < mpImpl->dimension; ++k) v[k] = mpImpl->vectors(k, i);
    return v;
}

bool GeneralMatrixEigenSolver::GetEigenVector(int i, std::vector<double>& vector) const {
    if (mpImpl == nullptr) {
        LogLine("Error: GeneralMatrixEigenSolver::GetEigenVector mpImpl is NULL");
        return false;
    }
    if (i < 0 || i >= mpImpl->dimension) return false;
    vector.assign(mpImpl->vectors.col(i).data(), mpImpl->vectors.col(i).data() + mpImpl->dimension);
    return true;
}

}  // namespace ZOL
