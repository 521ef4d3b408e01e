// sweep_once: runs the engine once on a real tree and prints what it found as one line of JSON.

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bench/json_text.h"
#include "bench/peak_memory.h"
#include "engine/disk_sweeper_scan.h"
#include "engine/listing/column_listing.h"
#include "platform/platform_file_system.h"
#include "sweeper/error_text.h"

namespace {

using dunmere::DiskSweeperScan;
using dunmere::FileUrl;
using dunmere::JsonText;
using dunmere::SweepInventory;

constexpr int kFailed = 1;
constexpr int kBadUsage = 2;
constexpr unsigned kMostReaders = 256;

struct Options {
  std::string root;
  std::optional<unsigned> readers;  ///< none: the engine chooses
  std::optional<std::string> dumpFile;
  std::vector<std::string> columns;
  bool withSnapshots = false;
};

[[noreturn]] void badUsage(const std::string& why) {
  std::cerr << "sweep_once: " << why
            << "\nusage: sweep_once ROOT [--readers N] [--dump FILE] [--column FOLDER]... [--snapshots]\n"
               "  --readers N      threads that read ahead, 0 to "
            << kMostReaders
            << "; 0: the counting thread reads alone; without it the engine chooses\n"
               "  --dump FILE      write every entry as bytes, TAB, path key, NUL\n"
               "  --column FOLDER  also list this folder from the final inventory\n"
               "  --snapshots      also print the counters of every snapshot\n";
  std::exit(kBadUsage);
}

[[noreturn]] void fail(const std::string& why) {
  std::cerr << "sweep_once: " << why << "\n";
  std::exit(kFailed);
}

unsigned parseReaders(std::string_view text) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value > kMostReaders) {
    badUsage("--readers takes a number from 0 to " + std::to_string(kMostReaders) + ", not “" + std::string(text) +
             "”");
  }
  return value;
}

/// Prefixes the working directory and leaves the rest as it was typed, so that odd spellings reach the engine.
std::string absolute(const std::string& path) {
  if (path.empty()) badUsage("a path is empty");
  if (path.starts_with('/')) return path;
  std::error_code code;
  const std::string folder = std::filesystem::current_path(code).native();
  if (code) fail("cannot tell the working directory: " + code.message());
  return folder == "/" ? "/" + path : folder + "/" + path;
}

Options parseOptions(const std::vector<std::string>& arguments) {
  Options options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    const auto value = [&]() -> const std::string& {
      if (i + 1 == arguments.size()) badUsage(argument + " needs a value");
      return arguments[++i];
    };
    if (argument == "--readers") {
      options.readers = parseReaders(value());
    } else if (argument == "--dump") {
      options.dumpFile = value();
    } else if (argument == "--column") {
      options.columns.push_back(absolute(value()));
    } else if (argument == "--snapshots") {
      options.withSnapshots = true;
    } else if (argument.starts_with("--")) {
      badUsage("unknown option " + argument);
    } else if (!options.root.empty()) {
      badUsage("more than one ROOT");
    } else {
      options.root = absolute(argument);
    }
  }
  if (options.root.empty()) badUsage("ROOT is missing");
  return options;
}

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct SnapshotCounters {
  std::int64_t fileCount;
  std::int64_t totalFileBytes;
  bool hadReadErrors;
  bool scanComplete;
};

struct Sweep {
  SweepInventory inventory;
  std::vector<SnapshotCounters> snapshots;
  double seconds;
  std::int64_t peakRssBytes;
};

std::int64_t peakRss() {
  const auto bytes = dunmere::peakRssBytes();
  if (!bytes) fail("the system tells no peak of this process's memory");
  return *bytes;
}

Sweep sweep(dunmere::FileSystem& fileSystem, const Options& options) {
  std::vector<SnapshotCounters> snapshots;
  SweepInventory latest;  // held over the next snapshot, as an interface does
  const auto onUpdate = [&](const SweepInventory& snapshot) {
    latest = snapshot;
    snapshots.push_back({snapshot.fileCount, snapshot.totalFileBytes, snapshot.hadReadErrors, snapshot.scanComplete});
  };
  dunmere::ScanOptions scanOptions;
  scanOptions.readers = options.readers;
  const auto start = std::chrono::steady_clock::now();
  auto result = DiskSweeperScan::runProgressiveScan(fileSystem, FileUrl(options.root), onUpdate, scanOptions).get();
  const double seconds = secondsSince(start);
  if (!result) fail(dunmere::errorText(result.error()));
  return {*result, std::move(snapshots), seconds, peakRss()};
}

void writeDump(const std::string& file, const SweepInventory& inventory) {
  std::FILE* out = std::fopen(file.c_str(), "wb");
  if (out == nullptr) fail("cannot write " + file + ": " + std::generic_category().message(errno));
  inventory.pathBytes.forEach([&](std::string_view key, std::int64_t bytes) {
    std::fprintf(out, "%lld\t", static_cast<long long>(bytes));
    std::fwrite(key.data(), 1, key.size(), out);
    std::fputc('\0', out);
  });
  const bool failed = std::ferror(out) != 0;
  if (std::fclose(out) != 0 || failed) fail("cannot write " + file + ": " + std::generic_category().message(errno));
}

void appendColumn(JsonText& json, const std::expected<dunmere::ColumnRows, dunmere::SweepError>& listed) {
  if (!listed) {
    json.openObject().key("error").text(dunmere::errorText(listed.error())).closeObject();
    return;
  }
  json.openArray();
  for (const dunmere::SweeperItem& item : listed->items()) {
    json.openObject();
    json.key("name").text(item.name);
    json.key("isDirectory").boolean(item.isDirectory);
    json.key("sizeBytes").integer(item.sizeBytes);
    json.key("sizeIsPartialMinimum").boolean(item.sizeIsPartialMinimum);
    json.key("isSymbolicLink").boolean(item.isSymbolicLink);
    json.closeObject();
  }
  json.closeArray();
}

void appendColumns(JsonText& json, dunmere::FileSystem& fileSystem, const Options& options,
                   const SweepInventory& inventory) {
  std::vector<double> times;
  std::map<std::string, dunmere::ColumnListing> columns;  // as a window keeps them for its open columns
  json.key("columns").openArray();
  for (const std::string& folder : options.columns) {
    const auto start = std::chrono::steady_clock::now();
    dunmere::ColumnListing& column = columns.try_emplace(folder, FileUrl(folder)).first->second;
    const auto listed = column.list(fileSystem, inventory);
    times.push_back(secondsSince(start));
    appendColumn(json, listed);
  }
  json.closeArray();
  json.key("columnSeconds").openArray();
  for (const double time : times) json.seconds(time);
  json.closeArray();
}

void appendSnapshots(JsonText& json, const std::vector<SnapshotCounters>& snapshots) {
  json.key("snapshots").openArray();
  for (const SnapshotCounters& snapshot : snapshots) {
    json.openArray().integer(snapshot.fileCount).integer(snapshot.totalFileBytes);
    json.boolean(snapshot.hadReadErrors).boolean(snapshot.scanComplete).closeArray();
  }
  json.closeArray();
}

void appendTotals(JsonText& json, const Sweep& done) {
  json.key("root").text(done.inventory.root.bytes());
  json.key("rootPath").text(done.inventory.rootPath);
  json.key("fileCount").integer(done.inventory.fileCount);
  json.key("totalFileBytes").integer(done.inventory.totalFileBytes);
  json.key("hadReadErrors").boolean(done.inventory.hadReadErrors);
  json.key("scanComplete").boolean(done.inventory.scanComplete);
  json.key("entries").integer(done.inventory.pathBytes.size());
  json.key("snapshotCount").integer(static_cast<std::int64_t>(done.snapshots.size()));
  json.key("seconds").seconds(done.seconds);
  json.key("peakRssBytes").integer(done.peakRssBytes);
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = parseOptions({argv + 1, argv + argc});
  const auto fileSystem = dunmere::makePlatformFileSystem();
  const Sweep done = sweep(*fileSystem, options);
  if (options.dumpFile) writeDump(*options.dumpFile, done.inventory);

  JsonText json;
  json.openObject();
  appendTotals(json, done);
  if (options.withSnapshots) appendSnapshots(json, done.snapshots);
  if (!options.columns.empty()) appendColumns(json, *fileSystem, options, done.inventory);
  json.closeObject();
  std::cout << json.str() << std::endl;
  return std::cout ? 0 : kFailed;
}
