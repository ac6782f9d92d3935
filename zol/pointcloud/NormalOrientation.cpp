// Orientation of plane-fit normals: references where they are clear, then a minimum
// spanning forest (Prim on 1 - |ni . nj|) over the symmetric neighbour graph carries the
// side to the rest; parts without references face away from their centroid.
#include <zol/pointcloud/NormalOrientationInternal.h>

#include <cmath>
#include <queue>

#include <zol/runtime/Constants.h>

namespace ZOL {

namespace {

/// The k-nearest-neighbour lists made symmetric, in compressed rows.
struct NeighborGraph {
    std::vector<int> start;  // pointCount + 1
    std::vector<int> ids;
};

NeighborGraph BuildSymmetricGraph(const int* neighborIds, int pointCount, int k) {
    NeighborGraph graph;
    graph.start.assign(static_cast<size_t>(pointCount) + 1, 0);
    auto forEachEdge = [&](auto&& visit) {
        for (int i = 0; i < pointCount; ++i) {
            const int* row = neighborIds + static_cast<size_t>(i) * k;
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

struct Edge {
    double weight;
    int to;
    int from;
};

/// Min-heap order: lightest edge first, then the lower target, then the lower source.
struct HeavierEdge {
    bool operator()(const Edge& a, const Edge& b) const {
        if (a.weight != b.weight) return a.weight > b.weight;
        if (a.to != b.to) return a.to > b.to;
        return a.from > b.from;
    }
};

double AbsCosine(const Vector3& a, const Vector3& b) {
    const double la = a.Length(), lb = b.Length();
    if (la < REAL_TOL || lb < REAL_TOL) return 0.0;
    return std::fabs(a * b) / (la * lb);
}

/// Grows the spanning forest out of the oriented points in \p sources: each newly
/// reached point takes the side of the point it was reached from.
class ForestGrower {
public:
    ForestGrower(const NeighborGraph& graph,
                 std::vector<Vector3>& normals,
                 std::vector<char>& oriented)
        : mGraph(graph), mNormals(normals), mOriented(oriented) {}

    /// \param[out] reached the points oriented by this growth, sources excluded; may be null.
    void Grow(const std::vector<int>& sources, std::vector<int>* reached) {
        for (int s : sources) PushEdges(s);
        while (!mHeap.empty()) {
            const Edge e = mHeap.top();
            mHeap.pop();
            if (mOriented[e.to]) continue;
            if (mNormals[e.to] * mNormals[e.from] < 0.0) mNormals[e.to] = -mNormals[e.to];
            mOriented[e.to] = 1;
            if (reached) reached->push_back(e.to);
            PushEdges(e.to);
        }
    }

private:
    void PushEdges(int u) {
        const Vector3& nu = mNormals[u];
        for (int e = mGraph.start[u]; e < mGraph.start[u + 1]; ++e) {
            const int v = mGraph.ids[e];
            if (!mOriented[v]) mHeap.push({1.0 - std::fabs(nu * mNormals[v]), v, u});
        }
    }

    const NeighborGraph& mGraph;
    std::vector<Vector3>& mNormals;
    std::vector<char>& mOriented;
    std::priority_queue<Edge, std::vector<Edge>, HeavierEdge> mHeap;
};

}  // namespace

void OrientNormals(const double* xyz,
                   int pointCount,
                   const int* neighborIds,
                   int neighborCount,
                   const Vector3* references,
                   std::vector<Vector3>& normals) {
    if (pointCount < 1) return;
    const NeighborGraph graph = BuildSymmetricGraph(neighborIds, pointCount, neighborCount);
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
    ForestGrower grower(graph, normals, oriented);
    grower.Grow(sources, nullptr);

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
        grower.Grow(std::vector<int>(1, root), nullptr);
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

bool ComputeGridReferences(const PointCloud& cloud, std::vector<Vector3>& references) {
    const int n = cloud.GetPointCount();
    references.assign(static_cast<size_t>(n), Vector3());
    if (!cloud.HasGridTopology() || cloud.GetWidth() < 2 || cloud.GetHeight() < 2) return false;
    const Vector3* coords = cloud.GetPointCoordData();
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
            Vector3 side = (coords[a] - coords[i]).CrossProduct(coords[b] - coords[i]);
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
