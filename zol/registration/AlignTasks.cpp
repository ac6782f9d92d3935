// The parallel steps of coarse alignment: the preparation on two threads (check points
// on one, base triples and the descriptor index on the other), the congruent-triangle
// search over the triples and the verification of the queued candidates, each on one
// task per thread taking items in order until the search stops.
#include <zol/registration/AlignContextInternal.h>

#include <algorithm>
#include <cmath>

#include <zol/core/IPointList.h>
#include <zol/pointcloud/SamplePointCloud.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ParallelInternal.h>
#include <zol/runtime/Profiler.h>

namespace ZOL {

namespace {

/// Items per round of the searches; fixed, so the rounds do not depend on the threads.
constexpr int kSearchRound = 8;
constexpr int kVerifyRound = 32;
/// Check points drawn from the reduced from cloud.
constexpr int kVerifySampleCount = 150;
/// From samples that base triples are made of, at accuracy 0 and 1.
constexpr int kTripleSamplesLow = 72;
constexpr int kTripleSamplesHigh = 96;
/// Triangle shape: sides at most this share of the sample spread, the shortest at
/// least this share of the longest.
constexpr double kMaxSideShare = 0.7;
constexpr double kMinSideRatio = 0.3;

double SquaredDistance(const double* p, const double* q) {
    const double dx = p[0] - q[0], dy = p[1] - q[1], dz = p[2] - q[2];
    return dx * dx + dy * dy + dz * dz;
}

/// The check points (from the finer from cloud) and their normals.
int DrawVerificationSamples(AlignContext& ctx) {
    const AlignCloud& check = ctx.fromCheck;
    PointCloudPointList checkList(&check.cloud);
    ctx.verifyCount = std::min(check.Count(), kVerifySampleCount);
    ctx.verifyIds.assign(ctx.verifyCount, 0);
    const int status = SamplePointCloud::_GeometrySamplePointList(
        &checkList, ctx.verifyCount, ctx.verifyIds.data(), 0.3, 9, 0, SAMPLE_QUALITY_HIGH);
    if (status != RESULT_OK) return status;
    ctx.verifyXyz.clear();
    ctx.verifyNormals.clear();
    for (int id : ctx.verifyIds) {
        ctx.verifyXyz.insert(ctx.verifyXyz.end(), check.Point(id), check.Point(id) + 3);
        ctx.verifyNormals.insert(ctx.verifyNormals.end(), check.Normal(id), check.Normal(id) + 3);
    }
    return RESULT_OK;
}

class PrepareAlignFreeMT : public TaskBase {
public:
    PrepareAlignFreeMT(AlignContext* context, int threadId, int threadCount)
        : mpContext(context), mThreadId(threadId), mThreadCount(threadCount) {}

    void Run() override {
        LogAt(LOG_TRACE, "PrepareAlignFreeMT::Run start: mThreadId=", mThreadId,
              " mThreadCount=", mThreadCount);
        AlignContext& ctx = *mpContext;
        int status = RESULT_OK;
        if (mThreadId == 1) {
            status = DrawVerificationSamples(ctx);
        } else {
            status = ConstructTripleBase(ctx);
            if (status == RESULT_OK) {
                status = ctx.annFieldRef.Init(ctx.ref.descriptors.data(), ctx.ref.Count(),
                                              kAlignDescriptorDim);
            }
            ctx.checkMap.Build(ctx.refCheck.xyz.data(), ctx.refCheck.Count(), ctx.distTol);
        }
        if (status != RESULT_OK) ctx.failed = true;
    }

private:
    AlignContext* mpContext;
    int mThreadId;
    int mThreadCount;
};

class FindCongruentMT : public TaskBase {
public:
    FindCongruentMT(AlignContext* context, int threadId, int threadCount)
        : mpContext(context), mThreadId(threadId), mThreadCount(threadCount) {}

    void Run() override {
        LogAt(LOG_TRACE, "FindCongruentMT::Run start: mThreadId=", mThreadId,
              " mThreadCount=", mThreadCount);
        AlignContext& ctx = *mpContext;
        for (;;) {
            if (ctx.failed) {
                LogAt(LOG_FAILURE, "FindCongruentMT::Run: failed");
                return;
            }
            const int triple = ctx.search.Claim();
            if (triple < 0) break;
            if (FindCongruent(ctx, triple) != RESULT_OK) {
                LogAt(LOG_FAILURE, "FindCongruentMT::Run: FindCongruent failed");
                ctx.failed = true;
                return;
            }
        }
        if (ctx.search.Stopped()) LogAt(LOG_TRACE, "FindCongruentMT::Run: earlyStop");
    }

private:
    AlignContext* mpContext;
    int mThreadId;
    int mThreadCount;
};

/// The queued candidates in map order, for indexed access by the workers.
struct QueuedCandidates {
    std::vector<CandidateKey> keys;
    std::vector<TriPair> pairs;
};

void CheckQueued(AlignContext& ctx, const QueuedCandidates& queued, int j) {
    AlignOutcome outcome;
    outcome.triple = queued.keys[j].triple;
    outcome.rank = queued.keys[j].rank;
    VerifyTriPair(ctx, queued.pairs[j], ctx.verification.Bound(j), &outcome);
    ctx.verification.Complete(j, outcome);
}

class VerifyTriPairMapMT : public TaskBase {
public:
    VerifyTriPairMapMT(AlignContext* context,
                       const QueuedCandidates* queued,
                       int threadId,
                       int threadCount)
        : mpContext(context), mpQueued(queued), mThreadId(threadId), mThreadCount(threadCount) {}

    void Run() override {
        LogAt(LOG_TRACE, "VerifyTriPairMapMT::Run start: mThreadId=", mThreadId,
              " mThreadCount=", mThreadCount);
        AlignContext& ctx = *mpContext;
        for (int j = ctx.verification.Claim(); j >= 0; j = ctx.verification.Claim()) {
            CheckQueued(ctx, *mpQueued, j);
        }
        if (ctx.verification.Stopped()) LogAt(LOG_TRACE, "VerifyTriPairMapMT::Run: earlyStop");
    }

private:
    AlignContext* mpContext;
    const QueuedCandidates* mpQueued;
    int mThreadId;
    int mThreadCount;
};

/// The mean descriptor of the ref points.
std::vector<double> MeanRefDescriptor(const AlignContext& ctx) {
    std::vector<double> mean(kAlignDescriptorDim, 0.0);
    const int refCount = ctx.ref.Count();
    for (int i = 0; i < refCount; ++i) {
        for (int k = 0; k < kAlignDescriptorDim; ++k) mean[k] += ctx.ref.Descriptor(i)[k];
    }
    for (double& m : mean) m /= std::max(refCount, 1);
    return mean;
}

/// The from vertex that leads a triple: the one whose descriptor is least common among
/// the ref points (farthest from their mean), so that its descriptor neighbours are few.
int LeadingVertex(const AlignContext& ctx, const std::vector<double>& mean, const int* vertices) {
    int lead = 0;
    double farthest = -1.0;
    for (int v = 0; v < 3; ++v) {
        const double d = DescriptorDistance(ctx.from.Descriptor(vertices[v]), mean.data());
        if (d > farthest) {
            farthest = d;
            lead = v;
        }
    }
    return lead;
}

}  // namespace

int ConstructTripleBase(AlignContext& ctx) {
    const int fromCount = ctx.from.Count();
    if (fromCount < 3) {
        return LogFailure(RESULT_FAIL,
                          "AlignPointCloud:ConstructTripleBase: point count is too small");
    }
    const int wanted = static_cast<int>(
        std::lround(kTripleSamplesLow + (kTripleSamplesHigh - kTripleSamplesLow) * ctx.accuracy));
    const int sampleCount = std::min({fromCount, wanted, ctx.maxSampleTripleCount});
    std::vector<int> ids(sampleCount);
    PointCloudPointList fromList(&ctx.from.cloud);
    const int status = SamplePointCloud::_GeometrySamplePointList(
        &fromList, sampleCount, ids.data(), 0.3, 9, 0, SAMPLE_QUALITY_LOW);
    if (status != RESULT_OK) {
        return LogFailure(status,
                          "AlignPointCloud:ConstructTripleBase: UniformSample failed: ", status);
    }
    std::vector<int> vertices = ids;
    std::sort(vertices.begin(), vertices.end());
    const int n = static_cast<int>(vertices.size());
    double spread2 = 0.0;
    for (int i = 0; i < n; ++i) {
        for (int j = i + 1; j < n; ++j) {
            spread2 = std::max(
                spread2, SquaredDistance(ctx.from.Point(vertices[i]), ctx.from.Point(vertices[j])));
        }
    }
    const double maxSide2 = kMaxSideShare * kMaxSideShare * spread2;
    const double minSide2 = std::max(16.0 * ctx.distTol * ctx.distTol, 0.0);
    struct Triple {
        double size;
        int v[3];
    };
    std::vector<Triple> all;
    for (int i = 0; i < n; ++i) {
        for (int j = i + 1; j < n; ++j) {
            const double ij =
                SquaredDistance(ctx.from.Point(vertices[i]), ctx.from.Point(vertices[j]));
            if (ij > maxSide2 || ij < minSide2) continue;
            for (int k = j + 1; k < n; ++k) {
                const double jk =
                    SquaredDistance(ctx.from.Point(vertices[j]), ctx.from.Point(vertices[k]));
                const double ki =
                    SquaredDistance(ctx.from.Point(vertices[k]), ctx.from.Point(vertices[i]));
                const double longest = std::max({ij, jk, ki}), shortest = std::min({ij, jk, ki});
                if (longest > maxSide2 || shortest < minSide2 ||
                    shortest < kMinSideRatio * kMinSideRatio * longest) {
                    continue;
                }
                all.push_back({ij + jk + ki, {vertices[i], vertices[j], vertices[k]}});
            }
        }
    }
    // Largest first; each point leads at most a fair share of the budget so that the
    // triples spread over the cloud.
    std::sort(all.begin(), all.end(), [](const Triple& l, const Triple& r) {
        if (l.size != r.size) return l.size > r.size;
        return std::lexicographical_compare(l.v, l.v + 3, r.v, r.v + 3);
    });
    const int budget = ctx.maxSampleTripleCount;
    const int cap = std::max(3, (3 * budget + n - 1) / std::max(n, 1));
    std::vector<int> used(fromCount, 0);
    const std::vector<double> mean = MeanRefDescriptor(ctx);
    ctx.triples.clear();
    for (const Triple& t : all) {
        if (static_cast<int>(ctx.triples.size()) / 3 >= budget) break;
        if (used[t.v[0]] >= cap || used[t.v[1]] >= cap || used[t.v[2]] >= cap) continue;
        const int lead = LeadingVertex(ctx, mean, t.v);
        for (int k = 0; k < 3; ++k) {
            ctx.triples.push_back(t.v[(lead + k) % 3]);
            ++used[t.v[k]];
        }
    }
    return RESULT_OK;
}

int RunPrepareAlignFree(AlignContext& ctx) {
    int status;
    {
        // The samplers are library steps of their own; their progress must not show.
        ProgressSuspendScope suspend;
        status = RunTasks(
            2, [&ctx](int t, int n) -> TaskBase* { return new PrepareAlignFreeMT(&ctx, t, n); },
            {"AlignPointCloud init thread init failed",
             "AlignPointCloud: Init ThreadPool InsertTask Failed "},
            2);
    }
    if (status != RESULT_OK) return status;
    if (ctx.failed)
        return LogFailure(RESULT_STEP_FAIL, "AlignPointCloud: PrepareAlignFreeMT failed");
    return RESULT_OK;
}

int RunFindCongruent(AlignContext& ctx) {
    const double start = Profiler::GetTime();
    const int baseCount = ctx.BaseCount();
    AlignOutcome none;
    none.misses = ctx.verifyCount;
    ctx.search.Reset(baseCount, kSearchRound, none, ctx.stopMissCount);
    const int threads = ParallelTaskCount();
    LogAt(LOG_TRACE, "AlignPointCloud: processor count =", threads);
    if (threads == 1) {
        for (int i = ctx.search.Claim(); i >= 0; i = ctx.search.Claim()) {
            SetProgress(0.2 + 0.65 * i / (baseCount + 1));
            if (FindCongruent(ctx, i) != RESULT_OK) {
                return LogFailure(RESULT_STEP_FAIL, "AlignPointCloud FindCongruent Failed");
            }
        }
    } else {
        const int status = RunTasks(
            threads, [&ctx](int t, int n) -> TaskBase* { return new FindCongruentMT(&ctx, t, n); },
            {"AlignPointCloud", "AlignPointCloud: ThreadPool InsertTask Failed "});
        if (status != RESULT_OK) return status;
        if (ctx.failed) return LogFailure(RESULT_STEP_FAIL, "AlignPointCloud FindCongruent Failed");
    }
    ctx.earlyStop = ctx.search.Stopped();
    if (ctx.earlyStop) LogAt(LOG_TRACE, "AlignPointCloud: early stop");
    LogAt(LOG_TRACE, "AlignPointCloud Find Congruent time:", Profiler::GetTime() - start);
    LogAt(LOG_TRACE, "AlignPointCloud: triangle pair count:", ctx.candidateMap.size());
    SetProgress(0.85);
    return RESULT_OK;
}

int RunVerifyTriPairMap(AlignContext& ctx) {
    QueuedCandidates queued;
    for (const auto& entry : ctx.candidateMap) {
        queued.keys.push_back(entry.first);
        queued.pairs.push_back(entry.second);
    }
    const int count = static_cast<int>(queued.pairs.size());
    ctx.verification.Reset(count, kVerifyRound, ctx.search.Best(), ctx.stopMissCount);
    if (count == 0) return RESULT_OK;
    const int threads = ParallelTaskCount(count);
    if (threads == 1) {
        for (int j = ctx.verification.Claim(); j >= 0; j = ctx.verification.Claim()) {
            SetProgress(0.85 + 0.15 * j / (count + 1));
            CheckQueued(ctx, queued, j);
        }
        return RESULT_OK;
    }
    const int status =
        RunTasks(threads,
                 [&ctx, &queued](int t, int n) -> TaskBase* {
                     return new VerifyTriPairMapMT(&ctx, &queued, t, n);
                 },
                 {"AlignPointCloud", "AlignPointCloud: ThreadPool InsertTask Failed "});
    if (status != RESULT_OK) return status;
    if (ctx.failed) return LogFailure(RESULT_STEP_FAIL, "AlignPointCloud VerifyTriPairMap Failed");
    return RESULT_OK;
}

}  // namespace ZOL
