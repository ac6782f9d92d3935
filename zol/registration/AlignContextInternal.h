// The working context of coarse alignment, shared by its preparation, its congruent-
// triangle search and the verification of queued candidates, and the bookkeeping that
// makes the winner independent of the number of threads. Internal.
#pragma once

#include <atomic>
#include <climits>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include <zol/registration/AlignFeatureInternal.h>
#include <zol/registration/AlignHashGridInternal.h>
#include <zol/registration/AlignNearestMapInternal.h>
#include <zol/runtime/Ann.h>

namespace ZOL {

/// A ref triangle (ra, rb, rc) matched with a from triple (a, b, c).
struct TriPair {
    int ref[3];
    int from[3];
};

/// Order of the queued candidates: ascending score, ties by triple and rank so that the
/// order never depends on which thread queued first.
struct CandidateKey {
    double score;
    int triple;
    int rank;
    bool operator<(const CandidateKey& o) const {
        if (score != o.score) return score < o.score;
        if (triple != o.triple) return triple < o.triple;
        return rank < o.rank;
    }
};

/// A checked candidate: its misses (INT_MAX when dropped) and pose (3 x 4, row-major).
/// Candidates compare by misses, then by triple and rank, which names one winner
/// whatever the order of checking.
struct AlignOutcome {
    int misses = INT_MAX;
    int triple = INT_MAX;
    int rank = INT_MAX;
    double transform[12] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

    bool IsBetterThan(const AlignOutcome& o) const {
        if (misses != o.misses) return misses < o.misses;
        if (triple != o.triple) return triple < o.triple;
        return rank < o.rank;
    }
};

/// The best candidate over items (triples, or queued candidates) checked in rounds of a
/// fixed size by any number of workers. Early stop is decided only when a round and all
/// rounds before it are complete, from those rounds alone; a candidate is dropped only
/// when its misses exceed those of a fully checked candidate of its own round or an
/// earlier one, so it can never be the best of the rounds that count. Items that workers
/// took beyond the round where the search stopped are ignored. Thread-safe.
class RoundedBest {
public:
    /// \param[in] start the best before this search (misses = bound for every item).
    /// \param[in] stopMissCount stop once the best has fewer misses than this.
    void Reset(int itemCount, int roundSize, const AlignOutcome& start, int stopMissCount);
    /// \return the next item to check, or -1 when none is left or the search stopped in
    ///         an earlier round.
    int Claim();
    /// \return the misses above which a candidate of \p item's round is dropped.
    int Bound(int item) const;
    /// Records the outcome of \p item (misses INT_MAX when dropped or none) and decides
    /// every round that this completes.
    void Complete(int item, const AlignOutcome& outcome);
    /// \return the best over the decided rounds (call after every worker finished).
    const AlignOutcome& Best() const { return mPrefix; }
    bool Stopped() const { return mStopRound.load() != INT_MAX; }

private:
    int RoundOf(int item) const { return item / mRoundSize; }
    int RoundSize(int round) const;

    std::mutex mLock;
    int mItemCount = 0;
    int mRoundSize = 1;
    int mStopMissCount = 0;
    std::atomic<int> mNext{0};
    std::atomic<int> mStopRound{INT_MAX};
    std::atomic<int> mDecided{0};  ///< rounds 0 .. mDecided-1 are decided
    std::atomic<int> mPrefixMisses{INT_MAX};
    AlignOutcome mPrefix;  ///< best over the decided rounds
    std::vector<AlignOutcome> mRoundBest;
    std::unique_ptr<std::atomic<int>[]> mRoundMisses;
    std::vector<int> mRoundDone;
};

/// Everything one AlignPointCloud call works on. The search runs on the reduced clouds
/// (a few hundred points); candidate poses are checked on clouds reduced 2.5 times
/// finer, whose points lie close enough to each other that their normals agree where
/// the surfaces meet.
struct AlignContext {
    // Parameters derived from the accuracy.
    double accuracy = 0.0;
    int maxSampleTripleCount = 0;
    int descriptorNeighbors = 0;  ///< k1: ref points by descriptor per triple
    int pairBudget = 0;           ///< k2: best pairs extended to triangles
    int verifyPerTriple = 0;      ///< candidates kept per triple (first checked at once)

    AlignCloud ref;        ///< reduced ref cloud, smoothed normals
    AlignCloud from;       ///< reduced from cloud, smoothed normals
    AlignCloud refCheck;   ///< finer reduction of the ref cloud
    AlignCloud fromCheck;  ///< finer reduction of the from cloud
    double tol = 1e-15;
    double distTol = 0.0;  ///< 2 tol: check distance and congruence tolerance

    Ann annFieldRef;             ///< ref descriptors
    AlignHashGrid hashGrid;      ///< ref points, cell 2 distTol
    AlignNearestMap checkMap;    ///< refCheck points within distTol
    std::vector<int> verifyIds;  ///< check points, ids of fromCheck
    int verifyCount = 0;
    std::vector<double> verifyXyz;      ///< check points, 3 each
    std::vector<double> verifyNormals;  ///< their normals
    std::vector<int> triples;           ///< 3 from ids per base triple
    int stopMissCount = 0;

    std::mutex lock;  ///< guards candidateMap
    std::map<CandidateKey, TriPair> candidateMap;
    RoundedBest search;        ///< over triples
    RoundedBest verification;  ///< over queued candidates
    std::atomic<bool> failed{false};
    std::atomic<bool> earlyStop{false};

    int BaseCount() const { return static_cast<int>(triples.size() / 3); }
};

/// Step 6 for triple \p triple: the candidate triangles of the triple, the best checked
/// at once and recorded in ctx.search, the next ones queued in ctx.candidateMap.
/// \return RESULT_OK or the descriptor index's status (logged).
int FindCongruent(AlignContext& ctx, int triple);

/// The misses of the pose that the triangle pair gives, or INT_MAX once they exceed
/// \p bound. \p outcome receives the misses and the pose.
void VerifyTriPair(const AlignContext& ctx, const TriPair& pair, int bound, AlignOutcome* outcome);

/// The from triples of the search (step 4, thread 0).
/// \return RESULT_OK or the sampler's status (logged).
int ConstructTripleBase(AlignContext& ctx);

/// Steps 4, 6 and 7 on the workers.
int RunPrepareAlignFree(AlignContext& ctx);
int RunFindCongruent(AlignContext& ctx);
int RunVerifyTriPairMap(AlignContext& ctx);

}  // namespace ZOL
