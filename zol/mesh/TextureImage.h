// Texture images of meshes: an image painted from vertex colours, or composed from
// reference photographs, over a per-corner UV map. Declared for hosts; not provided by
// this library.
#pragma once

#include <vector>

#include <zol/core/Color4.h>
#include <zol/core/ITriMesh.h>
#include <zol/core/ImageColorId.h>
#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Creates texture images. An image is width * height colours, row by row from the top.
/// Every member answers RESULT_NOT_AVAILABLE once its arguments pass the checks listed
/// with it.
class ZOL_API TextureImage {
public:
    /// Paints each triangle's texels by interpolating its vertex colours.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] vertexColors one colour per vertex, components in [0, 1].
    /// \param[in] cornerTexCoords three coordinates per triangle, in [0, 1]^2.
    /// \param[in] imageWidth, imageHeight image size in pixels, each at least 1.
    /// \param[out] image the texels.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("TextureImage::CreateByVertexColors: triMesh == NULL || image == NULL"),
    ///         sizes that do not fit the mesh ("TextureImage::CreateByVertexColors: colour or
    ///         coordinate count does not fit the mesh") or an empty image size
    ///         ("TextureImage::CreateByVertexColors: imageWidth < 1 || imageHeight < 1").
    static int CreateByVertexColors(const ITriMesh* triMesh,
                                    const std::vector<Vector3>& vertexColors,
                                    const std::vector<Vector2>& cornerTexCoords,
                                    int imageWidth,
                                    int imageHeight,
                                    std::vector<Color4>* image);

    /// Composes a texture from reference images, each vertex naming the pixel it sees.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] cornerTexCoords three coordinates per triangle, in [0, 1]^2.
    /// \param[in] refImages the reference images' texels.
    /// \param[in] refImageSizes width and height of each reference image (two per image).
    /// \param[in] vertexImageColorIds per vertex, the reference pixel that sees it.
    /// \param[in] imageWidth, imageHeight output size in pixels, each at least 1.
    /// \param[out] image the texels.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("TextureImage::CreateByRefImages: triMesh == NULL || image == NULL"), sizes
    ///         that do not fit ("TextureImage::CreateByRefImages: image lists do not fit")
    ///         or an empty image size ("TextureImage::CreateByRefImages: imageWidth < 1 ||
    ///         imageHeight < 1").
    static int CreateByRefImages(const ITriMesh* triMesh,
                                 const std::vector<Vector2>& cornerTexCoords,
                                 const std::vector<std::vector<Color4>>& refImages,
                                 const std::vector<int>& refImageSizes,
                                 const std::vector<ImageColorId>& vertexImageColorIds,
                                 int imageWidth,
                                 int imageHeight,
                                 std::vector<Color4>* image);
};

}  // namespace ZOL
