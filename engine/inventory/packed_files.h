// Packed files: how counted files are kept in memory, from the directory read to the inventory.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace dunmere {

/// One packed record is a variable-length number (the length of the name), a second one (the size) and the bytes of the
/// name. Sizes that are multiples of 512 bytes, as nearly all disk space is, are kept in units of 512, so that a record
/// costs two or three bytes beyond its name. A record never starts with a zero byte, because no name is empty.
struct PackedFile {
  std::string_view name;  ///< points into the packed bytes
  std::int64_t bytes = 0;
};

/// Appends one record to `packed`. `name` is not empty, `bytes` not negative.
void appendPackedFile(std::string& packed, std::string_view name, std::int64_t bytes);

/// Reads the record that starts at `position` and moves `position` behind it.
PackedFile takePackedFile(const char*& position);

}  // namespace dunmere
