// DiskSweeperScan: the engine's three operations: list the volumes (volumes/volume_discovery.cpp, as is
// StorageScanner), scan a tree (scan/progressive_scan.cpp), list one column (listing/column_listing.cpp).
#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <future>
#include <optional>
#include <vector>

#include "engine/file_system.h"
#include "engine/file_url.h"
#include "engine/sweep_error.h"
#include "engine/sweep_inventory.h"
#include "engine/sweeper_values.h"

namespace dunmere {

/// How a scan works, which never changes what it finds.
struct ScanOptions {
  std::optional<unsigned> readers;  ///< threads that read ahead of the scan, 0 or more; none: the usual number
};

/// A namespace without instances or state.
struct DiskSweeperScan {
  DiskSweeperScan() = delete;

  /// Receives a snapshot on the scanning thread; the scan waits until it returns. Must not throw.
  using UpdateCallback = std::function<void(const SweepInventory& snapshot)>;
  using ScanResult = std::expected<SweepInventory, SweepError>;

  /// The drives to offer, sorted by name. Never fails; empty only when even the boot volume cannot be measured. Any
  /// thread; waits for every volume.
  static std::vector<SweeperVolume> listVolumes(FileSystem& fileSystem);

  // The steps of listVolumes(), for callers that measure the volumes side by side. Any thread.
  /// The mounted volumes that may be drives; none when the list cannot be had. Waits for no volume.
  static std::optional<std::vector<VolumeMount>> volumeCandidates(FileSystem& fileSystem);
  /// The drive, or none when it is not offered or cannot be measured. Waits for this volume.
  static std::optional<SweeperVolume> measureVolume(FileSystem& fileSystem, const VolumeMount& candidate);
  /// The boot volume, for when nothing else can be listed; empty when it cannot be measured. Waits for it.
  static std::vector<SweeperVolume> fallbackVolumes(FileSystem& fileSystem);
  /// By name. Volumes of the same name get their mount points added to it.
  static void arrangeVolumes(FileSystem& fileSystem, std::vector<SweeperVolume>& volumes);

  /// Walks the tree under `under` on a detached thread of utility priority and adds up the disk space of every regular
  /// file. Publishes a snapshot through `onUpdate` after every 12,000th counted file and after a counted file when
  /// 350 ms have passed since the last one, and in the end the final one, which is also the future's value. Returns at
  /// once; the future does not wait when destroyed. Fails, publishing nothing, when the root does not exist or is no
  /// folder, or when no thread can be started; a root that may not be read is an empty scan with read errors. Running
  /// out of memory half-way fails too, after the snapshots published until then. `fileSystem` must outlive the scan; a
  /// scan is never cancelled. Once the future is ready nothing touches `fileSystem` or `onUpdate` any more.
  static std::future<ScanResult> runProgressiveScan(FileSystem& fileSystem, FileUrl under, UpdateCallback onUpdate,
                                                    ScanOptions options = {});

  /// The direct children of `parent`, sized from `inventory`, largest first, equal sizes by name. Any thread; reads the
  /// disk for this one folder only, and waits for it. Fails with the listing's error, and when the column does not fit
  /// into memory. To list a folder again and again, keep a ColumnListing, which then has less to do.
  static std::expected<std::vector<SweeperItem>, SweepError> columnChildren(FileSystem& fileSystem,
                                                                            const FileUrl& parent,
                                                                            const SweepInventory& inventory);
};

/// Capacity of a volume in bytes; totalBytes is at least 1, freeBytes at most totalBytes.
struct VolumeSnapshot {
  std::int64_t totalBytes = 0;
  std::int64_t freeBytes = 0;

  friend bool operator==(const VolumeSnapshot&, const VolumeSnapshot&) = default;
};

/// A namespace without instances or state.
struct StorageScanner {
  StorageScanner() = delete;

  /// The boot volume's capacity and free space, measured through the user's home folder; none when it cannot be
  /// measured. Any thread.
  static std::optional<VolumeSnapshot> bootVolumeSnapshot(FileSystem& fileSystem);
};

}  // namespace dunmere
