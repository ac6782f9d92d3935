// Read-only flat x, y, z coordinates of a point list for the hot loops of the point-cloud
// algorithms: a view of the cloud's own array for a list over a plain PointCloud, else a
// copy made once (CopyPointListCoords).
#pragma once

#include <typeinfo>
#include <vector>

#include <zol/core/IPointList.h>
#include <zol/core/PointCloud.h>

namespace ZOL {

class FlatCoords {
public:
    explicit FlatCoords(const IPointList* pointList) : mpData(nullptr) {
        static_assert(sizeof(Vector3) == 3 * sizeof(double),
                      "Vector3 must be three packed doubles");
        const auto* cloudList = dynamic_cast<const PointCloudPointList*>(pointList);
        const IPointCloud* cloud = cloudList ? cloudList->GetPointCloud() : nullptr;
        // A class derived from PointCloud may serve other coordinates than its array.
        if (cloud && typeid(*cloud) == typeid(PointCloud)) {
            mpData = reinterpret_cast<const double*>(
                static_cast<const PointCloud*>(cloud)->GetPointCoordData());
        }
        if (!mpData) {
            CopyPointListCoords(pointList, &mCopy);
            mpData = mCopy.data();
        }
    }
    FlatCoords(const FlatCoords&) = delete;
    FlatCoords& operator=(const FlatCoords&) = delete;

    /// x, y, z of point i at Data()[3 * i .. 3 * i + 2].
    const double* Data() const { return mpData; }

private:
    std::vector<double> mCopy;
    const double* mpData;
};

}  // namespace ZOL
