// Field kinds of the point-cloud dump records beyond the shared layouts: a cloud with its
// range-image grid (orientation reads it), the saved state of a fusion (updates depend on
// what was fused before), and the id arrays and read-only cloud lists of registration.
#pragma once

#include <algorithm>
#include <fstream>
#include <memory>
#include <optional>
#include <vector>

#include <zol/core/IPointCloud.h>
#include <zol/core/PointCloud.h>
#include <zol/dump/DumpBase.h>
#include <zol/dump/DumpField.h>
#include <zol/pointcloud/FusePointCloud.h>
#include <zol/runtime/Export.h>

namespace ZOL {
namespace dumpfield {

/// A cloud as Cloud writes it, then its grid: a line "width height" ("0 0" for a cloud
/// without grid topology) and, with a grid, the cell of every point (y * width + x, -1
/// for none) as an int vector. Loads as a PointCloud with the same grid, so that normal
/// estimation and orientation see the range image as the call did. A grid of more than
/// 256 cells per point, a cell outside the grid or a cell used twice is damaged data.
struct ZOL_API GridCloud {
    using Arg = const IPointCloud*;
    using Member = std::unique_ptr<PointCloud>;
    static constexpr bool kInline = false;
    static void Write(DumpBase& base, std::ofstream& out, Arg cloud);
    static bool Read(DumpBase& base, std::ifstream& in, Member& cloud);
};

/// An optional id array passed as a pointer and its count: written as OptVec<int> writes
/// a vector (null: the count line 0 alone; given: the first max(count, 0) ids, so that
/// ids given with no count replay as given). Loads as an optional vector.
struct ZOL_API IdArray {
    struct Arg {
        const int* ids;
        int count;
    };
    using Member = std::optional<std::vector<int>>;
    static constexpr bool kInline = false;
    static void Write(DumpBase& base, std::ofstream& out, Arg a) {
        if (a.ids == nullptr) {
            OptVec<int>::Write(base, out, nullptr);
        } else {
            const std::vector<int> ids(a.ids, a.ids + std::max(a.count, 0));
            OptVec<int>::Write(base, out, &ids);
        }
    }
    static bool Read(DumpBase& base, std::ifstream& in, Member& ids) {
        return OptVec<int>::Read(base, in, ids);
    }
};

/// Several point clouds given as read-only pointers, each as Cloud.
using ConstCloudList = ListOf<Cloud, const IPointCloud>;

/// The state of a fusion: "-1" for none (a null object or one without a grid), else the
/// text FusePointCloud::DumpInfo saves, read back by FusePointCloud::LoadInfo.
struct ZOL_API FuseState {
    using Arg = const FusePointCloud*;
    using Member = std::unique_ptr<FusePointCloud>;
    static constexpr bool kInline = false;
    static void Write(DumpBase& base, std::ofstream& out, Arg fuse);
    static bool Read(DumpBase& base, std::ifstream& in, Member& fuse);
};

}  // namespace dumpfield
}  // namespace ZOL
