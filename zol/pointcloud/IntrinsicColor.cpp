// RGB / HSV conversions and the frame of colour harmonisation: checks, one neighbour
// index and density per scan, overlap pairs between every two scans, then the gains of
// IntrinsicColorTransfer.cpp applied to the colour lists.
#include <zol/pointcloud/IntrinsicColor.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include <zol/core/IPointList.h>
#include <zol/pointcloud/IntrinsicColorInternal.h>
#include <zol/pointcloud/PointCloudDensity.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/PointCloudInfo.h>

namespace ZOL {

namespace {

// Neighbours per point of the density estimate, the point itself included.
const int kDensityNeighbors = 5;
// Pairs lie within sqrt(10) point spacings.
const double kPairRadiusFactor = 10.0;

bool HasFiniteCoords(const IPointCloud* cloud) {
    std::vector<double> xyz;
    PointCloudPointList list(cloud);
    CopyPointListCoords(&list, &xyz);
    return std::all_of(xyz.begin(), xyz.end(), [](double v) { return std::isfinite(v); });
}

}  // namespace

Vector3 IntrinsicColor::ConvertRGB2HSV(const Vector3& rgb) {
    double max = rgb.x, min = rgb.x;
    int maxIndex = 0;
    for (int c = 1; c < 3; ++c) {
        if (rgb[c] > max) {
            max = rgb[c];
            maxIndex = c;
        } else if (rgb[c] < min) {
            min = rgb[c];
        }
    }
    const double v = max;
    const double s = max >= REAL_TOL ? 1.0 - min / max : 0.0;
    const double delta = max - min;
    double h = 0.0;
    if (delta >= REAL_TOL) {
        if (maxIndex == 0) {
            h = (rgb.y - rgb.z) * 60.0 / delta;
            if (rgb.z > rgb.y) h += 360.0;
        } else if (maxIndex == 1) {
            h = (rgb.z - rgb.x) * 60.0 / delta + 120.0;
        } else {
            h = (rgb.x - rgb.y) * 60.0 / delta + 240.0;
        }
    }
    return Vector3(h, s, v);
}

Vector3 IntrinsicColor::ConvertHSV2RGB(const Vector3& hsv) {
    const double h = hsv.x, s = hsv.y, v = hsv.z;
    // Negative (and non-finite) hues have no sector; the integer part must also fit.
    if (!(h >= 0.0) || !(h / 60.0 < 9.0e18)) {
        LogLine("ConvertHSV2RGB: error h=", h);
        return Vector3(0.0, 0.0, 0.0);
    }
    const long long i = static_cast<long long>(h / 60.0);
    const int sector = static_cast<int>(i % 6);
    // The fraction is taken against the reduced sector, so H >= 360 gives f >= 1.
    const double f = h / 60.0 - sector;
    const double p = v * (1.0 - s);
    const double q = v * (1.0 - s * f);
    const double t = v * (1.0 - s * (1.0 - f));
    switch (sector) {
        case 0:
            return Vector3(v, t, p);
        case 1:
            return Vector3(q, v, p);
        case 2:
            return Vector3(p, v, t);
        case 3:
            return Vector3(p, q, v);
        case 4:
            return Vector3(t, p, v);
        default:
            return Vector3(v, p, q);
    }
}

int IntrinsicColor::TuneColorFromSingleLight(const std::vector<IPointCloud*>& pointCloudList,
                                             std::vector<std::vector<Vector3>>& colorList,
                                             bool keepFirstCloudColor,
                                             double* pointDensity,
                                             std::vector<Vector3>* colorGains,
                                             std::vector<double>* overlapErrors) {
    SetProgress(0.0);
    // dump hook
    const int cloudCount = static_cast<int>(pointCloudList.size());
    if (cloudCount != static_cast<int>(colorList.size())) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TuneColorFromSingleLight: cloudCount != colorListCount");
    }
    if (cloudCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "TuneColorFromSingleLight: invalid cloudCount < 1");
    }
    if (cloudCount == 1) {
        return LogFailure(RESULT_OK,
                          "TuneColorFromSingleLight: cloudCount == 1, no need to process");
    }
    if (pointDensity != nullptr && !(*pointDensity >= REAL_TOL)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TuneColorFromSingleLight: (*pointDensity) < REAL_TOL");
    }
    for (int c = 0; c < cloudCount; ++c) {
        const IPointCloud* cloud = pointCloudList[c];
        if (cloud == nullptr) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "TuneColorFromSingleLight: pointCloud is NULL: cloudId = ", c);
        }
        if (cloud->GetPointCount() < 2) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "TuneColorFromSingleLight: pointCount < 2: cloudId = ", c);
        }
        if (static_cast<int>(colorList[c].size()) != cloud->GetPointCount()) {
            return LogFailure(
                RESULT_INVALID_INPUT,
                "TuneColorFromSingleLight: colorList size != pointCount: cloudId = ", c);
        }
        if (!HasFiniteCoords(cloud)) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "TuneColorFromSingleLight: non-finite coordinate: cloudId = ", c);
        }
    }

    // One index and one density per scan.
    std::vector<std::unique_ptr<PointCloudInfo>> infos(cloudCount);
    for (int c = 0; c < cloudCount; ++c) {
        infos[c].reset(new PointCloudInfo);
        const int status = infos[c]->InitAnn(pointCloudList[c], kDensityNeighbors);
        if (status != RESULT_OK) {
            return LogFailure(status, "TuneColorFromSingleLight: density failed: cloudId = ", c);
        }
    }
    SetProgress(0.1);
    std::vector<double> densities(cloudCount, pointDensity ? *pointDensity : 0.0);
    for (int c = 0; c < cloudCount && pointDensity == nullptr; ++c) {
        ProgressSuspendScope nested;
        const int status = _CalculatePointListDensity(pointCloudList[c], *infos[c],
                                                      kDensityNeighbors, densities[c], nullptr);
        if (status != RESULT_OK) {
            return LogFailure(status, "TuneColorFromSingleLight: density failed: cloudId = ", c);
        }
    }
    SetProgress(0.2);

    // Overlap pairs from every scan into every other one.
    std::vector<ColorOverlap> overlaps;
    for (int a = 0; a < cloudCount; ++a) {
        for (int b = 0; b < cloudCount; ++b) {
            if (a == b) continue;
            const double d = std::max(densities[a], densities[b]);
            ColorOverlap overlap{a, b, {}, {}};
            const int status =
                FindColorOverlap(pointCloudList[a], *infos[b], kPairRadiusFactor * d * d, overlap);
            if (status != RESULT_OK) {
                return LogFailure(status,
                                  "TuneColorFromSingleLight: overlap search failed: cloudId = ", a);
            }
            if (!overlap.fromIds.empty()) overlaps.push_back(std::move(overlap));
        }
        SetProgress(0.2 + 0.7 * (a + 1) / cloudCount);
    }

    const std::vector<Vector3> logGains =
        FitLogGains(cloudCount, colorList, overlaps, keepFirstCloudColor);
    std::vector<Vector3> gains(cloudCount);
    for (int c = 0; c < cloudCount; ++c) {
        for (int k = 0; k < 3; ++k) gains[c][k] = std::exp(logGains[c][k]);
        for (Vector3& color : colorList[c]) {
            for (int k = 0; k < 3; ++k)
                color[k] = std::min(std::max(gains[c][k] * color[k], 0.0), 1.0);
        }
    }
    if (colorGains) *colorGains = gains;
    if (overlapErrors) {
        std::vector<double> sums(cloudCount, 0.0);
        std::vector<long long> counts(cloudCount, 0);
        for (const ColorOverlap& o : overlaps) {
            for (std::size_t p = 0; p < o.fromIds.size(); ++p) {
                sums[o.from] +=
                    colorList[o.from][o.fromIds[p]].DistanceSquared(colorList[o.to][o.toIds[p]]);
            }
            counts[o.from] += static_cast<long long>(o.fromIds.size());
        }
        overlapErrors->assign(cloudCount, 0.0);
        for (int c = 0; c < cloudCount; ++c) {
            if (counts[c] > 0) (*overlapErrors)[c] = std::sqrt(sums[c] / counts[c]);
        }
    }
    SetProgress(1.0);
    return RESULT_OK;
}

}  // namespace ZOL
