// Times each publication of a snapshot, and weighs what a kept snapshot takes, on made-up trees of millions of files.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <vector>

#include "bench/regular_file_system.h"
#include "engine/disk_sweeper_scan.h"

namespace dunmere::bench {
namespace {

using Clock = std::chrono::steady_clock;

/// Remembers when the scan last asked for the time: after each counted file it does, to learn whether a snapshot is
/// due. Its answer never changes, so that only every 12,000th file makes one.
class StampingFileSystem : public RegularFileSystem {
 public:
  using RegularFileSystem::RegularFileSystem;

  Instant now() override {
    lastAsked_ = Clock::now();
    return {};
  }
  Clock::time_point lastAsked() const { return lastAsked_; }

 private:
  Clock::time_point lastAsked_;
};

/// Bytes that the program holds on the heap.
std::size_t heldBytes() {
  const struct mallinfo2 heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

/// Keeps each snapshot over the next one, as the pane does, and adds up how long each publication takes: from the
/// moment it is found due to the moment the receiver has it and has let the one before go.
void publication(benchmark::State& state, const RegularFileSystem::Shape& shape) {
  StampingFileSystem fileSystem(shape);
  std::vector<double> microseconds;
  for (auto _ : state) {
    SweepInventory latest;
    const auto keep = [&](const SweepInventory& snapshot) {
      latest = snapshot;
      const std::chrono::duration<double, std::micro> taken = Clock::now() - fileSystem.lastAsked();
      if (!snapshot.scanComplete) microseconds.push_back(taken.count());
    };
    benchmark::DoNotOptimize(DiskSweeperScan::runProgressiveScan(fileSystem, FileUrl("/"), keep, {.readers = 0}).get());
    if (latest.fileCount != fileSystem.fileCount()) state.SkipWithError("the scan lost files");
  }
  std::ranges::sort(microseconds);
  state.counters["files"] = static_cast<double>(fileSystem.fileCount());
  state.counters["snapshots"] = static_cast<double>(microseconds.size());
  state.counters["median_us"] = microseconds[microseconds.size() / 2];
  state.counters["worst_us"] = microseconds.back();
}

/// Keeps all snapshots of one scan, then lets all but the final one go: what that frees, a snapshot, in percent of
/// what the final one with the whole tree holds.
void keptSnapshot(benchmark::State& state, const RegularFileSystem::Shape& shape) {
  RegularFileSystem fileSystem(shape);
  for (auto _ : state) {
    const std::size_t before = heldBytes();
    std::vector<SweepInventory> kept;
    const auto keep = [&](const SweepInventory& snapshot) { kept.push_back(snapshot); };
    benchmark::DoNotOptimize(DiskSweeperScan::runProgressiveScan(fileSystem, FileUrl("/"), keep, {.readers = 0}).get());
    const std::size_t withAll = heldBytes();
    const auto count = static_cast<double>(kept.size() - 1);
    kept = std::vector<SweepInventory>{kept.back()};
    const std::size_t withLast = heldBytes();
    const double each = static_cast<double>(withAll - withLast) / count;
    state.counters["tree_bytes"] = static_cast<double>(withLast - before);
    state.counters["snapshot_bytes"] = each;
    state.counters["snapshot_percent"] = 100 * each / static_cast<double>(withLast - before);
  }
}

constexpr RegularFileSystem::Shape kMillion{.levels = 5, .foldersPerFolder = 9, .filesPerFolder = 15};
constexpr RegularFileSystem::Shape kTenMillion{.levels = 6, .foldersPerFolder = 9, .filesPerFolder = 17};
/// A snapshot lists the folders that are open: the deeper, the more.
constexpr RegularFileSystem::Shape kDeepMillion{.levels = 10'000, .foldersPerFolder = 1, .filesPerFolder = 100};

BENCHMARK_CAPTURE(publication, millionFiles, kMillion)->Iterations(5)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(publication, tenMillionFiles, kTenMillion)
    ->Iterations(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(publication, millionFilesTenThousandDeep, kDeepMillion)
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(keptSnapshot, millionFiles, kMillion)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keptSnapshot, tenMillionFiles, kTenMillion)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace dunmere::bench

BENCHMARK_MAIN();
