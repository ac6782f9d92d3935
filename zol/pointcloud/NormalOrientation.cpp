// Orientation of plane-fit normals: references where they are clear, then a minimum
// spanning forest (Prim on 1 - |ni . nj|) over the symmetric neighbour graph carries the
// side to the rest; parts without references face away from their centroid.
#include <zol/pointcloud/NormalOrientationInternal.h>

#include <cmath>

#include <zol/runtime/Constants.h>

namespace ZOL {

namespace {

/// The k-nearest-neighbour lists made symmetric, in compressed rows.
struct NeighborGraph {
    std::vector<int> start;  // pointCount + 1
    std::vector<int> ids;
};

NeighborGraph BuildSymmetricGraph(const int* neighborIds, int pointCount, int k, int stride) {
    NeighborGraph graph;
    graph.start.assign(static_cast<size_t>(pointCount) + 1, 0);
    auto forEachEdge = [&](auto&& visit) {
        for (int i = 0; i < pointCount; ++i) {
            const int* row = neighborIds + static_cast<size_t>(i) * stride;
            for (int t = 0; t < k; ++t) {
                const int j = row[t];
                if (j >= 0 && j < pointCount && j != i) visit(i, j);
            }
        }
    };
    forEachEdge([&](int i, int j) {
        ++graph.start[i + 1];
        ++graph.start[j + 1];
    });
    for (int i = 0; i < pointCount; ++i) graph.start[i + 1] += graph.start[i];
    graph.ids.resize(static_cast<size_t>(graph.start[pointCount]));
    std::vector<int> fill(graph.start.begin(), graph.start.end() - 1);
    forEachEdge([&](int i, int j) {
        graph.ids[fill[i]++] = j;
        graph.ids[fill[j]++] = i;
    });
    return graph;
}

double AbsCosine(const Vector3& a, const Vector3& b) {
    const double la = a.Length(), lb = b.Length();
    if (la < REAL_TOL || lb < REAL_TOL) return 0.0;
    return std::fabs(a * b) / (la * lb);
}

/// Grows the spanning forest out of oriented points (Prim with one heap entry per
/// point, keyed by its lightest edge to the forest): each newly reached point takes the
/// side of the point it was reached from. Equal keys go to the lower index.
class ForestGrower {
public:
    ForestGrower(const NeighborGraph& graph,
                 std::vector<Vector3>& normals,
                 std::vector<char>& oriented)
        : mGraph(graph),
          mNormals(normals),
          mOriented(oriented),
          mKey(normals.size(), 0.0),
          mParent(normals.size(), -1),
          mSlot(normals.size(), -1) {}

    void Grow(const std::vector<int>& sources) {
        for (int s : sources) Relax(s);
        while (!mHeap.empty()) {
            const int v = PopLightest();
            if (mNormals[v] * mNormals[mParent[v]] < 0.0) mNormals[v] = -mNormals[v];
            mOriented[v] = 1;
            Relax(v);
        }
    }

private:
    void Relax(int u) {
        const Vector3& nu = mNormals[u];
        for (int e = mGraph.start[u]; e < mGraph.start[u + 1]; ++e) {
            const int v = mGraph.ids[e];
            if (mOriented[v]) continue;
            const double weight = 1.0 - std::fabs(nu * mNormals[v]);
            if (mSlot[v] < 0) {
                mKey[v] = weight;
                mParent[v] = u;
                mSlot[v] = static_cast<int>(mHeap.size());
                mHeap.push_back(v);
                SiftUp(mSlot[v]);
            } else if (weight < mKey[v]) {
                mKey[v] = weight;
                mParent[v] = u;
                SiftUp(mSlot[v]);
            }
        }
    }

    bool Lighter(int a, int b) const { return mKey[a] < mKey[b] || (mKey[a] == mKey[b] && a < b); }

    void Place(int slot, int v) {
        mHeap[slot] = v;
        mSlot[v] = slot;
    }

    void SiftUp(int slot) {
        const int v = mHeap[slot];
        while (slot > 0) {
            const int up = (slot - 1) / 2;
            if (!Lighter(v, mHeap[up])) break;
            Place(slot, mHeap[up]);
            slot = up;
        }
        Place(slot, v);
    }

    int PopLightest() {
        const int top = mHeap[0];
        const int last = mHeap.back();
        mHeap.pop_back();
        mSlot[top] = -1;
        if (mHeap.empty()) return top;
        int slot = 0;
        const int size = static_cast<int>(mHeap.size());
        while (true) {
            int child = 2 * slot + 1;
            if (child >= size) break;
            if (child + 1 < size && Lighter(mHeap[child + 1], mHeap[child])) ++child;
            if (!Lighter(mHeap[child], last)) break;
            Place(slot, mHeap[child]);
            slot = child;
        }
        Place(slot, last);
        return top;
    }

    const NeighborGraph& mGraph;
    std::vector<Vector3>& mNormals;
    std::vector<char>& mOriented;
    std::vector<double> mKey;  ///< lightest edge to the forest, while in the heap
    std::vector<int> mParent;  ///< the forest point of that edge
    std::vector<int> mSlot;    ///< heap position, -1 when not in the heap
    std::vector<int> mHeap;
};

}  // namespace

void OrientNormals(const double* xyz,
                   int pointCount,
                   const int* neighborIds,
                   int neighborCount,
                   int rowStride,
                   const Vector3* references,
                   std::vector<Vector3>& normals) {
    if (pointCount < 1) return;
    std::vector<char> oriented(static_cast<size_t>(pointCount), 0);
    std::vector<double> confidence(static_cast<size_t>(pointCount), 0.0);
    std::vector<int> sources;
    for (int i = 0; i < pointCount; ++i) {
        if (references == nullptr) break;
        confidence[i] = AbsCosine(normals[i], references[i]);
        if (confidence[i] < kConfidentCosine) continue;
        if (normals[i] * references[i] < 0.0) normals[i] = -normals[i];
        oriented[i] = 1;
        sources.push_back(i);
    }
    // With a clear reference everywhere (a known camera, a clean range image) no graph
    // is needed.
    if (static_cast<int>(sources.size()) == pointCount) return;
    const NeighborGraph graph =
        BuildSymmetricGraph(neighborIds, pointCount, neighborCount, rowStride);
    ForestGrower grower(graph, normals, oriented);
    grower.Grow(sources);

    // Parts that no clear reference reached: one growth each from its best root.
    std::vector<int> part;
    std::vector<int> stack;
    std::vector<char> seen(oriented);
    for (int first = 0; first < pointCount; ++first) {
        if (oriented[first]) continue;
        part.assign(1, first);
        stack.assign(1, first);
        seen[first] = 1;
        int root = first;
        while (!stack.empty()) {
            const int u = stack.back();
            stack.pop_back();
            for (int e = graph.start[u]; e < graph.start[u + 1]; ++e) {
                const int v = graph.ids[e];
                if (seen[v]) continue;
                seen[v] = 1;
                part.push_back(v);
                stack.push_back(v);
                if (confidence[v] > confidence[root] ||
                    (confidence[v] == confidence[root] && v < root))
                    root = v;
            }
        }
        const bool hasReference = confidence[root] > 0.0;
        if (hasReference && normals[root] * references[root] < 0.0) normals[root] = -normals[root];
        oriented[root] = 1;
        grower.Grow(std::vector<int>(1, root));
        if (hasReference) continue;
        double c[3] = {0.0, 0.0, 0.0};
        for (int p : part) {
            for (int a = 0; a < 3; ++a) c[a] += xyz[3 * static_cast<size_t>(p) + a];
        }
        for (double& v : c) v /= static_cast<double>(part.size());
        double outward = 0.0;
        for (int p : part) {
            const double* q = xyz + 3 * static_cast<size_t>(p);
            outward += normals[p] * Vector3(q[0] - c[0], q[1] - c[1], q[2] - c[2]);
        }
        if (outward < 0.0) {
            for (int p : part) normals[p] = -normals[p];
        }
    }
}

bool ComputeGridReferences(const PointCloud& cloud,
                           const double* xyz,
                           std::vector<Vector3>& references) {
    const int n = cloud.GetPointCount();
    references.assign(static_cast<size_t>(n), Vector3());
    if (!cloud.HasGridTopology() || cloud.GetWidth() < 2 || cloud.GetHeight() < 2) return false;
    const auto coord = [xyz](int i) {
        const double* p = xyz + 3 * static_cast<size_t>(i);
        return Vector3(p[0], p[1], p[2]);
    };
    const int width = cloud.GetWidth();
    // Neighbour cells in counter-clockwise order: right, up, left, down.
    const int dx[4] = {1, 0, -1, 0};
    const int dy[4] = {0, 1, 0, -1};
    Vector3 mean;
    std::vector<char> found(static_cast<size_t>(n), 0);
    for (int i = 0; i < n; ++i) {
        const int cell = cloud.GetPointGridId(i);
        if (cell < 0) continue;
        const int x = cell % width, y = cell / width;
        int around[4];
        for (int d = 0; d < 4; ++d) around[d] = cloud.GetGridPointId(x + dx[d], y + dy[d]);
        Vector3 sum;
        for (int d = 0; d < 4; ++d) {
            const int a = around[d], b = around[(d + 1) % 4];
            if (a < 0 || b < 0) continue;
            const Vector3 p = coord(i);
            Vector3 side = (coord(a) - p).CrossProduct(coord(b) - p);
            if (side.Normalise() < REAL_TOL) continue;
            sum += side;
        }
        if (sum.Length() < REAL_TOL) continue;
        references[i] = sum;
        found[i] = 1;
        mean += sum * (1.0 / sum.Length());
    }
    if (mean.Normalise() < REAL_TOL) {
        references.assign(static_cast<size_t>(n), Vector3());
        return false;
    }
    for (int i = 0; i < n; ++i) {
        if (!found[i]) references[i] = mean;
    }
    return true;
}

}  // namespace ZOL
