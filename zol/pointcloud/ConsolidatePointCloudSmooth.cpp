// Normal smoothing of ConsolidatePointCloud: a screened Laplacian on the k-nearest-
// neighbour graph, solved per coordinate axis by sparse least squares; fixed normals are
// pinned by rows of weight 1e10, and the cloud is written only after all three solves.
#include <zol/pointcloud/ConsolidatePointCloud.h>

#include <algorithm>

#include <zol/core/IPointList.h>
#include <zol/pointcloud/PointSelectionInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LeastSquareSolverInternal.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

namespace {

// Weight of the data row of a fixed point: large enough that its normal stays put.
const double kPinWeight = 1e10;
// Decimal digits asked of each solve.
const int kSolvePrecision = 8;

}  // namespace

int ConsolidatePointCloud::SmoothNormal(IPointCloud* pointCloud,
                                        double normalWeight,
                                        int neighborCount,
                                        const std::vector<int>* fixedIndex) {
    PointCloudInfo info;
    return _SmoothNormal(pointCloud, info, normalWeight, neighborCount, fixedIndex);
}

int ConsolidatePointCloud::_SmoothNormal(IPointCloud* pointCloud,
                                         PointCloudInfo& info,
                                         double normalWeight,
                                         int neighborCount,
                                         const std::vector<int>* fixedIndex) {
    SetProgress(0.0);
    // dump hook
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::SmoothNormal input pointCloud is NULL");
    }
    if (!pointCloud->HasNormal()) {
        return LogFailure(
            RESULT_INVALID_INPUT,
            "ConsolidatePointCloud::SmoothNormal pointCloud should have normal first");
    }
    if (!(normalWeight > REAL_TOL)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::SmoothNormal normalWeight should large than "
                          "REAL_TOL: ",
                          normalWeight);
    }
    if (neighborCount < 4) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::SmoothNormal, invalid neighborCount < 4");
    }
    const int n = pointCloud->GetPointCount();
    if (n < 1) {
        return LogFailure(RESULT_FAIL,
                          "ConsolidatePointCloud::SmoothNormal invalid pointCount: ", n);
    }
    std::vector<bool> fixed;
    int badIndex = 0;
    if (!MarkPointSelection(fixedIndex, n, false, fixed, badIndex)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ConsolidatePointCloud::SmoothNormal invalid fixedIndex: ", badIndex);
    }
    const int k = std::min(n, neighborCount);
    int status = info.InitAnn(pointCloud, k);
    if (status != RESULT_OK) return status;
    SetProgress(0.1);
    status = info.FindNearestNeighbors(k, pointCloud, nullptr);
    if (status != RESULT_OK) return status;
    SetProgress(0.3);

    const int f = static_cast<int>(std::count(fixed.begin(), fixed.end(), true));
    const int m = n - f;
    const int rows = n + m;
    std::vector<double> normals;
    {
        PointCloudPointList list(pointCloud);
        CopyPointListNormals(&list, &normals);
    }
    std::vector<SparseTriplet> triplets;
    triplets.reserve(static_cast<size_t>(n) + static_cast<size_t>(m) * k);
    std::vector<double> b[3];
    for (std::vector<double>& rhs : b) rhs.assign(static_cast<size_t>(rows), 0.0);
    const double mean = k > 1 ? -1.0 / (k - 1) : 0.0;
    std::vector<int> list;
    bool built = true;
    int laplaceRow = n;
    for (int i = 0; i < n; ++i) {
        const double weight = fixed[i] ? kPinWeight : normalWeight;
        triplets.push_back({i, i, weight});
        for (int a = 0; a < 3; ++a) b[a][i] = weight * normals[3 * static_cast<size_t>(i) + a];
        if (fixed[i]) continue;
        const int* row = info.GetCachedNeighborIds(i);
        int count = info.GetCachedNeighborCount(i);
        if (count < k) {
            status = info.GetNeighbor(i, k, &list);
            if (status != RESULT_OK) {
                return LogFailure(status, "SmoothNormal: info GetNeighbor failed ", status);
            }
            row = list.data();
            count = static_cast<int>(list.size());
        }
        triplets.push_back({laplaceRow, i, 1.0});
        for (int t = 1; t < std::min(count, k); ++t) {
            built = built && row[t] >= 0 && row[t] < n;
            triplets.push_back({laplaceRow, row[t], mean});
        }
        ++laplaceRow;
    }
    if (!built) {
        return LogFailure(RESULT_STEP_FAIL,
                          "ConsolidatePointCloud::SmoothNormal: sparse matrix build failed");
    }
    SetProgress(0.5);

    LeastSquareSparseLUSolver solver;
    status = solver.Factorize(rows, n, triplets);
    if (status != RESULT_OK) {
        return LogFailure(
            status,
            "ConsolidatePointCloud::SmoothNormal: LeastSquareSparseLUSolver Factorize "
            "failed ",
            status);
    }
    std::vector<int>().swap(list);
    std::vector<SparseTriplet>().swap(triplets);
    solver.SetPrecisionDigits(kSolvePrecision);
    std::vector<double> start(static_cast<size_t>(n));
    std::vector<double> solution[3];
    auto solveAxis = [&](int a) {
        for (int i = 0; i < n; ++i) start[i] = normals[3 * static_cast<size_t>(i) + a];
        return solver.Solve(b[a], start, solution[a]);
    };
    status = solveAxis(0);
    if (status != RESULT_OK) {
        return LogFailure(status,
                          "ConsolidatePointCloud::SmoothNormal: LeastSquareSparseLUSolver Solve X "
                          "failed ",
                          status);
    }
    SetProgress(0.65);
    status = solveAxis(1);
    if (status != RESULT_OK) {
        return LogFailure(status,
                          "ConsolidatePointCloud::SmoothNormal: LeastSquareSparseLUSolver Solve Y "
                          "failed ",
                          status);
    }
    SetProgress(0.8);
    status = solveAxis(2);
    if (status != RESULT_OK) {
        return LogFailure(status,
                          "ConsolidatePointCloud::SmoothNormal: LeastSquareSparseLUSolver Solve Z "
                          "failed ",
                          status);
    }
    SetProgress(0.95);
    for (int i = 0; i < n; ++i) {
        if (fixed[i]) continue;
        Vector3 normal(solution[0][i], solution[1][i], solution[2][i]);
        normal.Normalise();
        pointCloud->SetPointNormal(i, normal);
    }
    SetProgress(1.0);
    return RESULT_OK;
}

}  // namespace ZOL
