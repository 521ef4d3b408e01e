// Paths as bytes: what lies where, which mount holds it, and how other programs are told.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "engine/file_url.h"

namespace dunmere {

/// Whether `path` is `folder` or lies below it; both absolute and without trailing slash. Lexical.
inline bool isAtOrBelow(std::string_view path, std::string_view folder) {
  if (folder == "/") return path.starts_with('/');
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

/// The mount that holds `path`, an absolute path without "." and "..": the one whose `mountPoint` is nearest above it,
/// of several at one folder the last. Lexical; null when there is none. Points into `mounts`.
template <typename Mount>
const Mount* mountHolding(const std::vector<Mount>& mounts, std::string_view path) {
  const Mount* nearest = nullptr;
  for (const Mount& mount : mounts) {
    if (!isAtOrBelow(path, mount.mountPoint)) continue;
    if (nearest == nullptr || mount.mountPoint.size() >= nearest->mountPoint.size()) nearest = &mount;
  }
  return nearest;
}

/// Whether something is mounted exactly at `path`, a path as above, or anywhere below it. Lexical.
template <typename Mount>
bool isMountAtOrBelow(const std::vector<Mount>& mounts, std::string_view path) {
  return std::ranges::any_of(mounts, [&](const Mount& mount) { return isAtOrBelow(mount.mountPoint, path); });
}

/// `bytes` with every byte percent-encoded but '/' and RFC 3986's unreserved characters, so that the exact bytes arrive
/// whatever their encoding. Pure ASCII. Any thread.
std::string percentEncoded(std::string_view bytes);

/// The absolute `path` as a file: URI. Any thread.
std::string fileUri(std::string_view path);

/// The home folder of the process's real user; "/" when the account database names none. The environment is not asked:
/// it may have been kept from another user's session. Any thread.
FileUrl currentHomeFolder();

}  // namespace dunmere
