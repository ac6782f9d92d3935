// The bunny range scans against their bun.conf poses: ICP from ten degrees off on every
// pair overlapping by 30 % or more, and coarse alignment then ICP from any pose on a few
// pairs (the full table runs in bench/RegistrationBench.cpp).
#include <gtest/gtest.h>

#include <string>

#include <zol/registration/RegistratePointCloud.h>
#include <zol/runtime/Constants.h>

#include "tests/common/ScanData.h"
#include "tests/common/TestData.h"

using namespace ZOL;

namespace {

struct ScanPair {
    const char* from;
    const char* to;
};

// Every ordered pair of the folder's scans whose overlap (share of source points within
// 1 mm of the target under bun.conf) is at least 30 %.
const ScanPair kOverlapping[] = {{"bun000", "bun045"}, {"bun000", "bun090"}, {"bun000", "bun315"},
                                 {"bun000", "top3"},   {"bun045", "bun000"}, {"bun045", "bun090"},
                                 {"bun045", "bun315"}, {"bun045", "top3"},   {"bun090", "bun000"},
                                 {"bun090", "bun045"}, {"bun090", "top3"},   {"bun315", "bun000"},
                                 {"bun315", "bun045"}, {"bun315", "top3"},   {"top3", "bun000"},
                                 {"top3", "bun045"},   {"top3", "bun090"},   {"top3", "bun315"}};

/// Registers the from scan of \p pair, moved by \p motion, onto its ref scan: ICP from
/// \p init, or from a coarse alignment when \p init is null. True when the pose ends
/// within 0.5 degrees and 1 mm (at the scan's centre) of bun.conf.
bool Registers(const ScanPair& pair, const Matrix4x4& motion, const Matrix4x4* init) {
    const PointCloud& ref = zoltest::BunnyScan(pair.to);
    const PointCloud from = zoltest::Moved(zoltest::BunnyScan(pair.from), motion);
    const Matrix4x4 truth = zoltest::BunnyTruth(pair.from, pair.to) * motion.AffineInverse();
    Matrix4x4 start, result;
    if (init) {
        start = *init;
    } else if (RegistratePointCloud::AlignPointCloud(&ref, &from, &start, 0.5) != RESULT_OK) {
        return false;
    }
    if (RegistratePointCloud::ICPRegistrate(&ref, nullptr, &from, nullptr, &result, &start, true) !=
        RESULT_OK) {
        return false;
    }
    const zoltest::PoseError error =
        zoltest::ComparePoses(result * start, truth, zoltest::Centroid(from));
    return error.degrees < 0.5 && error.distance < 0.001;
}

}  // namespace

TEST(RegistrationScanTest, IcpFromTenDegreesOff_ReachesTheTruthOnEveryOverlappingPair) {
    Matrix4x4 still;
    still.InitIdentityTransform();
    unsigned seed = 1;
    for (const ScanPair& pair : kOverlapping) {
        SCOPED_TRACE(std::string(pair.from) + " onto " + pair.to);
        // The truth, then 10 degrees about a random axis through the scan's centre.
        const Matrix4x4 truth = zoltest::BunnyTruth(pair.from, pair.to);
        const Vector3 center =
            truth.TransformPoint(zoltest::Centroid(zoltest::BunnyScan(pair.from)));
        const Vector3 axis = zoltest::RandomMotion(seed++, 180, {}, 0).RotateVector({0, 0, 1});
        const Matrix4x4 init = zoltest::RigidMotion(axis, 10.0, center) * truth;
        EXPECT_TRUE(Registers(pair, still, &init));
    }
}

TEST(RegistrationScanTest, CoarseAlignmentThenIcpFromAnyPose_ReachesTheTruth) {
    const ScanPair pairs[] = {{"bun045", "bun000"},
                              {"bun000", "bun090"},
                              {"bun090", "bun000"},
                              {"bun090", "bun045"},
                              {"top3", "bun315"}};
    int registered = 0, runs = 0;
    std::string missed;
    unsigned seed = 100;
    for (const ScanPair& pair : pairs) {
        const Vector3 center = zoltest::Centroid(zoltest::BunnyScan(pair.from));
        for (int start = 0; start < 2; ++start, ++runs) {
            if (Registers(pair, zoltest::RandomMotion(seed++, 180.0, center, 0.1), nullptr)) {
                ++registered;
            } else {
                missed += std::string(" ") + pair.from + "->" + pair.to;
            }
        }
    }
    // Nine starts in ten must register.
    EXPECT_GE(registered * 10, runs * 9) << "missed:" << missed;
}
