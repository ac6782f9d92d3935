// Plane-fit normals of single points: the scatter matrix of a neighbourhood and the
// eigenvector of its smallest eigenvalue. Shared by normal estimation, plane-projection
// smoothing and registration's sample normals.
#include <zol/pointcloud/NormalEstimationInternal.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <zol/runtime/Constants.h>
#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

namespace {

// Below this ratio of the middle to the largest eigenvalue the points lie on one line
// (or one spot) and no plane is defined.
const double kLineRatio = 1e-12;

}  // namespace

void ComputeScatter(
    const double* xyz, const int* ids, int count, Vector3& centroid, GeneralMatrix3& scatter) {
    double c[3] = {0.0, 0.0, 0.0};
    for (int t = 0; t < count; ++t) {
        const double* p = xyz + 3 * static_cast<size_t>(ids[t]);
        c[0] += p[0];
        c[1] += p[1];
        c[2] += p[2];
    }
    for (double& v : c) v /= count;
    double xx = 0.0, xy = 0.0, xz = 0.0, yy = 0.0, yz = 0.0, zz = 0.0;
    for (int t = 0; t < count; ++t) {
        const double* p = xyz + 3 * static_cast<size_t>(ids[t]);
        const double dx = p[0] - c[0], dy = p[1] - c[1], dz = p[2] - c[2];
        xx += dx * dx;
        xy += dx * dy;
        xz += dx * dz;
        yy += dy * dy;
        yz += dy * dz;
        zz += dz * dz;
    }
    centroid = Vector3(c[0], c[1], c[2]);
    if (!scatter.IsInitialized()) scatter.Init();
    scatter.SetValue(0, 0, xx);
    scatter.SetValue(0, 1, xy);
    scatter.SetValue(0, 2, xz);
    scatter.SetValue(1, 0, xy);
    scatter.SetValue(1, 1, yy);
    scatter.SetValue(1, 2, yz);
    scatter.SetValue(2, 0, xz);
    scatter.SetValue(2, 1, yz);
    scatter.SetValue(2, 2, zz);
}

bool FitPlaneNormal(const double* xyz,
                    const int* ids,
                    int count,
                    Vector3& normal,
                    double* curvature,
                    GeneralMatrixEigenSolver* solver) {
    normal = Vector3();
    if (curvature) *curvature = 0.0;
    if (xyz == nullptr || ids == nullptr || count < 3) return false;
    Vector3 centroid;
    GeneralMatrix3 scatter;
    ComputeScatter(xyz, ids, count, centroid, scatter);
    GeneralMatrixEigenSolver local;
    GeneralMatrixEigenSolver& eigen = solver ? *solver : local;
    if (eigen.Compute(scatter) != RESULT_OK) return false;
    const double l0 = eigen.GetEigenValue(0);
    const double l1 = eigen.GetEigenValue(1);
    const double l2 = eigen.GetEigenValue(2);
    if (!(l2 > 0.0) || !(l1 > kLineRatio * l2)) return false;
    normal = eigen.GetEigenVector(0);
    if (normal.Normalise() < REAL_TOL) {
        normal = Vector3();
        return false;
    }
    if (curvature) *curvature = std::max(l0, 0.0) / (std::max(l0, 0.0) + l1 + l2);
    return true;
}

int EstimatePointNormal(IPointCloud* pointCloud,
                        const PointCloudInfo& info,
                        int pointId,
                        int neighborCount,
                        Vector3& normal) {
    normal = Vector3();
    if (pointCloud == nullptr) return RESULT_INVALID_INPUT;
    std::vector<int> ids;
    const int status = info.GetNeighbor(pointId, neighborCount, &ids);
    if (status != RESULT_OK) return status;
    // Only the neighbourhood is copied, in list order, so that the fit matches the one
    // made over the whole cloud's coordinate array.
    std::vector<double> xyz(ids.size() * 3);
    std::vector<int> local(ids.size());
    for (size_t t = 0; t < ids.size(); ++t) {
        const Vector3 p = pointCloud->GetPointCoord(ids[t]);
        xyz[3 * t] = p.x;
        xyz[3 * t + 1] = p.y;
        xyz[3 * t + 2] = p.z;
        local[t] = static_cast<int>(t);
    }
    return FitPlaneNormal(xyz.data(), local.data(), static_cast<int>(local.size()), normal)
               ? RESULT_OK
               : RESULT_FAIL;
}

}  // namespace ZOL
