// NameKeys: sort keys of a folder's names, made once.
#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <span>
#include <string_view>
#include <vector>

#include "engine/file_system.h"
#include "engine/listing/listed_entries.h"

namespace dunmere {

/// Keeps the keys that were asked for, which are most of the work of ordering a column. One thread at a time; for one
/// and the same FileSystem.
class NameKeys {
 public:
  /// Forgets all keys: from now on `count` names are others than before.
  void begin(std::size_t count);

  /// Makes the keys of these names that are not known, many on several threads.
  void make(FileSystem& fileSystem, const ListedEntries& entries, std::span<const RowPosition> positions);

  /// The sort key of the name at `position`, counted from 0; made if it is not known. Valid until the next begin().
  std::string_view key(FileSystem& fileSystem, std::size_t position, std::string_view name);

 private:
  void keep(std::size_t position, std::string_view key);

  std::unique_ptr<std::pmr::monotonic_buffer_resource> bytes_;  // of the keys, which stay where they are
  std::vector<std::string_view> keys_;                          // without data: not made yet
};

}  // namespace dunmere
