// Point-cloud file dispatch: the extension after the last "." picks the reader or
// writer. The file is read once here; the format readers parse the bytes.
#include <zol/io/Parser.h>

#include <cctype>
#include <new>

#include <zol/core/IGridPointCloud.h>
#include <zol/core/IPointCloud.h>
#include <zol/core/PointCloud.h>
#include <zol/io/PointFormatInternal.h>
#include <zol/io/TextScanInternal.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {
using namespace pointio;

// The lower-cased text after the last "."; false when the name has no ".".
bool LowerExtension(const std::string& fileName, std::string& extension) {
    const std::size_t dot = fileName.rfind('.');
    if (dot == std::string::npos) return false;
    extension = fileName.substr(dot + 1);
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return true;
}

PointCloud* ReadBytes(const std::string& extension, const std::string& bytes) {
    if (extension == "asc" || extension == "xyz" || extension == "xyzn")
        return ImportPointCloudByASC(bytes, false);
    if (extension == "casc" || extension == "xyzrgb") return ImportPointCloudByASC(bytes, true);
    if (extension == "obj") return ImportPointCloudByOBJ(bytes);
    if (extension == "ply") return ImportPointCloudByPLY(bytes);
    if (extension == "zpc") return ImportPointCloudByZPC(bytes);
    if (extension == "zbp") return ImportPointCloudByZBP(bytes);
    if (extension == "zbg") return ImportPointCloudByZBG(bytes);
    return nullptr;
}

bool IsReadable(const std::string& extension) {
    static const char* const kExtensions[] = {"asc", "xyz", "xyzn", "casc", "xyzrgb",
                                              "obj", "ply", "zpc",  "zbp",  "zbg"};
    for (const char* e : kExtensions) {
        if (extension == e) return true;
    }
    return false;
}
}  // namespace

PointCloud* Parser::ImportPointCloud(std::string fileName) {
    std::string extension;
    if (!LowerExtension(fileName, extension)) {
        LogLine("Parser::ImportPointCloud: invalid fileName: ", fileName);
        return nullptr;
    }
    if (!IsReadable(extension)) {
        LogLine("Parser::ImportPointCloud: non support format: ", fileName);
        return nullptr;
    }
    try {
        FileContent content;
        if (!content.Read(fileName)) {
            LogLine("Parser::ImportPointCloud: can not open file: ", fileName);
            return nullptr;
        }
        return ReadBytes(extension, std::string(content.View()));
    } catch (const std::bad_alloc&) {
        LogLine("Parser::ImportPointCloud: out of memory: ", fileName);
        return nullptr;
    }
}

int Parser::ExportPointCloud(std::string fileName, const IPointCloud* pointCloud) {
    if (pointCloud == nullptr)
        return LogFailure(RESULT_INVALID_INPUT, "Parser::ExportPointCloud: pointCloud is NULL");
    std::string extension;
    if (!LowerExtension(fileName, extension)) {
        LogLine("Parser::ExportPointCloud: invalid fileName: ", fileName);
        return RESULT_INVALID_INPUT;
    }
    const PointView view(*pointCloud);
    if (extension == "asc" || extension == "xyz" || extension == "xyzn")
        return ExportPointCloudByASC(fileName, view, false);
    if (extension == "casc" || extension == "xyzrgb")
        return ExportPointCloudByASC(fileName, view, true);
    if (extension == "obj") return ExportPointCloudByOBJ(fileName, view);
    if (extension == "ply") return ExportPointCloudByPLY(fileName, view);
    if (extension == "zpc") return ExportPointCloudByZPC(fileName, view);
    if (extension == "zbp") return ExportPointCloudByZBP(fileName, view);
    return LogFailure(RESULT_FAIL, "Parser::ExportPointCloud: not support format");
}

int Parser::ExportGridPointCloud(std::string fileName, const IGridPointCloud* gridPointCloud) {
    if (gridPointCloud == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "Parser::ExportGridPointCloud: gridPointCloud is NULL");
    }
    if (gridPointCloud->GetWidth() < 1 || gridPointCloud->GetHeight() < 1) {
        LogLine("Parser::ExportGridPointCloud: invalid grid size ", gridPointCloud->GetWidth(),
                " x ", gridPointCloud->GetHeight());
        return RESULT_INVALID_INPUT;
    }
    std::string extension;
    if (!LowerExtension(fileName, extension)) {
        LogLine("Parser::ExportGridPointCloud: invalid fileName: ", fileName);
        return RESULT_INVALID_INPUT;
    }
    if (extension != "zbg" && extension != "ply")
        return LogFailure(RESULT_FAIL, "Parser::ExportGridPointCloud: not support format");
    const PointView view(*gridPointCloud);
    if (extension == "zbg") return ExportPointCloudByZBG(fileName, view);
    return ExportPointCloudByPLY(fileName, view);
}

}  // namespace ZOL
