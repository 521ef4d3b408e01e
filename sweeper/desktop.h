// Desktop: what the pane asks of the user's desktop: choose a folder, reveal an item, move one to the Trash.
#pragma once

#include <expected>
#include <memory>
#include <optional>
#include <string>

#include "engine/file_url.h"
#include "engine/sweep_error.h"

namespace dunmere {

/// One item that the user is asked about: it stays that very item while something else takes its place. Used, and
/// destroyed, by one thread at a time.
class TrashableItem {
 public:
  virtual ~TrashableItem() = default;

  /// Moves the item (a link itself, never its target) to the user's Trash and waits for it. After a failure the item is
  /// where it was. Codes: ENOTSUP the volume has no Trash (volumeName is set), EBUSY a volume is mounted at or below
  /// the item, ESTALE another item has taken its place, ENOTEMPTY it could never be deleted there, EALREADY it is in
  /// the Trash, EDEADLK it holds the Trash, otherwise the system's own.
  virtual std::expected<void, SweepError> moveToTrash() = 0;
};

/// Called on the main thread, but for holdItem().
class Desktop {
 public:
  virtual ~Desktop() = default;

  /// Runs a modal chooser for one existing folder, showing `message`; none when cancelled.
  virtual std::optional<FileUrl> chooseFolder(const std::string& message) = 0;

  /// Shows exactly this item, selected, in the file manager. No result; a failure shows nothing.
  virtual void reveal(const FileUrl& url) = 0;

  /// Holds the item that is at `url` now; may wait for its file system. Never null: where there is none, its
  /// moveToTrash() fails. Must not outlive this object; kept for as long as a question is open and no longer, since it
  /// keeps its volume from being unmounted. Any thread.
  virtual std::unique_ptr<TrashableItem> holdItem(const FileUrl& url) = 0;
};

}  // namespace dunmere
