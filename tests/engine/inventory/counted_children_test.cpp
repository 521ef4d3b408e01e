#include "engine/inventory/counted_children.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "engine/inventory/path_tree_writer.h"
#include "tests/engine/scan/scan_recording.h"
#include "tests/engine/scan/scan_results.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/random_seed.h"

namespace dunmere::test {
namespace {

using Told = std::vector<std::pair<std::string, std::int64_t>>;

/// A tree of /r that grows under the follower's eyes.
class CountedChildrenTest : public testing::Test {
 protected:
  CountedChildrenTest() { writer_.openFolder("/r"); }

  void addFile(std::string_view name, std::int64_t bytes) {
    std::string packed;
    appendPackedFile(packed, name, bytes);
    writer_.addFiles(packed, 1, bytes);
  }

  SweepInventory inventory() const {
    SweepInventory inventory = SweepInventory::emptyFor(FileUrl("/r"));
    inventory.pathBytes = writer_.snapshot();
    return inventory;
  }

  Told follow(CountedChildren& children) const { return follow(children, inventory()); }
  static Told follow(CountedChildren& children, const SweepInventory& inventory) {
    Told told;
    children.follow(inventory, [&told](std::string_view name, bool isFolder, std::int64_t bytes) {
      told.emplace_back(std::string(name) + (isFolder ? "/" : ""), bytes);
    });
    return told;
  }

  PathTreeWriter writer_;
};

TEST_F(CountedChildrenTest, TellsEachChildOnceAndTheOpenOneAgain) {
  CountedChildren children("/r");
  addFile("f1", 1);
  EXPECT_EQ(follow(children), (Told{{"f1", 1}}));
  addFile("f2", 2);
  writer_.openFolder("a");
  addFile("f3", 4);
  EXPECT_EQ(follow(children), (Told{{"f2", 2}, {"a/", 4}}));
  writer_.openFolder("deep");
  addFile("f4", 8);
  EXPECT_EQ(follow(children), (Told{{"a/", 12}}));
  writer_.closeFolder();
  writer_.closeFolder();
  writer_.openFolder("b");
  addFile("f5", 16);
  EXPECT_EQ(follow(children), (Told{{"a/", 12}, {"b/", 16}}));
}

TEST_F(CountedChildrenTest, FindsAFolderThatIsCountedLater) {
  CountedChildren children("/r/z/y");
  addFile("f1", 1);
  EXPECT_EQ(follow(children), Told());
  for (const char* name : {"a", "b", "z"}) {
    writer_.openFolder(name);
    addFile("f2", 2);
    EXPECT_EQ(follow(children), Told());
    if (std::string_view(name) != "z") writer_.closeFolder();
  }
  writer_.openFolder("x");
  addFile("f3", 4);
  EXPECT_EQ(follow(children), Told());
  writer_.closeFolder();
  writer_.openFolder("y");
  addFile("f4", 8);
  EXPECT_EQ(follow(children), (Told{{"f4", 8}}));
}

TEST_F(CountedChildrenTest, TheFolderAboveTheRootHoldsTheRoot) {
  CountedChildren children("/");
  addFile("f1", 1);
  EXPECT_EQ(follow(children), (Told{{"r/", 1}}));
  addFile("f2", 2);
  EXPECT_EQ(follow(children), (Told{{"r/", 3}}));
}

TEST_F(CountedChildrenTest, FoldersElsewhereHoldNothingCounted) {
  addFile("f1", 1);
  writer_.openFolder("a");
  addFile("f2", 2);
  for (const char* folder : {"", "/q", "/rr", "/r/f1", "/r/b", "/r/a/f2", "/q/r"}) {
    CountedChildren children(folder);
    EXPECT_EQ(follow(children), Told()) << folder;
  }
}

TEST_F(CountedChildrenTest, TheRootFolderOfTheSystemHasNoParent) {
  PathTreeWriter writer;
  writer.openFolder("/");
  std::string packed;
  appendPackedFile(packed, "kernel", 7);
  writer.addFiles(packed, 1, 7);
  SweepInventory inventory = SweepInventory::emptyFor(FileUrl("/"));
  inventory.pathBytes = writer.snapshot();
  CountedChildren children("/");
  EXPECT_EQ(follow(children, inventory), (Told{{"kernel", 7}}));
}

TEST_F(CountedChildrenTest, AnotherScanIsToldFromTheStart) {
  CountedChildren children("/r");
  addFile("f1", 1);
  const SweepInventory early = inventory();
  addFile("f2", 2);
  EXPECT_FALSE(children.continues(early));
  EXPECT_EQ(follow(children), (Told{{"f1", 1}, {"f2", 2}}));
  EXPECT_TRUE(children.continues(inventory()));

  writer_ = PathTreeWriter();
  writer_.openFolder("/r");
  addFile("f2", 5);
  EXPECT_FALSE(children.continues(inventory()));
  EXPECT_EQ(follow(children), (Told{{"f2", 5}}));

  EXPECT_FALSE(children.continues(early));
  EXPECT_EQ(follow(children, early), (Told{{"f1", 1}}));
}

TEST_F(CountedChildrenTest, AnEarlierSnapshotIsToldFromTheStart) {
  CountedChildren children("/r");
  addFile("f1", 1);
  const SweepInventory early = inventory();
  addFile("f2", 2);
  follow(children);
  EXPECT_FALSE(children.continues(early));
  EXPECT_EQ(follow(children, early), (Told{{"f1", 1}}));
}

TEST_F(CountedChildrenTest, NothingCountedIsNothingTold) {
  CountedChildren children("/r");
  const SweepInventory nothing = SweepInventory::emptyFor(FileUrl("/r"));
  EXPECT_EQ(follow(children, nothing), Told());
  EXPECT_FALSE(children.continues(nothing));
  addFile("f1", 1);
  EXPECT_EQ(follow(children), (Told{{"f1", 1}}));
}

// The text of many files fills several pieces of memory.
TEST_F(CountedChildrenTest, GoesOnAcrossTheEndsOfItsMemory) {
  CountedChildren children("/r");
  std::int64_t told = 0;
  for (int i = 1; i <= 30'000; ++i) {
    addFile("a name of some length, number " + std::to_string(i), i);
    if (i % 6 != 0) continue;
    for (const auto& [name, bytes] : follow(children)) EXPECT_EQ(bytes, ++told);
  }
  EXPECT_EQ(told, 30'000);
}

// What is told adds up to what a look at the whole snapshot gives, for every folder.
TEST_F(CountedChildrenTest, AddsUpToEverySnapshot) {
  std::mt19937_64 random(firstSeed());
  MemoryFileSystem fileSystem;
  std::vector<std::string> folders = {"/r"};
  for (int i = 0; i < 60; ++i) {
    const std::string folder = folders[random() % folders.size()] + "/d" + std::to_string(i);
    folders.push_back(folder);
    for (std::size_t file = random() % 4; file > 0; --file)
      fileSystem.addFile(folder + "/f" + std::to_string(file), static_cast<std::int64_t>(random() % 9));
  }
  fileSystem.addFile("/r/f", 1);
  folders.push_back("/");
  const std::vector<SweepInventory> snapshots = snapshotsOfEveryFile(fileSystem, "/r");
  for (const std::string& folder : folders) {
    CountedChildren children(folder);
    PlainMap known;
    for (const SweepInventory& snapshot : snapshots) {
      if (random() % 3 == 0) continue;
      if (!children.continues(snapshot)) known.clear();
      children.follow(snapshot, [&](std::string_view name, bool, std::int64_t bytes) {
        known[FileUrl(folder).appending(name).bytes()] = bytes;
      });
      PlainMap expected;
      for (const auto& [key, bytes] : entriesOf(snapshot.pathBytes))
        if (FileUrl(key).deletingLastPathComponent().key() == folder && key != "/") expected.emplace(key, bytes);
      ASSERT_EQ(known, expected) << folder << " after " << snapshot.fileCount;
    }
  }
}

}  // namespace
}  // namespace dunmere::test
