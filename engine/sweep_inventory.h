// SweepInventory: one immutable snapshot of a progressive scan.
#pragma once

#include <cstdint>
#include <string>

#include "engine/file_url.h"
#include "engine/inventory/path_bytes.h"

namespace dunmere {

/// Built only by the progressive scan (and empty by the pane before one starts). Never changes; cheap to copy; safe to
/// hand between threads. Has no identity, equality or hash of its own.
struct SweepInventory {
  FileUrl root;                     ///< the scan root exactly as the caller passed it
  std::string rootPath;             ///< root.key()
  PathBytes pathBytes;              ///< bytes counted so far per path key
  bool hadReadErrors = false;       ///< the walk has met at least one error so far
  std::int64_t fileCount = 0;       ///< regular files counted so far
  std::int64_t totalFileBytes = 0;  ///< bytes of all counted files
  bool scanComplete = false;        ///< true only in a scan's last snapshot

  /// The inventory of `root` before anything was counted.
  static SweepInventory emptyFor(const FileUrl& root) {
    return {.root = root, .rootPath = root.key(), .pathBytes = {}};
  }
};

}  // namespace dunmere
