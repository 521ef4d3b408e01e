// Times the engine's operations on a tree in memory, and the text of a byte count.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <vector>

#include "bench/regular_file_system.h"
#include "engine/disk_sweeper_scan.h"
#include "sweeper/byte_count_text.h"

namespace dunmere::bench {
namespace {

using std::chrono_literals::operator""ms;

SweepInventory scan(RegularFileSystem& fileSystem, DiskSweeperScan::UpdateCallback onUpdate, unsigned readers) {
  ScanOptions options;
  options.readers = readers;
  auto result = DiskSweeperScan::runProgressiveScan(fileSystem, FileUrl("/"), std::move(onUpdate), options).get();
  return std::move(result).value();
}

/// 996,450 files in 66,430 folders. Argument: read-ahead threads.
void scanOfMillionFiles(benchmark::State& state) {
  RegularFileSystem fileSystem({.levels = 5, .foldersPerFolder = 9, .filesPerFolder = 15});
  for (auto _ : state) {
    const SweepInventory inventory =
        scan(fileSystem, [](const SweepInventory&) {}, static_cast<unsigned>(state.range(0)));
    if (inventory.fileCount != fileSystem.fileCount()) state.SkipWithError("the scan lost files");
  }
  state.SetItemsProcessed(state.iterations() * fileSystem.fileCount());
}
BENCHMARK(scanOfMillionFiles)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

/// A snapshot after every counted file, each held over the next one: an item is one publication with its file.
void publicationAfterEveryFile(benchmark::State& state) {
  RegularFileSystem fileSystem({.levels = 3, .foldersPerFolder = 9, .filesPerFolder = 15});
  fileSystem.setClockStep(350ms);
  std::int64_t published = 0;
  for (auto _ : state) {
    SweepInventory latest;
    const auto keep = [&](const SweepInventory& snapshot) {
      latest = snapshot;
      ++published;
    };
    benchmark::DoNotOptimize(scan(fileSystem, keep, 0));
  }
  state.SetItemsProcessed(published);
}
BENCHMARK(publicationAfterEveryFile)->Unit(benchmark::kMillisecond)->UseRealTime();

void columnOfHundredThousandEntries(benchmark::State& state) {
  constexpr std::int64_t kEntries = 100'000;
  RegularFileSystem fileSystem({.levels = 0, .foldersPerFolder = 0, .filesPerFolder = kEntries});
  const SweepInventory inventory = scan(fileSystem, [](const SweepInventory&) {}, 0);
  for (auto _ : state) {
    const auto column = DiskSweeperScan::columnChildren(fileSystem, FileUrl("/"), inventory);
    if (!column || column->size() != kEntries) state.SkipWithError("the column lost entries");
  }
  state.SetItemsProcessed(state.iterations() * kEntries);
}
BENCHMARK(columnOfHundredThousandEntries)->Unit(benchmark::kMillisecond);

void byteCountTextOfEveryUnit(benchmark::State& state) {
  const std::vector<std::int64_t> counts = {0, 999, 12'345, 12'345'678, 1'234'567'898, 999'995'000'000, INT64_MAX};
  for (auto _ : state) {
    for (const std::int64_t count : counts) benchmark::DoNotOptimize(byteCountText(count));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(counts.size()));
}
BENCHMARK(byteCountTextOfEveryUnit);

}  // namespace
}  // namespace dunmere::bench

BENCHMARK_MAIN();
