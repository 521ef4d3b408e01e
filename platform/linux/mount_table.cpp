#include "platform/linux/mount_table.h"

#include <libmount.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "engine/file_url.h"
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

/// Tells which mounts a path can lead to, each at a cost that does not grow with their number.
class MountTree {
 public:
  explicit MountTree(const std::vector<MountEntry>& mounts) : mounts_(mounts) {
    for (std::size_t number = 0; number < mounts.size(); ++number) {
      const MountEntry& mount = mounts[number];
      byId_.emplace(mount.id, number);
      // The first mount's parent is outside of what this process sees, or the mount itself.
      if (mount.parentId != mount.id) last_[{mount.parentId, mount.mountPoint}] = number;
    }
  }

  bool isReachable(std::size_t number) const {
    const MountEntry& mount = mounts_[number];
    const bool isCovered = last_.contains({mount.id, mount.mountPoint});
    if (isCovered) return false;
    std::size_t steps = 0;
    for (std::optional<std::size_t> step = number; step; step = parentOf(*step)) {
      if (isHidden(*step) || ++steps > mounts_.size()) return false;
    }
    return true;
  }

 private:
  std::optional<std::size_t> parentOf(std::size_t number) const {
    const auto parent = byId_.find(mounts_[number].parentId);
    return parent == byId_.end() || parent->second == number ? std::nullopt : std::optional(parent->second);
  }

  /// Whether another mount on the same parent hides the mount point: one at a folder above (mounted later, or it would
  /// be the parent), or a later one at the same folder (the result of propagation).
  bool isHidden(std::size_t number) const {
    const MountEntry& mount = mounts_[number];
    const auto same = last_.find({mount.parentId, mount.mountPoint});
    if (same != last_.end() && same->second > number) return true;
    for (std::string_view above = mount.mountPoint; above.size() > 1;) {
      const std::size_t slash = above.rfind('/');
      if (slash == std::string_view::npos) break;  // no path: the table holds nonsense
      above = above.substr(0, std::max<std::size_t>(slash, 1));
      if (last_.contains({mount.parentId, above})) return true;
    }
    return false;
  }

  const std::vector<MountEntry>& mounts_;
  std::unordered_map<int, std::size_t> byId_;
  std::map<std::pair<int, std::string_view>, std::size_t> last_;  // by parent and folder; the latest of several
};

}  // namespace

std::vector<MountEntry> withoutHiddenMounts(const std::vector<MountEntry>& mounts) {
  const MountTree tree(mounts);
  std::vector<MountEntry> reachable;
  for (std::size_t number = 0; number < mounts.size(); ++number) {
    if (tree.isReachable(number)) reachable.push_back(mounts[number]);
  }
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

AutomountNames automountNames() {
  AutomountNames names;
  const auto mounts = readMountTable();
  if (!mounts) return names;
  for (const MountEntry& mount : *mounts) {
    if (mount.fileSystem == "autofs") names.insert(FileUrl(mount.mountPoint).lastPathComponent());
  }
  return names;
}

}  // namespace dunmere
