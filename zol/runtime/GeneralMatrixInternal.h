// Small dense matrices and the symmetric eigen solver that the algorithms use for
// covariance analysis and dense least squares. Internal: created and dropped inside
// one library call, never exported. Eigen stays behind the .cpp files.
#pragma once

#include <vector>

#include <zol/core/Vector3.h>

namespace ZOL {

/// Dense matrix of doubles, column by column: element (r, c) at index rowCount * c + r
/// of one heap array. A matrix without array is "not initialised".
class GeneralMatrix {
public:
    /// Not initialised: no array, 0 x 0.
    GeneralMatrix();
    /// Zero-filled \p rowCount x \p colCount; a non-positive size gives a matrix that
    /// is not initialised.
    GeneralMatrix(int rowCount, int colCount);
    GeneralMatrix(const GeneralMatrix& other);
    GeneralMatrix(GeneralMatrix&& other) noexcept;
    GeneralMatrix& operator=(const GeneralMatrix& other);
    GeneralMatrix& operator=(GeneralMatrix&& other) noexcept;
    ~GeneralMatrix();

    /// Reallocates as a zero-filled \p rowCount x \p colCount matrix.
    void Init(int rowCount, int colCount);
    /// Drops the array; the matrix is then not initialised.
    void Free();
    bool IsInitialized() const { return mpValues != nullptr; }
    int GetRowCount() const { return mRowCount; }
    int GetColCount() const { return mColCount; }

    /// Writes element (\p row, \p col); no range check. On a matrix that is not
    /// initialised, writes nothing and logs "Error: GeneralMatrix is not initialize: ".
    void SetValue(int row, int col, double value);
    /// \return element (\p row, \p col); 0 on a matrix that is not initialised.
    double GetValue(int row, int col) const;
    /// Column-major array (null when not initialised).
    const double* GetData() const { return mpValues; }
    double* GetData() { return mpValues; }

private:
    int mRowCount;
    int mColCount;
    double* mpValues;
};

/// Dense 3 x 3 matrix, column by column: element (r, c) at index 3 * c + r. Held
/// inline so that the millions of per-point covariance matrices cost no allocation.
class GeneralMatrix3 {
public:
    /// Zero-filled.
    GeneralMatrix3();
    /// Marks the matrix as not initialised (values are dropped).
    void Free();
    /// Zero-fills and marks the matrix as initialised again.
    void Init();
    bool IsInitialized() const { return mIsInitialized; }

    /// Writes element (\p row, \p col); no range check. On a matrix that is not
    /// initialised, writes nothing and logs "Error: GeneralMatrix3 is not initialize: ".
    void SetValue(int row, int col, double value);
    double GetValue(int row, int col) const { return mValues[3 * col + row]; }
    const double* GetData() const { return mValues; }

private:
    double mValues[9];
    bool mIsInitialized;
};

struct GeneralMatrixEigenSolverImpl;

/// Eigen decomposition of a symmetric matrix (only the lower triangle is read).
/// Eigenvalues come in ascending order; eigenvectors are of unit length.
class GeneralMatrixEigenSolver {
public:
    GeneralMatrixEigenSolver();
    ~GeneralMatrixEigenSolver();
    GeneralMatrixEigenSolver(const GeneralMatrixEigenSolver&) = delete;
    GeneralMatrixEigenSolver& operator=(const GeneralMatrixEigenSolver&) = delete;

    /// \return 0; RESULT_INVALID_INPUT (-2) for a matrix that is not initialised or not
    ///         square; RESULT_FAIL (-1) for a non-finite entry or a failed iteration.
    ///         On failure the previous decomposition is dropped.
    int Compute(const GeneralMatrix3& matrix);
    int Compute(const GeneralMatrix& matrix);
    /// Compute by the closed-form (trigonometric) 3 x 3 method: several times faster,
    /// with eigenvectors of nearly equal eigenvalues less accurate than Compute's. For
    /// callers that only need a good orthonormal frame, such as bounding boxes.
    /// \return as Compute.
    int ComputeDirect(const GeneralMatrix3& matrix);

    /// Order of the decomposed matrix (0 before a successful Compute).
    int GetDimension() const;
    /// \return the i-th smallest eigenvalue; 0 without a decomposition.
    double GetEigenValue(int i) const;
    /// \return the first three components of the unit eigenvector of the i-th smallest
    ///         eigenvalue (the whole vector for a 3 x 3 matrix). Without a decomposition
    ///         logs "Error: GeneralMatrixEigenSolver::GetEigenVector mpImpl is NULL" and
    ///         returns (0, 0, 0).
    Vector3 GetEigenVector(int i) const;
    /// Whole eigenvector of any order into \p vector; false without a decomposition.
    bool GetEigenVector(int i, std::vector<double>& vector) const;

private:
    int Compute3(const GeneralMatrix3& matrix, bool direct);

    GeneralMatrixEigenSolverImpl* mpImpl;
};

}  // namespace ZOL
