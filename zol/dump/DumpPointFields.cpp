// Writing and reading of the grid-cloud and fusion-state fields of point-cloud records.
#include <zol/dump/DumpPointFields.h>

#include <cstdint>
#include <vector>

#include <zol/dump/DumpField.h>

namespace ZOL {
namespace dumpfield {

namespace {

// A range image keeps far fewer than 256 cells per valid point; a larger grid in a file
// is damaged or hostile, and its cell map is not allocated.
constexpr std::int64_t kMaxCellsPerPoint = 256;

}  // namespace

void GridCloud::Write(DumpBase& base, std::ofstream& out, Arg cloud) {
    base.DumpPointCloud(cloud, cloud != nullptr && cloud->HasNormal(), out);
    if (cloud == nullptr) return;
    const auto* grid = dynamic_cast<const PointCloud*>(cloud);
    if (grid == nullptr || !grid->HasGridTopology()) {
        out << "0 0\n";
        return;
    }
    out << grid->GetWidth() << ' ' << grid->GetHeight() << '\n';
    std::vector<int> cells(static_cast<std::size_t>(grid->GetPointCount()));
    for (std::size_t i = 0; i < cells.size(); ++i)
        cells[i] = grid->GetPointGridId(static_cast<int>(i));
    WriteDumpVector(out, cells);
}

bool GridCloud::Read(DumpBase& base, std::ifstream& in, Member& cloud) {
    auto points = std::make_unique<PointCloud>();
    const DumpLoad result = base.LoadPointCloud(points.get(), in);
    if (result == DUMP_LOAD_NULL) return true;
    int width = 0, height = 0;
    if (result != DUMP_LOAD_OK || !DumpBase::ReadInt(in, width) || !DumpBase::ReadInt(in, height)) {
        return false;
    }
    const int n = points->GetPointCount();
    if (width == 0 && height == 0) {
        cloud = std::move(points);
        return true;
    }
    const std::int64_t cellCount = static_cast<std::int64_t>(width) * height;
    if (width < 1 || height < 1 || cellCount > kMaxCellsPerPoint * (n + 1)) return false;
    std::vector<int> cells;
    if (ReadDumpVector(in, cells) != DUMP_LOAD_OK || static_cast<int>(cells.size()) != n) {
        return false;
    }
    auto grid = std::make_unique<PointCloud>(points->HasNormal(), false, true);
    grid->InitGrid(width, height);
    grid->ReservePoint(n);
    for (int i = 0; i < n; ++i) {
        const int cell = cells[static_cast<std::size_t>(i)];
        if (cell < 0) {
            grid->InsertPoint(points->GetPointCoord(i));
            continue;
        }
        const int x = cell % width, y = cell / width;
        if (cell >= cellCount || grid->IsGridValid(x, y)) return false;
        grid->SetGridCoord(x, y, points->GetPointCoord(i));
    }
    if (points->HasNormal()) {
        for (int i = 0; i < n; ++i) grid->SetPointNormal(i, points->GetPointNormal(i));
    }
    cloud = std::move(grid);
    return true;
}

void FuseState::Write(DumpBase&, std::ofstream& out, Arg fuse) {
    if (fuse == nullptr || !fuse->HasGrid()) {
        out << -1 << '\n';
        return;
    }
    // An unopened dump file stays silent: dumping never reports anything.
    if (out) fuse->DumpInfo(out);
}

bool FuseState::Read(DumpBase&, std::ifstream& in, Member& fuse) {
    in >> std::ws;
    if (in.peek() == '-') {
        int marker = 0;
        return DumpBase::ReadInt(in, marker) && marker == -1;
    }
    auto loaded = std::make_unique<FusePointCloud>();
    if (loaded->LoadInfo(in) != 0) return false;
    fuse = std::move(loaded);
    return true;
}

}  // namespace dumpfield
}  // namespace ZOL
