// IntrinsicColor: the API frame of the multi-patch, multi-frame and image tunings, which
// this library declares for hosts but does not provide; each records its call and answers
// RESULT_NOT_AVAILABLE.
#include <cstdint>

#include <zol/dump/DumpCurveRecords.h>
#include <zol/dump/DumpHookInternal.h>
#include <zol/dump/DumpMeshRecords.h>
#include <zol/dump/DumpPointRecords.h>
#include <zol/pointcloud/IntrinsicColor.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

namespace {

// Whether an image of width x height pixels is what \p pixels holds.
bool ImageFits(int width, int height, std::size_t pixels) {
    return width >= 1 && height >= 1 &&
           static_cast<std::int64_t>(width) * height == static_cast<std::int64_t>(pixels);
}

// Whether a list of three corners per triangle fits the mesh.
bool CornersFit(const ITriMesh* triMesh, const std::vector<Vector2>& cornerTexCoords) {
    return static_cast<std::int64_t>(cornerTexCoords.size()) ==
           3 * static_cast<std::int64_t>(triMesh->GetTriangleCount());
}

// The checks of the two texture tunings, which differ only in what carries the colours:
// a mesh, three corners per triangle, one colour per vertex (\p perVertex) or per
// triangle, and an image of the given size. RESULT_OK when they pass.
int CheckTextureTuning(const char* name,
                       const ITriMesh* triMesh,
                       const std::vector<Vector2>& cornerTexCoords,
                       std::size_t colorCount,
                       bool perVertex,
                       int imageWidth,
                       int imageHeight,
                       std::size_t pixels) {
    if (triMesh == nullptr) return LogFailure(RESULT_INVALID_INPUT, name, ": triMesh == NULL");
    if (!CornersFit(triMesh, cornerTexCoords)) {
        return LogFailure(RESULT_INVALID_INPUT, name,
                          ": cornerTexCoords size != 3 * triangleCount");
    }
    const int expected = perVertex ? triMesh->GetVertexCount() : triMesh->GetTriangleCount();
    if (colorCount != static_cast<std::size_t>(expected)) {
        return LogFailure(RESULT_INVALID_INPUT, name,
                          perVertex ? ": vertexColors size != vertexCount"
                                    : ": triangleColors size != triangleCount");
    }
    if (!ImageFits(imageWidth, imageHeight, pixels)) {
        return LogFailure(RESULT_INVALID_INPUT, name, ": invalid image size");
    }
    return RESULT_OK;
}

}  // namespace

int IntrinsicColor::TuneMeshColorFromMultiPatch(const ITriMesh* triMesh,
                                                const std::vector<int>& vertexPatchIds,
                                                std::vector<Vector3>& vertexColors) {
    SetProgress(0.0);
    DumpCall<DumpTuneMeshColorFromMultiPatch>(triMesh, vertexPatchIds, vertexColors);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "TuneMeshColorFromMultiPatch: triMesh == NULL");
    }
    const std::size_t vertexCount = static_cast<std::size_t>(triMesh->GetVertexCount());
    if (vertexPatchIds.size() != vertexCount || vertexColors.size() != vertexCount) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TuneMeshColorFromMultiPatch: vertexPatchIds or vertexColors size != "
                          "vertexCount");
    }
    return NotAvailable(Unavailable::IntrinsicColor_TuneMeshColorFromMultiPatch);
}

int IntrinsicColor::TuneColorFromMultiFrame(const std::vector<IPointCloud*>& pointCloudList,
                                            std::vector<std::vector<Vector3>>& colorList,
                                            const std::vector<Vector3>& cameraPositions) {
    SetProgress(0.0);
    DumpCall<DumpTuneColorFromMultiFrame>(pointCloudList, colorList, cameraPositions);  // dump hook
    const std::size_t cloudCount = pointCloudList.size();
    if (cloudCount != colorList.size() || cloudCount != cameraPositions.size()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TuneColorFromMultiFrame: cloudCount != colorListCount || cloudCount "
                          "!= cameraCount");
    }
    if (cloudCount < 1) {
        return LogFailure(RESULT_INVALID_INPUT, "TuneColorFromMultiFrame: invalid cloudCount < 1");
    }
    for (std::size_t c = 0; c < cloudCount; ++c) {
        if (pointCloudList[c] == nullptr) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "TuneColorFromMultiFrame: pointCloud is NULL: cloudId = ", c);
        }
    }
    return NotAvailable(Unavailable::IntrinsicColor_TuneColorFromMultiFrame);
}

int IntrinsicColor::TuneTextureImageByVertexColor(const ITriMesh* triMesh,
                                                  const std::vector<Vector2>& cornerTexCoords,
                                                  const std::vector<Vector3>& vertexColors,
                                                  int imageWidth,
                                                  int imageHeight,
                                                  std::vector<Color4>& imageData) {
    SetProgress(0.0);
    DumpCall<DumpTuneTextureImageByVertexColor>(triMesh, cornerTexCoords, vertexColors, imageWidth,
                                                imageHeight, imageData);  // dump hook
    const int status =
        CheckTextureTuning("TuneTextureImageByVertexColor", triMesh, cornerTexCoords,
                           vertexColors.size(), true, imageWidth, imageHeight, imageData.size());
    if (status != RESULT_OK) return status;
    return NotAvailable(Unavailable::IntrinsicColor_TuneTextureImageByVertexColor);
}

int IntrinsicColor::TuneImageByTriangleColor(const ITriMesh* triMesh,
                                             const std::vector<Vector2>& cornerTexCoords,
                                             const std::vector<Vector3>& triangleColors,
                                             int imageWidth,
                                             int imageHeight,
                                             std::vector<Color4>& imageData) {
    SetProgress(0.0);
    DumpCall<DumpTuneImageByTriangleColor>(triMesh, cornerTexCoords, triangleColors, imageWidth,
                                           imageHeight, imageData);  // dump hook
    const int status =
        CheckTextureTuning("TuneImageByTriangleColor", triMesh, cornerTexCoords,
                           triangleColors.size(), false, imageWidth, imageHeight, imageData.size());
    if (status != RESULT_OK) return status;
    return NotAvailable(Unavailable::IntrinsicColor_TuneImageByTriangleColor);
}

int IntrinsicColor::TuneImageByPointColor(const IPointCloud* pointCloud,
                                          const std::vector<Vector3>& pointColors,
                                          const std::vector<Vector2>& pointImageCoords,
                                          int imageWidth,
                                          int imageHeight,
                                          std::vector<Color4>& imageData) {
    SetProgress(0.0);
    DumpCall<DumpTuneImageByPointColor>(pointCloud, pointColors, pointImageCoords, imageWidth,
                                        imageHeight, imageData);  // dump hook
    if (pointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "TuneImageByPointColor: pointCloud == NULL");
    }
    const std::size_t pointCount = static_cast<std::size_t>(pointCloud->GetPointCount());
    if (pointColors.size() != pointCount || pointImageCoords.size() != pointCount) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TuneImageByPointColor: pointColors or pointImageCoords size != "
                          "pointCount");
    }
    if (!ImageFits(imageWidth, imageHeight, imageData.size())) {
        return LogFailure(RESULT_INVALID_INPUT, "TuneImageByPointColor: invalid image size");
    }
    return NotAvailable(Unavailable::IntrinsicColor_TuneImageByPointColor);
}

int IntrinsicColor::TuneTextureImageColor(const ITriMesh* triMesh,
                                          const std::vector<Vector2>& cornerTexCoords,
                                          const std::vector<int>& triangleImageIds,
                                          const std::vector<int>& imageSizes,
                                          std::vector<std::vector<Color4>>& images) {
    SetProgress(0.0);
    DumpCall<DumpTuneTextureImageColor>(triMesh, cornerTexCoords, triangleImageIds, imageSizes,
                                        images);  // dump hook
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "TuneTextureImageColor: triMesh == NULL");
    }
    if (!CornersFit(triMesh, cornerTexCoords) ||
        triangleImageIds.size() != static_cast<std::size_t>(triMesh->GetTriangleCount())) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TuneTextureImageColor: cornerTexCoords or triangleImageIds size does "
                          "not match triangleCount");
    }
    const int imageCount = static_cast<int>(images.size());
    if (imageSizes.size() != 2 * images.size()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "TuneTextureImageColor: imageSizes size != 2 * imageCount");
    }
    for (int i = 0; i < imageCount; ++i) {
        if (!ImageFits(imageSizes[2 * i], imageSizes[2 * i + 1], images[i].size())) {
            return LogFailure(RESULT_INVALID_INPUT,
                              "TuneTextureImageColor: invalid image size: imageId = ", i);
        }
    }
    const int triangleCount = triMesh->GetTriangleCount();
    for (int t = 0; t < triangleCount; ++t) {
        if (triangleImageIds[t] < 0 || triangleImageIds[t] >= imageCount) {
            return LogFailure(
                RESULT_INVALID_INPUT,
                "TuneTextureImageColor: triangleImageId out of range: triangleId = ", t);
        }
    }
    return NotAvailable(Unavailable::IntrinsicColor_TuneTextureImageColor);
}

}  // namespace ZOL
