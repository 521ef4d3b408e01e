#include "platform/linux/mount_table.h"

#include <libmount.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <memory>

#include "platform/posix/paths.h"

namespace dunmere {

namespace {

using Table = std::unique_ptr<libmnt_table, decltype(&mnt_unref_table)>;
using Iterator = std::unique_ptr<libmnt_iter, decltype(&mnt_free_iter)>;

std::string textOf(const char* text) {
  return text == nullptr ? "" : text;
}

std::string optionOf(libmnt_fs* mount, const char* name) {
  char* value = nullptr;
  std::size_t length = 0;
  if (mnt_fs_get_option(mount, name, &value, &length) != 0 || value == nullptr) return "";
  return std::string(value, length);
}

MountEntry entryOf(libmnt_fs* mount) {
  return {.id = mnt_fs_get_id(mount),
          .parentId = mnt_fs_get_parent_id(mount),
          .mountPoint = textOf(mnt_fs_get_target(mount)),
          .root = textOf(mnt_fs_get_root(mount)),
          .fileSystem = textOf(mnt_fs_get_fstype(mount)),
          .source = textOf(mnt_fs_get_source(mount)),
          .subvolume = optionOf(mount, "subvol"),
          .isPseudo = mnt_fs_is_pseudofs(mount) == 1 || mnt_fs_is_swaparea(mount) == 1,
          .isNetwork = mnt_fs_is_netfs(mount) == 1};
}

/// Null for the first mount, whose parent is not in the table or is the mount itself.
const MountEntry* parentOf(const std::vector<MountEntry>& mounts, const MountEntry& mount) {
  const auto parent = std::ranges::find(mounts, mount.parentId, &MountEntry::id);
  return parent == mounts.end() || parent->id == mount.id ? nullptr : &*parent;
}

/// Whether another mount covers all of `mount`: it is mounted on its root.
bool isCovered(const std::vector<MountEntry>& mounts, const MountEntry& mount) {
  return std::ranges::any_of(mounts, [&mount](const MountEntry& other) {
    return other.parentId == mount.id && other.id != mount.id && other.mountPoint == mount.mountPoint;
  });
}

/// Whether another mount on the same parent hides the mount point of `mount`: one at a folder above it (mounted later,
/// or it would be the parent), or a later one at the same folder (the result of propagation).
bool isHidden(const std::vector<MountEntry>& mounts, const MountEntry& mount) {
  bool isLater = false;
  for (const MountEntry& other : mounts) {
    if (other.id == mount.id) {
      isLater = true;
    } else if (other.parentId == mount.parentId && isAtOrBelow(mount.mountPoint, other.mountPoint)) {
      if (isLater || other.mountPoint != mount.mountPoint) return true;
    }
  }
  return false;
}

bool isReachable(const std::vector<MountEntry>& mounts, const MountEntry& mount) {
  if (isCovered(mounts, mount)) return false;
  std::size_t steps = 0;
  for (const MountEntry* step = &mount; step != nullptr; step = parentOf(mounts, *step)) {
    if (isHidden(mounts, *step) || ++steps > mounts.size()) return false;
  }
  return true;
}

}  // namespace

std::vector<MountEntry> withoutHiddenMounts(const std::vector<MountEntry>& mounts) {
  std::vector<MountEntry> reachable;
  std::ranges::copy_if(mounts, std::back_inserter(reachable),
                       [&mounts](const MountEntry& mount) { return isReachable(mounts, mount); });
  return reachable;
}

std::expected<std::vector<MountEntry>, int> readMountTable(const std::string& file) {
  const Table table(mnt_new_table(), &mnt_unref_table);
  const Iterator iterator(mnt_new_iter(MNT_ITER_FORWARD), &mnt_free_iter);
  if (!table || !iterator) return std::unexpected(ENOMEM);
  // A negative result is an errno value, a positive one the number of lines that could not be parsed.
  if (const int result = mnt_table_parse_file(table.get(), file.c_str()); result < 0) return std::unexpected(-result);
  std::vector<MountEntry> mounts;
  for (libmnt_fs* mount = nullptr; mnt_table_next_fs(table.get(), iterator.get(), &mount) == 0;) {
    mounts.push_back(entryOf(mount));
  }
  return withoutHiddenMounts(mounts);
}

}  // namespace dunmere
