#include "engine/inventory/path_bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "engine/inventory/path_tree.h"
#include "tests/engine/scan/scan_recording.h"
#include "tests/engine/scan/scan_results.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/random_seed.h"

namespace dunmere::test {
namespace {

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();

void addFile(PathTreeWriter& writer, std::string_view name, std::int64_t bytes) {
  std::string packed;
  appendPackedFile(packed, name, bytes);
  writer.addFiles(packed, 1, bytes);
}

// A tree of /r: f1 (100), a/f2 (20), a/b/f3 (3), c/f4 (4).
PathBytes smallTree() {
  PathTreeWriter writer;
  writer.openFolder("/r");
  addFile(writer, "f1", 100);
  writer.openFolder("a");
  addFile(writer, "f2", 20);
  writer.openFolder("b");
  addFile(writer, "f3", 3);
  writer.closeFolder();
  writer.closeFolder();
  writer.openFolder("c");
  addFile(writer, "f4", 4);
  writer.closeFolder();
  writer.closeFolder();
  return writer.snapshot();
}

PathBytes oneFolder(const std::vector<std::string>& names) {
  PathTreeWriter writer;
  writer.openFolder("/r");
  for (std::size_t i = 0; i < names.size(); ++i) addFile(writer, names[i], static_cast<std::int64_t>(i));
  writer.closeFolder();
  return writer.snapshot();
}

std::vector<std::string> numberedNames(std::size_t count) {
  std::vector<std::string> names(count);
  for (std::size_t i = 0; i < count; ++i) names[i] = "file number " + std::to_string(i);
  return names;
}

using Children = std::vector<std::pair<std::string, std::int64_t>>;

/// In the order in which they are visited; folders end with a slash.
Children childrenOf(const PathBytes& tree, std::string_view folder) {
  Children children;
  tree.forEachChild(folder, [&children](std::string_view name, bool isFolder, std::int64_t bytes) {
    children.emplace_back(std::string(name) + (isFolder ? "/" : ""), bytes);
  });
  return children;
}

TEST(PathBytes, EmptyMapHasNoEntries) {
  const PathBytes empty;
  EXPECT_EQ(empty.size(), 0);
  EXPECT_TRUE(empty.empty());
  EXPECT_EQ(empty.find("/"), std::nullopt);
  EXPECT_EQ(empty.find(""), std::nullopt);
  EXPECT_EQ(entriesOf(empty), PlainMap());
  EXPECT_EQ(childrenOf(empty, "/"), Children());
}

TEST(PathBytes, HoldsFilesAndTheSumsOfTheFoldersAboveThem) {
  const PathBytes tree = smallTree();
  const PlainMap expected = {{"/r", 127},   {"/r/f1", 100},   {"/r/a", 23}, {"/r/a/f2", 20},
                             {"/r/a/b", 3}, {"/r/a/b/f3", 3}, {"/r/c", 4},  {"/r/c/f4", 4}};
  EXPECT_EQ(entriesOf(tree), expected);
  EXPECT_EQ(tree.size(), 8);
  for (const auto& [key, bytes] : expected) EXPECT_EQ(tree.find(key), bytes) << key;
}

TEST(PathBytes, KeysThatAreNotEntriesAreNotFound) {
  const PathBytes tree = smallTree();
  for (const char* key : {"", "/", "/r/", "/r//f1", "/rr", "/r2/f1", "/q", "r", "f1", "/r/f1/", "/r/f1/x", "/r/a/",
                          "/r/a/f1", "/r/A", "/r/b", "/r/a/b/f3/f3", "/r/c/f"})
    EXPECT_EQ(tree.find(key), std::nullopt) << key;
}

TEST(PathBytes, FoldersStandBeforeWhatTheyHold) {
  std::vector<std::string> keys;
  smallTree().forEach([&keys](std::string_view key, std::int64_t) { keys.emplace_back(key); });
  EXPECT_EQ(keys,
            (std::vector<std::string>{"/r", "/r/f1", "/r/a", "/r/a/f2", "/r/a/b", "/r/a/b/f3", "/r/c", "/r/c/f4"}));
}

TEST(PathBytes, KeysBelowTheRootFolderHaveOneSlash) {
  PathTreeWriter writer;
  writer.openFolder("/");
  addFile(writer, "kernel", 7);
  writer.openFolder("home");
  addFile(writer, "note", 8);
  writer.closeFolder();
  writer.closeFolder();
  const PathBytes tree = writer.snapshot();
  const PlainMap expected = {{"/", 15}, {"/kernel", 7}, {"/home", 8}, {"/home/note", 8}};
  EXPECT_EQ(entriesOf(tree), expected);
  for (const auto& [key, bytes] : expected) EXPECT_EQ(tree.find(key), bytes) << key;
  EXPECT_EQ(tree.find(""), std::nullopt);
  EXPECT_EQ(tree.find("//kernel"), std::nullopt);
}

TEST(PathBytes, ChildrenOfAFolderAreItsFilesAndThenItsFolders) {
  const PathBytes tree = smallTree();
  EXPECT_EQ(childrenOf(tree, "/r"), (Children{{"f1", 100}, {"a/", 23}, {"c/", 4}}));
  EXPECT_EQ(childrenOf(tree, "/r/a"), (Children{{"f2", 20}, {"b/", 3}}));
  EXPECT_EQ(childrenOf(tree, "/r/a/b"), (Children{{"f3", 3}}));
  EXPECT_EQ(childrenOf(tree, "/r/c"), (Children{{"f4", 4}}));
}

TEST(PathBytes, TheFolderAboveTheRootHoldsTheRoot) {
  EXPECT_EQ(childrenOf(smallTree(), "/"), (Children{{"r/", 127}}));
  PathTreeWriter writer;
  writer.openFolder("/home/me");
  addFile(writer, "f", 1);
  EXPECT_EQ(childrenOf(writer.snapshot(), "/home"), (Children{{"me/", 1}}));
  EXPECT_EQ(childrenOf(writer.snapshot(), "/"), Children());
}

TEST(PathBytes, FoldersElsewhereHoldNothingCounted) {
  for (const char* folder : {"", "/q", "/rr", "/r/", "/r/f1", "/r/b", "/r/a/f2", "/r/a/", "/q/r"})
    EXPECT_EQ(childrenOf(smallTree(), folder), Children()) << folder;
}

TEST(PathBytes, TheRootFolderOfTheSystemHasNoParent) {
  PathTreeWriter writer;
  writer.openFolder("/");
  addFile(writer, "kernel", 7);
  EXPECT_EQ(childrenOf(writer.snapshot(), "/"), (Children{{"kernel", 7}}));
}

TEST(PathBytes, ANameThatWasCountedTwiceComesTwice) {
  const PathBytes tree = oneFolder({"a", "same", "same"});
  EXPECT_EQ(childrenOf(tree, "/r"), (Children{{"a", 0}, {"same", 1}, {"same", 2}}));
}

// A snapshot may be taken in any folder; the sums of those that are open then are kept apart.
TEST(PathBytes, ChildrenAreThoseOfEveryEntryInEverySnapshot) {
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
  for (const SweepInventory& snapshot : snapshotsOfEveryFile(fileSystem, "/r")) {
    for (const std::string& folder : folders) {
      PlainMap visited;
      snapshot.pathBytes.forEachChild(folder, [&](std::string_view name, bool, std::int64_t bytes) {
        visited[FileUrl(folder).appending(name).bytes()] = bytes;
      });
      PlainMap expected;
      for (const auto& [key, bytes] : entriesOf(snapshot.pathBytes))
        if (FileUrl(key).deletingLastPathComponent().key() == folder && key != "/") expected.emplace(key, bytes);
      ASSERT_EQ(visited, expected) << folder << " after " << snapshot.fileCount;
    }
  }
}

TEST(PathBytes, FoldersWithoutCountedFilesLeaveNoTrace) {
  PathTreeWriter writer;
  writer.openFolder("/r");
  writer.openFolder("empty");
  writer.openFolder("empty too");
  writer.closeFolder();
  writer.closeFolder();
  writer.openFolder("full");
  writer.openFolder("empty");
  writer.closeFolder();
  writer.openFolder("deep");
  addFile(writer, "f", 1);
  writer.closeFolder();
  writer.openFolder("empty");
  writer.closeFolder();
  writer.closeFolder();
  writer.closeFolder();
  EXPECT_EQ(entriesOf(writer.snapshot()),
            (PlainMap{{"/r", 1}, {"/r/full", 1}, {"/r/full/deep", 1}, {"/r/full/deep/f", 1}}));
}

TEST(PathBytes, NothingCountedIsAnEmptyMap) {
  PathTreeWriter writer;
  writer.openFolder("/r");
  writer.openFolder("empty");
  writer.closeFolder();
  writer.closeFolder();
  const PathBytes tree = writer.snapshot();
  EXPECT_EQ(tree.size(), 0);
  EXPECT_EQ(tree.find("/r"), std::nullopt);
  EXPECT_EQ(entriesOf(tree), PlainMap());
}

TEST(PathBytes, FilesOfZeroBytesMakeEntries) {
  PathTreeWriter writer;
  writer.openFolder("/r");
  writer.openFolder("a");
  addFile(writer, "f", 0);
  writer.closeFolder();
  writer.closeFolder();
  EXPECT_EQ(entriesOf(writer.snapshot()), (PlainMap{{"/r", 0}, {"/r/a", 0}, {"/r/a/f", 0}}));
}

TEST(PathBytes, EverySizeIsKeptExactly) {
  std::vector<std::int64_t> sizes = {0, 1, 511, 512, 513, 4096, 65'535, 65'536, kLargest - 511, kLargest - 1, kLargest};
  for (int bit = 0; bit < 63; ++bit) sizes.push_back(std::int64_t{1} << bit);
  for (const std::int64_t size : sizes) {
    PathTreeWriter writer;
    writer.openFolder("/r");
    addFile(writer, "f", size);
    EXPECT_EQ(writer.snapshot().find("/r/f"), size);
  }
}

TEST(PathBytes, SumsStopAtTheLargestCountInsteadOfTurningNegative) {
  PathTreeWriter writer;
  writer.openFolder("/r");
  addFile(writer, "f", kLargest);
  writer.openFolder("a");
  addFile(writer, "g", kLargest);
  EXPECT_EQ(writer.snapshot().find("/r"), kLargest);
  writer.closeFolder();
  writer.closeFolder();
  EXPECT_EQ(writer.snapshot().find("/r"), kLargest);
}

TEST(PathBytes, NamesAreAnyBytesOfAnyLength) {
  std::vector<std::string> names = {"\xff\xfe", " ", "\n", "e\xcc\x81", "\xcc\x81", "a:b", "..."};
  for (const std::size_t length : {1, 126, 127, 128, 129, 255, 256, 16'383, 16'384, 70'000, 200'000})
    names.emplace_back(length, 'n');
  const PathBytes tree = oneFolder(names);
  for (std::size_t i = 0; i < names.size(); ++i)
    EXPECT_EQ(tree.find("/r/" + names[i]), static_cast<std::int64_t>(i)) << names[i].size();
  EXPECT_EQ(tree.size(), static_cast<std::int64_t>(names.size()) + 1);
}

TEST(PathBytes, FilesHandedOverTogetherAreTheSameAsOneByOne) {
  // Far more than fits into one piece of the storage, in portions that no boundary is a multiple of.
  const std::vector<std::string> names = numberedNames(60'000);
  PathTreeWriter writer;
  writer.openFolder("/r");
  std::string packed;
  std::int64_t bytes = 0;
  for (std::size_t i = 0; i < names.size(); ++i) {
    appendPackedFile(packed, names[i], static_cast<std::int64_t>(i));
    bytes += static_cast<std::int64_t>(i);
    if (i % 1009 != 1008 && i + 1 != names.size()) continue;
    writer.addFiles(packed, static_cast<std::int64_t>(i % 1009 + 1), bytes);
    packed.clear();
    bytes = 0;
  }
  writer.closeFolder();
  EXPECT_EQ(entriesOf(writer.snapshot()), entriesOf(oneFolder(names)));
}

TEST(PathBytes, FoldersAcrossAllStorageBoundariesKeepTheirFiles) {
  // Folder names and files of growing length, so that boundaries fall before folders, inside folders and after them.
  PathTreeWriter writer;
  PlainMap expected;
  writer.openFolder("/r");
  for (std::size_t i = 0; i < 3'000; ++i) {
    const std::string folder = "folder" + std::to_string(i) + std::string(i % 97, '-');
    writer.openFolder(folder);
    for (std::size_t file = 0; file < i % 4; ++file) {
      const std::string name = std::to_string(file) + std::string(i % 201, '+');
      addFile(writer, name, 1);
      expected["/r/" + folder + "/" + name] = 1;
      expected["/r/" + folder] += 1;
      expected["/r"] += 1;
    }
    writer.closeFolder();
  }
  writer.closeFolder();
  EXPECT_EQ(entriesOf(writer.snapshot()), expected);
}

TEST(PathBytes, SnapshotsStayAsTheyWereWhileCountingGoesOn) {
  std::mt19937 random(20'240'607);
  PathTreeWriter writer;
  std::vector<std::pair<PathBytes, PlainMap>> taken;
  writer.openFolder("/r");
  for (int step = 0; step < 3'000; ++step) {
    const unsigned choice = random() % 8;
    const std::string name = std::to_string(step);
    if (choice == 0 && writer.depth() < 30) {
      writer.openFolder(name);
    } else if (choice == 1 && writer.depth() > 1) {
      writer.closeFolder();
    } else if (choice == 2) {
      writer.openFolder(name);
      addFile(writer, name, step);
      const PathBytes snapshot = writer.snapshot();
      taken.emplace_back(snapshot, entriesOf(snapshot));
      writer.closeFolder();
    } else if (choice == 3) {
      writer.openFolder(name);
      writer.closeFolder();
    } else if (choice == 4) {
      addFile(writer, name, step);
    }
  }
  while (writer.depth() > 0) writer.closeFolder();
  ASSERT_GT(taken.size(), 100U);
  for (const auto& [snapshot, entries] : taken) {
    EXPECT_EQ(entriesOf(snapshot), entries);
    EXPECT_EQ(snapshot.size(), static_cast<std::int64_t>(entries.size()));
  }
}

TEST(PathBytes, SnapshotOutlivesItsMaker) {
  PathBytes copy;
  {
    const PathBytes tree = smallTree();
    copy = tree;
  }
  EXPECT_EQ(copy.find("/r/a/b/f3"), 3);
}

TEST(PathBytes, ReadersSeeTheirSnapshotWhileAnotherThreadCounts) {
  PathTreeWriter writer;
  writer.openFolder("/r");
  addFile(writer, "first", 1);
  writer.openFolder("a");
  addFile(writer, "second", 2);
  const PathBytes early = writer.snapshot();
  std::atomic<bool> done = false;
  std::thread reader([&] {
    const PlainMap expected = {{"/r", 3}, {"/r/first", 1}, {"/r/a", 2}, {"/r/a/second", 2}};
    do {
      ASSERT_EQ(entriesOf(early), expected);
      ASSERT_EQ(early.find("/r/a/second"), 2);
    } while (!done);
  });
  for (int i = 0; i < 20'000; ++i) {
    addFile(writer, "file" + std::to_string(i), i);
    if (i % 50 == 0) writer.openFolder("folder" + std::to_string(i));
    if (i % 50 == 49 && i % 100 == 99) writer.closeFolder();
  }
  while (writer.depth() > 0) writer.closeFolder();
  done = true;
  reader.join();
  EXPECT_EQ(writer.snapshot().find("/r"), std::int64_t{20'000} * 19'999 / 2 + 3);
}

TEST(PathBytes, VeryDeepTreesAreReadWithoutRecursion) {
  constexpr int kDepth = 100'000;
  PathTreeWriter writer;
  writer.openFolder("/");
  for (int i = 0; i < kDepth; ++i) writer.openFolder("d");
  addFile(writer, "f", 5);
  const PathBytes open = writer.snapshot();
  while (writer.depth() > 0) writer.closeFolder();
  std::string key;
  for (int i = 0; i < kDepth; ++i) key += "/d";
  for (const PathBytes& tree : {open, writer.snapshot()}) {
    EXPECT_EQ(tree.find(key + "/f"), 5);
    EXPECT_EQ(tree.find(key), 5);
    std::int64_t visited = 0;
    tree.forEach([&visited](std::string_view, std::int64_t bytes) { visited += bytes == 5 ? 1 : 0; });
    EXPECT_EQ(visited, kDepth + 2);
    EXPECT_EQ(tree.size(), kDepth + 2);
  }
}

}  // namespace
}  // namespace dunmere::test
