// Helpers shared by the point-cloud formats: building a cloud from decoded arrays, the
// flat view writers read, and the per-point fields of the text writers.
#include <zol/io/PointFormatInternal.h>

#include <algorithm>
#include <cmath>

#include <zol/runtime/LogInternal.h>

namespace ZOL {
namespace pointio {

namespace {
Vector3 FiniteOrZero(const Vector3& v) {
    return Vector3(std::isfinite(v.x) ? v.x : 0.0, std::isfinite(v.y) ? v.y : 0.0,
                   std::isfinite(v.z) ? v.z : 0.0);
}

// Colours are fractions; our own formats store them as written, so a damaged file can
// hold any double there.
Vector3 ValidColor(const Vector3& c) {
    Vector3 v = FiniteOrZero(c);
    for (int k = 0; k < 3; ++k) v[k] = std::clamp(v[k], 0.0, 1.0);
    return v;
}

bool IsFinite(const Vector3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

PointCloud* BuildGrid(PointData& data, const char* who) {
    const std::int64_t cellCount = std::int64_t(data.width) * data.height;
    PointCloud* cloud = new PointCloud(data.hasNormal, data.hasColor, true);
    cloud->InitGrid(data.width, data.height);
    cloud->ReservePoint(static_cast<int>(data.coords.size()));
    for (std::size_t i = 0; i < data.coords.size(); ++i) {
        if (!IsFinite(data.coords[i])) continue;
        const int cell = data.cells[i];
        if (cell < 0 || cell >= cellCount) {
            LogLine(who, ": grid cell out of range: ", cell);
            delete cloud;
            return nullptr;
        }
        const int x = cell % data.width;
        const int y = cell / data.width;
        if (cloud->IsGridValid(x, y)) {
            LogLine(who, ": grid cell used twice: ", cell);
            delete cloud;
            return nullptr;
        }
        cloud->SetGridCoord(x, y, data.coords[i]);
        const int id = cloud->GetPointCount() - 1;
        if (data.hasNormal) cloud->SetPointNormal(id, FiniteOrZero(data.normals[i]));
        if (data.hasColor) cloud->SetPointColor(id, ValidColor(data.colors[i]));
    }
    return cloud;
}
}  // namespace

PointCloud* BuildPointCloud(PointData& data, const char* who) {
    std::size_t dropped = 0;
    for (const Vector3& c : data.coords) dropped += IsFinite(c) ? 0 : 1;
    PointCloud* cloud = nullptr;
    if (data.width > 0) {
        cloud = BuildGrid(data, who);
        if (cloud == nullptr) return nullptr;
    } else {
        cloud = new PointCloud(data.hasNormal, data.hasColor, false);
        cloud->ReservePoint(static_cast<int>(data.coords.size() - dropped));
        for (std::size_t i = 0; i < data.coords.size(); ++i) {
            if (!IsFinite(data.coords[i])) continue;
            const int id = data.hasNormal
                               ? cloud->InsertPoint(data.coords[i], FiniteOrZero(data.normals[i]))
                               : cloud->InsertPoint(data.coords[i]);
            if (data.hasColor) cloud->SetPointColor(id, ValidColor(data.colors[i]));
        }
    }
    if (dropped > 0) LogLine(who, ": dropped points with non-finite coordinates: ", dropped);
    return cloud;
}

PointView::PointView(const IPointCloud& cloud) {
    IPointCloud& source = const_cast<IPointCloud&>(cloud);  // getters are not const
    count = source.GetPointCount();
    const PointCloud* own = dynamic_cast<const PointCloud*>(&cloud);
    if (own != nullptr) {
        coords = own->GetPointCoordData();
        normals = own->HasNormal() ? own->GetPointNormalData() : nullptr;
    } else {
        mCoords.resize(count);
        for (int i = 0; i < count; ++i) mCoords[i] = source.GetPointCoord(i);
        coords = mCoords.data();
        if (source.HasNormal()) {
            mNormals.resize(count);
            for (int i = 0; i < count; ++i) mNormals[i] = source.GetPointNormal(i);
            normals = mNormals.data();
        }
    }
    if (own != nullptr && own->HasColor()) {
        mColors.resize(count);
        for (int i = 0; i < count; ++i) mColors[i] = own->GetPointColor(i);
        colors = mColors.data();
    }
}

PointView::PointView(const IGridPointCloud& grid) {
    IGridPointCloud& source = const_cast<IGridPointCloud&>(grid);
    width = source.GetWidth();
    height = source.GetHeight();
    const bool hasNormal = source.HasGridNormal();
    const PointCloud* own = dynamic_cast<const PointCloud*>(&grid);
    const bool hasColor = own != nullptr && own->HasColor();
    const int valid = source.GetValidGridCount();
    if (valid > 0) {
        mCoords.reserve(valid);
        mCells.reserve(valid);
    }
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (!source.IsGridValid(x, y)) continue;
            mCells.push_back(y * width + x);
            mCoords.push_back(source.GetGridCoord(x, y));
            if (hasNormal) mNormals.push_back(source.GetGridNormal(x, y));
            if (hasColor) mColors.push_back(own->GetPointColor(own->GetGridPointId(x, y)));
        }
    }
    count = static_cast<int>(mCoords.size());
    coords = mCoords.data();
    cells = mCells.data();
    if (hasNormal) normals = mNormals.data();
    if (hasColor) colors = mColors.data();
}

void PutPointFields(
    FileWriter& out, const PointView& view, int i, bool withNormal, ColorText colorText) {
    out.PutExacts(view.coords[i]);
    if (withNormal && view.normals != nullptr) {
        out.Put(' ');
        out.PutExacts(view.normals[i]);
    }
    if (colorText == ColorText::Fraction && view.colors != nullptr) {
        out.Put(' ');
        out.PutExacts(view.colors[i]);
    } else if (colorText == ColorText::Byte) {
        const Vector3 c = view.colors != nullptr ? view.colors[i] : Vector3();
        for (int k = 0; k < 3; ++k) {
            out.Put(' ');
            out.PutInt(ColorToByte(c[k]));
        }
    }
}

int ColorToByte(double c) {
    if (!(c > 0.0)) return 0;
    if (c >= 1.0) return 255;
    return static_cast<int>(c * 255.0 + 0.5);
}

}  // namespace pointio
}  // namespace ZOL
