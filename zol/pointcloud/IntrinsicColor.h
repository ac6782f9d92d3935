// IntrinsicColor: colour harmonisation of several scans of one object taken under one
// light, and the RGB / HSV conversions it works with.
#pragma once

#include <vector>

#include <zol/core/Color4.h>
#include <zol/core/IPointCloud.h>
#include <zol/core/ITriMesh.h>
#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Colours are Vector3: (R, G, B) with channels in [0, 1], or (H, S, V) with H in degrees
/// [0, 360) and S, V in [0, 1].
class ZOL_API IntrinsicColor {
public:
    /// RGB to HSV. V is the largest channel; S = 1 - min / max (0 when max < REAL_TOL); H
    /// is 0 for a grey (max - min < REAL_TOL), else measured from the largest channel,
    /// which on a tie is the earliest of R, G, B.
    /// \param[in] rgb channels in [0, 1].
    /// \return (H in degrees [0, 360), S, V).
    static Vector3 ConvertRGB2HSV(const Vector3& rgb);

    /// HSV to RGB by the six 60-degree sectors of H. H is expected in [0, 360): for 360
    /// or more the sector wraps but its fraction does not (H = 390 gives sector 0 with
    /// fraction 6.5), and channels outside [0, V] come out unclamped.
    /// \param[in] hsv (H in degrees, S, V).
    /// \return (R, G, B); black (0, 0, 0) for a negative or non-finite H, which is logged
    ///         ("ConvertHSV2RGB: error h=" followed by H).
    static Vector3 ConvertHSV2RGB(const Vector3& hsv);

    /// Harmonises the colours of registered scans of one object under one light: points
    /// of different scans that overlap end with matching brightness and hue, while each
    /// scan keeps its own detail. Geometry is only read.
    ///
    /// Overlap: a point of scan a and its nearest point in scan b form a pair when their
    /// squared distance is at most 10 d^2, d the larger density of the two scans (the
    /// median spacing over 5 neighbours, CalculatePointListDensity) or \p pointDensity.
    /// Transfer: each scan gets one gain per channel, applied to all its colours (so its
    /// detail is kept): for every two overlapping scans the median, over their pairs, of
    /// the log ratio of the paired channels (pairs with a channel below 0.02 or above
    /// 0.98 are left out: they are clipped or carry no ratio) says how much brighter one
    /// scan is; the gains are the weighted least-squares fit of these medians (weights:
    /// pair counts), anchored as \p keepFirstCloudColor says. Tuned channels are clamped
    /// to [0, 1]. A scan that overlaps no other keeps gain 1. Results do not depend on the
    /// thread count.
    /// \param[in] pointCloudList the scans, in one common frame; only read.
    /// \param[in,out] colorList one RGB colour per point of each scan, tuned in place.
    /// \param[in] keepFirstCloudColor true: scan 0 is the reference and keeps its
    ///            colours (gain 1), the others are matched to it; false: all scans are
    ///            matched to their common middle (the log gains sum to zero over each
    ///            group of overlapping scans).
    /// \param[in] pointDensity the point spacing to use for every scan, in coordinate
    ///            units; null to compute each scan's own.
    /// \param[out] colorGains the per-channel gain applied to each scan; may be null.
    /// \param[out] overlapErrors per scan, the RMS RGB distance between its paired points
    ///             and their partners after tuning (0 for a scan without pairs); may be
    ///             null.
    /// \return RESULT_OK, also for a single scan, which is left as it is ("TuneColorFrom
    ///         SingleLight: cloudCount == 1, no need to process");
    ///         RESULT_INVALID_INPUT (-2), in this order, when the list sizes differ
    ///         ("TuneColorFromSingleLight: cloudCount != colorListCount"), there is no scan
    ///         ("TuneColorFromSingleLight: invalid cloudCount < 1"), *pointDensity is below
    ///         REAL_TOL or not a number ("TuneColorFromSingleLight: (*pointDensity) <
    ///         REAL_TOL"), a scan is null ("TuneColorFromSingleLight: pointCloud is NULL:
    ///         cloudId = " c), has fewer than 2 points ("TuneColorFromSingleLight:
    ///         pointCount < 2: cloudId = " c), its colour list has another length
    ///         ("TuneColorFromSingleLight: colorList size != pointCount: cloudId = " c) or
    ///         it has a NaN or infinite coordinate ("TuneColorFromSingleLight: non-finite
    ///         coordinate: cloudId = " c);
    ///         the failing step's status when an index or a density cannot be made
    ///         ("TuneColorFromSingleLight: density failed: cloudId = " c) or a search fails
    ///         ("TuneColorFromSingleLight: overlap search failed: cloudId = " c).
    ///         On failure the colours are unchanged.
    static int TuneColorFromSingleLight(const std::vector<IPointCloud*>& pointCloudList,
                                        std::vector<std::vector<Vector3>>& colorList,
                                        bool keepFirstCloudColor,
                                        double* pointDensity,
                                        std::vector<Vector3>* colorGains,
                                        std::vector<double>* overlapErrors);

    // ---- Tunings declared for hosts, not provided here -----------------------------
    // Each answers RESULT_NOT_AVAILABLE (-8) once its arguments pass the checks listed
    // with it, after recording the call when DumpOnce() armed recording. Images are
    // row-major, imageWidth * imageHeight packed colours.

    /// Harmonises the vertex colours of a mesh textured from several patches (scans), so
    /// that colours match across the seams between patches.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] vertexPatchIds the patch of every vertex.
    /// \param[in,out] vertexColors one RGB colour per vertex, tuned in place.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), in this order, for a
    ///         null mesh ("TuneMeshColorFromMultiPatch: triMesh == NULL") or lists whose
    ///         sizes differ from the vertex count ("TuneMeshColorFromMultiPatch:
    ///         vertexPatchIds or vertexColors size != vertexCount").
    static int TuneMeshColorFromMultiPatch(const ITriMesh* triMesh,
                                           const std::vector<int>& vertexPatchIds,
                                           std::vector<Vector3>& vertexColors);

    /// Harmonises the colours of frames of a handheld scan whose light moves with the
    /// camera: each frame's shading is taken out by its camera position before the
    /// frames are matched.
    /// \param[in] pointCloudList the frames in one common frame; only read.
    /// \param[in,out] colorList one RGB colour per point of each frame, tuned in place.
    /// \param[in] cameraPositions the camera (and light) position of each frame.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), in this order, when
    ///         the three list sizes differ ("TuneColorFromMultiFrame: cloudCount !=
    ///         colorListCount || cloudCount != cameraCount"), there is no frame
    ///         ("TuneColorFromMultiFrame: invalid cloudCount < 1") or a frame is null
    ///         ("TuneColorFromMultiFrame: pointCloud is NULL: cloudId = " c).
    static int TuneColorFromMultiFrame(const std::vector<IPointCloud*>& pointCloudList,
                                       std::vector<std::vector<Vector3>>& colorList,
                                       const std::vector<Vector3>& cameraPositions);

    /// Tunes a texture image so that, sampled at the vertices, it matches the vertex
    /// colours, keeping the image's own detail.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] cornerTexCoords three texture coordinates per triangle, in [0, 1].
    /// \param[in] vertexColors one RGB colour per vertex.
    /// \param[in] imageWidth, imageHeight the image size in pixels, at least 1 each.
    /// \param[in,out] imageData the image, tuned in place.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), in this order, for a
    ///         null mesh ("TuneTextureImageByVertexColor: triMesh == NULL"), cornerTexCoords
    ///         not 3 per triangle ("TuneTextureImageByVertexColor: cornerTexCoords size !=
    ///         3 * triangleCount"), vertexColors not one per vertex
    ///         ("TuneTextureImageByVertexColor: vertexColors size != vertexCount") or an
    ///         image size that does not match ("TuneTextureImageByVertexColor: invalid
    ///         image size").
    static int TuneTextureImageByVertexColor(const ITriMesh* triMesh,
                                             const std::vector<Vector2>& cornerTexCoords,
                                             const std::vector<Vector3>& vertexColors,
                                             int imageWidth,
                                             int imageHeight,
                                             std::vector<Color4>& imageData);

    /// Tunes a texture image so that each triangle's texels match the triangle's colour
    /// on average.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] cornerTexCoords three texture coordinates per triangle, in [0, 1].
    /// \param[in] triangleColors one RGB colour per triangle.
    /// \param[in] imageWidth, imageHeight the image size in pixels, at least 1 each.
    /// \param[in,out] imageData the image, tuned in place.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), in this order, for a
    ///         null mesh ("TuneImageByTriangleColor: triMesh == NULL"), cornerTexCoords
    ///         not 3 per triangle ("TuneImageByTriangleColor: cornerTexCoords size != 3 *
    ///         triangleCount"), triangleColors not one per triangle
    ///         ("TuneImageByTriangleColor: triangleColors size != triangleCount") or an
    ///         image size that does not match ("TuneImageByTriangleColor: invalid image
    ///         size").
    static int TuneImageByTriangleColor(const ITriMesh* triMesh,
                                        const std::vector<Vector2>& cornerTexCoords,
                                        const std::vector<Vector3>& triangleColors,
                                        int imageWidth,
                                        int imageHeight,
                                        std::vector<Color4>& imageData);

    /// Tunes an image so that, at the pixels where the points project, it matches the
    /// points' colours.
    /// \param[in] pointCloud the points; only read.
    /// \param[in] pointColors one RGB colour per point.
    /// \param[in] pointImageCoords the image position of every point, in [0, 1].
    /// \param[in] imageWidth, imageHeight the image size in pixels, at least 1 each.
    /// \param[in,out] imageData the image, tuned in place.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), in this order, for a
    ///         null cloud ("TuneImageByPointColor: pointCloud == NULL"), lists whose sizes
    ///         differ from the point count ("TuneImageByPointColor: pointColors or
    ///         pointImageCoords size != pointCount") or an image size that does not match
    ///         ("TuneImageByPointColor: invalid image size").
    static int TuneImageByPointColor(const IPointCloud* pointCloud,
                                     const std::vector<Vector3>& pointColors,
                                     const std::vector<Vector2>& pointImageCoords,
                                     int imageWidth,
                                     int imageHeight,
                                     std::vector<Color4>& imageData);

    /// Harmonises several texture images of one mesh, so that texels on either side of a
    /// seam between triangles textured from different images match.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] cornerTexCoords three texture coordinates per triangle, in [0, 1].
    /// \param[in] triangleImageIds the image each triangle is textured from.
    /// \param[in] imageSizes width and height of each image, in pixels, image after image.
    /// \param[in,out] images the images, tuned in place.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2), in this order, for a
    ///         null mesh ("TuneTextureImageColor: triMesh == NULL"), cornerTexCoords not 3
    ///         per triangle or triangleImageIds not 1 per triangle ("TuneTextureImageColor:
    ///         cornerTexCoords or triangleImageIds size does not match triangleCount"),
    ///         imageSizes not 2 per image ("TuneTextureImageColor: imageSizes size != 2 *
    ///         imageCount"), an image size that does not match its image
    ///         ("TuneTextureImageColor: invalid image size: imageId = " i) or an image id
    ///         outside the images
    ///         ("TuneTextureImageColor: triangleImageId out of range: triangleId = " t).
    static int TuneTextureImageColor(const ITriMesh* triMesh,
                                     const std::vector<Vector2>& cornerTexCoords,
                                     const std::vector<int>& triangleImageIds,
                                     const std::vector<int>& imageSizes,
                                     std::vector<std::vector<Color4>>& images);
};

}  // namespace ZOL
