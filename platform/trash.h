// Trash: moves items to the user's Trash and never loses one.
#pragma once

#include <memory>
#include <string>

#include "engine/file_system.h"
#include "engine/file_url.h"
#include "sweeper/desktop.h"

namespace dunmere {

/// The move is one rename on the item's own volume, into a Trash that the desktop shows; nothing is ever copied or
/// deleted. What was moved is checked: if another item took the first one's place at the last moment, it goes back (or,
/// where its place was taken once more, stays in the Trash). The build picks the implementation.
class Trash {
 public:
  /// `fileSystem` names volumes and must outlive this object and every held item.
  explicit Trash(FileSystem& fileSystem) : fileSystem_(fileSystem) {}

  /// Holds the item at `url` as Desktop::holdItem() says. Its codes beside the system's own:
  /// ESTALE: another item has taken its place. EBUSY: the root folder, a mount point, or a mount below the item, which
  /// would go along; a mount made during the call is not noticed. ENOTSUP: the volume has no Trash that a desktop shows
  /// (volumeName is set: its label, else the last component of its top folder). ENOTEMPTY: it holds what this user
  /// could never delete from the Trash. EALREADY: the item lies in a Trash. EDEADLK: it is a Trash, or holds the one
  /// that it would move to. EINVAL: a path that ends in "." or "..". Waits as long as the item's file system, as does
  /// the move. Any thread, and so for the held item.
  std::unique_ptr<TrashableItem> hold(const FileUrl& url);

 private:
  FileSystem& fileSystem_;
};

}  // namespace dunmere
