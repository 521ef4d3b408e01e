// MacosTrash: moves items to the user's Trash and never loses one.
#pragma once

#include <memory>
#include <string>

#include "engine/file_system.h"
#include "engine/file_url.h"
#include "sweeper/desktop.h"

namespace dunmere {

/// The system's file manager does the move; around it stand the guards that it lacks.
class MacosTrash {
 public:
  /// `fileSystem` names volumes and must outlive this object and every held item.
  explicit MacosTrash(FileSystem& fileSystem) : fileSystem_(fileSystem) {}

  /// Holds the item at `url` as Desktop::holdItem() says, by its device, its number there and the time it was made; no
  /// descriptor keeps its volume mounted. Codes beside the system's own: ESTALE, when another item has taken its place;
  /// should that happen in the last moment, the wrong item goes back. EBUSY: the root folder, a mount point, or a mount
  /// below the item. ENOTSUP: the volume has no Trash (volumeName is set: its name, else its mount point's last
  /// component). EINVAL: a path that ends in "." or "..". Any thread, and so for the held item.
  std::unique_ptr<TrashableItem> hold(const FileUrl& url);

 private:
  FileSystem& fileSystem_;
};

}  // namespace dunmere
