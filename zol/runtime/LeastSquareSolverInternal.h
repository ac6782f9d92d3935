// Least-squares solvers min |A x - b| through the normal equations A^T A x = A^T b:
// two for sparse A given as triplets (normal smoothing of large clouds) and one for a
// small dense A (point-to-plane steps, sphere fits). Internal: one solver lives for one
// call and is used by one thread. They do not log; callers log and pass the status on.
#pragma once

#include <vector>

#include <zol/runtime/GeneralMatrixInternal.h>

namespace ZOL {

/// One entry of a sparse matrix. Entries at the same position add up.
struct SparseTriplet {
    int row;
    int col;
    double value;
};

struct LeastSquareSparseLUSolverImpl;
struct LeastSquareSparseLLTSolverImpl;
struct LeastSquareGeneralLDLSolverImpl;

/// Sparse least squares. Up to kDirectLimit unknowns the equilibrated normal matrix
/// D A^T A D (D scales every column of A to unit length) is factorised by sparse LU
/// with a fill-reducing column ordering; larger systems are solved without forming
/// A^T A, by conjugate gradients on the normal equations (CGLS) over the column-scaled
/// A, which is Jacobi-preconditioned CG and needs only the memory of A. Forming A^T A
/// for a 1M-point smoothing system would cost tens of millions of entries and its
/// factor far more, while the system is well conditioned.
///
/// The integer parameter (SetPrecisionDigits) is the number of correct decimal digits
/// asked of each Solve: it stops when |D^2 A^T (b - A x)| <= 10^-digits * |D^2 A^T b|,
/// residuals measured in the units of x so that pinned rows do not set the scale. The direct path
/// refines the start vector with the LU factor until then (at most three passes; the best result is
/// kept), the iterative path runs CGLS from the start vector until then and fails when it cannot
/// get there. Normal smoothing asks 8 digits; the default is 10.
class LeastSquareSparseLUSolver {
public:
    /// Systems with more unknowns are solved iteratively (see the class comment).
    static const int kDirectLimit = 20000;
    /// Iteration limit of the iterative path.
    static const int kMaxIterations = 4000;

    LeastSquareSparseLUSolver();
    ~LeastSquareSparseLUSolver();
    LeastSquareSparseLUSolver(const LeastSquareSparseLUSolver&) = delete;
    LeastSquareSparseLUSolver& operator=(const LeastSquareSparseLUSolver&) = delete;

    /// Takes A (\p rowCount x \p colCount, entries in \p triplets) and factorises it.
    /// \return 0; RESULT_INVALID_INPUT (-2) for empty sizes, an entry out of range or
    ///         a non-finite value; RESULT_FAIL (-1) when A^T A is singular (a column of
    ///         A without non-zero entry; on the direct path also a vanishing pivot).
    int Factorize(int rowCount, int colCount, const std::vector<SparseTriplet>& triplets);
    /// Sets the requested precision of Solve in decimal digits, clamped to [1, 14].
    void SetPrecisionDigits(int digits);
    int GetPrecisionDigits() const { return mPrecisionDigits; }
    /// Solves from the start vector \p start (colCount values; empty means zeros).
    /// \param[in] b right-hand side, rowCount values.
    /// \param[out] x colCount values; untouched on failure.
    /// \return 0; RESULT_NOT_READY (-5) before a successful Factorize;
    ///         RESULT_INVALID_INPUT (-2) for vectors of the wrong size or non-finite;
    ///         RESULT_STEP_FAIL (-3) when the iterative path does not reach the
    ///         precision within kMaxIterations or the solution is not finite.
    int Solve(const std::vector<double>& b,
              const std::vector<double>& start,
              std::vector<double>& x) const;
    int Solve(const std::vector<double>& b, std::vector<double>& x) const;

private:
    LeastSquareSparseLUSolverImpl* mpImpl;
    int mPrecisionDigits;
};

/// Sparse least squares by a sparse Cholesky (L L^T) factor of the equilibrated
/// D A^T A D with an approximate-minimum-degree ordering. A direct method for any size:
/// memory grows with the factor's fill. Singular or numerically indefinite normal
/// matrices (a pivot below 1e-13 of the unit diagonal) fail in Factorize.
class LeastSquareSparseLLTSolver {
public:
    LeastSquareSparseLLTSolver();
    ~LeastSquareSparseLLTSolver();
    LeastSquareSparseLLTSolver(const LeastSquareSparseLLTSolver&) = delete;
    LeastSquareSparseLLTSolver& operator=(const LeastSquareSparseLLTSolver&) = delete;

    /// \return 0; RESULT_INVALID_INPUT (-2) for empty sizes, an entry out of range or a
    ///         non-finite value; RESULT_FAIL (-1) for a singular normal matrix.
    int Factorize(int rowCount, int colCount, const std::vector<SparseTriplet>& triplets);
    /// \param[in] b rowCount values. \param[out] x colCount values; untouched on failure.
    /// \return 0; RESULT_NOT_READY (-5) before a successful Factorize;
    ///         RESULT_INVALID_INPUT (-2) for a wrong size; RESULT_STEP_FAIL (-3) for a
    ///         non-finite solution.
    int Solve(const std::vector<double>& b, std::vector<double>& x) const;

private:
    LeastSquareSparseLLTSolverImpl* mpImpl;
};

/// Dense least squares by a pivoted L D L^T factor of the equilibrated D A^T A D.
/// A copy of A is kept for the right-hand sides, so A may change after Factorize.
class LeastSquareGeneralLDLSolver {
public:
    LeastSquareGeneralLDLSolver();
    ~LeastSquareGeneralLDLSolver();
    LeastSquareGeneralLDLSolver(const LeastSquareGeneralLDLSolver&) = delete;
    LeastSquareGeneralLDLSolver& operator=(const LeastSquareGeneralLDLSolver&) = delete;

    /// \return 0; RESULT_INVALID_INPUT (-2) for a matrix that is not initialised or
    ///         holds a non-finite value; RESULT_FAIL (-1) when A^T A is singular or
    ///         numerically indefinite (a pivot below 1e-13 of the unit diagonal).
    int Factorize(const GeneralMatrix& A);
    /// \param[in] b rowCount values. \param[out] x colCount values; untouched on failure.
    /// \return 0; RESULT_NOT_READY (-5) before a successful Factorize;
    ///         RESULT_INVALID_INPUT (-2) for a wrong size; RESULT_STEP_FAIL (-3) for a
    ///         non-finite solution.
    int Solve(const std::vector<double>& b, std::vector<double>& x) const;

private:
    LeastSquareGeneralLDLSolverImpl* mpImpl;
};

}  // namespace ZOL
