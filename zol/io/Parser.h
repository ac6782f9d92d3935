// File exchange: reading and writing triangle meshes by file extension, and writing
// scene fragments for the POV-Ray ray tracer. All functions are static and keep no state.
#pragma once

#include <string>
#include <vector>

#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

class ITriMesh;
class TriMesh;
class IPointCloud;
class IGridPointCloud;
class PointCloud;

/// Static file readers and writers. Failures write one log line and return null or a
/// negative status; nothing is thrown.
class ZOL_API Parser {
public:
    // ---- Triangle meshes ------------------------------------------------------------

    /// Reads a mesh, choosing the format by the extension after the last "." (compared
    /// lower-cased): "obj", "stl" (ASCII or binary, told by content), "off", "ply"
    /// (ASCII only) or "zpt".
    /// \param[in] fileName path of the file.
    /// \return a new mesh owned by the caller, or null when the name has no extension,
    ///         the extension is not supported, or the file cannot be opened or is
    ///         malformed (the log names the cause).
    static TriMesh* ImportTriMesh(std::string fileName);

    /// Writes a mesh in the format named by the extension after the last "." (compared
    /// lower-cased): "obj", "stl" (always binary), "ply" (with vertex colours when the
    /// mesh is a TriMesh that has them), "off" or "zpt" (TriMesh only). Numbers are
    /// written with six significant digits.
    /// \param[in] fileName path of the file; an existing file is replaced.
    /// \param[in] triMesh the mesh; null is reported by the format writer.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when the name has no extension
    ///         ("Parser::ExportTriMesh: invalid fileName: <name>"), the mesh is null or the
    ///         file cannot be opened (the format writer's line); RESULT_FAIL (-1) when the
    ///         extension is not supported or "zpt" is asked for a mesh that is not a
    ///         TriMesh ("Parser::ExportTriMesh: not support format"), or writing failed
    ///         part way.
    static int ExportTriMesh(std::string fileName, const ITriMesh* triMesh);

    // ---- POV-Ray scene fragments ------------------------------------------------------
    // Every point is written with its x coordinate negated, turning our right-handed
    // coordinates into the ray tracer's left-handed ones.

    /// Writes the mesh as one `mesh2` object.
    /// \param[in] fileName path of the scene fragment.
    /// \param[in] triMesh the mesh.
    /// \param[in] color one colour (components 0..1) for the whole mesh; null uses the
    ///            vertex colours (black when the mesh has none).
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when the mesh is null
    ///         ("ExportTriMeshToPovray: triMesh is NULL") or the file cannot be opened
    ///         ("ExportTriMeshToPovray: file could not open "); RESULT_FAIL (-1) when
    ///         writing failed part way.
    static int ExportTriMeshToPovray(std::string fileName, const TriMesh* triMesh, Vector3* color);

    /// Writes the mesh as one `mesh2` object with its triangle texture coordinates
    /// (zero when it has none) and a fixed grey material.
    /// \param[in] fileName path of the scene fragment.
    /// \param[in] triMesh the mesh.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when the mesh is null
    ///         ("ExportTextureTriMeshToPovray: triMesh is NULL") or the file cannot be
    ///         opened ("ExportTextureTriMeshToPovray: file could not open "); RESULT_FAIL
    ///         (-1) when writing failed part way.
    static int ExportTextureTriMeshToPovray(std::string fileName, const TriMesh* triMesh);

    /// Writes one cylinder per pair of points (p0, p1), (p2, p3), ...; an unpaired last
    /// point is ignored.
    /// \param[in] fileName path of the scene fragment.
    /// \param[in] points segment end points in pairs.
    /// \param[in] radius cylinder radius, in model units.
    /// \param[in] color colour of every cylinder (components 0..1).
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when the file cannot be opened
    ///         ("ExportLineSegmentToPovray: file could not open "); RESULT_FAIL (-1) when
    ///         writing failed part way.
    static int ExportLineSegmentToPovray(std::string fileName,
                                         const std::vector<Vector3>& points,
                                         double radius,
                                         Vector3 color);

    // ---- Point clouds ---------------------------------------------------------------
    // Formats by extension (after the last ".", compared lower-cased); docs/formats.md
    // describes each: "asc", "xyz", "xyzn" (point text, layout told by the column
    // count), "casc", "xyzrgb" (coloured point text), "obj" (v / vn lines), "ply"
    // (ASCII or binary on read, ASCII on write), and the library's own "zpc" (text),
    // "zbp" (binary) and "zbg" (binary grid cloud).

    /// Reads a point cloud. A PLY range scan with a "range_grid" element, or a ZBG
    /// file, gives a cloud with grid topology and its cell map filled. Points whose
    /// coordinates are not finite are dropped (one log line).
    /// \param[in] fileName path of the file.
    /// \return a new cloud owned by the caller, or null when the name has no extension,
    ///         the extension is not supported, or the file cannot be opened or is
    ///         malformed (the log names the cause).
    static PointCloud* ImportPointCloud(std::string fileName);

    /// Writes a point cloud with its normals and, for a PointCloud, its colours, in the
    /// format named by the extension. Text formats write the shortest digits that read
    /// back as the same double; colours are written as bytes (rounded) in "casc" and
    /// "ply", as fractions elsewhere.
    /// \param[in] fileName path of the file; an existing file is replaced.
    /// \param[in] pointCloud the cloud.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when the cloud is null
    ///         ("Parser::ExportPointCloud: pointCloud is NULL"), the name has no extension
    ///         ("Parser::ExportPointCloud: invalid fileName: <name>") or the file cannot be
    ///         written (the format writer's line); RESULT_FAIL (-1) when the extension is
    ///         not supported ("Parser::ExportPointCloud: not support format").
    static int ExportPointCloud(std::string fileName, const IPointCloud* pointCloud);

    /// Writes the valid cells of a grid cloud, in row-major cell order, with the grid:
    /// "zbg" (binary) or "ply" (ASCII with a "range_grid" element); both read back into
    /// a grid cloud. Normals are written when the grid has them, colours for a
    /// PointCloud that has them.
    /// \param[in] fileName path of the file; an existing file is replaced.
    /// \param[in] gridPointCloud the grid cloud.
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2) when the cloud is null
    ///         ("Parser::ExportGridPointCloud: gridPointCloud is NULL"), its width or
    ///         height is below 1 ("...: invalid grid size <w> x <h>"), the name has no
    ///         extension or the file cannot be written; RESULT_FAIL (-1) when the
    ///         extension is not supported ("...: not support format").
    static int ExportGridPointCloud(std::string fileName, const IGridPointCloud* gridPointCloud);
};

}  // namespace ZOL
