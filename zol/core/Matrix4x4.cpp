// Matrix4x4: storage rules (deep copies, empty matrix), arithmetic, transforms and the
// rotation generators used by registration.
#include <zol/core/Matrix4x4.h>

#include <cmath>
#include <sstream>
#include <utility>

#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {
constexpr int kCount = 16;

void CopyValues(const double* from, double* to) {
    for (int i = 0; i < kCount; ++i) to[i] = from[i];
}

void SetIdentity(double* m) {
    for (int i = 0; i < kCount; ++i) m[i] = (i % 5 == 0) ? 1.0 : 0.0;
}

// Gauss-Jordan elimination with partial pivoting on [a | inv]. Returns false when a
// pivot vanishes (singular matrix).
bool InvertGeneral(double a[kCount], double inv[kCount]) {
    SetIdentity(inv);
    for (int col = 0; col < 4; ++col) {
        int pivotRow = col;
        for (int r = col + 1; r < 4; ++r) {
            if (std::abs(a[4 * r + col]) > std::abs(a[4 * pivotRow + col])) pivotRow = r;
        }
        const double pivot = a[4 * pivotRow + col];
        if (!(std::abs(pivot) >= REAL_TOL)) return false;  // also rejects NaN
        if (pivotRow != col) {
            for (int c = 0; c < 4; ++c) {
                std::swap(a[4 * col + c], a[4 * pivotRow + c]);
                std::swap(inv[4 * col + c], inv[4 * pivotRow + c]);
            }
        }
        for (int c = 0; c < 4; ++c) {
            a[4 * col + c] /= pivot;
            inv[4 * col + c] /= pivot;
        }
        for (int r = 0; r < 4; ++r) {
            if (r == col) continue;
            const double f = a[4 * r + col];
            if (f == 0.0) continue;
            for (int c = 0; c < 4; ++c) {
                a[4 * r + c] -= f * a[4 * col + c];
                inv[4 * r + c] -= f * inv[4 * col + c];
            }
        }
    }
    return true;
}
}  // namespace

Matrix4x4::Matrix4x4() : mpValues(nullptr) {}

Matrix4x4::Matrix4x4(double v) : mpValues(new double[kCount]) {
    for (int i = 0; i < kCount; ++i) mpValues[i] = v;
}

Matrix4x4::Matrix4x4(const Matrix4x4& other) : mpValues(nullptr) {
    if (other.mpValues != nullptr) {
        mpValues = new double[kCount];
        CopyValues(other.mpValues, mpValues);
    }
}

Matrix4x4::Matrix4x4(Matrix4x4&& other) noexcept : mpValues(other.mpValues) {
    other.mpValues = nullptr;
}

Matrix4x4& Matrix4x4::operator=(const Matrix4x4& other) {
    if (other.mpValues == nullptr) {
        LogLine("Error: Matrix4x4::operator = right matrix is empty");
        return *this;
    }
    if (this == &other) return *this;
    if (mpValues == nullptr) mpValues = new double[kCount];
    CopyValues(other.mpValues, mpValues);
    return *this;
}

Matrix4x4::~Matrix4x4() { Free(); }

void Matrix4x4::Init(double v) {
    if (mpValues == nullptr) mpValues = new double[kCount];
    for (int i = 0; i < kCount; ++i) mpValues[i] = v;
}

void Matrix4x4::InitIdentityTransform() {
    if (mpValues == nullptr) mpValues = new double[kCount];
    SetIdentity(mpValues);
}

void Matrix4x4::Free() {
    delete[] mpValues;
    mpValues = nullptr;
}

bool Matrix4x4::IsEmpty() const { return mpValues == nullptr; }

double Matrix4x4::GetValue(int index) const {
    if (mpValues == nullptr) {
        LogLine("Matrix4x4::GetValue: error matrix value is null");
        return 0.0;
    }
    return mpValues[index];
}

double Matrix4x4::GetValue(int row, int col) const {
    if (mpValues == nullptr) {
        LogLine("Matrix4x4::GetValue: error matrix value is null");
        return 0.0;
    }
    return mpValues[4 * row + col];
}

void Matrix4x4::SetValue(int index, double value) {
    if (mpValues == nullptr) {
        LogLine("Matrix4x4::SetValue: error matrix value is null");
        return;
    }
    mpValues[index] = value;
}

void Matrix4x4::SetValue(int row, int col, double value) {
    if (mpValues == nullptr) {
        LogLine("Matrix4x4::SetValue: error matrix value is null");
        return;
    }
    mpValues[4 * row + col] = value;
}

Matrix4x4 Matrix4x4::operator*(const Matrix4x4& right) const {
    Matrix4x4 result;
    if (mpValues == nullptr || right.mpValues == nullptr) {
        LogLine("Matrix4x4::operator *: error matrix value is null");
        return result;
    }
    result.mpValues = new double[kCount];
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            double sum = 0.0;
            for (int k = 0; k < 4; ++k) sum += mpValues[4 * r + k] * right.mpValues[4 * k + c];
            result.mpValues[4 * r + c] = sum;
        }
    }
    return result;
}

Matrix4x4 Matrix4x4::operator*(double s) const {
    Matrix4x4 result(*this);
    if (result.mpValues != nullptr) {
        for (int i = 0; i < kCount; ++i) result.mpValues[i] *= s;
    }
    return result;
}

Matrix4x4 Matrix4x4::operator+(const Matrix4x4& right) const {
    Matrix4x4 result;
    if (mpValues == nullptr || right.mpValues == nullptr) {
        LogLine("Matrix4x4::operator +: error matrix value is null");
        return result;
    }
    result.mpValues = new double[kCount];
    for (int i = 0; i < kCount; ++i) result.mpValues[i] = mpValues[i] + right.mpValues[i];
    return result;
}

Matrix4x4 Matrix4x4::operator-(const Matrix4x4& right) const {
    Matrix4x4 result;
    if (mpValues == nullptr || right.mpValues == nullptr) {
        LogLine("Matrix4x4::operator -: error matrix value is null");
        return result;
    }
    result.mpValues = new double[kCount];
    for (int i = 0; i < kCount; ++i) result.mpValues[i] = mpValues[i] - right.mpValues[i];
    return result;
}

Matrix4x4& Matrix4x4::operator*=(const Matrix4x4& right) {
    Matrix4x4 product = *this * right;
    if (!product.IsEmpty()) std::swap(mpValues, product.mpValues);
    return *this;
}

Matrix4x4& Matrix4x4::operator*=(double s) {
    if (mpValues != nullptr) {
        for (int i = 0; i < kCount; ++i) mpValues[i] *= s;
    }
    return *this;
}

Matrix4x4& Matrix4x4::operator+=(const Matrix4x4& right) {
    if (mpValues == nullptr || right.mpValues == nullptr) {
        LogLine("Matrix4x4::operator +: error matrix value is null");
        return *this;
    }
    for (int i = 0; i < kCount; ++i) mpValues[i] += right.mpValues[i];
    return *this;
}

Matrix4x4& Matrix4x4::operator-=(const Matrix4x4& right) {
    if (mpValues == nullptr || right.mpValues == nullptr) {
        LogLine("Matrix4x4::operator -: error matrix value is null");
        return *this;
    }
    for (int i = 0; i < kCount; ++i) mpValues[i] -= right.mpValues[i];
    return *this;
}

Vector3 Matrix4x4::TransformPoint(const Vector3& p) const {
    if (mpValues == nullptr) {
        LogLine("Matrix4x4::TransformPoint: error matrix value is null");
        return p;
    }
    const double* m = mpValues;
    return Vector3(m[0] * p.x + m[1] * p.y + m[2] * p.z + m[3],
                   m[4] * p.x + m[5] * p.y + m[6] * p.z + m[7],
                   m[8] * p.x + m[9] * p.y + m[10] * p.z + m[11]);
}

Vector3 Matrix4x4::RotateVector(const Vector3& v) const {
    if (mpValues == nullptr) {
        LogLine("Matrix4x4::RotateVector: error matrix value is null");
        return v;
    }
    const double* m = mpValues;
    return Vector3(m[0] * v.x + m[1] * v.y + m[2] * v.z, m[4] * v.x + m[5] * v.y + m[6] * v.z,
                   m[8] * v.x + m[9] * v.y + m[10] * v.z);
}

Vector3 Matrix4x4::GetTranslation() const {
    if (mpValues == nullptr) return Vector3();
    return Vector3(mpValues[3], mpValues[7], mpValues[11]);
}

double Matrix4x4::QuadricValue(const Vector3& p) const {
    if (mpValues == nullptr) {
        LogLine("Matrix4x4::QuadricValue: error matrix is null");
        return 0.0;
    }
    const double h[4] = {p.x, p.y, p.z, 1.0};
    double value = 0.0;
    for (int r = 0; r < 4; ++r) {
        double row = 0.0;
        for (int c = 0; c < 4; ++c) row += mpValues[4 * r + c] * h[c];
        value += h[r] * row;
    }
    return value;
}

Matrix4x4 Matrix4x4::AffineInverse() const {
    Matrix4x4 result;
    if (mpValues == nullptr) {
        LogLine("Matrix4x4::AffineInverse: error matrix value is null");
        return result;
    }
    double a[kCount];
    CopyValues(mpValues, a);
    a[12] = 0.0;
    a[13] = 0.0;
    a[14] = 0.0;
    a[15] = 1.0;
    double inv[kCount];
    if (!InvertGeneral(a, inv)) {
        LogLine("Matrix4x4::AffineInverse: matrix is singular");
        return result;
    }
    result.mpValues = new double[kCount];
    CopyValues(inv, result.mpValues);
    return result;
}

void Matrix4x4::GenerateTranslation(const Vector3& t) {
    InitIdentityTransform();
    mpValues[3] = t.x;
    mpValues[7] = t.y;
    mpValues[11] = t.z;
}

void Matrix4x4::GenerateScale(const Vector3& s) {
    InitIdentityTransform();
    mpValues[0] = s.x;
    mpValues[5] = s.y;
    mpValues[10] = s.z;
}

void Matrix4x4::GenerateVectorToVectorRotation(const Vector3& from, const Vector3& to) {
    InitIdentityTransform();
    const Vector3 v = from.CrossProduct(to);
    const double vv = v * v;
    // Opposite directions also land here on purpose: no half turn is made up.
    if (vv < REAL_TOL) return;
    const double c = from * to;
    const double h = (1.0 - c) / vv;
    double* m = mpValues;
    m[0] = h * v.x * v.x + c;
    m[1] = h * v.x * v.y - v.z;
    m[2] = h * v.x * v.z + v.y;
    m[4] = h * v.x * v.y + v.z;
    m[5] = h * v.y * v.y + c;
    m[6] = h * v.y * v.z - v.x;
    m[8] = h * v.x * v.z - v.y;
    m[9] = h * v.y * v.z + v.x;
    m[10] = h * v.z * v.z + c;
}

void Matrix4x4::GenerateLShapeRotation(const Vector3& p0,
                                       const Vector3& p1,
                                       const Vector3& p2,
                                       const Vector3& q0,
                                       const Vector3& q1,
                                       const Vector3& q2) {
    Vector3 a = p1 - p0;
    a.Normalise();
    Vector3 b = q1 - q0;
    b.Normalise();
    Matrix4x4 first;
    first.GenerateVectorToVectorRotation(a, b);
    Vector3 d = first.RotateVector(p2 - p0);
    d.Normalise();
    Vector3 c = q2 - q0;
    c.Normalise();
    Matrix4x4 second;
    second.GenerateVectorToVectorRotation(d, c);
    *this = second * first;
}

void Matrix4x4::Print() const {
    if (mpValues == nullptr) {
        LogLine("Matrix4x4::Print: mpValues == NULL");
        return;
    }
    LogLine("Matrix4x4::Print: ");
    for (int r = 0; r < 4; ++r) {
        std::ostringstream row;
        for (int c = 0; c < 4; ++c) {
            const double v = mpValues[4 * r + c];
            if (std::abs(v) < REAL_TOL) {
                row << 0 << " ";
            } else {
                row << v << " ";
            }
        }
        LogLine(row.str());
    }
}

}  // namespace ZOL
