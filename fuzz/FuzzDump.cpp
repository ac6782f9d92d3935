// libFuzzer entry of the dump-file loader. A dump file arrives from a customer's machine
// and is loaded by `zol replay` or a host: whatever its bytes, loading must end in a
// status, never in a crash, a sanitizer report or an allocation the file cannot back.
// The first number of the file picks the record, as replay does.
#include <unistd.h>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include <zol/core/PointCloud.h>
#include <zol/core/TriMesh.h>
#include <zol/dump/DumpBase.h>
#include <zol/dump/DumpRecordTable.h>
#include <zol/runtime/LogSystem.h>

#include "fuzz/FuzzReaders.h"

namespace {
std::string gPath;
}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // The loader reads a file by name; a file in memory-backed /dev/shm costs little.
    gPath = "/dev/shm/zol-fuzz-" + std::to_string(getpid()) + ".dump";
    ZOL::LogSystem::SetLogFileName("/dev/null");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    std::istringstream head(bytes);
    int apiName = 0;
    if (!ZOL::DumpBase::ReadInt(head, apiName)) return 0;
    std::unique_ptr<ZOL::DumpBase> record(ZOL::CreateDumpRecord(apiName, gPath));
    if (!record) return 0;
    {
        std::ofstream out(gPath, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    record->LoadDumpFile(gPath);
    // What was loaded must be sound, whatever the load's status: every corner names a
    // vertex and every attribute can be read. Coordinates may be anything (a recorded call
    // may well have had NaN input), so they are read, not judged.
    for (int i = 0; i < 4; ++i) {
        if (ZOL::TriMesh* mesh = record->GetTriMesh(i)) {
            if (!zolfuzz::CheckMesh(new ZOL::TriMesh(*mesh)).sound) {
                std::fprintf(stderr, "dump record %d loaded an unsound mesh\n", apiName);
                std::abort();
            }
        }
        if (ZOL::PointCloud* cloud = record->GetPointCloud(i)) {
            volatile double sink = 0;
            for (int p = 0; p < cloud->GetPointCount(); ++p) {
                sink = sink + cloud->GetPointCoord(p).x;
                if (cloud->HasNormal()) sink = sink + cloud->GetPointNormal(p).y;
            }
        }
    }
    return 0;
}
