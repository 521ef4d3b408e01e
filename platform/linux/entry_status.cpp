#include "platform/linux/entry_status.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <ctime>
#include <span>
#include <utility>

#include "platform/posix/system_values.h"

namespace dunmere {
namespace {

/// The kernel's, from statx(2). Debian 12's headers are older.
constexpr unsigned kUniqueMountNumber = 0x4000;

bool readStatus(int folder, const char* name, unsigned mask, struct statx& status) {
  // A share answers from what it knows only as long as it trusts that: another machine may have changed the file.
  constexpr int kFlags = AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;
  return ::statx(folder, name, kFlags, mask, &status) == 0;
}

EntryKind kindOfMode(unsigned mode) {
  if (S_ISREG(mode)) return EntryKind::regularFile;
  if (S_ISDIR(mode)) return EntryKind::folder;
  if (S_ISLNK(mode)) return EntryKind::symbolicLink;
  return EntryKind::other;
}

std::chrono::nanoseconds durationOf(std::int64_t seconds, std::int64_t nanoseconds) {
  return std::chrono::seconds(seconds) + std::chrono::nanoseconds(nanoseconds);
}

std::chrono::nanoseconds systemClock() {
  timespec time{};
  ::clock_gettime(CLOCK_REALTIME_COARSE, &time);  // the clock of file systems' timestamps; cannot fail
  return durationOf(time.tv_sec, time.tv_nsec);
}

/// Whether the folder lies on a file system of one of these types.
bool isOneOf(std::span<const std::uint32_t> types, int folder) {
  struct statfs status{};
  return ::fstatfs(folder, &status) == 0 &&
         std::ranges::find(types, static_cast<std::uint32_t>(status.f_type)) != types.end();
}

/// Whether the folder lies on a local file system, which no other machine changes. Unknown types count as remote: a
/// wrong guess then costs time, not a wrong listing.
bool isLocal(int folder) {
  static constexpr auto kLocal =
      std::to_array<std::uint32_t>({BTRFS_SUPER_MAGIC, EXT4_SUPER_MAGIC, F2FS_SUPER_MAGIC, OVERLAYFS_SUPER_MAGIC,
                                    RAMFS_MAGIC, TMPFS_MAGIC, XFS_SUPER_MAGIC});
  return isOneOf(kLocal, folder);
}

/// The path of an open file; none for a file without one (a pipe, a deleted file, a path that is too long).
std::optional<std::string> pathOf(const UniqueDescriptor& file) {
  auto path = kernelPath(file);
  if (!path || !path->starts_with('/')) return std::nullopt;
  // The kernel marks the former path of a deleted file; a file may also be called so.
  struct stat status{};
  const bool isDeleted = path->ends_with(" (deleted)") && ::fstat(file.get(), &status) == 0 && status.st_nlink == 0;
  return isDeleted ? std::nullopt : std::optional(std::move(*path));
}

}  // namespace

std::optional<EntryAttributes> entryStatus(int folder, const char* name) {
  constexpr std::uint64_t kBlockBytes = 512;  // the unit of stx_blocks, whatever the file system's own block size
  struct statx status{};
  if (!readStatus(folder, name, STATX_TYPE | STATX_BLOCKS | STATX_SIZE, status)) return std::nullopt;
  EntryAttributes attributes{.kind = kindOfMode(status.stx_mode)};
  if (attributes.kind != EntryKind::regularFile) return attributes;
  if (status.stx_mask & STATX_BLOCKS) attributes.allocatedBytes = bytesOf(status.stx_blocks, kBlockBytes);
  if (status.stx_mask & STATX_SIZE) attributes.logicalBytes = bytesOf(status.stx_size, 1);
  return attributes;
}

bool takesDiskSpace(int folder) {
  static constexpr auto kViews =
      std::to_array<std::uint32_t>({BINFMTFS_MAGIC, BPF_FS_MAGIC, CGROUP2_SUPER_MAGIC, CGROUP_SUPER_MAGIC,
                                    DEBUGFS_MAGIC, DEVPTS_SUPER_MAGIC, EFIVARFS_MAGIC, NSFS_MAGIC, PROC_SUPER_MAGIC,
                                    PSTOREFS_MAGIC, SECURITYFS_MAGIC, SELINUX_MAGIC, SYSFS_MAGIC, TRACEFS_MAGIC});
  return !isOneOf(kViews, folder);
}

bool isAutomounter(int folder) {
  static constexpr auto kAutomounters = std::to_array<std::uint32_t>({AUTOFS_SUPER_MAGIC});
  return isOneOf(kAutomounters, folder);
}

std::optional<FolderStamp> folderStamp(int folder) {
  // The timestamps of local file systems advance in steps of up to one second (old ext4).
  constexpr std::chrono::seconds kLongestStep{1};
  constexpr unsigned kMask = STATX_INO | STATX_CTIME;
  if (!isLocal(folder)) return std::nullopt;
  // Read before the status: any later change then has this timestamp or a later one.
  const std::chrono::nanoseconds now = systemClock();
  struct statx status{};
  const bool isRead = readStatus(folder, "", kMask | STATX_MNT_ID | kUniqueMountNumber, status);
  if (!isRead || (status.stx_mask & kMask) != kMask) return std::nullopt;
  const std::chrono::nanoseconds changed = durationOf(status.stx_ctime.tv_sec, status.stx_ctime.tv_nsec);
  if (changed + kLongestStep >= now) return std::nullopt;
  return FolderStamp{.mount = status.stx_mnt_id,
                     .device = ::gnu_dev_makedev(status.stx_dev_major, status.stx_dev_minor),
                     .folder = status.stx_ino,
                     .changed = changed};
}

std::expected<UniqueDescriptor, int> findTarget(int folder, const std::string& name) {
  // O_PATH finds the target without opening it, so a device or a FIFO at the end does no harm.
  UniqueDescriptor target(::openat(folder, name.c_str(), O_PATH | O_CLOEXEC));
  if (!target) return std::unexpected(errno);
  return target;
}

std::expected<std::string, int> kernelPath(const UniqueDescriptor& file) {
  const std::string link = "/proc/self/fd/" + std::to_string(file.get());
  std::string path(PATH_MAX, '\0');
  const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
  if (length < 0) return std::unexpected(errno);
  // A path that fills the buffer may have been cut off.
  if (static_cast<std::size_t>(length) == path.size()) return std::unexpected(ENAMETOOLONG);
  path.resize(static_cast<std::size_t>(length));
  return path;
}

LinkTarget describeTarget(const UniqueDescriptor& target, FileUrl ownUrl) {
  auto path = pathOf(target);
  return {.url = path ? FileUrl(std::move(*path)).standardized() : std::move(ownUrl),
          .attributes = entryStatus(target.get(), "")};
}

}  // namespace dunmere
