// TrashFolder: the Trash of one volume, as freedesktop.org's Trash specification 1.0 lays it out.
#pragma once

#include <expected>
#include <optional>
#include <string>
#include <system_error>

#include "platform/linux/held_item.h"
#include "platform/posix/unique_descriptor.h"

namespace dunmere {

struct TrashFolder {
  UniqueDescriptor folder;  ///< the Trash itself, which holds the next two
  UniqueDescriptor files;   ///< the items
  UniqueDescriptor info;    ///< their records, each of the item's name and ".trashinfo"
  std::string top;          ///< origins are recorded relative to this absolute path; empty: they are absolute
};

/// The Trash in the user's home, made when missing: $XDG_DATA_HOME/Trash, else ~/.local/share/Trash. None when the home
/// is not on the item's volume, since items are only ever renamed. Links on the way to it are the user's own and are
/// followed. Fails with ENOTSUP when there is something else in its place: no folder, another user's, or one on another
/// volume; otherwise with the system's code. Any thread.
std::expected<std::optional<TrashFolder>, std::error_code> openHomeTrash(const HeldItem& held);

/// The path of the topmost folder of the item's volume: a mount point, or a btrfs subvolume that is none. Fails as
/// currentPath(). Any thread.
std::expected<std::string, std::error_code> topFolder(const HeldItem& held);

/// The user's Trash in the top folder of the item's volume, made when missing: .Trash/UID where the administrator has
/// made a .Trash folder with the sticky bit, else .Trash-UID. Never follows a link. Fails as openHomeTrash(), and with
/// ENOTSUP also when none may be made there, or when the top folder is not `mountPoint`: no desktop looks for a Trash
/// elsewhere. Any thread.
std::expected<TrashFolder, std::error_code> openVolumeTrash(const HeldItem& held, const std::string& mountPoint);

/// Whether the folder at `path`, absolute and without links, is somebody's Trash by its name and what is in it, or the
/// .Trash for all users. Any thread.
bool isTrash(const std::string& path);

}  // namespace dunmere
