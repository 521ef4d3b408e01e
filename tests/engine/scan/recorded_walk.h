// What the tests of ReadAhead share: walks that are written down, and threads that wait for each other.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "engine/inventory/packed_files.h"
#include "engine/scan/read_ahead.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {

inline std::shared_ptr<OpenFolder> open(FileSystem& fileSystem, const std::string& path) {
  return *fileSystem.openFolder(FileUrl(path), EntryDetail::sizes);
}

inline std::vector<std::string> namesOf(std::string_view packed) {
  std::vector<std::string> names;
  const char* const end = packed.data() + packed.size();
  for (const char* position = packed.data(); position != end;) names.emplace_back(takePackedFile(position).name);
  return names;
}

/// One line a folder: its depth as indentation, its name, its files, "!" when it failed.
inline std::string takeFolder(ReadAhead& readAhead, const ReadAhead::Folder& folder) {
  std::string line = std::string(2 * folder.depth, ' ') + std::string(folder.name) + ":";
  while (const auto files = readAhead.nextFiles())
    for (const std::string& name : namesOf(*files)) line += " " + name;
  return line + (readAhead.failed() ? " !" : "");
}

using Lines = std::vector<std::string>;

inline Lines walk(FileSystem& fileSystem, const std::string& root, unsigned readers) {
  ReadAhead readAhead(fileSystem, open(fileSystem, root), readers);
  Lines lines;
  while (const auto folder = readAhead.nextFolder()) lines.push_back(takeFolder(readAhead, *folder));
  return lines;
}

/// Lets a thread wait until other threads have done something so many times.
class Counter {
 public:
  void count() {
    const std::lock_guard lock(mutex_);
    ++value_;
    changed_.notify_all();
  }
  int waitFor(int atLeast) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return value_ >= atLeast; });
    return value_;
  }
  int value() { return waitFor(0); }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int value_ = 0;
};

/// Given to readers that should have stopped by now, so that one that does not stop is found out.
inline constexpr auto kTimeToGoTooFar = std::chrono::milliseconds(100);

/// The first folder "a" keeps its reader until `release` counts.
class HeldUpReading {
 public:
  explicit HeldUpReading(MemoryFileSystem& fileSystem) {
    fileSystem.onOpen([this](const std::string& path) {
      if (path == "/r/a") {
        hanging.count();
        release.waitFor(1);
      } else {
        opened.count();
      }
    });
  }
  Counter hanging;
  Counter release;
  Counter opened;
};

}  // namespace dunmere::test
