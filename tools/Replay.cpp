// `zol replay`: the tool side of dump files. A host that hit a failing call sends the file
// its DumpOnce() produced; this runs the same call here and saves what it produced.
#include "Replay.h"

#include <cstdio>
#include <fstream>
#include <memory>

#include <zol/zol.h>

namespace zoltool {

int RunReplay(const std::string& dumpFile, const std::string& outFile) {
    std::ifstream in(dumpFile, std::ios::binary);
    int apiName = 0;
    if (!in || !ZOL::DumpBase::ReadInt(in, apiName)) {
        std::printf("zol replay: %s is not a dump file\n", dumpFile.c_str());
        return 2;
    }
    in.close();
    std::unique_ptr<ZOL::DumpBase> record(ZOL::CreateDumpRecord(apiName, dumpFile));
    if (!record) {
        std::printf("zol replay: no record answers ApiName %d\n", apiName);
        return 2;
    }
    const int loadStatus = record->LoadDumpFile(dumpFile);
    if (loadStatus != ZOL::RESULT_OK) {
        std::printf("load: %d (damaged or foreign file; the call runs on what was read)\n",
                    loadStatus);
    }
    const int status = record->Run();
    std::printf("ApiName %d: status %d\n", static_cast<int>(record->GetApiName()), status);
    if (outFile.empty()) return status == ZOL::RESULT_OK ? 0 : 1;

    int writeStatus = ZOL::RESULT_INVALID_INPUT;
    if (ZOL::TriMesh* mesh = record->GetTriMesh(0)) {
        writeStatus = ZOL::Parser::ExportTriMesh(outFile, mesh);
        std::printf("mesh: %d vertices, %d triangles -> %s\n", mesh->GetVertexCount(),
                    mesh->GetTriangleCount(), outFile.c_str());
    } else if (ZOL::PointCloud* cloud = record->GetPointCloud(0)) {
        writeStatus = ZOL::Parser::ExportPointCloud(outFile, cloud);
        std::printf("cloud: %d points -> %s\n", cloud->GetPointCount(), outFile.c_str());
    } else {
        std::printf("zol replay: the record holds no mesh or cloud to write\n");
        return 2;
    }
    if (writeStatus != ZOL::RESULT_OK) {
        std::printf("zol replay: writing %s failed: %d\n", outFile.c_str(), writeStatus);
        return 2;
    }
    return status == ZOL::RESULT_OK ? 0 : 1;
}

}  // namespace zoltool
