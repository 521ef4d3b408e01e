#include "engine/scan/read_ahead.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <string>
#include <thread>

#include "tests/engine/scan/recorded_walk.h"
#include "tests/support/child_process.h"
#include "tests/support/machine.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {
namespace {

class ReadAheadWith : public testing::TestWithParam<unsigned> {};

INSTANTIATE_TEST_SUITE_P(Readers, ReadAheadWith, testing::Values(0, 1, 2, 16), testing::PrintToStringParamName());

TEST_P(ReadAheadWith, FoldersComeDepthFirstWithTheirFilesBeforeTheirFolders) {
  MemoryFileSystem fileSystem;
  for (const char* file : {"/r/b/x/1", "/r/b/2", "/r/3", "/r/a/y/4", "/r/a/z/5", "/r/6", "/r/b/x/7", "/r/c/8"})
    fileSystem.addFile(file, 1);
  EXPECT_EQ(walk(fileSystem, "/r", GetParam()),
            (Lines{": 3 6", "  b: 2", "    x: 1 7", "  a:", "    y: 4", "    z: 5", "  c: 8"}));
}

TEST_P(ReadAheadWith, EndOfTheTreeStaysTheEnd) {
  MemoryFileSystem fileSystem;
  fileSystem.addFile("/r/a/1", 1);
  ReadAhead readAhead(fileSystem, open(fileSystem, "/r"), GetParam());
  while (const auto folder = readAhead.nextFolder()) takeFolder(readAhead, *folder);
  for (int again = 0; again < 3; ++again) EXPECT_FALSE(readAhead.nextFolder());
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

TEST_P(ReadAheadWith, FolderThatVanishedAfterItWasListedHoldsNothing) {
  MemoryFileSystem fileSystem;
  fileSystem.addFile("/r/gone/f", 1);
  fileSystem.addFile("/r/stays/f", 1);
  fileSystem.onOpen([&fileSystem](const std::string& path) {
    if (path == "/r/gone") fileSystem.remove("/r/gone");
  });
  EXPECT_EQ(walk(fileSystem, "/r", GetParam()), (Lines{":", "  gone:", "  stays: f"}));
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

TEST_P(ReadAheadWith, FolderThatCannotBeMeasuredFails) {
  MemoryFileSystem fileSystem;
  for (const char* file : {"/r/a/1", "/r/a/2", "/r/a/d/3", "/r/b/4"}) fileSystem.addFile(file, 1);
  fileSystem.setBatchSize(2);
  fileSystem.failMeasuring("/r/a");
  EXPECT_EQ(walk(fileSystem, "/r", GetParam()), (Lines{":", "  a: !", "    d: 3", "  b: 4"}));
}

TEST(ReadAhead, WalksOnWithoutTheReadersThatCannotBeStarted) {
  DUNMERE_NEEDS(Feature::threadLimit);
  const ChildResult child = runInChild([] {
    MemoryFileSystem fileSystem;
    fileSystem.addFile("/r/a/f", 1);
    forbidThreads();
    EXPECT_EQ(walk(fileSystem, "/r", 4), (Lines{":", "  a: f"}));
    EXPECT_EQ(fileSystem.utilityPriorityThreads(), 0);
    return 0;
  });
  EXPECT_EQ(child.exitCode, 0) << child.output;
}

}  // namespace
}  // namespace dunmere::test
