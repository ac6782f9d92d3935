// The process-wide thread-count setting that sizes every multi-threaded step.
#pragma once

#include <zol/runtime/Export.h>

namespace ZOL {

/// Stores \p count as given; values below 1 mean "use the processor count".
ZOL_API void SetThreadCount(int count);
/// \return the stored count if it is at least 1, else the number of logical processors
///         (at least 1). Read afresh at every call.
ZOL_API int GetThreadCount();

}  // namespace ZOL
