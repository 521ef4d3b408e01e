// Folders of many entries, which are read in parts by whoever has time.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "engine/scan/read_ahead.h"
#include "tests/engine/scan/recorded_walk.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {
namespace {

class GiantFolderWith : public testing::TestWithParam<unsigned> {};

INSTANTIATE_TEST_SUITE_P(Readers, GiantFolderWith, testing::Values(0, 1, 2, 16), testing::PrintToStringParamName());

TEST_P(GiantFolderWith, ArrivesWholeAndInOrder) {
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

TEST_P(GiantFolderWith, ManyLongNamesOfFoldersGoOnReading) {
  // More names of folders than may be held: their folder must be read to its end all the same.
  MemoryFileSystem fileSystem;
  for (int i = 0; i < 6'000; ++i) fileSystem.addFolder("/r/d/" + std::string(200, 'x') + std::to_string(i));
  fileSystem.addFile("/r/d/last", 1);
  fileSystem.setBatchSize(50);
  const Lines lines = walk(fileSystem, "/r", GetParam());
  ASSERT_EQ(lines.size(), 6'002U);
  EXPECT_EQ(lines[1], "  d: last");
}

TEST_P(GiantFolderWith, MayBeGivenUpAtAnyFolder) {
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

TEST(GiantFolder, ReaderStopsAtTheBoundUntilTheConsumerFollows) {
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
    ASSERT_LE(reads.value() * kBatch, files + 512 * 1024 / 12 + 4 * kBatch);
  }
  EXPECT_EQ(files, kFiles);
}

TEST(GiantFolder, IsReadOnWhenItsTurnComesThoughTooMuchIsHeld) {
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

TEST(GiantFolder, ConsumerReadsOneAheadOnlyPartByPart) {
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
  int consumersReads = 0;
  fileSystem.onRead([&, consumer = std::this_thread::get_id()](const std::string& path) {
    if (path != "/r/giant" || std::this_thread::get_id() != consumer || ++consumersReads != 5) return;
    reading.release.count();
    std::this_thread::sleep_for(kTimeToGoTooFar);  // while the reader finishes "a"
  });
  ReadAhead readAhead(fileSystem, std::move(root), 1);
  EXPECT_EQ(takeFolder(readAhead, *readAhead.nextFolder()), ":");
  reading.hanging.waitFor(1);
  EXPECT_EQ(takeFolder(readAhead, *readAhead.nextFolder()), "  a: 1");
  EXPECT_EQ(consumersReads, 5);
  Lines lines;
  while (const auto folder = readAhead.nextFolder()) lines.push_back(takeFolder(readAhead, *folder));
  EXPECT_EQ(lines, (Lines{expected, "    inside: 2", "  last: 3"}));
}

TEST(GiantFolder, IsMeasuredBySeveralThreads) {
  constexpr int kFiles = 100;
  constexpr int kThreads = 3;
  MemoryFileSystem fileSystem;
  fileSystem.setBatchSize(10);
  std::string expected = ":";
  for (int i = 0; i < kFiles; ++i) {
    fileSystem.addFile("/r/" + std::to_string(i), 1);
    expected += " " + std::to_string(i);
  }
  // Each of the first parts is held up until as many threads have come to one.
  Counter measuring;
  fileSystem.onMeasure([&](const std::string&) {
    measuring.count();
    measuring.waitFor(kThreads);
  });
  ReadAhead readAhead(fileSystem, open(fileSystem, "/r"), kThreads - 1);
  std::this_thread::sleep_for(kTimeToGoTooFar);  // the readers have nothing to do and must be woken
  EXPECT_EQ(takeFolder(readAhead, *readAhead.nextFolder()), expected);
}

}  // namespace
}  // namespace dunmere::test
