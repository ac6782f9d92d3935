// A point on a mesh edge: the two end vertices and a weight. Which end the weight
// refers to is fixed by the operation that produces the point.
#pragma once

#include <zol/runtime/Export.h>

namespace ZOL {

class ZOL_API PointOnEdge {
public:
    /// Both vertices -1 (none), weight 0.
    PointOnEdge() : mVertexId0(-1), mVertexId1(-1), mWeight(0.0) {}
    PointOnEdge(int vertexId0, int vertexId1, double weight)
        : mVertexId0(vertexId0), mVertexId1(vertexId1), mWeight(weight) {}

    int GetVertexId0() const { return mVertexId0; }
    int GetVertexId1() const { return mVertexId1; }
    double GetWeight() const { return mWeight; }
    void SetVertexIds(int vertexId0, int vertexId1) {
        mVertexId0 = vertexId0;
        mVertexId1 = vertexId1;
    }
    void SetWeight(double weight) { mWeight = weight; }

    int mVertexId0;
    int mVertexId1;
    double mWeight;
};

}  // namespace ZOL
