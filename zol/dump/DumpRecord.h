// The common body of every dump record: one list of field kinds drives the file writer
// (DumpApiInfo), the loader (LoadDumpFile) and the inspection of loaded meshes and clouds,
// so that writing and reading a record cannot drift apart.
#pragma once

#include <cstddef>
#include <fstream>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <zol/dump/DumpBase.h>
#include <zol/dump/DumpField.h>
#include <zol/dump/DumpRecordTable.h>
#include <zol/runtime/Export.h>

namespace ZOL {

/// A record whose members are the API inputs described by \p Fields, in parameter order.
/// \p Self is the record class; its value, name and tag come from DumpRecordTraits<Self>.
template <typename Self, typename... Fields>
class ZOL_API DumpRecord : public DumpBase {
public:
    using Traits = DumpRecordTraits<Self>;
    using Members = std::tuple<typename Fields::Member...>;

    ApiName GetApiName() const override { return Traits::kApiName; }

    /// Writes a dump file of the call: the first line, then every argument in order.
    void DumpApiInfo(typename Fields::Arg... args) {
        WriteDumpFile(Traits::kTag, Traits::kApiName, args...);
    }

    int LoadDumpFile(const std::string& fileName) override {
        Reset();
        std::ifstream in;
        const int status = OpenForLoad(fileName, Traits::kName, &Self::AcceptsApiName, in);
        if (status != 0) return status;
        if (!ReadFields(in, std::index_sequence_for<Fields...>{})) {
            Reset();
            return LogLoadDamaged(Traits::kName, fileName);
        }
        return 0;
    }

    TriMesh* GetTriMesh(int index) override {
        std::vector<TriMesh*> meshes;
        for (const auto& mesh : mResultMeshes) meshes.push_back(mesh.get());
        std::apply([&meshes](auto&... m) { (Collect(m, meshes), ...); }, mFields);
        return index >= 0 && index < static_cast<int>(meshes.size()) ? meshes[index] : nullptr;
    }

    PointCloud* GetPointCloud(int index) override {
        std::vector<PointCloud*> clouds;
        for (const auto& cloud : mResultClouds) clouds.push_back(cloud.get());
        std::apply([&clouds](auto&... m) { (Collect(m, clouds), ...); }, mFields);
        return index >= 0 && index < static_cast<int>(clouds.size()) ? clouds[index] : nullptr;
    }

    /// Whether a file whose first line is \p value belongs to this record; a record that
    /// answers several values hides this with its own.
    static bool AcceptsApiName(int value) { return value == Traits::kApiName; }

protected:
    /// Member \p I, in the order of Fields.
    template <std::size_t I>
    auto& Field() {
        return std::get<I>(mFields);
    }
    template <std::size_t I>
    const auto& Field() const {
        return std::get<I>(mFields);
    }
    /// The loaded value of optional member \p I (OptVec, OptValue), or null when the call
    /// gave null.
    template <std::size_t I>
    auto* OptionalField() {
        auto& v = std::get<I>(mFields);
        return v ? &*v : nullptr;
    }

    /// Writes the file under \p tag with the first line \p apiName.
    void WriteDumpFile(const char* tag, int apiName, typename Fields::Arg... args) {
        std::ofstream out;
        OpenDumpFile(tag, apiName, out);
        WriteFields(out, std::index_sequence_for<Fields...>{}, args...);
        CloseDumpFile(out);
    }

    /// Logs the Run line under the record's name. \return \p status.
    int Finish(int status) const { return LogRunResult(Traits::kName, status); }

    /// A new empty mesh that the record owns, for an API output; it comes before the
    /// input meshes in GetTriMesh.
    TriMesh* AddResultMesh() {
        mResultMeshes.push_back(std::make_unique<TriMesh>());
        return mResultMeshes.back().get();
    }
    /// A new empty cloud that the record owns, for an API output.
    PointCloud* AddResultCloud() {
        mResultClouds.push_back(std::make_unique<PointCloud>());
        return mResultClouds.back().get();
    }

    /// Raw pointers of a loaded list, as the API takes them.
    template <typename T>
    static std::vector<T*> Pointers(const std::vector<std::unique_ptr<T>>& owned) {
        std::vector<T*> out;
        for (const auto& p : owned) out.push_back(p.get());
        return out;
    }

private:
    template <std::size_t... I>
    void WriteFields(std::ofstream& out, std::index_sequence<I...>, typename Fields::Arg... args) {
        // Consecutive inline values share a line; a line ends after the last of them.
        [[maybe_unused]] constexpr bool kInline[] = {Fields::kInline..., false};
        (void)out;
        ((Fields::Write(*this, out, args),
          Fields::kInline ? (out << (kInline[I + 1] ? ' ' : '\n'), 0) : 0),
         ...);
    }

    template <std::size_t... I>
    bool ReadFields(std::ifstream& in, std::index_sequence<I...>) {
        (void)in;
        return (Fields::Read(*this, in, std::get<I>(mFields)) && ...);
    }

    void Reset() {
        mFields = Members();
        mResultMeshes.clear();
        mResultClouds.clear();
    }

    template <typename M, typename T>
    static void Collect(const M& member, std::vector<T*>& out) {
        if constexpr (std::is_same_v<M, std::unique_ptr<T>>) {
            if (member) out.push_back(member.get());
        } else if constexpr (std::is_same_v<M, std::vector<std::unique_ptr<T>>>) {
            for (const auto& p : member)
                if (p) out.push_back(p.get());
        }
    }

    Members mFields;
    std::vector<std::unique_ptr<TriMesh>> mResultMeshes;
    std::vector<std::unique_ptr<PointCloud>> mResultClouds;
};

}  // namespace ZOL

/// Declares the record class Dump##Name with the field kinds that follow, in the API's
/// parameter order; its Run is written by hand next to the other records of its family.
#define ZOL_DUMP_RECORD(Name, ...)                                                     \
    class ZOL_API Dump##Name final : public ZOL::DumpRecord<Dump##Name, __VA_ARGS__> { \
    public:                                                                            \
        int Run() override;                                                            \
    }
