// Adapters that present a whole mesh (TriangleList) or a part of one (SubTriangleList)
// through the read-only ITriangleList.
#pragma once

#include <vector>

#include <zol/core/ITriMesh.h>
#include <zol/core/ITriangleList.h>
#include <zol/core/SubTriMesh.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Forwards every read to a mesh it does not own; the mesh must outlive the list.
class ZOL_API TriangleList : public ITriangleList {
public:
    /// \param[in] triMesh the mesh to read (not null).
    explicit TriangleList(ITriMesh* triMesh) : mpTriMesh(triMesh) {}
    ~TriangleList() override = default;

    int GetVertexCount() const override { return mpTriMesh->GetVertexCount(); }
    int GetTriangleCount() const override { return mpTriMesh->GetTriangleCount(); }
    Vector3 GetVertexCoord(int vertexId) override { return mpTriMesh->GetVertexCoord(vertexId); }
    Vector3 GetVertexNormal(int vertexId) override { return mpTriMesh->GetVertexNormal(vertexId); }
    void GetTriangleVertexIds(int triangleId, int vertexIds[3]) const override {
        mpTriMesh->GetTriangleVertexIds(triangleId, vertexIds);
    }
    Vector3 GetTriangleNormal(int triangleId) override {
        return mpTriMesh->GetTriangleNormal(triangleId);
    }
    /// \return the mesh read by this list.
    ITriMesh* GetTriMesh() const { return mpTriMesh; }

private:
    ITriMesh* mpTriMesh;
};

/// Holds a SubTriMesh view and forwards every read to it (indices are view indices).
class ZOL_API SubTriangleList : public ITriangleList {
public:
    /// Copies the view (the parent mesh is shared, not copied).
    explicit SubTriangleList(const SubTriMesh& subTriMesh) : mSubTriMesh(subTriMesh) {}
    /// Builds the view in place; arguments as for SubTriMesh.
    SubTriangleList(ITriMesh* parent, const std::vector<int>& ids, BuildSubTriMeshType type)
        : mSubTriMesh(parent, ids, type) {}
    SubTriangleList(ITriMesh* parent, const std::vector<bool>& flags, BuildSubTriMeshType type)
        : mSubTriMesh(parent, flags, type) {}
    ~SubTriangleList() override = default;

    int GetVertexCount() const override { return mSubTriMesh.GetVertexCount(); }
    int GetTriangleCount() const override { return mSubTriMesh.GetTriangleCount(); }
    Vector3 GetVertexCoord(int vertexId) override { return mSubTriMesh.GetVertexCoord(vertexId); }
    Vector3 GetVertexNormal(int vertexId) override { return mSubTriMesh.GetVertexNormal(vertexId); }
    void GetTriangleVertexIds(int triangleId, int vertexIds[3]) const override {
        mSubTriMesh.GetTriangleVertexIds(triangleId, vertexIds);
    }
    Vector3 GetTriangleNormal(int triangleId) override {
        return mSubTriMesh.GetTriangleNormal(triangleId);
    }
    /// \return the held view.
    const SubTriMesh& GetSubTriMesh() const { return mSubTriMesh; }

private:
    SubTriMesh mSubTriMesh;
};

}  // namespace ZOL
