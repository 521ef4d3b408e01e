#include "platform/linux/item_look.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/linux_open_folder.h"
#include "platform/posix/folder_descriptors.h"
#include "platform/posix/system_values.h"

namespace dunmere {

namespace {

/// The space of all that is added, unless some of it could not be measured.
class DiskSpace {
 public:
  void add(const struct stat& status) {
    if (!bytes_ || wasAdded(status)) return;
    constexpr std::uint64_t kBlockBytes = 512;  // the unit of st_blocks, whatever the file system's own block size
    const std::int64_t more = bytesOf(static_cast<std::uint64_t>(status.st_blocks), kBlockBytes);
    *bytes_ += std::min(more, std::numeric_limits<std::int64_t>::max() - *bytes_);
    if (linked_.size() > kMostLinked) giveUp();
  }
  void giveUp() {
    bytes_.reset();
    linked_.clear();
  }
  std::optional<std::int64_t> bytes() const { return bytes_; }

 private:
  static constexpr std::size_t kMostLinked = 100'000;  // takes a few megabytes

  bool wasAdded(const struct stat& status) {
    const bool hasOtherNames = !S_ISDIR(status.st_mode) && status.st_nlink > 1;
    return hasOtherNames && !linked_.emplace(status.st_dev, status.st_ino).second;
  }

  std::optional<std::int64_t> bytes_ = 0;
  std::set<std::pair<dev_t, ino_t>> linked_;  // what has other names
};

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
  explicit ItemLook(LookDetail detail) {
    if (detail == LookDetail::rights) space_.giveUp();
  }

  /// Whether all of the folder can be deleted.
  bool through(const HeldItem& held, const struct stat& status) {
    // By the descriptor: at the item's path may be another one by now.
    const FileUrl url("/proc/self/fd/" + std::to_string(held.item.get()));
    bool isDeletable = enter(LinuxOpenFolder::open(descriptors_, url, EntryDetail::sizes), status);
    while (isDeletable && !levels_.empty()) {
      if (hasNext(levels_.back())) {
        isDeletable = lookAtNext(levels_.back());
      } else {
        levels_.pop_back();
      }
    }
    return isDeletable;
  }

  std::optional<std::int64_t> space() const { return space_.bytes(); }

 private:
  template <typename Folder>
  bool enter(const std::expected<std::shared_ptr<Folder>, SweepError>& opened, const struct stat& status) {
    space_.add(status);
    if (!opened) {
      space_.giveUp();
      // The owner may make it readable; whether another user's is empty cannot be told.
      return opened.error().code != std::errc::permission_denied || status.st_uid == geteuid();
    }
    auto folder = std::static_pointer_cast<LinuxOpenFolder>(*opened);
    const auto pin = folder->descriptor();
    const Deletable deletable = pin ? deletableIn(pin->descriptor(), status) : Deletable::all;
    levels_.push_back({std::move(folder), deletable, {}});
    return true;
  }

  bool hasNext(Level& level) {
    if (level.next < level.batch.size()) return true;
    level.next = 0;
    if (!level.folder->readEntries(level.batch)) space_.giveUp();
    return !level.batch.empty();
  }

  bool lookAtNext(Level& level) {
    const EntryBatch::Entry entry = level.batch.entries()[level.next++];
    if (level.deletable == Deletable::none) return false;
    const bool isFolder = entry.attributes.kind == EntryKind::folder;
    if (!isFolder && !space_.bytes() && level.deletable == Deletable::all) return true;
    const auto status = statusOf(*level.folder, level.batch.nameText(entry));
    if (!status) return true;
    if (level.deletable == Deletable::own && status->st_uid != geteuid()) return false;
    if (S_ISDIR(status->st_mode)) return enter(level.folder->openChild(level.batch.name(entry)), *status);
    space_.add(*status);
    return true;
  }

  std::optional<struct stat> statusOf(LinuxOpenFolder& folder, const char* name) {
    struct stat status{};
    const auto pin = folder.descriptor();
    constexpr int kFlags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;
    if (pin && fstatat(pin->descriptor(), name, &status, kFlags) == 0) return status;
    if (!pin || errno != ENOENT) space_.giveUp();  // what has gone takes no space
    return std::nullopt;
  }

  FolderDescriptors descriptors_{FolderDescriptors::budgetOfProcess()};
  std::vector<Level> levels_;  // the item first
  DiskSpace space_;
};

}  // namespace

std::expected<std::optional<std::int64_t>, std::error_code> lookThrough(const HeldItem& held, LookDetail detail) {
  struct stat item{};
  if (fstat(held.item.get(), &item) != 0) return systemFailure(errno);
  if (!S_ISDIR(item.st_mode)) return std::nullopt;
  ItemLook look(detail);
  if (!look.through(held, item)) return systemFailure(ENOTEMPTY);
  return look.space();
}

}  // namespace dunmere
