// sizesOnDisk: what the disk says of files that no scan has counted.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/file_system.h"
#include "engine/listed_entries.h"

namespace dunmere {

/// The sizes, in bytes, of the entries of `folder` that stand at `positions`; 0 for one that is no regular file any
/// more or cannot be asked. Many are asked for on several threads.
std::vector<std::int64_t> sizesOnDisk(OpenFolder& folder, const ListedEntries& entries,
                                      const std::vector<ListedEntries::Position>& positions);

}  // namespace dunmere
