// Seeds of the dump-loader fuzz target: real dump files written by recorded calls.
#pragma once

#include <string>

namespace zolfuzz {

/// Writes, into \p dir, the dump files of a few recorded calls that between them hold
/// every kind of field: meshes, clouds with normals, index, real and point lists, numbers.
void WriteDumpSeeds(const std::string& dir);

}  // namespace zolfuzz
