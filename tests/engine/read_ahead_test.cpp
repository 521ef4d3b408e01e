#include "engine/read_ahead.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "engine/packed_files.h"
#include "tests/support/child_process.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {
namespace {

std::shared_ptr<OpenFolder> open(FileSystem& fileSystem, const std::string& path) {
  return *fileSystem.openFolder(FileUrl(path), EntryDetail::sizes);
}

std::vector<std::string> namesOf(std::string_view packed) {
  std::vector<std::string> names;
  const char* const end = packed.data() + packed.size();
  for (const char* position = packed.data(); position != end;) names.emplace_back(takePackedFile(position).name);
  return names;
}

// One line a folder: its depth as indentation, its name, its files, "!" when it failed.
std::string takeFolder(ReadAhead& readAhead, const ReadAhead::Folder& folder) {
  std::string line = std::string(2 * folder.depth, ' ') + std::string(folder.name) + ":";
  while (const auto files = readAhead.nextFiles())
    for (const std::string& name : namesOf(*files)) line += " " + name;
  return line + (readAhead.failed() ? " !" : "");
}

using Lines = std::vector<std::string>;

Lines walk(FileSystem& fileSystem, const std::string& root, unsigned readers) {
  ReadAhead readAhead(fileSystem, open(fileSystem, root), readers);
  Lines lines;
  while (const auto folder = readAhead.nextFolder()) lines.push_back(takeFolder(readAhead, *folder));
  return lines;
}

// Lets a thread wait until other threads have done something so many times.
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

// Given to readers that should have stopped by now, so that one that does not stop is found out.
constexpr auto kTimeToGoTooFar = std::chrono::milliseconds(100);

class ReadAheadWith : public testing::TestWithParam<unsigned> {};

INSTANTIATE_TEST_SUITE_P(Readers, ReadAheadWith, testing::Values(0, 1, 2, 16), testing::PrintToStringParamName());

TEST_P(ReadAheadWith, FoldersComeDepthFirstWithTheirFilesBeforeTheirFolders) {
  MemoryFileSystem fileSystem;
  for (const char* file : {"/r/b/x/1", "/r/b/2", "/r/3", "/r/a/y/4", "/r/a/z/5", "/r/6", "/r/b/x/7", "/r/c/8"})
    fileSystem.addFile(file, 1);
  EXPECT_EQ(walk(fileSystem, "/r", GetParam()),
            (Lines{": 3 6", "  b: 2", "    x: 1 7", "  a:", "    y: 4", "    z: 5", "  c: 8"}));
}

TEST_P(ReadAheadWith, EmptyRootIsOneFolder) {
  MemoryFileSystem fileSystem;
  fileSystem.addFolder("/r");
  EXPECT_EQ(walk(fileSystem, "/r", GetParam()), (Lines{":"}));
}

TEST_P(ReadAheadWith, PackagesLinksAndSpecialFilesAreNotMet) {
  MemoryFileSystem fileSystem;
  fileSystem.addFile("/r/Tool.app/f", 1);
  fileSystem.addFile("/r/marked/f", 1);
  fileSystem.markPackage("/r/marked");
  fileSystem.addLink("/r/link", "/r/folder");
  fileSystem.addOther("/r/pipe");
  fileSystem.addFile("/r/folder/f", 1);
  EXPECT_EQ(walk(fileSystem, "/r", GetParam()), (Lines{":", "  folder: f"}));
}

TEST_P(ReadAheadWith, FailuresComeAtTheirFoldersTurn) {
  MemoryFileSystem fileSystem;
  for (const char* file : {"/r/a/1", "/r/locked/2", "/r/torn/3", "/r/torn/d/4", "/r/torn/5", "/r/z/6"})
    fileSystem.addFile(file, 1);
  fileSystem.makeUnreadable("/r/locked");
  fileSystem.failReadingAfter("/r/torn", 2);
  EXPECT_EQ(walk(fileSystem, "/r", GetParam()),
            (Lines{":", "  a: 1", "  locked: !", "  torn: 3 !", "    d: 4", "  z: 6"}));
}

TEST_P(ReadAheadWith, FolderThatVanishedAfterItWasListedFails) {
  MemoryFileSystem fileSystem;
  fileSystem.addFile("/r/gone/f", 1);
  fileSystem.addFile("/r/stays/f", 1);
  fileSystem.onOpen([&fileSystem](const std::string& path) {
    if (path == "/r/gone") fileSystem.remove("/r/gone");
  });
  EXPECT_EQ(walk(fileSystem, "/r", GetParam()), (Lines{":", "  gone: !", "  stays: f"}));
}

TEST_P(ReadAheadWith, GiantFoldersArriveWholeAndInOrder) {
  MemoryFileSystem fileSystem;
  fileSystem.setBatchSize(500);
  std::string expected;
  for (int i = 0; i < 60'000; ++i) {
    fileSystem.addFile("/r/giant/" + std::to_string(i), 1);
    fileSystem.addFile("/r/second giant/" + std::to_string(i), 1);
    expected += " " + std::to_string(i);
  }
  EXPECT_EQ(walk(fileSystem, "/r", GetParam()), (Lines{":", "  giant:" + expected, "  second giant:" + expected}));
}

TEST_P(ReadAheadWith, ManyLongNamesOfFoldersGoOnReading) {
  // More names of folders than may be held: their folder must be read to its end all the same.
  MemoryFileSystem fileSystem;
  for (int i = 0; i < 6'000; ++i) fileSystem.addFolder("/r/d/" + std::string(200, 'x') + std::to_string(i));
  fileSystem.addFile("/r/d/last", 1);
  fileSystem.setBatchSize(50);
  const Lines lines = walk(fileSystem, "/r", GetParam());
  ASSERT_EQ(lines.size(), 6'002U);
  EXPECT_EQ(lines[1], "  d: last");
}

TEST_P(ReadAheadWith, VeryDeepChainIsWalkedAndTakenDownWithoutRecursion) {
  constexpr std::size_t kDepth = 20'000;
  MemoryFileSystem fileSystem;
  std::string path = "/r";
  for (std::size_t i = 0; i < kDepth; ++i) path += "/d";
  fileSystem.addFile(path + "/f", 1);
  ReadAhead readAhead(fileSystem, open(fileSystem, "/r"), GetParam());
  std::size_t depth = 0;
  while (const auto folder = readAhead.nextFolder()) {
    ASSERT_EQ(folder->depth, depth++);
    while (readAhead.nextFiles()) continue;
    ASSERT_FALSE(readAhead.failed());
  }
  EXPECT_EQ(depth, kDepth + 1);
}

TEST_P(ReadAheadWith, MayBeGivenUpAtAnyFolder) {
  MemoryFileSystem fileSystem;
  for (int i = 0; i < 300; ++i) fileSystem.addFile("/r/" + std::to_string(i % 20) + "/" + std::to_string(i) + "/f", 1);
  for (int folders = 0; folders < 60; ++folders) {
    ReadAhead readAhead(fileSystem, open(fileSystem, "/r"), GetParam());
    for (int i = 0; i < folders; ++i) takeFolder(readAhead, *readAhead.nextFolder());
  }
}

TEST_P(ReadAheadWith, GivingUpWakesReadersThatWaitForRoom) {
  MemoryFileSystem fileSystem;
  fileSystem.setBatchSize(1'000);
  for (int i = 0; i < 4; ++i)
    for (int file = 0; file < 10'000; ++file)
      fileSystem.addFile("/r/" + std::to_string(i) + "/" + std::string(40, 'x') + std::to_string(file), 1);
  for (int folders = 0; folders < 3; ++folders) {
    ReadAhead readAhead(fileSystem, open(fileSystem, "/r"), GetParam());
    for (int i = 0; i < folders; ++i) takeFolder(readAhead, *readAhead.nextFolder());
  }
}

TEST_P(ReadAheadWith, OutOfMemoryIsThrownAtTheFoldersTurn) {
  MemoryFileSystem fileSystem;
  for (const char* file : {"/r/a/1", "/r/b/2", "/r/c/3"}) fileSystem.addFile(file, 1);
  fileSystem.onOpen([](const std::string& path) {
    if (path == "/r/b") throw std::bad_alloc();
  });
  ReadAhead readAhead(fileSystem, open(fileSystem, "/r"), GetParam());
  EXPECT_EQ(takeFolder(readAhead, *readAhead.nextFolder()), ":");
  EXPECT_EQ(takeFolder(readAhead, *readAhead.nextFolder()), "  a: 1");
  EXPECT_THROW(takeFolder(readAhead, *readAhead.nextFolder()), std::bad_alloc);
}

TEST_P(ReadAheadWith, EveryReaderRunsAtUtilityPriority) {
  MemoryFileSystem fileSystem;
  fileSystem.addFolder("/r");
  walk(fileSystem, "/r", GetParam());
  EXPECT_EQ(fileSystem.utilityPriorityThreads(), static_cast<int>(GetParam()));
}

TEST(ReadAhead, ReadersGoAheadWhileTheConsumerStandsStill) {
  MemoryFileSystem fileSystem;
  for (int i = 0; i < 100; ++i) fileSystem.addFile("/r/" + std::to_string(i) + "/f", 1);
  Counter opened;
  fileSystem.onOpen([&opened](const std::string&) { opened.count(); });
  ReadAhead readAhead(fileSystem, open(fileSystem, "/r"), 2);
  takeFolder(readAhead, *readAhead.nextFolder());
  EXPECT_EQ(opened.waitFor(101), 101);
}

TEST(ReadAhead, ReadersNeverGetFurtherAheadThanTheBound) {
  // What one may take at most before the consumer has to follow.
  constexpr int kBound = 512;
  constexpr int kFolders = 2'000;
  MemoryFileSystem fileSystem;
  for (int i = 0; i < kFolders; ++i) fileSystem.addFile("/r/" + std::to_string(i) + "/f", 1);
  auto root = open(fileSystem, "/r");
  Counter opened;
  fileSystem.onOpen([&opened](const std::string&) { opened.count(); });
  ReadAhead readAhead(fileSystem, std::move(root), 4);
  int consumed = 0;
  while (const auto folder = readAhead.nextFolder()) {
    takeFolder(readAhead, *folder);
    // Wait now and then until they have gone as far as they may without the consumer.
    if (consumed % 200 == 1) opened.waitFor(std::min(consumed + kBound / 4, kFolders));
    ASSERT_LE(opened.value(), consumed + kBound);
    ++consumed;
  }
  EXPECT_EQ(consumed, kFolders + 1);
}

TEST(ReadAhead, ReaderOfAGiantFolderStopsAtTheBoundUntilTheConsumerFollows) {
  constexpr int kFiles = 200'000;  // about 2.4 MB packed, several times what may be held
  constexpr int kBatch = 1'000;
  MemoryFileSystem fileSystem;
  fileSystem.setBatchSize(kBatch);
  for (int i = 0; i < kFiles; ++i) fileSystem.addFile("/r/giant/" + std::to_string(i) + "name", 1);
  auto root = open(fileSystem, "/r");
  Counter reads;
  fileSystem.onRead([&reads](const std::string& path) {
    if (path == "/r/giant") reads.count();
  });
  ReadAhead readAhead(fileSystem, std::move(root), 1);
  takeFolder(readAhead, *readAhead.nextFolder());
  reads.waitFor(20);  // nobody consumes, and yet it reads
  std::this_thread::sleep_for(kTimeToGoTooFar);
  const auto giant = readAhead.nextFolder();
  ASSERT_TRUE(giant);
  int files = 0;
  while (const auto packed = readAhead.nextFiles()) {
    files += static_cast<int>(namesOf(*packed).size());
    // Held ahead at most: what the consumer took in one go, and as much again.
    ASSERT_LE(reads.value() * kBatch, files + 2 * 512 * 1024 / 12 + 4 * kBatch);
  }
  EXPECT_EQ(files, kFiles);
}

TEST(ReadAhead, ReaderThatStoppedGoesOnWhenItsFolderIsConsumedThoughTooMuchIsHeld) {
  // The folder holds nothing but names of folders, more than may be held, and nothing of them can be consumed before it
  // has been read to its end.
  constexpr int kFolders = 6'000;
  MemoryFileSystem fileSystem;
  fileSystem.setBatchSize(50);
  for (int i = 0; i < kFolders; ++i) fileSystem.addFolder("/r/d/" + std::string(200, 'x') + std::to_string(i));
  Counter reads;
  fileSystem.onRead([&reads](const std::string& path) {
    if (path == "/r/d") reads.count();
  });
  ReadAhead readAhead(fileSystem, open(fileSystem, "/r"), 1);
  takeFolder(readAhead, *readAhead.nextFolder());
  reads.waitFor(50);
  std::this_thread::sleep_for(kTimeToGoTooFar);
  EXPECT_LT(reads.value(), 60);
  int folders = 0;
  while (const auto folder = readAhead.nextFolder()) {
    takeFolder(readAhead, *folder);
    ++folders;
  }
  EXPECT_EQ(folders, kFolders + 1);
}

// Readers start when the test lets them.
class GatedFileSystem : public MemoryFileSystem {
 public:
  void enterUtilityPriority() noexcept override { gate.waitFor(1); }
  Counter gate;
};

TEST(ReadAhead, ConsumerReadsItselfWhatNobodyTookWhileTheReaderHangs) {
  GatedFileSystem fileSystem;
  for (const char* file : {"/r/a/1", "/r/a/deep/2", "/r/b/3"}) fileSystem.addFile(file, 1);
  Counter hanging;
  Counter release;
  fileSystem.onOpen([&](const std::string& path) {
    if (path != "/r/b") return;
    hanging.count();
    release.waitFor(1);
  });
  ReadAhead readAhead(fileSystem, open(fileSystem, "/r"), 1);
  EXPECT_EQ(takeFolder(readAhead, *readAhead.nextFolder()), ":");
  const auto a = readAhead.nextFolder();
  fileSystem.gate.count();
  hanging.waitFor(1);  // the consumer took "a", so the reader has "b"
  EXPECT_EQ(takeFolder(readAhead, *a), "  a: 1");
  EXPECT_EQ(takeFolder(readAhead, *readAhead.nextFolder()), "    deep: 2");
  release.count();
  EXPECT_EQ(takeFolder(readAhead, *readAhead.nextFolder()), "  b: 3");
  EXPECT_FALSE(readAhead.nextFolder());
}

// The first folder "a" keeps its reader until `release` counts.
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

TEST(ReadAhead, ConsumerReadsAheadInsteadOfWaitingForAReader) {
  MemoryFileSystem fileSystem;
  for (const char* file : {"/r/a/1", "/r/b/2", "/r/b/in b/3", "/r/c/4"}) fileSystem.addFile(file, 1);
  auto root = open(fileSystem, "/r");
  HeldUpReading reading(fileSystem);
  ReadAhead readAhead(fileSystem, std::move(root), 1);
  EXPECT_EQ(takeFolder(readAhead, *readAhead.nextFolder()), ":");
  reading.hanging.waitFor(1);
  // Nobody but the consumer is left to open the others.
  std::thread releaser([&] {
    reading.opened.waitFor(3);
    reading.release.count();
  });
  Lines lines;
  while (const auto folder = readAhead.nextFolder()) lines.push_back(takeFolder(readAhead, *folder));
  releaser.join();
  EXPECT_EQ(lines, (Lines{"  a: 1", "  b: 2", "    in b: 3", "  c: 4"}));
}

TEST(ReadAhead, ConsumerReadsOfAGiantFolderOnlyTheBeginningAhead) {
  constexpr int kFiles = 1'000;
  MemoryFileSystem fileSystem;
  fileSystem.setBatchSize(10);
  fileSystem.addFile("/r/a/1", 1);
  std::string expected = "  giant:";
  for (int i = 0; i < kFiles; ++i) {
    fileSystem.addFile("/r/giant/" + std::to_string(i), 1);
    expected += " " + std::to_string(i);
  }
  fileSystem.addFile("/r/giant/inside/2", 1);
  fileSystem.addFile("/r/last/3", 1);
  auto root = open(fileSystem, "/r");
  HeldUpReading reading(fileSystem);
  Counter reads;
  fileSystem.onRead([&reads](const std::string& path) {
    if (path == "/r/giant") reads.count();
  });
  ReadAhead readAhead(fileSystem, std::move(root), 1);
  EXPECT_EQ(takeFolder(readAhead, *readAhead.nextFolder()), ":");
  reading.hanging.waitFor(1);
  std::thread releaser([&] {
    reads.waitFor(2);
    std::this_thread::sleep_for(kTimeToGoTooFar);
    reading.release.count();
  });
  EXPECT_EQ(takeFolder(readAhead, *readAhead.nextFolder()), "  a: 1");
  EXPECT_EQ(reads.value(), 2);
  Lines lines;
  while (const auto folder = readAhead.nextFolder()) lines.push_back(takeFolder(readAhead, *folder));
  releaser.join();
  EXPECT_EQ(lines, (Lines{expected, "    inside: 2", "  last: 3"}));
}

TEST(ReadAhead, WalksOnWithoutTheReadersThatCannotBeStarted) {
  const ChildResult child = runUnprivileged([] {
    MemoryFileSystem fileSystem;
    fileSystem.addFile("/r/a/f", 1);
    const rlimit noMoreThreads = {0, 0};
    if (setrlimit(RLIMIT_NPROC, &noMoreThreads) != 0) return 3;
    EXPECT_EQ(walk(fileSystem, "/r", 4), (Lines{":", "  a: f"}));
    EXPECT_EQ(fileSystem.utilityPriorityThreads(), 0);
    return 0;
  });
  EXPECT_EQ(child.exitCode, 0) << child.output;
}

}  // namespace
}  // namespace dunmere::test
