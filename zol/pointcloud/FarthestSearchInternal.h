// The working state of farthest-point sampling: every candidate's squared distance to
// the samples taken so far. Candidates are kept in blocks of spatial neighbours with a
// bounding box and their farthest member, so that a new sample only visits the blocks
// it can come nearer to than their farthest member; the results are those of the plain
// scan over all candidates, exactly.
#pragma once

#include <vector>

namespace ZOL {

class FarthestSearch {
public:
    /// Every candidate starts at this distance.
    static constexpr double kInitialDistance = 1.7e308;

    /// \param[in] xyz coordinates of the candidates, 3 doubles each, finite (copied).
    /// \param[in] count number of candidates (positions 0 .. count-1), at least 1.
    FarthestSearch(const double* xyz, int count);

    /// Lowers every untaken candidate's distance to its squared distance from \p q when
    /// that is strictly smaller.
    void Lower(const double* q);
    /// As Lower, and records \p seed in \p owner (indexed by position) for every
    /// candidate lowered. The blocks are shared out to \p taskCount workers (1: the
    /// calling thread); the result does not depend on it.
    /// \param[in] visitAll visit every block (no pruning), e.g. for the first round.
    /// \param[out] anyPositive set when some squared distance computed is above 0; may be
    ///             null.
    /// \return RESULT_OK, or RESULT_STEP_FAIL when the workers cannot run (logged).
    int LowerAndMark(const double* q,
                     unsigned char seed,
                     unsigned char* owner,
                     bool visitAll,
                     bool* anyPositive,
                     int taskCount);
    /// \return the position of the untaken candidate with the greatest distance, the
    ///         lowest position among equals, or -1 when every candidate is taken.
    int Farthest();
    /// Marks the candidate at \p position as taken (it is neither lowered nor chosen
    /// again). After Farthest, taking its result costs one block scan.
    void Take(int position);

private:
    struct Block {
        double lower[3], upper[3];
        double farthest;  ///< greatest distance of an untaken member, -1 when none
        int begin, end;   ///< entries [begin, end)
        int farthestEntry;
    };

    template <bool kMark>
    void LowerBlocks(const double* q,
                     unsigned char seed,
                     unsigned char* owner,
                     bool visitAll,
                     bool* anyPositive,
                     int firstBlock,
                     int lastBlock);
    void Refresh(Block& block);

    std::vector<int> mPosition;     ///< entry -> candidate position; ascending in a block
    std::vector<double> mXyz;       ///< coordinates per entry
    std::vector<double> mDistance;  ///< per entry
    std::vector<Block> mBlocks;
    int mLastEntry;  ///< entry and block of the last Farthest result
    int mLastBlock;
};

}  // namespace ZOL
