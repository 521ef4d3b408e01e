#include "platform/trash/trashed_item.h"

#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <iterator>

namespace dunmere {

namespace {

/// Where the kernel says that the open item is now.
std::optional<std::string> currentPath(const UniqueDescriptor& item) {
  const std::string link = "/proc/self/fd/" + std::to_string(item.get());
  std::array<char, PATH_MAX> path;
  const ssize_t length = readlink(link.c_str(), path.data(), path.size());
  // A path that fills the buffer may have been cut off.
  if (length <= 0 || static_cast<std::size_t>(length) == path.size()) return std::nullopt;
  return std::string(path.data(), static_cast<std::size_t>(length));
}

bool isSameItem(const std::string& path, const UniqueDescriptor& item) {
  struct stat there {};
  struct stat held {};
  return lstat(path.c_str(), &there) == 0 && fstat(item.get(), &held) == 0 && there.st_dev == held.st_dev &&
         there.st_ino == held.st_ino;
}

}  // namespace

std::optional<TrashedItem> findInTrash(const LocatedItem& located) {
  // GIO does not tell where it moved the item, but the open item knows.
  const std::optional<std::string> path = currentPath(located.item);
  if (!path || !isSameItem(*path, located.item)) return std::nullopt;
  const FileUrl files = FileUrl(*path).deletingLastPathComponent();
  if (files.lastPathComponent() != "files") return std::nullopt;
  const FileUrl info = files.deletingLastPathComponent().appending("info");
  return TrashedItem{*path, info.appending(FileUrl(*path).lastPathComponent() + ".trashinfo").bytes()};
}

bool isOriginRecorded(const TrashedItem& trashed) {
  std::ifstream file(trashed.infoPath, std::ios::binary);
  const std::string record(std::istreambuf_iterator<char>(file), {});
  // The date is the record's last line: with its end the record is whole.
  const std::size_t date = record.find("\nDeletionDate=");
  return record.find("\nPath=") != std::string::npos && date != std::string::npos &&
         record.find('\n', date + 1) != std::string::npos;
}

std::error_code unrecordedReason(const TrashedItem& trashed) {
  constexpr std::size_t kTemporarySuffix = sizeof(".XXXXXX") - 1;  // what g_file_set_contents() appends while it writes
  const bool tooLong = FileUrl(trashed.infoPath).lastPathComponent().size() + kTemporarySuffix > NAME_MAX;
  return {tooLong ? ENAMETOOLONG : ENOSPC, std::generic_category()};
}

bool putBack(const TrashedItem& trashed, const LocatedItem& located) {
  if (renameat2(AT_FDCWD, trashed.path.c_str(), located.folder.get(), located.name.c_str(), RENAME_NOREPLACE) != 0) {
    return false;
  }
  unlink(trashed.infoPath.c_str());
  return true;
}

}  // namespace dunmere
