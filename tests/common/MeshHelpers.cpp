// Minimal OFF reading for tests (the library's own reader lives in the io module).
#include "tests/common/MeshHelpers.h"

#include <fstream>
#include <vector>

namespace zoltest {

bool LoadOff(const std::string& path, ZOL::TriMesh& mesh) {
    std::ifstream in(path);
    std::string magic;
    int vertexCount = 0, faceCount = 0, edgeCount = 0;
    if (!(in >> magic >> vertexCount >> faceCount >> edgeCount) || magic != "OFF") return false;
    mesh.Clear();
    for (int v = 0; v < vertexCount; ++v) {
        double x, y, z;
        if (!(in >> x >> y >> z)) return false;
        mesh.InsertVertex(ZOL::Vector3(x, y, z));
    }
    for (int f = 0; f < faceCount; ++f) {
        int corners = 0;
        if (!(in >> corners) || corners < 3) return false;
        std::vector<int> ids(corners);
        for (int& id : ids)
            if (!(in >> id) || id < 0 || id >= vertexCount) return false;
        for (int k = 1; k + 1 < corners; ++k) mesh.InsertTriangle(ids[0], ids[k], ids[k + 1]);
    }
    mesh.UpdateNormal();
    return true;
}

}  // namespace zoltest
