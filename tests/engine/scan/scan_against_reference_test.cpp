// Random trees are scanned and, beside that, counted file by file by the plainest code that can be written for it.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "engine/scan/folder_reading.h"
#include "tests/engine/scan/scan_recording.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/random_seed.h"

namespace dunmere::test {
namespace {

using Random = std::mt19937_64;

// ---- The reference: one map, one key per file, one climb per file ----

class ReferenceScan {
 public:
  ReferenceScan(FileSystem& fileSystem, const std::string& root)
      : fileSystem_(fileSystem), root_(root), rootPath_(root_.key()) {}

  std::vector<PlainSnapshot> run() {
    lastPublication_ = fileSystem_.now();
    walk(root_);
    state_.scanComplete = true;
    published_.push_back(state_);
    return published_;
  }

 private:
  // A folder's files come first, then the folders inside it, both in directory order.
  void walk(const FileUrl& folder) {
    const auto opened = fileSystem_.openFolder(folder, EntryDetail::sizes);
    if (!opened) {
      state_.hadReadErrors = true;
      return;
    }
    std::vector<FileUrl> subfolders;
    EntryBatch batch;
    for (;;) {
      if (!(*opened)->readEntries(batch) || !(*opened)->measure(batch)) {
        state_.hadReadErrors = true;
        break;
      }
      if (batch.empty()) break;
      for (const EntryBatch::Entry& entry : batch.entries()) {
        const FileUrl url = folder.appending(batch.name(entry));
        if (entry.attributes.kind == EntryKind::regularFile) countFile(url, entry.attributes);
        if (entry.attributes.kind != EntryKind::folder) continue;
        if (!entry.attributes.isPackage && !isPackageName(batch.name(entry))) subfolders.push_back(url);
      }
    }
    for (const FileUrl& subfolder : subfolders) walk(subfolder);
  }

  void countFile(const FileUrl& file, const EntryAttributes& attributes) {
    std::int64_t size = 0;
    if (attributes.allocatedBytes >= 0) {
      size = attributes.allocatedBytes;
    } else if (attributes.logicalBytes >= 0) {
      size = attributes.logicalBytes;
    }
    state_.entries[file.key()] = size;
    state_.fileCount += 1;
    state_.totalFileBytes += size;
    addToFoldersAbove(file, size);
    const auto now = fileSystem_.now();
    if (state_.fileCount % 12'000 != 0 && now - lastPublication_ < std::chrono::milliseconds(350)) return;
    lastPublication_ = now;
    published_.push_back(state_);
  }

  void addToFoldersAbove(const FileUrl& file, std::int64_t size) {
    for (FileUrl folder = file.deletingLastPathComponent();; folder = folder.deletingLastPathComponent()) {
      const std::string key = folder.key();
      if (rootPath_ == "/") {
        if (key.empty()) return;
      } else if (key != rootPath_ && !key.starts_with(rootPath_ + "/")) {
        return;
      }
      state_.entries[key] += size;
      if (key == rootPath_) return;
    }
  }

  FileSystem& fileSystem_;
  const FileUrl root_;
  const std::string rootPath_;
  FileSystem::Instant lastPublication_{};
  PlainSnapshot state_;
  std::vector<PlainSnapshot> published_;
};

// ---- Random trees ----

template <typename T>
const T& oneOf(Random& random, const std::vector<T>& choices) {
  return choices[random() % choices.size()];
}

std::string randomName(Random& random, std::size_t number) {
  static const std::vector<std::string> odd = {" ",
                                               "\n",
                                               "...",
                                               ".hidden",
                                               "\xff\xfe",
                                               "\xcc\x81",
                                               "e\xcc\x81",
                                               "\xc3\xa9",
                                               "\xe0\xa4\x83",
                                               "\xf0\x9f\x87\xa9",
                                               "\xed\xa0\x80",
                                               "a:b",
                                               "\\",
                                               "%2f",
                                               "-",
                                               "\xe2\x80\xae",
                                               std::string(250, 'x')};
  const std::string unique = std::to_string(number);
  switch (random() % 4) {
    case 0:
      return oneOf(random, odd) + unique;
    case 1:
      return unique + oneOf(random, odd);
    default:
      return "n" + unique;
  }
}

std::string randomPackageName(Random& random, std::size_t number) {
  static const std::vector<std::string> endings = {".app",       ".APP",  ".App", ".photoslibrary", ".xcodeproj",
                                                   ".framework", ".app.", ".apq", ".app.folder"};
  return (random() % 8 == 0 ? "" : "p" + std::to_string(number)) + oneOf(random, endings);
}

EntryAttributes randomFile(Random& random) {
  static const std::vector<std::int64_t> sizes = {
      EntryAttributes::kAbsent, 0, 1, 511, 512, 4096, 12'345, 1 << 20, 10LL << 40};
  EntryAttributes attributes;
  attributes.kind = EntryKind::regularFile;
  attributes.allocatedBytes = oneOf(random, sizes);
  attributes.logicalBytes = oneOf(random, sizes);
  return attributes;
}

// Fills the file system below `root` with a tree of `entries` entries.
void growTree(MemoryFileSystem& fileSystem, const std::string& root, std::size_t entries, Random& random) {
  fileSystem.addFolder(root);
  std::vector<std::string> folders = {root};
  const auto below = [](const std::string& folder, const std::string& name) {
    return folder == "/" ? "/" + name : folder + "/" + name;
  };
  for (std::size_t i = 0; i < entries; ++i) {
    // Half the time the newest folder, so that trees get deep.
    const std::string& parent = random() % 2 == 0 ? folders.back() : oneOf(random, folders);
    const std::string path = below(parent, randomName(random, i));
    switch (random() % 12) {
      case 0:
      case 1:
      case 2:
        fileSystem.addFolder(path);
        folders.push_back(path);
        break;
      case 3:
        folders.push_back(below(parent, randomPackageName(random, i)));
        fileSystem.addFolder(folders.back());
        if (random() % 4 == 0) fileSystem.markPackage(folders.back());
        break;
      case 4:
        fileSystem.addLink(path, oneOf(random, folders));
        break;
      case 5:
        fileSystem.addOther(path);
        break;
      default:
        fileSystem.addFile(path, randomFile(random));
        if (random() % 16 == 0) fileSystem.hideAttributes(path);
        break;
    }
  }
  for (const std::string& folder : folders) {
    if (random() % 16 == 0) fileSystem.makeUnreadable(folder);
    if (random() % 16 == 0) fileSystem.failReadingAfter(folder, random() % 4);
  }
  fileSystem.makeReadable(root);
}

// ---- The comparison ----

// Asks for every entry in the ways that a listing does, in directory order and in another one.
void expectLookUpsAgree(const SweepInventory& inventory, const PlainMap& entries, Random& random) {
  std::vector<std::string> keys;
  for (const auto& [key, bytes] : entries) {
    keys.push_back(key);
    ASSERT_EQ(inventory.pathBytes.find(key), bytes) << key;
    ASSERT_EQ(inventory.pathBytes.find(key + "~"), std::nullopt) << key;
  }
  for (const bool inOrder : {true, false}) {
    if (!inOrder) std::ranges::shuffle(keys, random);
    const auto found = inventory.pathBytes.findAll(keys);
    for (std::size_t i = 0; i < keys.size(); ++i) ASSERT_EQ(found[i], entries.at(keys[i])) << keys[i];
  }
}

void compareOneTree(std::uint64_t seed) {
  Random random(seed);
  MemoryFileSystem fileSystem;
  const std::string root = oneOf<std::string>(random, {"/", "/r", "/home/u\xff", "/a/e\xcc\x81", "/x/../r/./s", "/r/"});
  fileSystem.addFolder("/x");  // some roots are spelled by way of it
  growTree(fileSystem, FileUrl(root).key(), random() % 300, random);
  fileSystem.setBatchSize(1 + random() % 7);
  fileSystem.setClockStep(std::chrono::milliseconds(oneOf<int>(random, {0, 20, 70, 175, 349, 350, 400})));

  fileSystem.setClock({});
  const std::vector<PlainSnapshot> expected = ReferenceScan(fileSystem, root).run();
  fileSystem.setClock({});
  const RecordedScan scan = recordScan(fileSystem, root, {oneOf<unsigned>(random, {0, 1, 2, 3, 16})});

  ASSERT_TRUE(scan.result);
  ASSERT_EQ(scan.whenPublished.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    ASSERT_EQ(scan.whenPublished[i], expected[i]) << "snapshot " << i;
    ASSERT_EQ(plain(scan.published[i]), expected[i]) << "snapshot " << i << " after the end of the scan";
    ASSERT_EQ(scan.published[i].pathBytes.size(), static_cast<std::int64_t>(expected[i].entries.size()));
    ASSERT_EQ(scan.published[i].root, FileUrl(root));
    ASSERT_EQ(scan.published[i].rootPath, FileUrl(root).key());
  }
  ASSERT_EQ(plain(*scan.result), expected.back());
  expectLookUpsAgree(scan.published[scan.published.size() / 2], expected[expected.size() / 2].entries, random);
  expectLookUpsAgree(scan.last(), expected.back().entries, random);
}

TEST(ScanAgainstReference, EverySnapshotOfRandomTreesAgrees) {
  const std::uint64_t first = firstSeed();
  for (std::uint64_t seed = first; seed < first + static_cast<std::uint64_t>(rounds(3000)); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    compareOneTree(seed);
    if (testing::Test::HasFatalFailure()) return;
  }
}

// The trees that the random ones are unlikely to reach: tens of thousands of files, so that the count of files too
// makes snapshots fall due, in a giant folder and in many small ones.
TEST(ScanAgainstReference, EverySnapshotOfLargeTreesAgrees) {
  for (const std::size_t filesPerFolder : {26'000, 5'000, 7}) {
    MemoryFileSystem fileSystem;
    for (std::size_t i = 0; i < 26'000; ++i) {
      const std::string folder =
          "/r/" + std::to_string(i / filesPerFolder % 50) + "/" + std::to_string(i / filesPerFolder);
      fileSystem.addFile(folder + "/file" + std::to_string(i), static_cast<std::int64_t>(i * 100));
    }
    fileSystem.setBatchSize(777);
    fileSystem.setClockStep(std::chrono::microseconds(31));  // 350 ms fall inside the second, third … 12,000
    const std::vector<PlainSnapshot> expected = ReferenceScan(fileSystem, "/r").run();
    ASSERT_GE(expected.size(), 5U);
    for (const unsigned readers : {0U, 2U, 16U}) {
      fileSystem.setClock({});
      const RecordedScan scan = recordScan(fileSystem, "/r", {readers});
      ASSERT_EQ(scan.whenPublished, expected) << filesPerFolder << " files a folder, readers: " << readers;
      for (std::size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(plain(scan.published[i]), expected[i]);
    }
  }
}

}  // namespace
}  // namespace dunmere::test
