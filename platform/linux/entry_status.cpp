#include "platform/linux/entry_status.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <chrono>
#include <cstdint>

#include "platform/posix/byte_count.h"

namespace dunmere {

namespace {

/// The kernel's, from statx(2). Debian 12's headers are older.
constexpr unsigned kUniqueMountNumber = 0x4000;

constexpr unsigned kSizes = STATX_BLOCKS | STATX_SIZE;

bool readStatus(int folder, const char* name, unsigned mask, struct statx& status) {
  // What a network file system already knows is good enough: no round trip to its server for every file.
  constexpr int kFlags = AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;
  return ::statx(folder, name, kFlags, mask, &status) == 0;
}

EntryKind kindOfMode(unsigned mode) {
  if (S_ISREG(mode)) return EntryKind::regularFile;
  if (S_ISDIR(mode)) return EntryKind::folder;
  if (S_ISLNK(mode)) return EntryKind::symbolicLink;
  return EntryKind::other;
}

EntryAttributes fileAttributes(const struct statx& status) {
  constexpr std::uint64_t kBlockBytes = 512;  // the unit of stx_blocks, whatever the file system's own block size
  EntryAttributes attributes{.kind = EntryKind::regularFile};
  if (status.stx_mask & STATX_BLOCKS) attributes.allocatedBytes = bytesOf(status.stx_blocks, kBlockBytes);
  if (status.stx_mask & STATX_SIZE) attributes.logicalBytes = bytesOf(status.stx_size, 1);
  return attributes;
}

}  // namespace

std::optional<EntryAttributes> entryStatus(int folder, const char* name) {
  struct statx status{};
  if (!readStatus(folder, name, STATX_TYPE | kSizes, status)) return std::nullopt;
  const EntryKind kind = kindOfMode(status.stx_mode);
  if (kind == EntryKind::regularFile) return fileAttributes(status);
  return EntryAttributes{.kind = kind};
}

std::optional<EntryAttributes> regularFileStatus(int folder, const char* name) {
  struct statx status{};
  if (!readStatus(folder, name, STATX_TYPE | kSizes, status) || !S_ISREG(status.stx_mode)) return std::nullopt;
  return fileAttributes(status);
}

std::optional<FolderStamp> folderStamp(int folder) {
  struct statx status{};
  constexpr unsigned kMask = STATX_INO | STATX_CTIME;
  const bool isRead = readStatus(folder, "", kMask | STATX_MNT_ID | kUniqueMountNumber, status);
  if (!isRead || (status.stx_mask & kMask) != kMask) return std::nullopt;
  return FolderStamp{
      .mount = status.stx_mnt_id,
      .device = ::gnu_dev_makedev(status.stx_dev_major, status.stx_dev_minor),
      .folder = status.stx_ino,
      .changed = std::chrono::seconds(status.stx_ctime.tv_sec) + std::chrono::nanoseconds(status.stx_ctime.tv_nsec)};
}

}  // namespace dunmere
