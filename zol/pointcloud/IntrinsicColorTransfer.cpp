// Colour transfer between overlapping scans: a gain per scan and channel. Under one light
// the same surface seen by two scans differs mostly by exposure and white balance, i.e.
// by one factor per channel, so a global gain matches brightness and hue and leaves each
// scan's detail as it is. Ratios are taken in the log domain, reduced to a median per
// pair of scans (robust to mismatched pairs at edges and to noise), and fitted over all
// scans by least squares, so that chains of scans agree as well as they can.
#include <zol/pointcloud/IntrinsicColorInternal.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include <Eigen/Dense>

#include <zol/core/IPointList.h>
#include <zol/runtime/Ann.h>

namespace ZOL {

namespace {

// Channels outside this range are clipped or too dark to carry a ratio.
const double kLowestChannel = 0.02;
const double kHighestChannel = 0.98;
// Fewer usable pairs than this between two scans say nothing reliable.
const int kMinimumPairs = 8;

bool Usable(double value) { return value >= kLowestChannel && value <= kHighestChannel; }

double Median(std::vector<double>& values) {
    const std::size_t mid = values.size() / 2;
    std::nth_element(values.begin(), values.begin() + mid, values.end());
    const double upper = values[mid];
    if (values.size() % 2 == 1) return upper;
    return 0.5 * (upper + *std::max_element(values.begin(), values.begin() + mid));
}

}  // namespace

int FindColorOverlap(IPointCloud* fromCloud,
                     const PointCloudInfo& toInfo,
                     double maxSquaredDistance,
                     ColorOverlap& overlap) {
    PointCloudPointList query(fromCloud);
    const int count = query.GetPointCount();
    std::vector<int> nearest(count);
    std::vector<double> squared(count);
    const int status =
        toInfo.GetAnn()->FindNearestNeighbors(&query, 1, nearest.data(), squared.data());
    if (status != 0) return status;
    overlap.fromIds.clear();
    overlap.toIds.clear();
    for (int i = 0; i < count; ++i) {
        if (nearest[i] >= 0 && squared[i] <= maxSquaredDistance) {
            overlap.fromIds.push_back(i);
            overlap.toIds.push_back(nearest[i]);
        }
    }
    return 0;
}

std::vector<Vector3> FitLogGains(int cloudCount,
                                 const std::vector<std::vector<Vector3>>& colors,
                                 const std::vector<ColorOverlap>& overlaps,
                                 bool keepFirst) {
    // Samples of x_a - x_b (x the log gain) per unordered pair a < b and channel:
    // g_a c_a = g_b c_b gives x_a - x_b = log c_b - log c_a.
    std::map<std::pair<int, int>, std::vector<double>[3]> samples;
    for (const ColorOverlap& o : overlaps) {
        const int a = std::min(o.from, o.to), b = std::max(o.from, o.to);
        const double sign = o.from == a ? 1.0 : -1.0;
        std::vector<double>* lists = samples[{a, b}];
        for (std::size_t p = 0; p < o.fromIds.size(); ++p) {
            const Vector3& cf = colors[o.from][o.fromIds[p]];
            const Vector3& ct = colors[o.to][o.toIds[p]];
            for (int k = 0; k < 3; ++k) {
                if (Usable(cf[k]) && Usable(ct[k])) {
                    lists[k].push_back(sign * (std::log(ct[k]) - std::log(cf[k])));
                }
            }
        }
    }
    std::vector<Vector3> logGains(cloudCount, Vector3(0.0, 0.0, 0.0));
    const int first = keepFirst ? 1 : 0;
    const int unknowns = cloudCount - first;
    if (unknowns <= 0) return logGains;
    for (int k = 0; k < 3; ++k) {
        // Normal equations of sum w (x_a - x_b - r_ab)^2 with x_0 = 0 when anchored.
        Eigen::MatrixXd normal = Eigen::MatrixXd::Zero(unknowns, unknowns);
        Eigen::VectorXd rhs = Eigen::VectorXd::Zero(unknowns);
        double largest = 0.0;
        for (auto& entry : samples) {
            std::vector<double>& list = entry.second[k];
            if (static_cast<int>(list.size()) < kMinimumPairs) continue;
            const double w = static_cast<double>(list.size());
            const double r = Median(list);
            const int ia = entry.first.first - first, ib = entry.first.second - first;
            if (ia >= 0) normal(ia, ia) += w, rhs(ia) += w * r;
            if (ib >= 0) normal(ib, ib) += w, rhs(ib) -= w * r;
            if (ia >= 0 && ib >= 0) normal(ia, ib) -= w, normal(ib, ia) -= w;
            largest = std::max(largest, w);
        }
        // A faint pull towards gain 1 fixes scans without pairs and, within a group of
        // scans not tied to an anchor, picks the solution whose log gains sum to zero.
        normal.diagonal().array() += 1e-9 * std::max(largest, 1.0);
        const Eigen::VectorXd x = normal.ldlt().solve(rhs);
        for (int c = 0; c < unknowns; ++c) logGains[c + first][k] = x(c);
    }
    return logGains;
}

}  // namespace ZOL
