// readMountTable: the system's mounts, as far as they can be reached.
#pragma once

#include <expected>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace dunmere {

/// One mount. All texts are raw bytes.
struct MountEntry {
  int id = 0;
  int parentId = 0;        ///< the mount that this one is mounted on
  std::string mountPoint;  ///< absolute path without trailing slash
  std::string root;        ///< the folder of the file system that is mounted: "/" for all of it
  std::string fileSystem;  ///< type, "ext4"
  std::string source;      ///< device, share, or any other word
  std::string subvolume;   ///< the btrfs subvolume that the root lies in; else empty
  bool isPseudo = false;   ///< made by the kernel or in memory: holds no files on a disk
  bool isNetwork = false;

  friend bool operator==(const MountEntry&, const MountEntry&) = default;
};

/// The mounts of this process in the order of mounting, without those that another mount hides. `file` is in the format
/// of mountinfo. Touches no mounted file system. Fails with an errno value. Any thread.
std::expected<std::vector<MountEntry>, int> readMountTable(const std::string& file = "/proc/self/mountinfo");

/// The last components of the paths where volumes mount themselves when they are opened (autofs). Empty when the mounts
/// cannot be read. Touches no mounted file system. Any thread.
using AutomountNames = std::set<std::string, std::less<>>;
AutomountNames automountNames();

/// The mounts that a path can reach: not those that a later mount hides. Keeps the order.
std::vector<MountEntry> withoutHiddenMounts(const std::vector<MountEntry>& mounts);

}  // namespace dunmere
