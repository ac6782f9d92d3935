// The kinds of field a dump record holds. Each kind knows the API argument type it records,
// the member type it loads into, and writes and reads one text layout, so that a record's
// writing and reading are both driven by the one list of kinds it declares.
#pragma once

#include <cstddef>
#include <fstream>
#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <type_traits>
#include <vector>

#include <zol/core/Color4.h>
#include <zol/core/ImageColorId.h>
#include <zol/core/Matrix4x4.h>
#include <zol/core/Plane3.h>
#include <zol/core/PointOnEdge.h>
#include <zol/core/PointOnFace.h>
#include <zol/core/Vector2.h>
#include <zol/core/Vector3.h>
#include <zol/dump/DumpBase.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// Text of one value inside a line: its tokens separated by one blank. kTokens is the
/// token count, which bounds how many values the rest of a file can hold.
template <typename T>
struct DumpText;

template <>
struct DumpText<int> {
    static constexpr int kTokens = 1;
    static void Write(std::ostream& out, int v) { out << v; }
    static bool Read(std::istream& in, int& v) { return DumpBase::ReadInt(in, v); }
};

template <>
struct DumpText<double> {
    static constexpr int kTokens = 1;
    static void Write(std::ostream& out, double v) { out << v; }
    static bool Read(std::istream& in, double& v) { return DumpBase::ReadReal(in, v); }
};

/// 0 or 1; any other integer reads as true.
template <>
struct DumpText<bool> {
    static constexpr int kTokens = 1;
    static void Write(std::ostream& out, bool v) { out << (v ? 1 : 0); }
    static bool Read(std::istream& in, bool& v) {
        int i = 0;
        if (!DumpBase::ReadInt(in, i)) return false;
        v = i != 0;
        return true;
    }
};

template <>
struct DumpText<Vector3> {
    static constexpr int kTokens = 3;
    static void Write(std::ostream& out, const Vector3& v) {
        out << v.x << ' ' << v.y << ' ' << v.z;
    }
    static bool Read(std::istream& in, Vector3& v) {
        return DumpBase::ReadReal(in, v.x) && DumpBase::ReadReal(in, v.y) &&
               DumpBase::ReadReal(in, v.z);
    }
};

template <>
struct DumpText<Vector2> {
    static constexpr int kTokens = 2;
    static void Write(std::ostream& out, const Vector2& v) { out << v.x << ' ' << v.y; }
    static bool Read(std::istream& in, Vector2& v) {
        return DumpBase::ReadReal(in, v.x) && DumpBase::ReadReal(in, v.y);
    }
};

/// A colour as its packed integer (Color4::Color4ToInt).
template <>
struct DumpText<Color4> {
    static constexpr int kTokens = 1;
    static void Write(std::ostream& out, const Color4& c) { out << Color4::Color4ToInt(c); }
    static bool Read(std::istream& in, Color4& c) {
        int packed = 0;
        if (!DumpBase::ReadInt(in, packed)) return false;
        c = Color4::IntToColor4(packed);
        return true;
    }
};

/// Triangle index, then the three barycentric weights.
template <>
struct DumpText<PointOnFace> {
    static constexpr int kTokens = 4;
    static void Write(std::ostream& out, const PointOnFace& p) {
        out << p.mTriangleId << ' ';
        DumpText<Vector3>::Write(out, p.mBarycentric);
    }
    static bool Read(std::istream& in, PointOnFace& p) {
        return DumpBase::ReadInt(in, p.mTriangleId) && DumpText<Vector3>::Read(in, p.mBarycentric);
    }
};

/// The two vertex indices, then the weight.
template <>
struct DumpText<PointOnEdge> {
    static constexpr int kTokens = 3;
    static void Write(std::ostream& out, const PointOnEdge& p) {
        out << p.mVertexId0 << ' ' << p.mVertexId1 << ' ' << p.mWeight;
    }
    static bool Read(std::istream& in, PointOnEdge& p) {
        return DumpBase::ReadInt(in, p.mVertexId0) && DumpBase::ReadInt(in, p.mVertexId1) &&
               DumpBase::ReadReal(in, p.mWeight);
    }
};

/// Image index, then the local x and y.
template <>
struct DumpText<ImageColorId> {
    static constexpr int kTokens = 3;
    static void Write(std::ostream& out, const ImageColorId& id) {
        out << id.GetImageIndex() << ' ' << id.GetLocalX() << ' ' << id.GetLocalY();
    }
    static bool Read(std::istream& in, ImageColorId& id) {
        int image = 0, x = 0, y = 0;
        if (!DumpBase::ReadInt(in, image) || !DumpBase::ReadInt(in, x) || !DumpBase::ReadInt(in, y))
            return false;
        id.Set(image, x, y);
        return true;
    }
};

/// The coefficients a, b, c, d.
template <>
struct DumpText<Plane3> {
    static constexpr int kTokens = 4;
    static void Write(std::ostream& out, const Plane3& plane) {
        double p[4];
        plane.GetParameters(p);
        out << p[0] << ' ' << p[1] << ' ' << p[2] << ' ' << p[3];
    }
    static bool Read(std::istream& in, Plane3& plane) {
        double p[4];
        for (double& v : p)
            if (!DumpBase::ReadReal(in, v)) return false;
        plane = Plane3(p);
        return true;
    }
};

/// The 16 entries row by row; an empty matrix writes zeros.
template <>
struct DumpText<Matrix4x4> {
    static constexpr int kTokens = 16;
    static void Write(std::ostream& out, const Matrix4x4& m) {
        for (int i = 0; i < 16; ++i) out << (i ? " " : "") << (m.IsEmpty() ? 0.0 : m.GetValue(i));
    }
    static bool Read(std::istream& in, Matrix4x4& m) {
        m.Init(0.0);
        for (int i = 0; i < 16; ++i) {
            double v = 0.0;
            if (!DumpBase::ReadReal(in, v)) return false;
            m.SetValue(i, v);
        }
        return true;
    }
};

/// Writes the count on a line, then every element followed by one blank, then a newline.
template <typename T>
void WriteDumpVector(std::ostream& out, const std::vector<T>& values) {
    out << values.size() << '\n';
    for (const T& v : values) {
        DumpText<T>::Write(out, v);
        out << ' ';
    }
    out << '\n';
}

/// Reads what WriteDumpVector wrote; the count is checked against the rest of the file
/// before anything is reserved.
template <typename T>
DumpLoad ReadDumpVector(std::istream& in, std::vector<T>& values) {
    int count = 0;
    if (!DumpBase::ReadCount(in, DumpText<T>::kTokens, count)) return DUMP_LOAD_DAMAGED;
    values.assign(static_cast<std::size_t>(count), T());
    for (T& v : values)
        if (!DumpText<T>::Read(in, v)) return DUMP_LOAD_DAMAGED;
    return DUMP_LOAD_OK;
}

/// Field kinds. Each has: Arg, the type the API passes; Member, what the record loads;
/// kInline, whether the value shares a line with neighbouring inline values; Write and
/// Read of one layout.
namespace dumpfield {

/// A mesh (DumpBase::DumpTriMesh); null is the line "-1" and loads back as null.
struct ZOL_API Mesh {
    using Arg = const ITriMesh*;
    using Member = std::unique_ptr<TriMesh>;
    static constexpr bool kInline = false;
    static void Write(DumpBase& base, std::ofstream& out, Arg mesh) { base.DumpTriMesh(mesh, out); }
    static bool Read(DumpBase& base, std::ifstream& in, Member& mesh) {
        auto loaded = std::make_unique<TriMesh>();
        const DumpLoad result = base.LoadTriMesh(loaded.get(), in);
        if (result == DUMP_LOAD_OK) mesh = std::move(loaded);
        return result != DUMP_LOAD_DAMAGED;
    }
};

/// A point cloud with its normals when it has them (DumpBase::DumpPointCloud).
struct ZOL_API Cloud {
    using Arg = const IPointCloud*;
    using Member = std::unique_ptr<PointCloud>;
    static constexpr bool kInline = false;
    static void Write(DumpBase& base, std::ofstream& out, Arg cloud) {
        base.DumpPointCloud(cloud, cloud != nullptr && cloud->HasNormal(), out);
    }
    static bool Read(DumpBase& base, std::ifstream& in, Member& cloud) {
        auto loaded = std::make_unique<PointCloud>();
        const DumpLoad result = base.LoadPointCloud(loaded.get(), in);
        if (result == DUMP_LOAD_OK) cloud = std::move(loaded);
        return result != DUMP_LOAD_DAMAGED;
    }
};

/// A point list with its normals (DumpBase::DumpPointList); loads as a cloud.
struct ZOL_API PointList {
    using Arg = const IPointList*;
    using Member = std::unique_ptr<PointCloud>;
    static constexpr bool kInline = false;
    static void Write(DumpBase& base, std::ofstream& out, Arg list) {
        base.DumpPointList(list, true, out);
    }
    static bool Read(DumpBase& base, std::ifstream& in, Member& cloud) {
        auto loaded = std::make_unique<PointCloud>(true, false, false);
        const DumpLoad result = base.LoadPointList(loaded.get(), true, in);
        if (result == DUMP_LOAD_OK) cloud = std::move(loaded);
        return result != DUMP_LOAD_DAMAGED;
    }
};

/// A scalar or small value written by DumpText on the current line.
template <typename T>
struct ZOL_API Value {
    using Arg = T;
    using Member = T;
    static constexpr bool kInline = true;
    static void Write(DumpBase&, std::ofstream& out, const T& v) { DumpText<T>::Write(out, v); }
    static bool Read(DumpBase&, std::ifstream& in, T& v) { return DumpText<T>::Read(in, v); }
};

/// A vector, through the base helper where one exists for the element type.
template <typename T>
struct ZOL_API Vec {
    using Arg = const std::vector<T>&;
    using Member = std::vector<T>;
    static constexpr bool kInline = false;
    static void Write(DumpBase& base, std::ofstream& out, Arg v) {
        if constexpr (std::is_same_v<T, int>) {
            base.DumpStlIntVector(v, out);
        } else if constexpr (std::is_same_v<T, double>) {
            base.DumpStlRealVector(v, out);
        } else if constexpr (std::is_same_v<T, Vector3>) {
            base.DumpStlVector3Vector(v, out);
        } else if constexpr (std::is_same_v<T, Color4>) {
            base.DumpStlColor4Vector(v, out);
        } else {
            WriteDumpVector(out, v);
        }
    }
    static bool Read(DumpBase& base, std::ifstream& in, Member& v) {
        if constexpr (std::is_same_v<T, int>) {
            return base.LoadStlIntVector(v, in) == DUMP_LOAD_OK;
        } else if constexpr (std::is_same_v<T, double>) {
            return base.LoadStlRealVector(v, in) == DUMP_LOAD_OK;
        } else if constexpr (std::is_same_v<T, Vector3>) {
            return base.LoadStlVector3Vector(v, in) == DUMP_LOAD_OK;
        } else if constexpr (std::is_same_v<T, Color4>) {
            return base.LoadStlColor4Vector(v, in) == DUMP_LOAD_OK;
        } else {
            return ReadDumpVector(in, v) == DUMP_LOAD_OK;
        }
    }
};

/// An optional vector passed by pointer: null is written as the count line 0 alone, an
/// empty vector as the count line 0 and its empty element line, so that a call given an
/// empty selection (which many operations refuse) replays as such. Loads as an optional.
template <typename T>
struct ZOL_API OptVec {
    using Arg = const std::vector<T>*;
    using Member = std::optional<std::vector<T>>;
    static constexpr bool kInline = false;
    static void Write(DumpBase& base, std::ofstream& out, Arg v) {
        if (v == nullptr) {
            out << 0 << '\n';
        } else {
            Vec<T>::Write(base, out, *v);
        }
    }
    static bool Read(DumpBase& base, std::ifstream& in, Member& v) {
        std::vector<T> values;
        if (!Vec<T>::Read(base, in, values)) return false;
        if (values.empty() && !DumpBase::SkipEmptyElementLine(in)) {
            v.reset();
        } else {
            v = std::move(values);
        }
        return true;
    }
};

/// An optional value passed by pointer: the count line 0 for null, else 1 and the value
/// on the next line (the layout of a vector of one element).
template <typename T>
struct ZOL_API OptValue {
    using Arg = const T*;
    using Member = std::optional<T>;
    static constexpr bool kInline = false;
    static void Write(DumpBase&, std::ofstream& out, Arg v) {
        if (v == nullptr) {
            out << 0 << '\n';
        } else {
            WriteDumpVector(out, std::vector<T>(1, *v));
        }
    }
    static bool Read(DumpBase&, std::ifstream& in, Member& v) {
        std::vector<T> values;
        if (ReadDumpVector(in, values) != DUMP_LOAD_OK || values.size() > 1) return false;
        if (values.empty()) {
            v.reset();
        } else {
            v = values[0];
        }
        return true;
    }
};

/// Whether the call gave an optional output (any pointer), as 0 or 1 on the current line:
/// the replay then passes an output of its own or null, as the call did.
struct ZOL_API Given {
    using Arg = const void*;
    using Member = bool;
    static constexpr bool kInline = true;
    static void Write(DumpBase&, std::ofstream& out, Arg p) { out << (p != nullptr ? 1 : 0); }
    static bool Read(DumpBase&, std::ifstream& in, Member& given) {
        return DumpText<bool>::Read(in, given);
    }
};

/// A vector of vectors: the outer count on a line, then each inner vector as Vec.
template <typename T>
struct ZOL_API Nested {
    using Arg = const std::vector<std::vector<T>>&;
    using Member = std::vector<std::vector<T>>;
    static constexpr bool kInline = false;
    static void Write(DumpBase& base, std::ofstream& out, Arg v) {
        out << v.size() << '\n';
        for (const std::vector<T>& inner : v) Vec<T>::Write(base, out, inner);
    }
    static bool Read(DumpBase& base, std::ifstream& in, Member& v) {
        int count = 0;
        if (!DumpBase::ReadCount(in, 1, count)) return false;
        v.assign(static_cast<std::size_t>(count), std::vector<T>());
        for (std::vector<T>& inner : v)
            if (!Vec<T>::Read(base, in, inner)) return false;
        return true;
    }
};

/// An optional transform: the count 0 for null or empty, else 16 and the entries.
struct ZOL_API OptMatrix {
    using Arg = const Matrix4x4*;
    using Member = Matrix4x4;
    static constexpr bool kInline = false;
    static void Write(DumpBase&, std::ofstream& out, Arg m) {
        if (m == nullptr || m->IsEmpty()) {
            out << 0 << '\n';
            return;
        }
        out << 16 << '\n';
        DumpText<Matrix4x4>::Write(out, *m);
        out << '\n';
    }
    static bool Read(DumpBase&, std::ifstream& in, Member& m) {
        int count = 0;
        if (!DumpBase::ReadCount(in, 1, count) || (count != 0 && count != 16)) return false;
        m.Free();
        return count == 0 || DumpText<Matrix4x4>::Read(in, m);
    }
};

/// Several items of one kind: the count on a line, then each item (null allowed).
/// \p Interface is the item type the API's vector points to.
template <typename Item, typename Interface>
struct ZOL_API ListOf {
    using Arg = const std::vector<Interface*>&;
    using Member = std::vector<typename Item::Member>;
    static constexpr bool kInline = false;
    static void Write(DumpBase& base, std::ofstream& out, Arg items) {
        out << items.size() << '\n';
        for (const Interface* item : items) Item::Write(base, out, item);
    }
    static bool Read(DumpBase& base, std::ifstream& in, Member& items) {
        int count = 0;
        if (!DumpBase::ReadCount(in, 1, count)) return false;
        items.clear();
        items.resize(static_cast<std::size_t>(count));
        for (auto& item : items)
            if (!Item::Read(base, in, item)) return false;
        return true;
    }
};

/// Several point clouds, each as Cloud.
using CloudList = ListOf<Cloud, IPointCloud>;
/// Several meshes, each as Mesh.
using MeshList = ListOf<Mesh, ITriMesh>;

}  // namespace dumpfield
}  // namespace ZOL
