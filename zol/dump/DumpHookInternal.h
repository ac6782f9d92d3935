// Step 2 of every exported operation: when DumpOnce() armed recording, the operation
// disarms it and writes its arguments through its record. One line at each call site:
//   DumpCall<DumpFillMeshHole>(triMesh, boundarySeedIds, type, vertexFields);  // dump hook
#pragma once

namespace ZOL {

/// Clears the one-shot flag set by DumpOnce(). \return whether it was set.
bool TakeDumpOnce();

/// Writes one dump file of the call through \p Record when recording is armed.
template <typename Record, typename... Args>
void DumpCall(const Args&... args) {
    if (!TakeDumpOnce()) return;
    Record record;
    record.DumpApiInfo(args...);
}

}  // namespace ZOL
