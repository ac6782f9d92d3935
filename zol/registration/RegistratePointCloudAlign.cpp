// Coarse alignment from any pose: the entry point with its checks, the reduction of both
// clouds with smoothed normals and descriptors, and the order of the parallel steps.
#include <zol/registration/RegistratePointCloud.h>

#include <cmath>

#include <zol/core/IPointList.h>
#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpRegistrationRecords.h>
#include <zol/pointcloud/ConsolidatePointCloud.h>
#include <zol/registration/AlignContextInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ParallelInternal.h>
#include <zol/runtime/Profiler.h>

namespace ZOL {

namespace {

/// tol in voxel sizes of the reduction: check points hit within 2 tol = one voxel.
constexpr double kTolPerVoxel = 0.5;
/// The check clouds are reduced this many times finer than the search clouds.
constexpr double kCheckRefinement = 2.5;

/// Copies coordinates and normals of a cloud into flat arrays.
/// \return false when one of them is not finite.
bool CopyFinite(const IPointCloud* pointCloud,
                std::vector<double>* xyz,
                std::vector<double>* normals) {
    PointCloudPointList list(pointCloud);
    CopyPointListCoords(&list, xyz);
    CopyPointListNormals(&list, normals);
    for (const std::vector<double>* values : {xyz, normals}) {
        for (double v : *values) {
            if (!std::isfinite(v)) return false;
        }
    }
    return true;
}

/// Reduces one cloud at \p voxelSize, describes it (on the plane-fit normals, which keep
/// the shape that smoothing would flatten) and smooths the normals of the reduction;
/// then reduces it again, finer, for checking candidate poses.
/// \return RESULT_OK, RESULT_STEP_FAIL for fewer than 3 reduced points, or the
///         smoothing's status.
int ReduceAndSmooth(const std::vector<double>& xyz,
                    const std::vector<double>& normals,
                    double voxelSize,
                    AlignCloud& cloud,
                    AlignCloud& check) {
    if (!(voxelSize > 0.0)) return RESULT_STEP_FAIL;
    ReduceOnVoxels(xyz, normals, voxelSize, &cloud);
    if (cloud.Count() < 3) return RESULT_STEP_FAIL;
    DescribeAlignCloud(voxelSize, cloud);
    const int status = ConsolidatePointCloud::SmoothNormal(&cloud.cloud, 0.25, 9, nullptr);
    if (status != RESULT_OK) return status;
    cloud.CopyFlat();
    ReduceOnVoxels(xyz, normals, voxelSize / kCheckRefinement, &check);
    return RESULT_OK;
}

/// Steps 1 to 8 of the worker after the dump record.
int AlignWorker(const IPointCloud* pointCloudRef,
                const IPointCloud* pointCloudFrom,
                Matrix4x4* resultTransform,
                double accuracy,
                int maxSampleTripleCount) {
    SetProgress(0.0);
    if (pointCloudRef == nullptr || pointCloudFrom == nullptr || resultTransform == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "AlignPointCloud pointCloudRef == NULL || pointCloudFrom == NULL || "
                          "resultTransform == NULL");
    }
    if (pointCloudRef->GetPointCount() < 3 || pointCloudFrom->GetPointCount() < 3) {
        return LogFailure(RESULT_INVALID_INPUT, "AlignPointCloud invalid pointCloud count");
    }
    if (!pointCloudRef->HasNormal() || !pointCloudFrom->HasNormal()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "error: pointCloudRef and pointCloudFrom should have normal");
    }
    if (!(accuracy >= 0.0 && accuracy <= 1.0)) {
        return LogFailure(RESULT_INVALID_INPUT, "invalid accuracy: ", accuracy);
    }
    if (maxSampleTripleCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "AlignPointCloud invalid maxSampleTripleCount:", maxSampleTripleCount);
    }
    std::vector<double> refXyz, refNormals, fromXyz, fromNormals;
    if (!CopyFinite(pointCloudRef, &refXyz, &refNormals)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "AlignPointCloud pointCloudRef has a non-finite coordinate or normal");
    }
    if (!CopyFinite(pointCloudFrom, &fromXyz, &fromNormals)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "AlignPointCloud pointCloudFrom has a non-finite coordinate or normal");
    }
    const double startTime = Profiler::GetTime();
    AlignContext ctx;
    ctx.accuracy = accuracy;
    ctx.maxSampleTripleCount = maxSampleTripleCount;
    ctx.descriptorNeighbors = static_cast<int>(std::ceil(accuracy * 10) + 20);
    ctx.pairBudget = static_cast<int>(std::ceil(accuracy * 35) + 15);
    ctx.verifyPerTriple = static_cast<int>(std::ceil(accuracy * 12) + 3);

    // Step 2: reduce both clouds on one voxel size (which also gives tol), one cloud per
    // task; the smoothing is a library step whose progress must not show.
    const int target = static_cast<int>(std::ceil(accuracy * 300) + 200);
    const double voxelSize = ChooseVoxelSize(refXyz, target);
    const std::vector<double>* inputs[2][2] = {{&refXyz, &refNormals}, {&fromXyz, &fromNormals}};
    AlignCloud* outputs[2][2] = {{&ctx.ref, &ctx.refCheck}, {&ctx.from, &ctx.fromCheck}};
    int reduced[2] = {RESULT_OK, RESULT_OK};
    const auto reduce = [&](int t, int n) {
        for (int c = t; c < 2; c += n) {
            reduced[c] = ReduceAndSmooth(*inputs[c][0], *inputs[c][1], voxelSize, *outputs[c][0],
                                         *outputs[c][1]);
        }
    };
    int status;
    {
        ProgressSuspendScope suspend;
        status = ParallelFor(ParallelTaskCount(2), reduce,
                             {"AlignPointCloud", "AlignPointCloud: ThreadPool InsertTask Failed "});
    }
    if (status != RESULT_OK) return status;
    if (reduced[0] == RESULT_STEP_FAIL) {
        return LogFailure(RESULT_STEP_FAIL, "AlignPointCloud: simplify pointCloudRef failed");
    }
    if (reduced[0] != RESULT_OK) return reduced[0];
    if (reduced[1] == RESULT_STEP_FAIL) {
        return LogFailure(RESULT_STEP_FAIL, "AlignPointCloud: simplify pointCloudFrom failed");
    }
    if (reduced[1] != RESULT_OK) return reduced[1];
    ctx.tol = std::max(voxelSize * kTolPerVoxel, 1e-15);
    LogAt(LOG_TRACE, "AlignPointCloud simplifiedRef point count =", ctx.ref.Count());
    LogAt(LOG_TRACE, "AlignPointCloud simplifiedFrom point count =", ctx.from.Count());
    LogAt(LOG_TRACE, "AlignPointCloud: tol =", ctx.tol);
    BalanceDescriptors(ctx.ref, ctx.from);
    ctx.distTol = 2.0 * ctx.tol;
    SetProgress(0.05);

    // Step 4: check points, base triples and the descriptor index.
    status = RunPrepareAlignFree(ctx);
    if (status != RESULT_OK) return status;
    SetProgress(0.15);

    // Step 5.
    ctx.hashGrid.Build(ctx.ref.xyz.data(), ctx.ref.Count(), 2.0 * ctx.distTol);
    ctx.stopMissCount = static_cast<int>(ctx.verifyCount * 0.34);
    resultTransform->InitIdentityTransform();
    LogAt(LOG_TRACE, "AlignPointCloud parms.minMissCount =", ctx.verifyCount);
    LogAt(LOG_TRACE, "AlignPointCloud: stopMissCount =", ctx.stopMissCount,
          " baseCount =", ctx.BaseCount());
    SetProgress(0.2);

    // Steps 6 and 7.
    status = RunFindCongruent(ctx);
    if (status != RESULT_OK) return status;
    const AlignOutcome* best = &ctx.search.Best();
    if (!ctx.earlyStop) {
        status = RunVerifyTriPairMap(ctx);
        if (status != RESULT_OK) return status;
        best = &ctx.verification.Best();
    }
    if (best->misses < ctx.verifyCount) {
        for (int i = 0; i < 12; ++i) resultTransform->SetValue(i, best->transform[i]);
        LogAt(LOG_TRACE, "RegistratePointCloud:: minMiss Count:", best->misses);
    }
    SetProgress(1.0);
    LogAt(LOG_TRACE, "AlignPointCloud total time:", Profiler::GetTime() - startTime);
    return RESULT_OK;
}

}  // namespace

int RegistratePointCloud::AlignPointCloud(const IPointCloud* pointCloudRef,
                                          const IPointCloud* pointCloudFrom,
                                          Matrix4x4* resultTransform,
                                          double accuracy) {
    SetProgress(0.0);
    DumpCall<DumpPointCloudRegistrationAlignPointCloud>(pointCloudRef, pointCloudFrom,
                                                        resultTransform, accuracy);  // dump hook
    // The triple budget is only meaningful for an accuracy that passes the checks.
    const int maxSampleTripleCount =
        accuracy >= 0.0 && accuracy <= 1.0 ? static_cast<int>(accuracy * 1500 + 500) : 0;
    return AlignWorker(pointCloudRef, pointCloudFrom, resultTransform, accuracy,
                       maxSampleTripleCount);
}

}  // namespace ZOL
