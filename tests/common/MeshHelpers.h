// A host-style ITriMesh, to compare the library's interface path with its TriMesh path.
#pragma once

#include <zol/core/TriMesh.h>

namespace zoltest {

/// An ITriMesh of the host's own, forwarding every slot to a TriMesh it refers to.
class ForwardingMesh : public ZOL::ITriMesh {
public:
    explicit ForwardingMesh(ZOL::TriMesh& mesh) : mMesh(mesh) {}
    int GetVertexCount() const override { return mMesh.GetVertexCount(); }
    int GetTriangleCount() const override { return mMesh.GetTriangleCount(); }
    ZOL::Vector3 GetVertexCoord(int v) override { return mMesh.GetVertexCoord(v); }
    void SetVertexCoord(int v, const ZOL::Vector3& c) override { mMesh.SetVertexCoord(v, c); }
    ZOL::Vector3 GetVertexNormal(int v) override { return mMesh.GetVertexNormal(v); }
    void SetVertexNormal(int v, const ZOL::Vector3& n) override { mMesh.SetVertexNormal(v, n); }
    void GetTriangleVertexIds(int t, int ids[3]) const override {
        mMesh.GetTriangleVertexIds(t, ids);
    }
    void SetTriangleVertexIds(int t, int a, int b, int c) override {
        mMesh.SetTriangleVertexIds(t, a, b, c);
    }
    ZOL::Vector3 GetTriangleNormal(int t) override { return mMesh.GetTriangleNormal(t); }
    void SetTriangleNormal(int t, const ZOL::Vector3& n) override { mMesh.SetTriangleNormal(t, n); }
    int InsertTriangle(int a, int b, int c) override { return mMesh.InsertTriangle(a, b, c); }
    int InsertVertex(const ZOL::Vector3& c) override { return mMesh.InsertVertex(c); }
    void SwapVertex(int a, int b) override { mMesh.SwapVertex(a, b); }
    void PopbackVertices(int n) override { mMesh.PopbackVertices(n); }
    void SwapTriangles(int a, int b) override { mMesh.SwapTriangles(a, b); }
    void PopbackTriangles(int n) override { mMesh.PopbackTriangles(n); }
    void UpdateNormal() override { mMesh.UpdateNormal(); }
    void Clear() override { mMesh.Clear(); }

private:
    ZOL::TriMesh& mMesh;
};

}  // namespace zoltest
