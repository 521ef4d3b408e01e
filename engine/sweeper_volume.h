// SweeperVolume: one mounted, user-facing volume that can be swept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "engine/file_url.h"

namespace dunmere {

/// An immutable value. Identity is id(), the path alone; equality and hash take in all four fields, so that two
/// readings of one volume with different free space are different values with the same identity.
struct SweeperVolume {
  FileUrl url;                  ///< mount point
  std::string name;             ///< display name, raw bytes
  std::int64_t totalBytes = 0;  ///< capacity in bytes
  std::int64_t freeBytes = 0;   ///< available capacity in bytes

  std::string id() const { return url.path(); }

  friend bool operator==(const SweeperVolume&, const SweeperVolume&) = default;
};

}  // namespace dunmere

template <>
struct std::hash<dunmere::SweeperVolume> {
  std::size_t operator()(const dunmere::SweeperVolume& volume) const noexcept;
};
