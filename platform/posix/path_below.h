// isAtOrBelow: whether one path leads into a folder.
#pragma once

#include <string_view>

namespace dunmere {

/// Whether `path` is `folder` or lies below it; both absolute and without trailing slash. Lexical.
inline bool isAtOrBelow(std::string_view path, std::string_view folder) {
  if (folder == "/") return path.starts_with('/');
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

}  // namespace dunmere
