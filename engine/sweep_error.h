// SweepError: a failure as a value: what was attempted, on which path, and the error code.
#pragma once

#include <string>
#include <system_error>

#include "engine/file_url.h"

namespace dunmere {

/// What was attempted when a failure happened. The text for people depends on it (sweeper/error_text.h).
enum class SweepAttempt {
  startScan,    ///< the walk of a tree could not be started at all
  openFolder,   ///< a folder could not be listed
  moveToTrash,  ///< an item could not be moved to the Trash
};

/// One failure. `code` is in std::generic_category (errno values).
struct SweepError {
  SweepAttempt attempt = SweepAttempt::startScan;
  FileUrl path;
  std::error_code code;
  std::string volumeName;  ///< set only when an item's volume has no Trash: that volume's name

  friend bool operator==(const SweepError&, const SweepError&) = default;
};

}  // namespace dunmere
