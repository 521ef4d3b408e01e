#include "platform/linux/trash_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/posix/paths.h"
#include "platform/posix/system_values.h"

namespace dunmere {

namespace {

constexpr mode_t kOwnersOnly = 0700;
constexpr std::string_view kShared = ".Trash";
constexpr std::string_view kPrivate = ".Trash-";  ///< and the user's number

template <typename Value>
using Found = std::expected<Value, std::error_code>;

/// A rename works between folders with equal values. A bind mount has the device of its origin, and the subvolumes of a
/// btrfs share one mount, so neither number is enough.
struct Volume {
  std::uint64_t mount = 0;
  std::uint64_t device = 0;
  friend bool operator==(const Volume&, const Volume&) = default;
};

Found<Volume> volumeOf(const UniqueDescriptor& folder) {
  struct statx status{};
  if (statx(folder.get(), "", AT_EMPTY_PATH, STATX_MNT_ID, &status) != 0) return systemFailure(errno);
  const std::uint64_t device = (std::uint64_t{status.stx_dev_major} << 32) | status.stx_dev_minor;
  return Volume{status.stx_mnt_id, device};
}

Found<UniqueDescriptor> openFolder(int parent, const std::string& name, int flags = 0) {
  UniqueDescriptor folder(openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC | flags));
  if (!folder) return systemFailure(errno);
  return folder;
}

/// Opens the folder `name`, made when missing; a link in its place is not followed.
Found<UniqueDescriptor> ensureFolder(const UniqueDescriptor& parent, const std::string& name) {
  if (mkdirat(parent.get(), name.c_str(), kOwnersOnly) != 0 && errno != EEXIST) return systemFailure(errno);
  return openFolder(parent.get(), name, O_NOFOLLOW);
}

/// Maps “no Trash possible here” to ENOTSUP; other reasons, such as a full volume, stay.
std::error_code mappedToNotSupported(std::error_code code) {
  const bool impossible = code == std::errc::permission_denied || code == std::errc::operation_not_permitted ||
                          code == std::errc::not_a_directory || code == std::errc::no_such_file_or_directory ||
                          code == std::errc::too_many_symbolic_link_levels;
  return impossible ? systemCode(ENOTSUP) : code;
}

bool isOwnOn(const Volume& volume, const UniqueDescriptor& trash) {
  struct stat status{};
  return fstat(trash.get(), &status) == 0 && status.st_uid == geteuid() && volumeOf(trash) == volume;
}

Found<TrashFolder> openInside(UniqueDescriptor trash, std::string top) {
  auto files = ensureFolder(trash, "files");
  if (!files) return std::unexpected(mappedToNotSupported(files.error()));
  auto info = ensureFolder(trash, "info");
  if (!info) return std::unexpected(mappedToNotSupported(info.error()));
  return TrashFolder{std::move(trash), std::move(*files), std::move(*info), std::move(top)};
}

// As the XDG Base Directory Specification says.
std::string dataHome() {
  const char* const data = std::getenv("XDG_DATA_HOME");
  if (data != nullptr && data[0] == '/') return data;
  const char* const home = std::getenv("HOME");
  return (home != nullptr && home[0] == '/' ? home : currentHomeFolder().path()) + "/.local/share";
}

Found<UniqueDescriptor> openNearest(const FileUrl& url) {
  for (FileUrl folder = url;; folder = folder.deletingLastPathComponent()) {
    auto opened = openFolder(AT_FDCWD, folder.path());
    if (opened || opened.error() != std::errc::no_such_file_or_directory || folder.path() == "/") return opened;
  }
}

Found<UniqueDescriptor> ensureFolders(const FileUrl& url) {
  auto opened = openFolder(AT_FDCWD, url.path());
  if (opened || opened.error() != std::errc::no_such_file_or_directory || url.path() == "/") return opened;
  if (auto parent = ensureFolders(url.deletingLastPathComponent()); !parent) return parent;
  if (mkdir(url.path().c_str(), kOwnersOnly) != 0 && errno != EEXIST) return systemFailure(errno);
  return openFolder(AT_FDCWD, url.path());
}

/// The topmost folder above this one on the same volume.
Found<UniqueDescriptor> topOf(const Volume& volume, const UniqueDescriptor& folder) {
  auto top = openFolder(folder.get(), ".");
  while (top) {
    auto above = openFolder(top->get(), "..");
    if (!above) return above;
    struct stat here{};
    struct stat there{};
    if (fstat(top->get(), &here) != 0 || fstat(above->get(), &there) != 0) return systemFailure(errno);
    const bool isRoot = here.st_ino == there.st_ino && here.st_dev == there.st_dev;
    const auto volumeAbove = volumeOf(*above);
    if (!volumeAbove) return std::unexpected(volumeAbove.error());
    if (isRoot || *volumeAbove != volume) break;
    top = std::move(above);
  }
  return top;
}

/// The user's folder in the .Trash that the administrator has made for all users.
Found<UniqueDescriptor> openShared(const Volume& volume, const UniqueDescriptor& top) {
  const auto shared = openFolder(top.get(), std::string(kShared), O_NOFOLLOW);
  if (!shared) return systemFailure(ENOTSUP);
  struct stat status{};
  // Without the sticky bit any user could remove another one's folder.
  if (fstat(shared->get(), &status) != 0 || (status.st_mode & S_ISVTX) == 0) return systemFailure(ENOTSUP);
  auto trash = ensureFolder(*shared, std::to_string(geteuid()));
  if (trash && !isOwnOn(volume, *trash)) return systemFailure(ENOTSUP);
  return trash;
}

Found<UniqueDescriptor> openPrivate(const Volume& volume, const UniqueDescriptor& top) {
  auto trash = ensureFolder(top, std::string(kPrivate) + std::to_string(geteuid()));
  if (trash && !isOwnOn(volume, *trash)) return systemFailure(ENOTSUP);
  return trash;
}

/// 0 when there is no folder; a link is none.
mode_t folderMode(const std::string& path) {
  struct stat status{};
  return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) ? status.st_mode : 0;
}

bool isNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool isCalledLikeATrash(const FileUrl& folder) {
  const std::string name = folder.lastPathComponent();
  if (isNumber(name)) return folder.deletingLastPathComponent().lastPathComponent() == kShared;
  return name == "Trash" || (name.starts_with(kPrivate) && isNumber(std::string_view(name).substr(kPrivate.size())));
}

}  // namespace

std::expected<std::optional<TrashFolder>, std::error_code> openHomeTrash(const HeldItem& held) {
  const auto volume = volumeOf(held.folder);
  if (!volume) return std::unexpected(volume.error());
  const FileUrl data(dataHome());
  const auto nearest = openNearest(data);
  if (!nearest && mappedToNotSupported(nearest.error()) == std::errc::not_supported) return std::nullopt;
  if (!nearest) return std::unexpected(nearest.error());
  const auto homeVolume = volumeOf(*nearest);
  if (!homeVolume) return std::unexpected(homeVolume.error());
  if (*homeVolume != *volume) return std::nullopt;
  auto trash = ensureFolders(data.appending("Trash"));
  if (!trash) return std::unexpected(mappedToNotSupported(trash.error()));
  if (!isOwnOn(*volume, *trash)) return systemFailure(ENOTSUP);
  return openInside(std::move(*trash), {});
}

std::expected<std::string, std::error_code> topFolder(const HeldItem& held) {
  const auto volume = volumeOf(held.folder);
  if (!volume) return std::unexpected(volume.error());
  const auto top = topOf(*volume, held.folder);
  if (!top) return std::unexpected(top.error());
  return currentPath(*top);
}

std::expected<TrashFolder, std::error_code> openVolumeTrash(const HeldItem& held, const std::string& mountPoint) {
  const auto volume = volumeOf(held.folder);
  if (!volume) return std::unexpected(volume.error());
  const auto top = topOf(*volume, held.folder);
  if (!top) return std::unexpected(top.error());
  auto topPath = currentPath(*top);
  if (!topPath) return std::unexpected(topPath.error());
  if (*topPath != mountPoint) return systemFailure(ENOTSUP);
  auto trash = openShared(*volume, *top);
  if (!trash) trash = openPrivate(*volume, *top);
  if (!trash) return std::unexpected(mappedToNotSupported(trash.error()));
  return openInside(std::move(*trash), std::move(*topPath));
}

bool isTrash(const std::string& path) {
  const FileUrl folder(path);
  if (folder.lastPathComponent() == kShared) return (folderMode(path) & S_ISVTX) != 0;
  return isCalledLikeATrash(folder) && folderMode(path + "/files") != 0 && folderMode(path + "/info") != 0;
}

}  // namespace dunmere
