// Desktop: what the pane asks of the user's desktop: choose a folder, reveal an item, move one to the Trash.
#pragma once

#include <expected>
#include <optional>
#include <string>

#include "engine/file_url.h"
#include "engine/sweep_error.h"

namespace dunmere {

/// Called on the main thread only.
class Desktop {
 public:
  virtual ~Desktop() = default;

  /// Runs a modal chooser for one existing folder, showing `message`; none when cancelled.
  virtual std::optional<FileUrl> chooseFolder(const std::string& message) = 0;

  /// Shows exactly this item, selected, in the file manager. No result; a failure shows nothing.
  virtual void reveal(const FileUrl& url) = 0;

  /// Moves the item (a link itself, never its target) to the user's Trash and waits for it. After a failure the item is
  /// where it was. Codes: ENOTSUP the volume has no Trash (volumeName is set), EBUSY a volume is mounted at or below
  /// the item, otherwise the system's own.
  virtual std::expected<void, SweepError> moveToTrash(const FileUrl& url) = 0;
};

}  // namespace dunmere
