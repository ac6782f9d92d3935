// The answer of every operation that this library declares but does not provide.
#include <zol/runtime/NotAvailableInternal.h>

#include <zol/runtime/Constants.h>
#include <zol/runtime/LogInternal.h>

namespace ZOL {

namespace {

constexpr const char* kNames[] = {
#define ZOL_NOT_AVAILABLE_NAME(Class, Member) #Class "::" #Member,
    ZOL_NOT_AVAILABLE_TABLE(ZOL_NOT_AVAILABLE_NAME)
#undef ZOL_NOT_AVAILABLE_NAME
};
static_assert(sizeof(kNames) / sizeof(kNames[0]) == static_cast<int>(Unavailable::Count),
              "one name per operation");

}  // namespace

const char* UnavailableName(Unavailable operation) {
    const int i = static_cast<int>(operation);
    return i >= 0 && i < static_cast<int>(Unavailable::Count) ? kNames[i] : "";
}

int NotAvailable(Unavailable operation) {
    return LogFailure(RESULT_NOT_AVAILABLE, UnavailableName(operation),
                      ": not available in this library");
}

}  // namespace ZOL
