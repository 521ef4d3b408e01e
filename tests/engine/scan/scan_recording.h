// Runs a scan to its end and keeps all that it published, as plain maps.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "engine/disk_sweeper_scan.h"

namespace dunmere::test {

using PlainMap = std::map<std::string, std::int64_t>;

/// All entries of an inventory's map. An entry that is visited twice makes the result longer than size() says.
inline PlainMap entriesOf(const PathBytes& pathBytes) {
  PlainMap entries;
  pathBytes.forEach([&entries](std::string_view key, std::int64_t bytes) {
    if (!entries.emplace(key, bytes).second) entries.emplace(std::string(key) + " again", bytes);
  });
  return entries;
}

/// What one snapshot says, in values that can be compared and printed.
struct PlainSnapshot {
  PlainMap entries;
  std::int64_t fileCount = 0;
  std::int64_t totalFileBytes = 0;
  bool hadReadErrors = false;
  bool scanComplete = false;

  friend bool operator==(const PlainSnapshot&, const PlainSnapshot&) = default;
};

inline PlainSnapshot plain(const SweepInventory& inventory) {
  return {entriesOf(inventory.pathBytes), inventory.fileCount, inventory.totalFileBytes, inventory.hadReadErrors,
          inventory.scanComplete};
}

/// A scan that has ended.
struct RecordedScan {
  std::vector<SweepInventory> published;     ///< as they were handed out
  std::vector<PlainSnapshot> whenPublished;  ///< what each one said at that moment
  DiskSweeperScan::ScanResult result;

  const SweepInventory& last() const { return published.back(); }
};

inline RecordedScan recordScan(FileSystem& fileSystem, const std::string& root, ScanOptions options = {}) {
  RecordedScan scan;
  scan.result = DiskSweeperScan::runProgressiveScan(
                    fileSystem, FileUrl(root),
                    [&scan](const SweepInventory& snapshot) {
                      scan.published.push_back(snapshot);
                      scan.whenPublished.push_back(plain(snapshot));
                    },
                    options)
                    .get();
  return scan;
}

}  // namespace dunmere::test
