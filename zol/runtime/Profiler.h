// Monotonic time in seconds for timing lines.
#pragma once

#include <zol/runtime/Export.h>

namespace ZOL {

class ZOL_API Profiler {
public:
    /// \return 0.0 exactly on the first call in the process; afterwards the seconds
    ///         elapsed since that first call (steady clock).
    static double GetTime();
};

}  // namespace ZOL
