// Row-major 4x4 matrix of doubles on the heap: the transform type of the library.
// One allocation per non-empty matrix; copies are deep and an empty matrix allocates
// nothing, because arrays of transforms (one per point cloud) are common.
#pragma once

#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// 4x4 matrix acting on column vectors: entry (r, c) is mpValues[4 * r + c], the
/// translation of an affine transform is in entries 3, 7 and 11. A null mpValues is
/// the empty matrix; using an empty matrix writes a line to the log.
class ZOL_API Matrix4x4 {
public:
    /// The empty matrix (no allocation).
    Matrix4x4();
    /// Allocates and sets all 16 entries to \p v.
    explicit Matrix4x4(double v);
    /// Empty if \p other is empty, otherwise a deep copy.
    Matrix4x4(const Matrix4x4& other);
    /// Takes over the array of \p other, which becomes empty.
    Matrix4x4(Matrix4x4&& other) noexcept;
    /// Copies 16 values, allocating if needed. An empty right side is logged and leaves
    /// this matrix unchanged.
    Matrix4x4& operator=(const Matrix4x4& other);
    ~Matrix4x4();

    /// Allocates if needed and sets all entries to \p v.
    void Init(double v);
    /// Allocates if needed and sets the identity.
    void InitIdentityTransform();
    /// Releases the array; the matrix becomes empty.
    void Free();
    /// \return true when no array is held.
    bool IsEmpty() const;

    /// \return entry \p index (0..15, no range check); 0 and a log line when empty.
    double GetValue(int index) const;
    /// \return entry (\p row, \p col), no range check; 0 and a log line when empty.
    double GetValue(int row, int col) const;
    /// Sets entry \p index (0..15, no range check); logged and ignored when empty.
    void SetValue(int index, double value);
    /// Sets entry (\p row, \p col), no range check; logged and ignored when empty.
    void SetValue(int row, int col, double value);

    /// Matrix product with this matrix on the left; empty (and logged) if either is empty.
    Matrix4x4 operator*(const Matrix4x4& right) const;
    /// Every entry times \p s; empty if this matrix is empty.
    Matrix4x4 operator*(double s) const;
    /// Entry-wise sum; empty (and logged) if either is empty.
    Matrix4x4 operator+(const Matrix4x4& right) const;
    /// Entry-wise difference; empty (and logged) if either is empty.
    Matrix4x4 operator-(const Matrix4x4& right) const;
    Matrix4x4& operator*=(const Matrix4x4& right);
    Matrix4x4& operator*=(double s);
    Matrix4x4& operator+=(const Matrix4x4& right);
    Matrix4x4& operator-=(const Matrix4x4& right);

    /// \return the top three rows times (p, 1), without division by the fourth row;
    ///         \p p unchanged (and a log line) when empty.
    Vector3 TransformPoint(const Vector3& p) const;
    /// \return the upper-left 3x3 block times \p v; \p v unchanged (and a log line) when empty.
    Vector3 RotateVector(const Vector3& v) const;
    /// \return (entry 3, entry 7, entry 11); zero when empty.
    Vector3 GetTranslation() const;
    /// \return (p, 1)^T M (p, 1); 0.0 and a log line when empty.
    double QuadricValue(const Vector3& p) const;
    /// \return the inverse of the top three rows completed by (0, 0, 0, 1), by a general
    ///         4x4 inversion with partial pivoting; empty (and a log line) when this
    ///         matrix is empty or singular.
    Matrix4x4 AffineInverse() const;

    /// Sets this matrix to the translation by \p t.
    void GenerateTranslation(const Vector3& t);
    /// Sets this matrix to the scaling of the axes by \p s.
    void GenerateScale(const Vector3& s);
    /// Sets this matrix to the rotation taking unit \p from onto unit \p to (inputs are not
    /// normalised). Parallel and opposite directions give the identity.
    void GenerateVectorToVectorRotation(const Vector3& from, const Vector3& to);
    /// Sets this matrix to the rotation taking the "L" p0->p1, p0->p2 onto q0->q1, q0->q2:
    /// first p1 - p0 onto q1 - q0, then the rotated p2 - p0 onto q2 - q0. No translation.
    void GenerateLShapeRotation(const Vector3& p0,
                                const Vector3& p1,
                                const Vector3& p2,
                                const Vector3& q0,
                                const Vector3& q1,
                                const Vector3& q2);

    /// Writes "Matrix4x4::Print: " and one line per row to the log; entries below
    /// REAL_TOL in magnitude are written as 0.
    void Print() const;

    double* mpValues;
};

}  // namespace ZOL
