// SweeperVolume and SweeperItem: a drive that can be swept, and a row of a column.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "engine/file_url.h"

namespace dunmere {

/// One mounted, user-facing volume. An immutable value. Identity is id(), the path alone; equality and hash take in all
/// four fields, so that two readings of one volume with different free space are different values with the same
/// identity.
struct SweeperVolume {
  FileUrl url;                  ///< mount point
  std::string name;             ///< display name, raw bytes
  std::int64_t totalBytes = 0;  ///< capacity in bytes
  std::int64_t freeBytes = 0;   ///< available capacity in bytes

  std::string id() const { return url.path(); }

  friend bool operator==(const SweeperVolume&, const SweeperVolume&) = default;
};

/// One direct child of a listed folder. An immutable value. Identity is id(), the path alone; equality and hash take in
/// all six fields, so that a row whose folder grew between two snapshots keeps its identity and compares unequal to its
/// earlier value.
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

/// A hash of all fields, in this order.
template <typename... Fields>
std::size_t hashOfFields(const Fields&... fields) {
  std::size_t seed = 0;
  // The golden-ratio mix of the well-known hash combiner: spreads equal fields at different positions apart.
  ((seed ^= std::hash<Fields>{}(fields) + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2)), ...);
  return seed;
}

}  // namespace dunmere

template <>
struct std::hash<dunmere::SweeperVolume> {
  std::size_t operator()(const dunmere::SweeperVolume& volume) const noexcept {
    return dunmere::hashOfFields(volume.url, volume.name, volume.totalBytes, volume.freeBytes);
  }
};

template <>
struct std::hash<dunmere::SweeperItem> {
  std::size_t operator()(const dunmere::SweeperItem& item) const noexcept {
    return dunmere::hashOfFields(item.url, item.name, item.isDirectory, item.sizeBytes, item.sizeIsPartialMinimum,
                                 item.isSymbolicLink);
  }
};
