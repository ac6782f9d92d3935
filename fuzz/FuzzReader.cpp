// libFuzzer entry of one reader: the build names it in ZOL_FUZZ_READER. Any input may
// be refused, but none may crash, trip a sanitizer or yield an unsound mesh or cloud.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <zol/runtime/LogSystem.h>

#include "fuzz/FuzzReaders.h"

namespace {
const zolfuzz::Reader* gReader = nullptr;
}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    gReader = zolfuzz::FindReader(ZOL_FUZZ_READER);
    if (gReader == nullptr) {
        std::fprintf(stderr, "no reader named %s\n", ZOL_FUZZ_READER);
        std::abort();
    }
    // Refused inputs log one line each; at fuzzing rates the log must cost nothing.
    ZOL::LogSystem::SetLogFileName("/dev/null");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // libFuzzer hands over an exactly sized heap copy, so any overread is caught.
    const zolfuzz::Outcome outcome =
        gReader->run(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!outcome.sound) {
        std::fprintf(stderr, "%s built an unsound result\n", gReader->name);
        std::abort();
    }
    return 0;
}
