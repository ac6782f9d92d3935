// The farthest-point core of SamplePointCloud: the plain scheme, and the partitioned
// scheme that splits a large job into farthest-point cells sampled separately. Works on
// a flat copy of the candidates' coordinates; the cells of the outermost call run on the
// workers, each writing its own result, which are then appended in cell order.
#include <zol/pointcloud/SamplePointCloud.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <vector>

#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/ParallelInternal.h>

namespace ZOL {

namespace {

// Every candidate starts this far from the (empty) sample set.
const double kInitialDistance = 1.7e308;
// Distance of a taken candidate: below every real distance and not above the -1.0 that
// the farthest-point search starts from, so taken candidates are never chosen again
// and never lowered, without a separate flag.
const double kTaken = -1.0;
const int kMaxPartCount = 32;

struct Thresholds {
    int minSampleCount;
    long long minWork;
};

Thresholds ThresholdsOf(SampleQuality quality) {
    if (quality == SAMPLE_QUALITY_HIGH) return {512, 1000000};
    return {200, 100000};
}

inline double SquaredDistance(const double* a, const double* b) {
    const double dx = a[0] - b[0];
    const double dy = a[1] - b[1];
    const double dz = a[2] - b[2];
    return dx * dx + dy * dy + dz * dz;
}

// Lowers every distance by the point q and returns the candidate with the greatest
// distance (the first one on a tie), or -1 when every candidate is taken.
int LowerAndFindFarthest(const double* xyz, int count, const double* q, double* distance) {
    int best = -1;
    double bestDistance = -1.0;
    for (int c = 0; c < count; ++c) {
        const double d = SquaredDistance(xyz + 3 * c, q);
        const double current = d < distance[c] ? d : distance[c];
        distance[c] = current;
        if (current > bestDistance) {
            bestDistance = current;
            best = c;
        }
    }
    return best;
}

int SamplePositions(const double* xyz,
                    int count,
                    int sampleCount,
                    long long seed,
                    SampleQuality quality,
                    bool parallel,
                    std::vector<int>& positions);

// Plain farthest-point sampling from candidate seed mod count.
int SamplePlain(
    const double* xyz, int count, int sampleCount, long long seed, std::vector<int>& positions) {
    positions.clear();
    positions.reserve(sampleCount);
    std::vector<double> distance(count, kInitialDistance);
    int last = static_cast<int>(seed % count);
    distance[last] = kTaken;
    positions.push_back(last);
    while (static_cast<int>(positions.size()) < sampleCount) {
        last = LowerAndFindFarthest(xyz, count, xyz + 3 * last, distance.data());
        if (last < 0) break;
        distance[last] = kTaken;
        positions.push_back(last);
    }
    if (static_cast<int>(positions.size()) != sampleCount) {
        return LogFailure(RESULT_STEP_FAIL,
                          "UniformSampleSubpart: sampleCount != sampleIndex.size(): ",
                          positions.size(), " ", sampleCount);
    }
    return RESULT_OK;
}

// The members of every cell, in candidate order: cell p holds
// members[begin[p]] .. members[begin[p + 1] - 1].
struct Cells {
    std::vector<int> begin;
    std::vector<int> members;
};

// Grows partCount farthest-point seeds from candidate 0 and puts every candidate in the
// cell of its nearest seed (the seed that last lowered its distance; a seed is in its own
// cell). When all candidates share one position the cells are round robin instead.
Cells SplitIntoCells(const double* xyz, int count, int partCount) {
    std::vector<double> distance(count, kInitialDistance);
    std::vector<unsigned char> owner(count, 0);
    bool allCoincident = true;
    int seed = 0;
    for (int k = 0; k < partCount; ++k) {
        distance[seed] = kTaken;
        owner[seed] = static_cast<unsigned char>(k);
        const double* q = xyz + 3 * seed;
        int best = -1;
        double bestDistance = -1.0;
        for (int c = 0; c < count; ++c) {
            const double d = SquaredDistance(xyz + 3 * c, q);
            if (k == 0 && d > 0.0) allCoincident = false;
            if (d < distance[c]) {
                distance[c] = d;
                owner[c] = static_cast<unsigned char>(k);
            }
            if (distance[c] > bestDistance) {
                bestDistance = distance[c];
                best = c;
            }
        }
        seed = best;
    }
    if (allCoincident) {
        for (int t = 0; t < count; ++t) owner[t] = static_cast<unsigned char>(t % partCount);
    }
    Cells cells;
    cells.begin.assign(partCount + 1, 0);
    for (int t = 0; t < count; ++t) ++cells.begin[owner[t] + 1];
    for (int p = 0; p < partCount; ++p) cells.begin[p + 1] += cells.begin[p];
    std::vector<int> next(cells.begin.begin(), cells.begin.end() - 1);
    cells.members.resize(count);
    for (int t = 0; t < count; ++t) cells.members[next[owner[t]]++] = t;
    return cells;
}

// One cell that needs sampling: quota samples among members[first .. first + size).
struct CellJob {
    int first;
    int size;
    int quota;
    int outOffset;
    int status = RESULT_OK;
    std::vector<int> positions;  ///< positions within the cell
};

void RunCellJob(
    const double* xyz, const int* members, long long seed, SampleQuality quality, CellJob& job) {
    std::vector<double> cellXyz(static_cast<size_t>(job.size) * 3);
    for (int i = 0; i < job.size; ++i) {
        const double* p = xyz + 3 * static_cast<size_t>(members[job.first + i]);
        std::copy(p, p + 3, cellXyz.begin() + 3 * i);
    }
    job.status =
        SamplePositions(cellXyz.data(), job.size, job.quota, seed, quality, false, job.positions);
}

// Samples the cells of one split: each worker takes the next unstarted job (largest
// first) until none is left. Every job writes only itself.
class SampleCellMT : public TaskBase {
public:
    SampleCellMT(const double* xyz,
                 const Cells* cells,
                 long long seed,
                 SampleQuality quality,
                 std::vector<CellJob>* jobs,
                 const std::vector<int>* order,
                 std::atomic<int>* nextJob)
        : mpXyz(xyz),
          mpCells(cells),
          mSeed(seed),
          mQuality(quality),
          mpJobs(jobs),
          mpOrder(order),
          mpNextJob(nextJob) {}

    void Run() override {
        const int jobCount = static_cast<int>(mpOrder->size());
        for (int j = mpNextJob->fetch_add(1); j < jobCount; j = mpNextJob->fetch_add(1)) {
            RunCellJob(mpXyz, mpCells->members.data(), mSeed, mQuality, (*mpJobs)[(*mpOrder)[j]]);
        }
    }

private:
    const double* mpXyz;
    const Cells* mpCells;
    long long mSeed;
    SampleQuality mQuality;
    std::vector<CellJob>* mpJobs;
    const std::vector<int>* mpOrder;
    std::atomic<int>* mpNextJob;
};

int RunCellJobs(const double* xyz,
                const Cells& cells,
                long long seed,
                SampleQuality quality,
                bool parallel,
                std::vector<CellJob>& jobs) {
    const int jobCount = static_cast<int>(jobs.size());
    const int taskCount = parallel ? ParallelTaskCount(jobCount) : 1;
    if (taskCount <= 1) {
        for (CellJob& job : jobs) RunCellJob(xyz, cells.members.data(), seed, quality, job);
        return RESULT_OK;
    }
    std::vector<int> order(jobCount);
    for (int j = 0; j < jobCount; ++j) order[j] = j;
    std::stable_sort(order.begin(), order.end(),
                     [&jobs](int a, int b) { return jobs[a].size > jobs[b].size; });
    std::atomic<int> nextJob(0);
    return RunTasks(taskCount,
                    [&](int, int) -> TaskBase* {
                        return new SampleCellMT(xyz, &cells, seed, quality, &jobs, &order,
                                                &nextJob);
                    },
                    {"UniformSampleSubpart",
                     "UniformSampleSubpart: ThreadPool InsertTask SampleCellMT Failed"});
}

int SamplePartitioned(const double* xyz,
                      int count,
                      int sampleCount,
                      long long seed,
                      SampleQuality quality,
                      long long work,
                      bool parallel,
                      std::vector<int>& positions) {
    const long long minWork = ThresholdsOf(quality).minWork;
    const int partCount = std::min(
        kMaxPartCount,
        static_cast<int>(std::sqrt(static_cast<double>(work) / static_cast<double>(minWork)) + 1));
    const Cells cells = SplitIntoCells(xyz, count, partCount);

    // Quotas in cell order: proportional plus one, never beyond what is left, the last
    // cell taking the rest. A cell that its quota covers is taken whole.
    positions.assign(sampleCount, -1);
    std::vector<CellJob> jobs;
    int already = 0;
    for (int p = 0; p < partCount; ++p) {
        const int first = cells.begin[p];
        const int size = cells.begin[p + 1] - first;
        if (size == 0) continue;
        int quota = p + 1 < partCount
                        ? static_cast<int>(static_cast<double>(size) / count * sampleCount) + 1
                        : sampleCount - already;
        quota = std::min(quota, sampleCount - already);
        if (quota <= 0) continue;
        if (quota >= size) {
            std::copy(cells.members.begin() + first, cells.members.begin() + first + size,
                      positions.begin() + already);
            already += size;
            continue;
        }
        CellJob job;
        job.first = first;
        job.size = size;
        job.quota = quota;
        job.outOffset = already;
        jobs.push_back(std::move(job));
        already += quota;
    }

    const int status = RunCellJobs(xyz, cells, seed, quality, parallel, jobs);
    if (status != RESULT_OK) return status;
    for (const CellJob& job : jobs) {
        if (static_cast<int>(job.positions.size()) != job.quota) {
            return LogFailure(RESULT_STEP_FAIL,
                              "UniformSampleSubpart: subSampleCount != subSampleIndex.size(): ",
                              job.quota, " ", job.positions.size());
        }
        if (job.status != RESULT_OK) return job.status;
        for (int i = 0; i < job.quota; ++i) {
            positions[job.outOffset + i] = cells.members[job.first + job.positions[i]];
        }
    }
    if (already != sampleCount) {
        positions.resize(already);
        return LogFailure(RESULT_STEP_FAIL,
                          "UniformSampleSubpart: sampleCount != alreadySampledCount: ", sampleCount,
                          " ", already);
    }
    return RESULT_OK;
}

// Farthest-point sampling of sampleCount of the count points in xyz; positions receives
// the chosen positions 0 .. count-1. Requires 1 <= sampleCount <= count.
int SamplePositions(const double* xyz,
                    int count,
                    int sampleCount,
                    long long seed,
                    SampleQuality quality,
                    bool parallel,
                    std::vector<int>& positions) {
    const Thresholds thresholds = ThresholdsOf(quality);
    const long long work =
        (static_cast<long long>(count) - sampleCount / 2) * static_cast<long long>(sampleCount);
    if (sampleCount >= thresholds.minSampleCount && work >= thresholds.minWork) {
        return SamplePartitioned(xyz, count, sampleCount, seed, quality, work, parallel, positions);
    }
    return SamplePlain(xyz, count, sampleCount, seed, positions);
}

}  // namespace

int SamplePointCloud::UniformSampleSubpart(const IPointList* pointList,
                                           const std::vector<int>& candidateIndex,
                                           int sampleCount,
                                           std::vector<int>& sampleIndex,
                                           int seedId,
                                           SampleQuality quality) {
    if (!pointList || candidateIndex.empty()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "UniformSampleSubpart: pointList == NULL || candidateIndex is empty");
    }
    const int count = static_cast<int>(candidateIndex.size());
    if (sampleCount < 1 || sampleCount > count) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "UniformSampleSubpart: sampleCount < 1 || sampleCount > candidateCount: ",
                          sampleCount, " ", count);
    }
    const int pointCount = pointList->GetPointCount();
    bool identity = count == pointCount;
    for (int t = 0; t < count; ++t) {
        const int id = candidateIndex[t];
        if (id < 0 || id >= pointCount) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "UniformSampleSubpart: candidate out of range: ", id);
        }
        identity = identity && id == t;
    }

    std::vector<double> coords;
    CopyPointListCoords(pointList, &coords);
    std::vector<double> gathered;
    if (!identity) {
        gathered.resize(static_cast<size_t>(count) * 3);
        for (int t = 0; t < count; ++t) {
            const double* p = coords.data() + 3 * static_cast<size_t>(candidateIndex[t]);
            std::copy(p, p + 3, gathered.begin() + 3 * t);
        }
    }
    const std::vector<double>& xyz = identity ? coords : gathered;
    for (int t = 0; t < count; ++t) {
        const double* p = xyz.data() + 3 * t;
        if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2])) {
            return LogFailure(RESULT_INVALID_INPUT, "UniformSampleSubpart: point ",
                              candidateIndex[t], " has a non-finite coordinate");
        }
    }

    const SampleQuality thresholds =
        quality == SAMPLE_QUALITY_HIGH ? SAMPLE_QUALITY_HIGH : SAMPLE_QUALITY_LOW;
    const long long seed = std::llabs(static_cast<long long>(seedId));
    std::vector<int> positions;
    const int status =
        SamplePositions(xyz.data(), count, sampleCount, seed, thresholds, true, positions);
    sampleIndex.resize(positions.size());
    for (size_t i = 0; i < positions.size(); ++i) {
        sampleIndex[i] = positions[i] < 0 ? -1 : candidateIndex[positions[i]];
    }
    return status;
}

}  // namespace ZOL
