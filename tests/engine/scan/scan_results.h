// ScanResults: what a scan of a tree in memory published and returned.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {

/// Snapshots in the order of publication, the final one last; none when the scan failed.
inline std::vector<SweepInventory> snapshotsOfScan(MemoryFileSystem& fileSystem, const std::string& root) {
  std::vector<SweepInventory> snapshots;
  const auto result =
      DiskSweeperScan::runProgressiveScan(fileSystem, FileUrl(root), [&snapshots](const SweepInventory& snapshot) {
        snapshots.push_back(snapshot);
      }).get();
  if (!result) snapshots.clear();
  return snapshots;
}

/// The same with a snapshot after every counted file.
inline std::vector<SweepInventory> snapshotsOfEveryFile(MemoryFileSystem& fileSystem, const std::string& root) {
  fileSystem.setClockStep(std::chrono::seconds(1));
  return snapshotsOfScan(fileSystem, root);
}

inline SweepInventory inventoryOfScan(MemoryFileSystem& fileSystem, const std::string& root) {
  const auto snapshots = snapshotsOfScan(fileSystem, root);
  return snapshots.at(snapshots.size() - 1);
}

}  // namespace dunmere::test
