// Numeric constants and status codes shared by every operation of the library.
#pragma once

#include <zol/runtime/Export.h>

namespace ZOL {

/// Tolerance for zero-length, zero-weight and degeneracy tests.
ZOL_API extern const double REAL_TOL;
/// Initial value of running minima; marks a distance not yet found.
ZOL_API extern const double REAL_LARGE;
/// The double nearest pi.
ZOL_API extern const double ZOL_PI;
/// Despite the name: one degree in radians (multiply degrees by it).
ZOL_API extern const double ONE_RADIAN;
ZOL_API extern const short SHORT_LARGE;
ZOL_API extern const unsigned short USHORT_LARGE;
/// Marker for a missing index.
ZOL_API extern const int INT_LARGE;
/// Marker for a missing index.
ZOL_API extern const unsigned int UINT_LARGE;

/// Status codes returned by every operation. Callers compare against the numbers.
enum ResultCode : int {
    RESULT_OK = 0,              ///< Success.
    RESULT_FAIL = -1,           ///< A step found its data unusable.
    RESULT_INVALID_INPUT = -2,  ///< An argument check failed before any work.
    RESULT_STEP_FAIL = -3,      ///< A nested step or working object failed.
    RESULT_NOT_READY = -5,      ///< A search structure is missing or failed to build.
    RESULT_NOT_AVAILABLE = -8   ///< Not provided by this library.
};

}  // namespace ZOL
