// The library's own triangle mesh: vertex and triangle records behind arrays of
// pointers, with optional per-vertex and per-corner colour and texture coordinates.
// The class is final and its simple accessors are inline, so code holding a TriMesh&
// pays no virtual call.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/MeshType.h>
#include <zol/core/RecordPool.h>
#include <zol/core/Vector3.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Editable triangle mesh that owns its records. Indices are not range-checked: an index
/// out of range is a caller error. Not thread-safe for writing; concurrent reads are fine.
class ZOL_API TriMesh final : public ITriMesh {
public:
    /// One vertex: position and normal.
    struct VertexRecord {
        Vector3 coord;
        Vector3 normal;
    };
    /// One triangle: three vertex indices (counter-clockwise seen from outside) and normal.
    struct TriangleRecord {
        int vertexIds[3];
        Vector3 normal;
    };

    /// Empty mesh, no attribute arrays, default colour (0.86, 0.86, 0.86).
    TriMesh();
    /// Empty mesh with the given attribute flags; the triangle-colour flag starts false.
    TriMesh(bool hasVertexColor, bool hasVertexTexCoord, bool hasTriangleTexCoord);
    /// Deep copy: records, attribute arrays, flags, default colour and mesh type.
    TriMesh(const TriMesh& other);
    /// Takes over the records of \p other, which is left empty.
    TriMesh(TriMesh&& other) noexcept;
    /// Deep copy; self-assignment is a no-op.
    TriMesh& operator=(const TriMesh& other);
    TriMesh& operator=(TriMesh&& other) noexcept;
    ~TriMesh() override;

    // ---- ITriMesh ------------------------------------------------------------------
    int GetVertexCount() const override { return static_cast<int>(mVertices.size()); }
    int GetTriangleCount() const override { return static_cast<int>(mTriangles.size()); }
    Vector3 GetVertexCoord(int vertexId) override { return mVertices[vertexId]->coord; }
    void SetVertexCoord(int vertexId, const Vector3& coord) override {
        mVertices[vertexId]->coord = coord;
    }
    Vector3 GetVertexNormal(int vertexId) override { return mVertices[vertexId]->normal; }
    void SetVertexNormal(int vertexId, const Vector3& normal) override {
        mVertices[vertexId]->normal = normal;
    }
    void GetTriangleVertexIds(int triangleId, int vertexIds[3]) const override {
        const int* ids = mTriangles[triangleId]->vertexIds;
        vertexIds[0] = ids[0];
        vertexIds[1] = ids[1];
        vertexIds[2] = ids[2];
    }
    void SetTriangleVertexIds(int triangleId,
                              int vertexId0,
                              int vertexId1,
                              int vertexId2) override {
        int* ids = mTriangles[triangleId]->vertexIds;
        ids[0] = vertexId0;
        ids[1] = vertexId1;
        ids[2] = vertexId2;
    }
    Vector3 GetTriangleNormal(int triangleId) override { return mTriangles[triangleId]->normal; }
    void SetTriangleNormal(int triangleId, const Vector3& normal) override {
        mTriangles[triangleId]->normal = normal;
    }
    /// Appends a triangle with a zero normal; grows the per-corner attribute arrays whose
    /// flag is on by three zero entries.
    /// \return the new triangle index (count - 1).
    int InsertTriangle(int vertexId0, int vertexId1, int vertexId2) override;
    /// Appends a vertex with a zero normal; a vertex colour (0, 0, 0) and a texture
    /// coordinate (0, 0, 0) are appended when the matching flag is on.
    /// \return the new vertex index (count - 1).
    int InsertVertex(const Vector3& coord) override;
    /// Exchanges the records and attribute entries of two vertices. Triangle corners are
    /// not renumbered: that is the caller's job.
    void SwapVertex(int vertexId0, int vertexId1) override;
    /// Frees the last \p count vertices (clamped to the count) and their attribute entries.
    void PopbackVertices(int count) override;
    /// Exchanges the records and per-corner attribute entries of two triangles.
    void SwapTriangles(int triangleId0, int triangleId1) override;
    /// Frees the last \p count triangles (clamped to the count) and their attribute entries.
    void PopbackTriangles(int count) override;
    /// Recomputes normals: triangle normals are unit face normals; a vertex normal is the
    /// normalised area-weighted sum of its triangles' normals. A vertex whose sum vanishes
    /// (all its triangles degenerate, or cancelling) takes the normal of a valid neighbour
    /// across a shared triangle, repeatedly; isolated vertices keep a zero normal.
    /// A triangle naming a vertex outside the mesh is skipped and keeps its normal.
    void UpdateNormal() override;
    /// Frees every record and empties the attribute arrays; flags, default colour and
    /// mesh type stay.
    void Clear() override;

    // ---- Fast read access ----------------------------------------------------------
    /// Coordinate of \p vertexId by reference: no virtual call, no copy.
    const Vector3& GetVertexCoordRef(int vertexId) const { return mVertices[vertexId]->coord; }
    /// Normal of \p vertexId by reference.
    const Vector3& GetVertexNormalRef(int vertexId) const { return mVertices[vertexId]->normal; }
    /// The three corner vertex indices of \p triangleId (pointer to three ints, valid until
    /// the triangle is popped or the mesh is cleared).
    const int* GetTriangleVertexIdsRef(int triangleId) const {
        return mTriangles[triangleId]->vertexIds;
    }
    /// Normal of \p triangleId by reference.
    const Vector3& GetTriangleNormalRef(int triangleId) const {
        return mTriangles[triangleId]->normal;
    }

    // ---- Building ------------------------------------------------------------------
    /// Appends a vertex with the given normal (attribute arrays as InsertVertex(coord)).
    /// \return the new vertex index.
    int InsertVertex(const Vector3& coord, const Vector3& normal);
    /// Reserves room for the given totals: the records of the missing vertices and
    /// triangles in one block each, and the pointer and attribute arrays.
    void Reserve(int vertexCount, int triangleCount);

    void SetMeshType(MeshType meshType) { mMeshType = meshType; }
    MeshType GetMeshType() const { return mMeshType; }

    // ---- Attributes ----------------------------------------------------------------
    bool HasVertexColor() const { return mHasVertexColor; }
    bool HasVertexTexCoord() const { return mHasVertexTexCoord; }
    bool HasTriangleColor() const { return mHasTriangleColor; }
    bool HasTriangleTexCoord() const { return mHasTriangleTexCoord; }
    /// Turning a flag on grows its array with zero entries to one per vertex (three per
    /// triangle for the triangle flags) if it is shorter; turning it off keeps the array.
    void SetHasVertexColor(bool has);
    void SetHasVertexTexCoord(bool has);
    void SetHasTriangleColor(bool has);
    void SetHasTriangleTexCoord(bool has);

    /// Vertex colour, components in [0, 1]. Requires the vertex colour array.
    Vector3 GetVertexColor(int vertexId) const { return mVertexColors[vertexId]; }
    void SetVertexColor(int vertexId, const Vector3& color) { mVertexColors[vertexId] = color; }
    Vector3 GetVertexTexcoord(int vertexId) const { return mVertexTexcoords[vertexId]; }
    void SetVertexTexcoord(int vertexId, const Vector3& texcoord) {
        mVertexTexcoords[vertexId] = texcoord;
    }
    /// Colour of corner \p cornerId (0..2) of \p triangleId, components in [0, 1].
    Vector3 GetTriangleColor(int triangleId, int cornerId) const {
        return mTriangleColors[3 * static_cast<size_t>(triangleId) + cornerId];
    }
    void SetTriangleColor(int triangleId, int cornerId, const Vector3& color) {
        mTriangleColors[3 * static_cast<size_t>(triangleId) + cornerId] = color;
    }
    /// Texture coordinate of corner \p cornerId (0..2) of \p triangleId.
    Vector3 GetTriangleTexcoord(int triangleId, int cornerId) const {
        return mTriangleTexcoords[3 * static_cast<size_t>(triangleId) + cornerId];
    }
    void SetTriangleTexcoord(int triangleId, int cornerId, const Vector3& texcoord) {
        mTriangleTexcoords[3 * static_cast<size_t>(triangleId) + cornerId] = texcoord;
    }
    /// Colour a host may use for a mesh without colours; initially (0.86, 0.86, 0.86).
    void SetDefaultColor(const Vector3& color) { mDefaultColor = color; }
    Vector3 GetDefaultColor() const { return mDefaultColor; }

    // ---- Whole-mesh operations -----------------------------------------------------
    /// Moves the bounding-box centre to the origin and scales so that the largest
    /// half-extent of the box becomes \p bboxSize: p' = (p - centre) * scale with
    /// scale = bboxSize / largestHalfExtent. A mesh without extent (no vertex, or all
    /// vertices at one point) gets scale 1; an empty mesh reports centre (0, 0, 0).
    /// \param[in] bboxSize target largest half-extent (same unit as the coordinates).
    /// \param[out] scaleValue the scale applied; may be null.
    /// \param[out] objCenter the centre subtracted; may be null.
    void UnifyCoords(double bboxSize, double* scaleValue, Vector3* objCenter);
    /// Applies a known normalisation, p' = (p - objCenter) * scaleValue, e.g. the values
    /// reported by the other form for another mesh.
    void UnifyCoords(double scaleValue, const Vector3& objCenter);
    /// Welds vertices with exactly equal coordinates (+0 and -0 are equal; no tolerance;
    /// a vertex with a NaN coordinate equals no other and is kept as it is).
    /// The first vertex (lowest index) of each group survives with its normal and
    /// attributes; survivors keep their relative order. Triangle corners are remapped and
    /// triangles left with two equal corners are dropped (the others keep their order and
    /// per-corner attributes). Expected linear time (hashing).
    /// \return RESULT_OK; RESULT_INVALID_INPUT (-2), mesh unchanged, when it has fewer than
    ///         3 vertices ("TriMesh::FuseVertex: vertexCount < 3") or a triangle names a
    ///         vertex outside it ("TriMesh::FuseVertex: invalid vertex id <v> in triangle
    ///         <t>").
    int FuseVertex();

private:
    void CopyFrom(const TriMesh& other);
    void MoveFrom(TriMesh& other) noexcept;
    void FreeRecords();
    void RepackRecords();

    MeshType mMeshType;
    std::vector<VertexRecord*> mVertices;
    std::vector<TriangleRecord*> mTriangles;
    std::vector<Vector3> mVertexColors;
    std::vector<Vector3> mVertexTexcoords;
    std::vector<Vector3> mTriangleColors;
    std::vector<Vector3> mTriangleTexcoords;
    bool mHasVertexColor;
    bool mHasVertexTexCoord;
    bool mHasTriangleColor;
    bool mHasTriangleTexCoord;
    Vector3 mDefaultColor;
    RecordPool<VertexRecord> mVertexPool;
    RecordPool<TriangleRecord> mTrianglePool;
};

}  // namespace ZOL
