// The congruent-triangle search of coarse alignment: candidate ref triangles for a from
// triple (descriptor neighbours, then shells of matching side lengths), the miss count
// of the pose a candidate gives, and the round bookkeeping that keeps the winner
// independent of the number of threads.
#include <zol/registration/AlignContextInternal.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include <zol/registration/RegistrationInternal.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

/// Normals of a hit may differ by at most about 15 degrees.
constexpr double kNormalAgreement = 0.965;

double Distance(const double* p, const double* q) {
    const double dx = p[0] - q[0], dy = p[1] - q[1], dz = p[2] - q[2];
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

struct PairCandidate {
    double score;
    int ra, rb;
    bool operator<(const PairCandidate& o) const {
        return std::tie(score, ra, rb) < std::tie(o.score, o.ra, o.rb);
    }
};

struct TriangleCandidate {
    double score;
    int ra, rb, rc;
    bool operator<(const TriangleCandidate& o) const {
        return std::tie(score, ra, rb, rc) < std::tie(o.score, o.ra, o.rb, o.rc);
    }
};

/// The ref triangles congruent to the from triple (a, b, c), ascending score.
/// \return RESULT_OK or the descriptor index's status.
int FindCongruentTriangleMap(
    const AlignContext& ctx, int a, int b, int c, std::vector<TriangleCandidate>* triangles) {
    const AlignCloud& ref = ctx.ref;
    const AlignCloud& from = ctx.from;
    const double lab = Distance(from.Point(a), from.Point(b));
    const double lbc = Distance(from.Point(b), from.Point(c));
    const double lca = Distance(from.Point(c), from.Point(a));
    const double nab = Distance(from.Normal(a), from.Normal(b));
    const double nbc = Distance(from.Normal(b), from.Normal(c));
    const double nca = Distance(from.Normal(c), from.Normal(a));

    const int k1 = std::min(ctx.descriptorNeighbors, ref.Count());
    std::vector<int> near(k1);
    std::vector<double> query(from.Descriptor(a), from.Descriptor(a) + kAlignDescriptorDim);
    Ann& field = const_cast<Ann&>(ctx.annFieldRef);
    const int status = field.FindNearestNeighbors(query.data(), 1, k1, near.data(), nullptr);
    if (status != RESULT_OK) {
        return LogFailure(status, "FindCongruent: annFieldRef FindNearestNeighbors failed");
    }

    std::vector<PairCandidate> pairs;
    std::vector<int> shell;
    for (int ra : near) {
        ctx.hashGrid.FindDistanceNeighbors(ref.Point(ra), lab, ctx.distTol * 0.25, &shell);
        const double descA = DescriptorDistance(from.Descriptor(a), ref.Descriptor(ra));
        for (int rb : shell) {
            if (rb == ra) continue;
            const double score = descA +
                                 DescriptorDistance(from.Descriptor(b), ref.Descriptor(rb)) +
                                 std::abs(nab - Distance(ref.Normal(ra), ref.Normal(rb)));
            pairs.push_back({score, ra, rb});
        }
    }
    const size_t keep = std::min(pairs.size(), static_cast<size_t>(ctx.pairBudget) + 1);
    std::partial_sort(pairs.begin(), pairs.begin() + keep, pairs.end());
    pairs.resize(keep);

    triangles->clear();
    int shellOwner = -1;
    for (const PairCandidate& pair : pairs) {
        if (pair.ra != shellOwner) {
            ctx.hashGrid.FindDistanceNeighbors(ref.Point(pair.ra), lca, ctx.distTol, &shell);
            shellOwner = pair.ra;
        }
        for (int rc : shell) {
            if (rc == pair.ra || rc == pair.rb) continue;
            if (!(std::abs(Distance(ref.Point(rc), ref.Point(pair.rb)) - lbc) < ctx.distTol)) {
                continue;
            }
            const double score = DescriptorDistance(from.Descriptor(c), ref.Descriptor(rc)) +
                                 std::abs(nbc - Distance(ref.Normal(rc), ref.Normal(pair.rb))) +
                                 pair.score +
                                 std::abs(nca - Distance(ref.Normal(rc), ref.Normal(pair.ra)));
            triangles->push_back({score, pair.ra, pair.rb, rc});
        }
    }
    std::sort(triangles->begin(), triangles->end());
    return RESULT_OK;
}

}  // namespace

// ---- RoundedBest -------------------------------------------------------------------

void RoundedBest::Reset(int itemCount,
                        int roundSize,
                        const AlignOutcome& start,
                        int stopMissCount) {
    mItemCount = itemCount;
    mRoundSize = std::max(roundSize, 1);
    mStopMissCount = stopMissCount;
    mNext = 0;
    mStopRound = INT_MAX;
    mDecided = 0;
    mPrefix = start;
    mPrefixMisses = start.misses;
    const int rounds = (itemCount + mRoundSize - 1) / mRoundSize;
    mRoundBest.assign(rounds, AlignOutcome());
    mRoundMisses.reset(new std::atomic<int>[rounds]);
    for (int r = 0; r < rounds; ++r) mRoundMisses[r] = INT_MAX;
    mRoundDone.assign(rounds, 0);
}

int RoundedBest::RoundSize(int round) const {
    return std::min(mRoundSize, mItemCount - round * mRoundSize);
}

int RoundedBest::Claim() {
    const int item = mNext.fetch_add(1);
    if (item >= mItemCount || RoundOf(item) > mStopRound.load()) return -1;
    return item;
}

int RoundedBest::Bound(int item) const {
    // Every value read is the misses of a fully checked candidate of this round or an
    // earlier one (or the start), so the bound never drops below the true best of the
    // rounds up to this one; a stale read only prunes less.
    int bound = mPrefixMisses.load();
    for (int r = mDecided.load(); r <= RoundOf(item); ++r)
        bound = std::min(bound, mRoundMisses[r].load());
    return bound;
}

void RoundedBest::Complete(int item, const AlignOutcome& outcome) {
    std::lock_guard<std::mutex> guard(mLock);
    const int round = RoundOf(item);
    if (outcome.IsBetterThan(mRoundBest[round])) {
        mRoundBest[round] = outcome;
        mRoundMisses[round] = std::min(mRoundMisses[round].load(), outcome.misses);
    }
    ++mRoundDone[round];
    int decided = mDecided.load();
    while (mStopRound.load() == INT_MAX && decided < static_cast<int>(mRoundDone.size()) &&
           mRoundDone[decided] == RoundSize(decided)) {
        if (mRoundBest[decided].IsBetterThan(mPrefix)) mPrefix = mRoundBest[decided];
        mPrefixMisses = mPrefix.misses;
        if (mPrefix.misses < mStopMissCount) mStopRound = decided;
        mDecided = ++decided;
    }
}

// ---- Search and check --------------------------------------------------------------

void VerifyTriPair(const AlignContext& ctx, const TriPair& pair, int bound, AlignOutcome* outcome) {
    Vector3 refPoints[3], fromPoints[3];
    for (int k = 0; k < 3; ++k) {
        const double* r = ctx.ref.Point(pair.ref[k]);
        const double* f = ctx.from.Point(pair.from[k]);
        refPoints[k] = Vector3(r[0], r[1], r[2]);
        fromPoints[k] = Vector3(f[0], f[1], f[2]);
    }
    Matrix4x4 pose;
    AlignPointPairCore(refPoints, fromPoints, 3, nullptr, pose);
    double* m = outcome->transform;
    for (int i = 0; i < 12; ++i) m[i] = pose.GetValue(i);
    int misses = 0;
    for (int s = 0; s < ctx.verifyCount; ++s) {
        const double* p = &ctx.verifyXyz[3 * s];
        const double* v = &ctx.verifyNormals[3 * s];
        double q[3], n[3];
        for (int r = 0; r < 3; ++r) {
            q[r] = m[4 * r] * p[0] + m[4 * r + 1] * p[1] + m[4 * r + 2] * p[2] + m[4 * r + 3];
            n[r] = m[4 * r] * v[0] + m[4 * r + 1] * v[1] + m[4 * r + 2] * v[2];
        }
        const int nearest = ctx.checkMap.Find(q);
        bool miss = nearest < 0;
        if (!miss) {
            const double* rn = ctx.refCheck.Normal(nearest);
            miss = rn[0] * n[0] + rn[1] * n[1] + rn[2] * n[2] < kNormalAgreement;
        }
        if (miss && ++misses > bound) {
            outcome->misses = INT_MAX;
            return;
        }
    }
    outcome->misses = misses;
}

int FindCongruent(AlignContext& ctx, int triple) {
    const int a = ctx.triples[3 * triple], b = ctx.triples[3 * triple + 1],
              c = ctx.triples[3 * triple + 2];
    std::vector<TriangleCandidate> triangles;
    const int status = FindCongruentTriangleMap(ctx, a, b, c, &triangles);
    if (status != RESULT_OK) {
        return LogFailure(status, "FindCongruentTriangleMap failed ", status);
    }
    AlignOutcome outcome;
    outcome.triple = triple;
    outcome.rank = 0;
    outcome.misses = INT_MAX;
    if (!triangles.empty()) {
        const TriangleCandidate& best = triangles[0];
        const TriPair pair = {{best.ra, best.rb, best.rc}, {a, b, c}};
        VerifyTriPair(ctx, pair, ctx.search.Bound(triple), &outcome);
        const int queued = std::min(static_cast<int>(triangles.size()), ctx.verifyPerTriple);
        std::lock_guard<std::mutex> guard(ctx.lock);
        for (int rank = 1; rank < queued; ++rank) {
            const TriangleCandidate& t = triangles[rank];
            ctx.candidateMap.emplace(CandidateKey{t.score, triple, rank},
                                     TriPair{{t.ra, t.rb, t.rc}, {a, b, c}});
        }
    }
    ctx.search.Complete(triple, outcome);
    return RESULT_OK;
}

}  // namespace ZOL
