#include "platform/linux/item_look.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <expected>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/linux_open_folder.h"
#include "platform/posix/folder_descriptors.h"

namespace dunmere {

namespace {

/// Which entries of a folder the user may delete.
enum class Deletable { none, own, all };

Deletable deletableIn(int folder, const struct stat& status) {
  const bool isOwn = status.st_uid == geteuid();
  if (faccessat(folder, ".", W_OK | X_OK, 0) != 0) {
    return isOwn && errno == EACCES ? Deletable::all : Deletable::none;  // the owner may allow it
  }
  const bool isSticky = (status.st_mode & S_ISVTX) != 0;
  return isSticky && !isOwn && geteuid() != 0 ? Deletable::own : Deletable::all;
}

/// A folder on the way down.
struct Level {
  std::shared_ptr<LinuxOpenFolder> folder;
  Deletable deletable;
  EntryBatch batch;      ///< the entries that were read last
  std::size_t next = 0;  ///< the first of them that was not looked at
};

class ItemLook {
 public:
  bool canBeEmptied(const HeldItem& held) {
    struct stat item{};
    if (fstat(held.item.get(), &item) != 0 || !S_ISDIR(item.st_mode)) return true;
    // By the descriptor: at the item's path may be another one by now.
    const FileUrl url("/proc/self/fd/" + std::to_string(held.item.get()));
    bool isDeletable = enter(LinuxOpenFolder::open(descriptors_, url, EntryDetail::sizes), item);
    while (isDeletable && !levels_.empty()) {
      if (hasNext(levels_.back())) {
        isDeletable = lookAtNext(levels_.back());
      } else {
        levels_.pop_back();
      }
    }
    return isDeletable;
  }

 private:
  template <typename Folder>
  bool enter(const std::expected<std::shared_ptr<Folder>, SweepError>& opened, const struct stat& status) {
    if (!opened) {
      // The owner may make it readable; whether another user's is empty cannot be told.
      return opened.error().code != std::errc::permission_denied || status.st_uid == geteuid();
    }
    auto folder = std::static_pointer_cast<LinuxOpenFolder>(*opened);
    const auto pin = folder->descriptor();
    const Deletable deletable = pin ? deletableIn(pin->descriptor(), status) : Deletable::all;
    levels_.push_back({std::move(folder), deletable, {}});
    return true;
  }

  static bool hasNext(Level& level) {
    if (level.next < level.batch.size()) return true;
    level.next = 0;
    return level.folder->readEntries(level.batch) && !level.batch.empty();
  }

  bool lookAtNext(Level& level) {
    const EntryBatch::Entry entry = level.batch.entries()[level.next++];
    if (level.deletable == Deletable::none) return false;
    const bool isFolder = entry.attributes.kind == EntryKind::folder;
    if (!isFolder && level.deletable == Deletable::all) return true;
    const char* const name = level.batch.nameText(entry);
    struct stat status{};
    const auto pin = level.folder->descriptor();
    constexpr int kFlags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;
    if (!pin || fstatat(pin->descriptor(), name, &status, kFlags) != 0) return true;
    if (level.deletable == Deletable::own && status.st_uid != geteuid()) return false;
    return !S_ISDIR(status.st_mode) || enter(level.folder->openChild(name), status);
  }

  FolderDescriptors descriptors_{FolderDescriptors::budgetOfProcess()};
  std::vector<Level> levels_;  // the item first
};

}  // namespace

bool canBeEmptied(const HeldItem& held) {
  return ItemLook().canBeEmptied(held);
}

}  // namespace dunmere
