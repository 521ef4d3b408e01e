#include "platform/linux/mount_choice.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <string_view>

#include "engine/ascii.h"
#include "platform/posix/paths.h"

namespace dunmere {
namespace {

template <std::size_t size>
bool isOneOf(const std::string_view (&words)[size], std::string_view word) {
  return std::ranges::find(words, word) != std::end(words);
}

/// Packed images of programs, and layers over folders that are counted where they lie.
bool isImageOrLayer(std::string_view fileSystem) {
  static constexpr std::string_view kTypes[] = {
      "aufs",          "composefs",       "cramfs", "erofs",    "fuse.fuse-overlayfs",
      "fuse.snapfuse", "fuse.squashfuse", "romfs",  "squashfs", "unionfs"};
  return isOneOf(kTypes, fileSystem);
}

/// Not a bind mount: that shows a folder a second time.
bool isWholeVolume(const MountEntry& mount) {
  if (mount.root == "/") return true;
  if (mount.fileSystem == "btrfs") return mount.root == mount.subvolume;
  // A folder of a share may be mounted; the source then ends with that folder.
  return isShare(mount) && mount.source.ends_with(mount.root);
}

bool isBelowAny(const std::string& path, const auto& folders) {
  return std::ranges::any_of(folders, [&path](const char* folder) { return isAtOrBelow(path, folder); });
}

bool isHidden(std::string_view mountPoint) {
  return mountPoint.find("/.") != std::string_view::npos;
}

bool isBootOrEfi(const MountEntry& mount) {
  if (isBelowAny(mount.mountPoint, std::to_array({"/boot", "/efi", "/esp"}))) return true;
  const std::string name = asciiLowerCased(mount.mountPoint.substr(mount.mountPoint.rfind('/') + 1));
  return mount.fileSystem == "vfat" && (name == "efi" || name == "esp");
}

/// Folders of the system, where nobody looks for a drive.
bool isSystemPlace(const MountEntry& mount) {
  static constexpr auto kNever = std::to_array(
      {"/dev", "/gnu", "/nix", "/ostree", "/proc", "/snap", "/sys", "/sysroot", "/usr", "/var/lib", "/var/snap"});
  static constexpr auto kOnlyShares =
      std::to_array({"/bin", "/etc", "/lib", "/lib32", "/lib64", "/opt", "/root", "/sbin", "/tmp", "/var"});
  if (isAtOrBelow(mount.mountPoint, "/run")) return !isAtOrBelow(mount.mountPoint, "/run/media");
  return isBelowAny(mount.mountPoint, kNever) || (!isShare(mount) && isBelowAny(mount.mountPoint, kOnlyShares));
}

/// The mount point's folder was deleted, so no path leads to the mount.
bool isDetached(std::string_view mountPoint) {
  return mountPoint.ends_with("//deleted");
}

}  // namespace

bool isShare(const MountEntry& mount) {
  // Some libmount takes for pseudo or local file systems.
  static constexpr std::string_view kShares[] = {"beegfs",           "ceph",   "davfs",  "fuse.davfs2", "fuse.rclone",
                                                 "fuse.vmhgfs-fuse", "lustre", "prl_fs", "virtiofs",    "vboxsf"};
  return mount.isNetwork || isOneOf(kShares, mount.fileSystem);
}

bool holdsUserFiles(const MountEntry& mount) {
  if (isImageOrLayer(mount.fileSystem) || mount.fileSystem == "swap") return false;
  return isShare(mount) || !mount.isPseudo;
}

bool isOfferedMount(const MountEntry& mount) {
  if (mount.mountPoint == "/") return true;  // also a container's overlay or a live system in memory
  return holdsUserFiles(mount) && isWholeVolume(mount) && !isHidden(mount.mountPoint) && !isBootOrEfi(mount) &&
         !isSystemPlace(mount) && !isDetached(mount.mountPoint);
}

}  // namespace dunmere
