// DigitalRelief: the API frame of height-field compression, which this library does not
// provide.
#include <zol/mesh/DigitalRelief.h>

#include <zol/dump/DumpCurveRecords.h>
#include <zol/dump/DumpHookInternal.h>
#include <zol/runtime/ApiProgress.h>
#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>
#include <zol/runtime/NotAvailableInternal.h>

namespace ZOL {

int DigitalRelief::CompressHeightField(const std::vector<double>& heights,
                                       int width,
                                       int height,
                                       double compressRatio,
                                       std::vector<double>* compressedHeights) {
    SetProgress(0.0);
    DumpCall<DumpDigitalReliefCompressHeightField>(heights, width, height,
                                                   compressRatio);  // dump hook
    if (compressedHeights == nullptr) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "DigitalRelief::CompressHeightField: compressedHeights == NULL");
    }
    if (width < 2 || height < 2 ||
        heights.size() != static_cast<size_t>(width) * static_cast<size_t>(height)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "DigitalRelief::CompressHeightField: width < 2 || height < 2 || "
                          "heights.size() != width * height");
    }
    if (!(compressRatio > 0.0 && compressRatio <= 1.0)) {
        return LogFailure(RESULT_INVALID_INPUT,
                          "DigitalRelief::CompressHeightField: compressRatio out of (0, 1]");
    }
    return NotAvailable(Unavailable::DigitalRelief_CompressHeightField);
}

}  // namespace ZOL
