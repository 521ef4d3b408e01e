// SweeperItem: one row of a column, a direct child of a listed folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "engine/file_url.h"

namespace dunmere {

/// An immutable value. Identity is id(), the path alone; equality and hash take in all six fields, so that a row
/// whose folder grew between two snapshots keeps its identity and compares unequal to its earlier value.
struct SweeperItem {
  FileUrl url;                        ///< the child as listed; for a symbolic link the link itself
  std::string name;                   ///< last path component, raw bytes
  bool isDirectory = false;           ///< the entry, or a link's target, is a folder
  std::int64_t sizeBytes = 0;         ///< size to show and to sort by, in bytes
  bool sizeIsPartialMinimum = false;  ///< the size is only a lower bound; set on folder rows only
  bool isSymbolicLink = false;        ///< the entry itself is a symbolic link

  std::string id() const { return url.path(); }

  friend bool operator==(const SweeperItem&, const SweeperItem&) = default;
};

}  // namespace dunmere

template <>
struct std::hash<dunmere::SweeperItem> {
  std::size_t operator()(const dunmere::SweeperItem& item) const noexcept;
};
