// TextureImage: the API frame of texture creation, which this library does not provide.
#include <zol/mesh/TextureImage.h>

#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int TextureImage::CreateByVertexColors(const ITriMesh* triMesh,
                                       const std::vector<Vector3>& vertexColors,
                                       const std::vector<Vector2>& cornerTexCoords,
                                       int imageWidth,
                                       int imageHeight,
                                       std::vector<Color4>* image) {
    SetProgress(0.0);
    DumpCall<DumpCreateTextureImageByVertexColors>(triMesh, vertexColors, cornerTexCoords,
                                                   imageWidth, imageHeight);  // dump hook
    if (triMesh == nullptr || image == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TextureImage::CreateByVertexColors: triMesh == NULL || image == NULL");
    }
    if (vertexColors.size() != static_cast<size_t>(triMesh->GetVertexCount()) ||
        cornerTexCoords.size() != 3 * static_cast<size_t>(triMesh->GetTriangleCount())) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TextureImage::CreateByVertexColors: colour or coordinate count does "
                          "not fit the mesh");
    }
    if (imageWidth < 1 || imageHeight < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TextureImage::CreateByVertexColors: imageWidth < 1 || imageHeight < 1");
    }
    return NotAvailable(Unavailable::TextureImage_CreateByVertexColors);
}

int TextureImage::CreateByRefImages(const ITriMesh* triMesh,
                                    const std::vector<Vector2>& cornerTexCoords,
                                    const std::vector<std::vector<Color4>>& refImages,
                                    const std::vector<int>& refImageSizes,
                                    const std::vector<ImageColorId>& vertexImageColorIds,
                                    int imageWidth,
                                    int imageHeight,
                                    std::vector<Color4>* image) {
    SetProgress(0.0);
    DumpCall<DumpCreateTextureImageByRefImages>(triMesh, cornerTexCoords, refImages, refImageSizes,
                                                vertexImageColorIds, imageWidth,
                                                imageHeight);  // dump hook
    if (triMesh == nullptr || image == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TextureImage::CreateByRefImages: triMesh == NULL || image == NULL");
    }
    if (cornerTexCoords.size() != 3 * static_cast<size_t>(triMesh->GetTriangleCount()) ||
        refImageSizes.size() != 2 * refImages.size() ||
        vertexImageColorIds.size() != static_cast<size_t>(triMesh->GetVertexCount())) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TextureImage::CreateByRefImages: image lists do not fit");
    }
    if (imageWidth < 1 || imageHeight < 1) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TextureImage::CreateByRefImages: imageWidth < 1 || imageHeight < 1");
    }
    return NotAvailable(Unavailable::TextureImage_CreateByRefImages);
}

}  // namespace ZOL
