// Direct fits of a plane (covariance eigenvector) and a sphere (least squares over the
// normal lines) to oriented points.
#include <zol/shape/DetectShape.h>

#include <cmath>

#include <zol/runtime/GeneralMatrixInternal.h>
#include <zol/runtime/LeastSquareSolverInternal.h>

namespace ZOL {

bool DetectShape::FitPlane(const std::vector<Vector3>& points,
                           const std::vector<Vector3>& normals,
                           Vector3& center,
                           Vector3& normal) {
    const size_t n = points.size();
    if (n == 0 || normals.size() != n) return false;
    Vector3 mean;
    for (const Vector3& p : points) mean += p;
    mean /= static_cast<double>(n);
    center = mean;
    if (n < 3) {
        Vector3 sum;
        for (const Vector3& v : normals) sum += v;
        sum.Normalise();
        normal = sum;
        return true;
    }
    double scatter[3][3] = {};
    for (const Vector3& p : points) {
        const Vector3 d = p - mean;
        for (int a = 0; a < 3; ++a)
            for (int b = a; b < 3; ++b) scatter[a][b] += d[a] * d[b];
    }
    GeneralMatrix3 matrix;
    for (int a = 0; a < 3; ++a) {
        for (int b = a; b < 3; ++b) {
            matrix.SetValue(a, b, scatter[a][b]);
            matrix.SetValue(b, a, scatter[a][b]);
        }
    }
    GeneralMatrixEigenSolver solver;
    if (solver.Compute(matrix) != 0) return false;
    Vector3 result = solver.GetEigenVector(0);
    if (result * normals[0] < 0.0) result = -result;
    normal = result;
    return true;
}

bool DetectShape::FitSphere(const std::vector<Vector3>& points,
                            const std::vector<Vector3>& normals,
                            Vector3& center,
                            double& radius) {
    const size_t n = points.size();
    if (n < 2 || normals.size() != n) return false;
    if (n >= 4) {
        const int rows = static_cast<int>(n);
        GeneralMatrix a(rows, 4);
        std::vector<double> b(n);
        double* column = a.GetData();  // column-major: column k starts at k * rows
        for (int i = 0; i < rows; ++i) {
            column[i] = normals[i].x;
            column[rows + i] = normals[i].y;
            column[2 * rows + i] = normals[i].z;
            column[3 * rows + i] = 1.0;
            b[i] = points[i] * normals[i];
        }
        LeastSquareGeneralLDLSolver solver;
        std::vector<double> x;
        if (solver.Factorize(a) != 0 || solver.Solve(b, x) != 0) return false;
        center = Vector3(x[0], x[1], x[2]);
        // The sign of the radius only tells whether the normals point out or in.
        radius = std::abs(x[3]);
        return true;
    }
    const Vector3& p0 = points[0];
    const Vector3& p1 = points[1];
    const Vector3& n0 = normals[0];
    const Vector3& n1 = normals[1];
    const double d = n0 * n1;
    const double denom = 1.0 - d * d;
    if (denom < 1e-15) return false;
    const Vector3 w = p1 - p0;
    const double wa = w * n0;
    const double wb = w * n1;
    const double t = (wa - wb * d) / denom;
    const Vector3 q0 = p0 + n0 * t;
    const Vector3 q1 = p1 + n1 * (t * d - wb);
    center = (q0 + q1) / 2.0;
    radius = ((p1 - center).Length() + (p0 - center).Length()) / 2.0;
    return true;
}

}  // namespace ZOL
