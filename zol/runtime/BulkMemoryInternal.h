// Large buffers that are filled once, front to back: whole files and the record blocks of
// big meshes. In a virtual machine the first touch of each 4 KiB page costs microseconds,
// as much as parsing the bytes on it, so such buffers ask for the kernel's 2 MiB pages.
#pragma once

#include <cstddef>

namespace ZOL {

/// Buffers from this size on are worth huge pages.
inline constexpr std::size_t kBulkBytes = std::size_t(4) << 20;

/// Advises the kernel to back the whole 2 MiB pages inside [\p data, \p data + \p bytes)
/// with huge pages when they are first touched. Only advice: nothing happens below
/// kBulkBytes, off Linux, or where the kernel declines.
void AdviseHugePages(void* data, std::size_t bytes);

/// Faults the whole pages inside [\p data, \p data + \p bytes) in for writing now, their
/// contents unchanged, so that a later pass over them takes no faults. Workers may each
/// fault a part of one buffer: a virtual machine serves faults on several threads at once
/// far faster than on one. Only advice, like AdviseHugePages.
void PrefaultPages(const void* data, std::size_t bytes);

/// \p bytes of uninitialised memory, mapped directly and advised for huge pages from
/// kBulkBytes on, else from operator new[]. \throw std::bad_alloc when there is none.
char* AllocateBulk(std::size_t bytes);
/// Frees a buffer of AllocateBulk; \p bytes is the size it was allocated with. Null is ignored.
void FreeBulk(char* data, std::size_t bytes);

}  // namespace ZOL
