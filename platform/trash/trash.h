// Trash: moves items to the user's Trash and never loses one.
#pragma once

#include <memory>
#include <string>

#include "engine/file_system.h"
#include "engine/file_url.h"
#include "sweeper/desktop.h"

namespace dunmere {

/// Moves by one rename from the item's folder into a Trash on the same volume, laid out as freedesktop.org's Trash
/// specification 1.0 says; nothing is ever copied or deleted. The record of the origin is on the disk before the item
/// moves, so that an end at any moment leaves the item whole and in one place: where it was, or in the Trash with its
/// origin. What the rename moved is looked at again: should something have taken the item's place in the last moment,
/// it goes back (or, where its place was taken once more, stays in the Trash with its origin).
class Trash {
 public:
  /// `fileSystem` names volumes and must outlive this object and every held item.
  explicit Trash(FileSystem& fileSystem) : fileSystem_(fileSystem) {}

  /// Holds the item at `url` as Desktop::holdItem() says. Its codes beside the system's own:
  /// ESTALE: another item has taken its place. EBUSY: the root folder, a mount point, or a mount below the item, which
  /// would go along; a mount made during the call is not seen. ENOTSUP: the volume has no Trash (volumeName is set: its
  /// label, else its mount point's last component, "Filesystem root" for "/"): it is in memory, or the user may make
  /// none. ENAMETOOLONG: a path from PATH_MAX on. Waits as long as the item's file system, as does the move. Any
  /// thread, and so for the held item.
  std::unique_ptr<TrashableItem> hold(const FileUrl& url);

 private:
  FileSystem& fileSystem_;
};

}  // namespace dunmere
