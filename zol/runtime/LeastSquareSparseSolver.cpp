// Sparse least squares: the column-scaled A in compressed rows, then either a direct
// factor of the normal matrix (LU for moderate sizes, Cholesky on request) or CGLS,
// which never forms A^T A. Column scaling makes the normal matrix unit-diagonal, so
// that pinned rows (weights of 1e10) neither hide a singular column nor stall CG.
#include <zol/runtime/LeastSquareSolverInternal.h>

#include <algorithm>
#include <cmath>

#include <Eigen/OrderingMethods>
#include <Eigen/SparseCholesky>
#include <Eigen/SparseCore>
#include <Eigen/SparseLU>

#include <zol/runtime/Constants.h>

namespace ZOL {

namespace {

using RowMatrix = Eigen::SparseMatrix<double, Eigen::RowMajor, int>;
using ColMatrix = Eigen::SparseMatrix<double, Eigen::ColMajor, int>;

// Pivots of the unit-diagonal normal matrix below this count as zero.
const double kPivotTol = 1e-13;

// A with every column scaled to unit length, plus the scale (x = scale * y).
struct ScaledSystem {
    int rowCount = 0;
    int colCount = 0;
    std::vector<int> rowStart;  // rowCount + 1
    std::vector<int> cols;
    std::vector<double> values;
    Eigen::VectorXd scale;

    Eigen::Map<const RowMatrix> Matrix() const {
        return Eigen::Map<const RowMatrix>(rowCount, colCount, static_cast<int>(values.size()),
                                           rowStart.data(), cols.data(), values.data());
    }
};

// Counting sort into rows, then per row sort by column and sum duplicates.
int BuildScaledSystem(int rowCount,
                      int colCount,
                      const std::vector<SparseTriplet>& triplets,
                      ScaledSystem& system) {
    if (rowCount <= 0 || colCount <= 0) return RESULT_INVALID_INPUT;
    for (const SparseTriplet& t : triplets) {
        if (t.row < 0 || t.row >= rowCount || t.col < 0 || t.col >= colCount ||
            !std::isfinite(t.value))
            return RESULT_INVALID_INPUT;
    }
    std::vector<int> start(static_cast<size_t>(rowCount) + 1, 0);
    for (const SparseTriplet& t : triplets) ++start[t.row + 1];
    for (int r = 0; r < rowCount; ++r) start[r + 1] += start[r];
    std::vector<std::pair<int, double>> entries(triplets.size());
    {
        std::vector<int> fill(start.begin(), start.end() - 1);
        for (const SparseTriplet& t : triplets) entries[fill[t.row]++] = {t.col, t.value};
    }
    system.rowCount = rowCount;
    system.colCount = colCount;
    system.rowStart.assign(static_cast<size_t>(rowCount) + 1, 0);
    system.cols.clear();
    system.values.clear();
    system.cols.reserve(entries.size());
    system.values.reserve(entries.size());
    for (int r = 0; r < rowCount; ++r) {
        auto first = entries.begin() + start[r];
        auto last = entries.begin() + start[r + 1];
        std::sort(first, last,
                  [](const std::pair<int, double>& a, const std::pair<int, double>& b) {
                      return a.first < b.first;
                  });
        for (auto it = first; it != last; ++it) {
            if (!system.cols.empty() && static_cast<int>(system.cols.size()) > system.rowStart[r] &&
                system.cols.back() == it->first) {
                system.values.back() += it->second;
            } else {
                system.cols.push_back(it->first);
                system.values.push_back(it->second);
            }
        }
        system.rowStart[r + 1] = static_cast<int>(system.cols.size());
    }
    // Column norms; a column without weight makes A^T A singular.
    Eigen::VectorXd norm2 = Eigen::VectorXd::Zero(colCount);
    for (size_t k = 0; k < system.values.size(); ++k)
        norm2[system.cols[k]] += system.values[k] * system.values[k];
    system.scale.resize(colCount);
    for (int c = 0; c < colCount; ++c) {
        if (!(norm2[c] > 0.0) || !std::isfinite(norm2[c])) return RESULT_FAIL;
        system.scale[c] = 1.0 / std::sqrt(norm2[c]);
    }
    for (size_t k = 0; k < system.values.size(); ++k)
        system.values[k] *= system.scale[system.cols[k]];
    return RESULT_OK;
}

bool AllFinite(const Eigen::VectorXd& v) { return v.allFinite(); }

bool ReadVector(const std::vector<double>& in, int size, Eigen::VectorXd& out) {
    if (static_cast<int>(in.size()) != size) return false;
    out = Eigen::Map<const Eigen::VectorXd>(in.data(), size);
    return out.allFinite();
}

// Smallest |pivot| of a supernodal LU, read from the diagonal blocks stored with L.
template <typename LU>
double SmallestPivot(const LU& lu, int n) {
    double smallest = REAL_LARGE;
    const auto& store = lu.matrixL().m_mapL;
    for (int j = 0; j < n; ++j) {
        bool found = false;
        for (typename std::decay_t<decltype(store)>::InnerIterator it(store, j); it; ++it) {
            if (it.index() == j) {
                smallest = std::min(smallest, std::abs(it.value()));
                found = true;
                break;
            }
        }
        if (!found) return 0.0;
    }
    return smallest;
}

// Size of a normal-equation residual s in the units of x: the scaled unknowns of pinned
// rows are 1e10 times larger, and a plain norm would let them set the tolerance.
double UnitNorm(const Eigen::VectorXd& s, const Eigen::VectorXd& scale) {
    return s.cwiseProduct(scale).norm();
}

// CGLS on the scaled system from y; true when UnitNorm(A^T r) <= target.
bool RunCgls(const Eigen::Map<const RowMatrix>& a,
             const Eigen::VectorXd& b,
             const Eigen::VectorXd& scale,
             double target,
             int maxIterations,
             Eigen::VectorXd& y) {
    Eigen::VectorXd r = b - a * y;
    Eigen::VectorXd s = a.transpose() * r;
    Eigen::VectorXd p = s;
    Eigen::VectorXd q(a.rows());
    double gamma = s.squaredNorm();
    for (int it = 0; it < maxIterations; ++it) {
        if (UnitNorm(s, scale) <= target) {
            // Confirm against the true residual; recurrences drift on long runs.
            r = b - a * y;
            s = a.transpose() * r;
            gamma = s.squaredNorm();
            if (UnitNorm(s, scale) <= target) return true;
            p = s;
        }
        q.noalias() = a * p;
        const double qq = q.squaredNorm();
        if (!(qq > 0.0) || !std::isfinite(qq)) return gamma == 0.0;
        const double alpha = gamma / qq;
        y.noalias() += alpha * p;
        r.noalias() -= alpha * q;
        s.noalias() = a.transpose() * r;
        const double next = s.squaredNorm();
        if (!std::isfinite(next)) return false;
        p = s + (next / gamma) * p;
        gamma = next;
    }
    r = b - a * y;
    s = a.transpose() * r;
    return UnitNorm(s, scale) <= target;
}

}  // namespace

struct LeastSquareSparseLUSolverImpl {
    ScaledSystem system;
    bool direct = false;
    ColMatrix normal;  // direct path only
    Eigen::SparseLU<ColMatrix, Eigen::COLAMDOrdering<int>> lu;
};

LeastSquareSparseLUSolver::LeastSquareSparseLUSolver() : mpImpl(nullptr), mPrecisionDigits(10) {}

LeastSquareSparseLUSolver::~LeastSquareSparseLUSolver() { delete mpImpl; }

int LeastSquareSparseLUSolver::Factorize(int rowCount,
                                         int colCount,
                                         const std::vector<SparseTriplet>& triplets) {
    delete mpImpl;
    mpImpl = nullptr;
    auto* impl = new LeastSquareSparseLUSolverImpl;
    int status = BuildScaledSystem(rowCount, colCount, triplets, impl->system);
    if (status != RESULT_OK) {
        delete impl;
        return status;
    }
    impl->direct = colCount <= kDirectLimit;
    if (impl->direct) {
        const auto a = impl->system.Matrix();
        impl->normal = ColMatrix(a.transpose() * a);
        impl->normal.makeCompressed();
        impl->lu.isSymmetric(true);
        impl->lu.analyzePattern(impl->normal);
        impl->lu.factorize(impl->normal);
        if (impl->lu.info() != Eigen::Success || SmallestPivot(impl->lu, colCount) < kPivotTol) {
            delete impl;
            return RESULT_FAIL;
        }
    }
    mpImpl = impl;
    return RESULT_OK;
}

void LeastSquareSparseLUSolver::SetPrecisionDigits(int digits) {
    mPrecisionDigits = std::max(1, std::min(14, digits));
}

int LeastSquareSparseLUSolver::Solve(const std::vector<double>& b, std::vector<double>& x) const {
    return Solve(b, std::vector<double>(), x);
}

int LeastSquareSparseLUSolver::Solve(const std::vector<double>& b,
                                     const std::vector<double>& start,
                                     std::vector<double>& x) const {
    if (mpImpl == nullptr) return RESULT_NOT_READY;
    const ScaledSystem& system = mpImpl->system;
    Eigen::VectorXd rhs, y;
    if (!ReadVector(b, system.rowCount, rhs)) return RESULT_INVALID_INPUT;
    if (start.empty()) {
        y = Eigen::VectorXd::Zero(system.colCount);
    } else {
        if (!ReadVector(start, system.colCount, y)) return RESULT_INVALID_INPUT;
        y.array() /= system.scale.array();
    }
    const auto a = system.Matrix();
    const Eigen::VectorXd c = a.transpose() * rhs;
    const double target = std::pow(10.0, -mPrecisionDigits) * UnitNorm(c, system.scale);
    if (mpImpl->direct) {
        Eigen::VectorXd residual = c - mpImpl->normal * y;
        double best = UnitNorm(residual, system.scale);
        for (int pass = 0; pass < 3 && best > target; ++pass) {
            const Eigen::VectorXd step = mpImpl->lu.solve(residual);
            if (!AllFinite(step)) break;
            const Eigen::VectorXd candidate = y + step;
            residual = c - mpImpl->normal * candidate;
            const double norm = UnitNorm(residual, system.scale);
            if (!(norm < best)) break;
            y = candidate;
            best = norm;
        }
    } else if (!RunCgls(a, rhs, system.scale, target, kMaxIterations, y)) {
        return RESULT_STEP_FAIL;
    }
    Eigen::VectorXd result = y.cwiseProduct(system.scale);
    if (!AllFinite(result)) return RESULT_STEP_FAIL;
    x.assign(result.data(), result.data() + result.size());
    return RESULT_OK;
}

struct LeastSquareSparseLLTSolverImpl {
    ScaledSystem system;
    Eigen::SimplicialLLT<ColMatrix, Eigen::Lower, Eigen::AMDOrdering<int>> llt;
};

LeastSquareSparseLLTSolver::LeastSquareSparseLLTSolver() : mpImpl(nullptr) {}

LeastSquareSparseLLTSolver::~LeastSquareSparseLLTSolver() { delete mpImpl; }

int LeastSquareSparseLLTSolver::Factorize(int rowCount,
                                          int colCount,
                                          const std::vector<SparseTriplet>& triplets) {
    delete mpImpl;
    mpImpl = nullptr;
    auto* impl = new LeastSquareSparseLLTSolverImpl;
    int status = BuildScaledSystem(rowCount, colCount, triplets, impl->system);
    if (status != RESULT_OK) {
        delete impl;
        return status;
    }
    const auto a = impl->system.Matrix();
    const ColMatrix normal(a.transpose() * a);
    impl->llt.compute(normal);
    bool ok = impl->llt.info() == Eigen::Success;
    if (ok) {
        const ColMatrix& factor = impl->llt.matrixL().nestedExpression();
        for (int j = 0; j < colCount && ok; ++j) {
            const double pivot = factor.coeff(j, j);
            ok = std::isfinite(pivot) && pivot * pivot >= kPivotTol;
        }
    }
    if (!ok) {
        delete impl;
        return RESULT_FAIL;
    }
    mpImpl = impl;
    return RESULT_OK;
}

int LeastSquareSparseLLTSolver::Solve(const std::vector<double>& b, std::vector<double>& x) const {
    if (mpImpl == nullptr) return RESULT_NOT_READY;
    const ScaledSystem& system = mpImpl->system;
    Eigen::VectorXd rhs;
    if (!ReadVector(b, system.rowCount, rhs)) return RESULT_INVALID_INPUT;
    const Eigen::VectorXd c = system.Matrix().transpose() * rhs;
    const Eigen::VectorXd y = mpImpl->llt.solve(c);
    const Eigen::VectorXd result = y.cwiseProduct(system.scale);
    if (mpImpl->llt.info() != Eigen::Success || !AllFinite(result)) return RESULT_STEP_FAIL;
    x.assign(result.data(), result.data() + result.size());
    return RESULT_OK;
}

}  // namespace ZOL
