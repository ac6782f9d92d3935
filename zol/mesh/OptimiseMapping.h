// Mappings on meshes: values interpolated over a mesh, carried between meshes or
// projected onto one, and image colour ids chosen per vertex and per face. Declared for
// hosts; not provided by this library.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/ImageColorId.h>
#include <zol/core/PointOnFace.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Maps values onto meshes. Every member answers RESULT_NOT_AVAILABLE once its arguments
/// pass the checks listed with it.
class ZOL_API OptimiseMapping {
public:
    /// Smooth (harmonic) interpolation of values given at some vertices to all vertices.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] fixedVertexIds the vertices with known values, at least one.
    /// \param[in] fixedValues one value per fixed vertex.
    /// \param[out] vertexValues one value per vertex.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("OptimiseMapping::Interpolate: triMesh == NULL || vertexValues == NULL") or
    ///         fixed lists that are empty or differ in size ("OptimiseMapping::Interpolate:
    ///         invalid fixed values").
    static int Interpolate(const ITriMesh* triMesh,
                           const std::vector<int>& fixedVertexIds,
                           const std::vector<Vector3>& fixedValues,
                           std::vector<Vector3>* vertexValues);

    /// Carries per-vertex values of one mesh to the nearest surface points of another.
    /// \param[in] sourceMesh the mesh that holds the values; only read.
    /// \param[in] sourceValues one value per source vertex.
    /// \param[in] targetMesh the receiving mesh; only read.
    /// \param[out] targetValues one value per target vertex.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("OptimiseMapping::TransferToMesh: sourceMesh == NULL || targetMesh == NULL ||
    ///         targetValues == NULL") or values not one per source vertex
    ///         ("OptimiseMapping::TransferToMesh: sourceValues size != vertexCount").
    static int TransferToMesh(const ITriMesh* sourceMesh,
                              const std::vector<Vector3>& sourceValues,
                              const ITriMesh* targetMesh,
                              std::vector<Vector3>* targetValues);

    /// Projects points onto their nearest points of the surface.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] points the points.
    /// \param[out] facePoints one point on a triangle per input point.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("OptimiseMapping::ProjectToMesh: triMesh == NULL || facePoints == NULL").
    static int ProjectToMesh(const ITriMesh* triMesh,
                             const std::vector<Vector3>& points,
                             std::vector<PointOnFace>* facePoints);

    /// Chooses for every vertex one image pixel among its candidates, so that neighbours
    /// agree on their image where they can.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] vertexCandidates per vertex, the pixels that see it.
    /// \param[out] vertexImageColorIds one choice per vertex.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("OptimiseMapping::FuseImageColorIds: triMesh == NULL || vertexImageColorIds
    ///         == NULL") or candidates not one list per vertex
    ///         ("OptimiseMapping::FuseImageColorIds: vertexCandidates size != vertexCount").
    static int FuseImageColorIds(const ITriMesh* triMesh,
                                 const std::vector<std::vector<ImageColorId>>& vertexCandidates,
                                 std::vector<ImageColorId>* vertexImageColorIds);

    /// Spreads per-vertex image pixels over the faces: samplesPerEdge * (samplesPerEdge
    /// + 1) / 2 pixels per triangle, in barycentric row order.
    /// \param[in] triMesh the mesh; only read.
    /// \param[in] vertexImageColorIds one pixel per vertex.
    /// \param[in] samplesPerEdge samples along each triangle edge, at least 2.
    /// \param[out] faceImageColorIds the pixels of all triangles, triangle by triangle.
    /// \return RESULT_NOT_AVAILABLE (-8); RESULT_INVALID_INPUT (-2) for a null argument
    ///         ("OptimiseMapping::InterpolateFaceImageColorIds: triMesh == NULL ||
    ///         faceImageColorIds == NULL"), pixels not one per vertex
    ///         ("OptimiseMapping::InterpolateFaceImageColorIds: vertexImageColorIds size !=
    ///         vertexCount") or samplesPerEdge < 2
    ///         ("OptimiseMapping::InterpolateFaceImageColorIds: samplesPerEdge < 2").
    static int InterpolateFaceImageColorIds(const ITriMesh* triMesh,
                                            const std::vector<ImageColorId>& vertexImageColorIds,
                                            int samplesPerEdge,
                                            std::vector<ImageColorId>* faceImageColorIds);
};

}  // namespace ZOL
