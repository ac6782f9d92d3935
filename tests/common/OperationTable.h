// The library's operations as rows of one table, run on containers the caller chooses and
// reduced to raw results: results must not change with the thread count, and on a host's
// own containers must equal those on PointCloud and TriMesh.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/ITriMesh.h>
#include <zol/core/TriMesh.h>
#include <zol/core/Vector3.h>

namespace zoltest {

/// Makes the containers an operation runs on.
class ContainerMaker {
public:
    virtual ~ContainerMaker() = default;
    /// A cloud of \p points, with \p normals when given.
    virtual std::unique_ptr<ZOL::IPointCloud> Cloud(
        const std::vector<ZOL::Vector3>& points,
        const std::vector<ZOL::Vector3>* normals = nullptr) const = 0;
    /// A copy of \p source's vertices, triangles and normals.
    virtual std::unique_ptr<ZOL::ITriMesh> Mesh(const ZOL::TriMesh& source) const = 0;
};

/// PointCloud and TriMesh.
const ContainerMaker& LibraryContainers();
/// HostCloud and HostMesh (tests/common/HostContainers.h).
const ContainerMaker& HostContainers();

/// What an operation gave: the status of each call, every number it wrote (compared by
/// bit pattern) and the bytes of the files it wrote.
struct Outcome {
    std::vector<int> statuses;
    std::vector<double> values;
    std::string bytes;
};

/// Empty when the two outcomes are identical bit for bit, else where they first differ.
std::string Difference(const Outcome& expected, const Outcome& actual);

/// One operation of the library on fixed real or seeded inputs.
struct Operation {
    const char* family;  ///< what a host needs to know works on its containers
    const char* name;    ///< a test-name-safe label
    bool parallel;       ///< whether it runs on the worker threads with these inputs
    Outcome (*run)(const ContainerMaker& maker);
};

/// Every row, grouped by family.
const std::vector<Operation>& Operations();

}  // namespace zoltest
