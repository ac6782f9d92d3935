// Depth-video fusion: the frames of a moving depth camera merged into one cloud. Declared
// for hosts; not provided by this library.
#pragma once

#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/Matrix4x4.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Fuses depth frames over a box. Every operation answers RESULT_NOT_AVAILABLE once its
/// arguments pass the checks listed with it.
class ZOL_API FuseDepthVideo {
public:
    /// An empty fusion over [\p bboxMin, \p bboxMax] with cubic cells of side
    /// \p resolution (model units). The values are checked by the operations.
    FuseDepthVideo(double resolution, const Vector3& bboxMin, const Vector3& bboxMax);
    ~FuseDepthVideo();
    FuseDepthVideo(const FuseDepthVideo&) = delete;
    FuseDepthVideo& operator=(const FuseDepthVideo&) = delete;

    /// Merges one depth frame.
    /// \param[in] depths width * height depths along the optical axis, row by row; 0 for
    ///            no measurement.
    /// \param[in] width, height the frame size in pixels, each at least 1.
    /// \param[in] intrinsics fx, fy, cx, cy in pixels.
    /// \param[in] cameraPose camera-to-world transform of the frame.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a frame whose size
    ///         does not fit ("FuseDepthVideo::UpdateFrame: depths.size() != width * height"),
    ///         intrinsics that are not four values ("FuseDepthVideo::UpdateFrame:
    ///         intrinsics.size() != 4") or a box or cell size that holds no cell
    ///         ("FuseDepthVideo::UpdateFrame: resolution <= 0 || bboxMin above bboxMax").
    int UpdateFrame(const std::vector<double>& depths,
                    int width,
                    int height,
                    const std::vector<double>& intrinsics,
                    const Matrix4x4& cameraPose);

    /// Writes the fused surface points.
    /// \param[out] pointCloud receives the points with normals (cleared first).
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null cloud
    ///         ("FuseDepthVideo::ExtractPointCloud: pointCloud == NULL") or a box or cell
    ///         size that holds no cell ("FuseDepthVideo::ExtractPointCloud: resolution <= 0
    ///         || bboxMin above bboxMax").
    int ExtractPointCloud(IPointCloud* pointCloud);

    /// Empties the fusion; the box and cell size stay.
    void Clear();

private:
    double mResolution;
    Vector3 mBBoxMin;
    Vector3 mBBoxMax;
};

}  // namespace ZOL
