// Scene fragments for the POV-Ray ray tracer: a mesh as one mesh2 object and line
// segments as cylinders. The ray tracer's coordinates are left-handed, so every point
// is written with x negated.
#include <zol/core/TriMesh.h>
#include <zol/io/MeshFormatsInternal.h>
#include <zol/io/Parser.h>
#include <zol/io/TextWriterInternal.h>
#include <zol/runtime/Constants.h>

namespace ZOL {

namespace {

// "<-x, y, z>"
void PutPoint(FileWriter& out, const Vector3& p) {
    out.Put('<');
    out.PutReals(-p.x, p.y, p.z, ", ");
    out.Put('>');
}

// "<a, b, c>" of three numbers as they are.
void PutTriple(FileWriter& out, double a, double b, double c) {
    out.Put('<');
    out.PutReals(a, b, c, ", ");
    out.Put('>');
}

void PutIndexTriple(FileWriter& out, std::int64_t a, std::int64_t b, std::int64_t c) {
    out.Put('<');
    out.PutInt(a);
    out.Put(", ");
    out.PutInt(b);
    out.Put(", ");
    out.PutInt(c);
    out.Put('>');
}

void PutVertexVectors(FileWriter& out, TriMesh* mesh) {
    const int vertexCount = mesh->GetVertexCount();
    out.Put("  vertex_vectors {\n    ");
    out.PutInt(vertexCount);
    for (int i = 0; i < vertexCount; ++i) {
        out.Put(", ");
        PutPoint(out, mesh->GetVertexCoord(i));
    }
    out.Put("}\n");
}

// The face list; with \p withTextures each triangle also names its vertices' textures.
void PutFaceIndices(FileWriter& out, TriMesh* mesh, bool withTextures) {
    const int triangleCount = mesh->GetTriangleCount();
    out.Put("  face_indices {\n    ");
    out.PutInt(triangleCount);
    int ids[3];
    for (int t = 0; t < triangleCount; ++t) {
        mesh->GetTriangleVertexIds(t, ids);
        out.Put(", ");
        PutIndexTriple(out, ids[0], ids[1], ids[2]);
        for (int k = 0; withTextures && k < 3; ++k) {
            out.Put(", ");
            out.PutInt(ids[k]);
        }
    }
    out.Put("}\n");
}

}  // namespace

int Parser::ExportTriMeshToPovray(std::string fileName, const TriMesh* triMesh, Vector3* color) {
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "ExportTriMeshToPovray: triMesh is NULL");
    }
    FileWriter out(fileName);
    if (!out.IsOpen()) {
        return LogFailure(RESULT_INVALID_INPUT, "ExportTriMeshToPovray: file could not open ");
    }
    TriMesh* mesh = const_cast<TriMesh*>(triMesh);
    out.Put("mesh2 {\n");
    PutVertexVectors(out, mesh);
    if (color != nullptr) {
        PutFaceIndices(out, mesh, false);
        out.Put("pigment { color rgb ");
        PutTriple(out, color->x, color->y, color->z);
        out.Put(" }}\n");
    } else {
        // One texture per vertex; a triangle's corners take their vertices' textures.
        const int vertexCount = mesh->GetVertexCount();
        const bool hasColor = mesh->HasVertexColor();
        out.Put("  texture_list {\n    ");
        out.PutInt(vertexCount);
        for (int i = 0; i < vertexCount; ++i) {
            const Vector3 c = hasColor ? mesh->GetVertexColor(i) : Vector3();
            out.Put(", texture { pigment { color rgb ");
            PutTriple(out, c.x, c.y, c.z);
            out.Put(" } }");
        }
        out.Put("}\n");
        PutFaceIndices(out, mesh, true);
        out.Put("}\n");
    }
    return FinishWrite(out, "ExportTriMeshToPovray");
}

int Parser::ExportTextureTriMeshToPovray(std::string fileName, const TriMesh* triMesh) {
    if (triMesh == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT, "ExportTextureTriMeshToPovray: triMesh is NULL");
    }
    FileWriter out(fileName);
    if (!out.IsOpen()) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "ExportTextureTriMeshToPovray: file could not open ");
    }
    TriMesh* mesh = const_cast<TriMesh*>(triMesh);
    const std::int64_t triangleCount = mesh->GetTriangleCount();
    const bool hasTexcoord = mesh->HasTriangleTexCoord();
    out.Put("mesh2 {\n");
    PutVertexVectors(out, mesh);
    out.Put("  uv_vectors {\n    ");
    out.PutInt(3 * triangleCount);
    for (int t = 0; t < triangleCount; ++t) {
        for (int k = 0; k < 3; ++k) {
            const Vector3 uv = hasTexcoord ? mesh->GetTriangleTexcoord(t, k) : Vector3();
            out.Put(", <");
            out.PutReal(uv.x);
            out.Put(", ");
            out.PutReal(uv.y);
            out.Put('>');
        }
    }
    out.Put("}\n");
    PutFaceIndices(out, mesh, false);
    out.Put("  uv_indices {\n    ");
    out.PutInt(triangleCount);
    for (std::int64_t t = 0; t < triangleCount; ++t) {
        out.Put(", ");
        PutIndexTriple(out, 3 * t, 3 * t + 1, 3 * t + 2);
    }
    out.Put("}\n");
    out.Put("pigment { color rgb <0.55, 0.55, 0.55> }}\n");
    return FinishWrite(out, "ExportTextureTriMeshToPovray");
}

int Parser::ExportLineSegmentToPovray(std::string fileName,
                                      const std::vector<Vector3>& points,
                                      double radius,
                                      Vector3 color) {
    FileWriter out(fileName);
    if (!out.IsOpen()) {
        return LogFailure(RESULT_INVALID_INPUT, "ExportLineSegmentToPovray: file could not open ");
    }
    // Pairs only: an unpaired last point has no segment.
    for (std::size_t i = 0; i + 1 < points.size(); i += 2) {
        out.Put("cylinder { ");
        PutPoint(out, points[i]);
        out.Put(", ");
        PutPoint(out, points[i + 1]);
        out.Put(", ");
        out.PutReal(radius);
        out.Put("\ntexture { pigment { color rgb ");
        PutTriple(out, color.x, color.y, color.z);
        out.Put(" } }\n}\n");
    }
    return FinishWrite(out, "ExportLineSegmentToPovray");
}

}  // namespace ZOL
