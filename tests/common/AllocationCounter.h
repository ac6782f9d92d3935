// Peak heap use of a stretch of code: the test binary replaces the global operator new
// and delete, and counts the blocks allocated while an AllocationScope is open.
#pragma once

#include <cstddef>

namespace zoltest {

/// Counts, from its construction, the bytes held by blocks that operator new handed out
/// while it is open (on any thread). Scopes do not nest.
class AllocationScope {
public:
    AllocationScope();
    ~AllocationScope();
    AllocationScope(const AllocationScope&) = delete;
    AllocationScope& operator=(const AllocationScope&) = delete;

    /// Most bytes held at once by blocks allocated inside the scope.
    std::size_t Peak() const;
};

}  // namespace zoltest
