// Field kinds of the point-cloud dump records that carry more than the shared cloud layout:
// a cloud with its range-image grid (normal orientation reads the grid), and the saved
// state of a fusion (its updates and extractions depend on what was fused before).
#pragma once

#include <fstream>
#include <memory>

#include <zol/core/IPointCloud.h>
#include <zol/core/PointCloud.h>
#include <zol/dump/DumpBase.h>
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
