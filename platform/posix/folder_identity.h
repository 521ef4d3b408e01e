// folderIdentity: what tells one open folder from any other.
#pragma once

#include <cstdint>
#include <optional>

namespace dunmere {

struct FolderIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;

  friend bool operator==(const FolderIdentity&, const FolderIdentity&) = default;
};

/// The identity of an open folder, which stays the same as long as it exists. No server is asked where that can be
/// avoided. None when the system does not tell. The build picks the implementation. Any thread.
std::optional<FolderIdentity> folderIdentity(int descriptor);

}  // namespace dunmere
