// Trash: moves one item to the user's Trash and never loses it.
#pragma once

#include <expected>
#include <string>

#include "engine/file_system.h"
#include "engine/file_url.h"
#include "engine/sweep_error.h"

namespace dunmere {

/// GIO does the move; around it stand the guards that GIO lacks. Nothing is ever deleted in place of a move.
///
/// Refused before anything is touched: the root folder, mount points and items with a mount below them (EBUSY, since
/// the mounted volume would go along), items on read-only volumes (EROFS) and on volumes without a free block (ENOSPC,
/// since GIO would move the item and lose its origin). A mount made during the call is not seen. Checked afterwards:
/// that the item has left its place (else EIO) and that its origin is recorded in full; where it is not, as when a
/// quota was hit, the item is put back (ENOSPC). Only when its place was taken meanwhile, or the file system cannot
/// rename without replacing, does it stay in the Trash without its origin: that counts as moved.
///
/// A name of more than 238 bytes leaves GIO no room for the names of the record: ENAMETOOLONG, as for a path beyond
/// PATH_MAX.
class Trash {
 public:
  /// `fileSystem` names volumes and must outlive this object.
  explicit Trash(FileSystem& fileSystem) : fileSystem_(fileSystem) {}

  /// Moves the item at `url`, a link itself and never its target, and waits for it. Links in the folders above are
  /// followed. After a failure the item is where it was. Codes beside the above: ENOTSUP the volume has no Trash
  /// (volumeName is set: its label, else its mount point's last component, "Filesystem root" for "/"), EACCES, ENOENT,
  /// others of the system; EIO when the reason is unknown. Any thread.
  std::expected<void, SweepError> moveItem(const FileUrl& url);

 private:
  std::string nameOfVolume(const std::string& mountPoint);

  FileSystem& fileSystem_;
};

}  // namespace dunmere
