// Scans and listings while the system refuses one call after another: each ends with the truth or with an error.
#include "tests/support/system_faults.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "engine/listing/column_listing.h"
#include "platform/platform_file_system.h"
#include "sweeper/background_threads.h"
#include "sweeper/disk_sweeper_pane.h"
#include "tests/platform/folder_contents.h"
#include "tests/support/background_queue.h"
#include "tests/support/child_process.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/inventory_sums.h"
#include "tests/support/machine.h"
#include "tests/support/main_thread_queue.h"
#include "tests/support/print_values.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

using ScanResult = DiskSweeperScan::ScanResult;
using Counted = std::map<std::string, std::int64_t>;

std::ptrdiff_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

Counted countedIn(const SweepInventory& inventory) {
  Counted counted;
  inventory.pathBytes.forEach([&](std::string_view key, std::int64_t bytes) { counted.emplace(key, bytes); });
  return counted;
}

/// Never destroyed: a pane's scan may still be ending when its test is over.
FileSystem* fileSystem() {
  static FileSystem* const files = makePlatformFileSystem().release();
  return files;
}

ScanResult scan(FileSystem& files, const FileUrl& root, unsigned readers) {
  return DiskSweeperScan::runProgressiveScan(files, root, [](const SweepInventory&) {}, {.readers = readers}).get();
}

class SystemFaults : public ::testing::Test {
 protected:
  SystemFaults() {
    for (const std::string branch : {"a", "b", "c"}) {
      for (const std::string& folder : {branch, branch + "/d", branch + "/d/e", branch + "/f"}) {
        tree.folder(folder);
        tree.file(folder + "/one", 5'000);
        tree.file(folder + "/two", 50'000);
      }
      tree.link(branch + " link", branch + "/one");
    }
    full = scan(0).value();
    fullCount = countedIn(full);
  }

  ScanResult scan(unsigned readers) { return test::scan(*files, tree.url(), readers); }

  /// Fails the first, second ... call in turn until a run has none so late any more. `check` gets what came out; none
  /// when the memory ran out before a thread could take over.
  template <typename Check>
  void failEach(Fallible call, int error, Check check) {
    for (const unsigned readers : {0u, 3u}) {
      const auto descriptors = openDescriptors();
      int first = 1;
      for (bool hasFailed = true; hasFailed && !HasFailure(); ++first) {
        SCOPED_TRACE("call " + std::to_string(first) + ", " + std::to_string(readers) + " readers");
        std::optional<ScanResult> result;
        {
          const FailingCall failing(call, first, error);
          try {
            result = scan(readers);
          } catch (const std::bad_alloc&) {
          }
          hasFailed = failing.hasFailed();
        }
        if (hasFailed) check(first, result);
        EXPECT_EQ(openDescriptors(), descriptors);
      }
      EXPECT_GT(first, 2) << "nothing failed";
    }
  }

  void expectWhole(const ScanResult& result) {
    ASSERT_TRUE(result) << result.error().code.message();
    EXPECT_FALSE(result->hadReadErrors);
    EXPECT_EQ(countedIn(*result), fullCount);
  }

  /// What was counted is right, as far as it goes.
  void expectPart(const ScanResult& result) {
    ASSERT_TRUE(result) << result.error().code.message();
    EXPECT_TRUE(result->scanComplete);
    EXPECT_EQ(wrongSum(*result), "");
    for (const auto& [key, bytes] : countedIn(*result)) {
      const auto whole = fullCount.find(key);
      ASSERT_NE(whole, fullCount.end()) << key;
      EXPECT_LE(bytes, whole->second) << key;
    }
  }

  TemporaryTree tree;
  FileSystem* const files = fileSystem();
  SweepInventory full = SweepInventory::emptyFor(FileUrl("/"));
  Counted fullCount;
};

// ---- The scan ----

TEST_F(SystemFaults, FolderThatDoesNotOpenIsAReadError) {
  for (const int error : {EACCES, EIO, ESTALE, ENOTCONN}) {
    failEach(Fallible::open, error, [&](int first, const std::optional<ScanResult>& result) {
      expectPart(*result);
      const bool isRoot = first <= 2;  // which is held before it is opened
      const bool mayNotSearch = first == 2 && error == EACCES;
      EXPECT_EQ(result->value().hadReadErrors, !mayNotSearch);
      EXPECT_EQ(result->value().fileCount == 0, isRoot && !mayNotSearch);
    });
  }
}

TEST_F(SystemFaults, OneMomentWithoutDescriptorsLosesNothing) {
  for (const int error : {EMFILE, ENFILE})
    failEach(Fallible::open, error, [this](int, const std::optional<ScanResult>& result) { expectWhole(*result); });
}

TEST_F(SystemFaults, NoMoreDescriptorsFromSomeMomentOnIsAReadError) {
  for (int first = 3; first < 14; ++first) {  // the root takes two
    const FailingCall failing(Fallible::open, first, EMFILE, {.lasting = true});
    const ScanResult result = scan(3);
    expectPart(result);
    EXPECT_TRUE(result->hadReadErrors) << first;
  }
}

TEST_F(SystemFaults, FolderThatCannotBeReadToItsEndIsAReadError) {
  for (const int error : {EIO, ENOMEM, ENOTCONN}) {
    failEach(Fallible::getdents, error, [this](int, const std::optional<ScanResult>& result) {
      expectPart(*result);
      EXPECT_TRUE(result->value().hadReadErrors);
    });
  }
}

TEST_F(SystemFaults, InterruptedReadLosesNothing) {
  failEach(Fallible::getdents, EINTR, [this](int, const std::optional<ScanResult>& result) { expectWhole(*result); });
}

TEST_F(SystemFaults, FileWithoutAttributesIsLeftOut) {
  for (const int error : {EACCES, EIO, ENOENT}) {
    failEach(Fallible::statx, error, [this](int, const std::optional<ScanResult>& result) {
      expectPart(*result);
      EXPECT_FALSE(result->value().hadReadErrors);
      EXPECT_EQ(result->value().fileCount, full.fileCount - 1);
    });
  }
}

TEST_F(SystemFaults, ScanOutOfMemoryFailsOrIsWhole) {
  failEach(Fallible::memory, ENOMEM, [this](int, const std::optional<ScanResult>& result) {
    if (!result) return;  // before it began
    if (*result)
      expectWhole(*result);
    else
      EXPECT_EQ(errorOf(*result), ENOMEM);
  });
}

TEST_F(SystemFaults, MissingThreadsCostNothingButTheScansOwn) {
  failEach(Fallible::thread, EAGAIN, [this](int first, const std::optional<ScanResult>& result) {
    if (first == 1)
      EXPECT_EQ(errorOf(*result), EAGAIN);
    else
      expectWhole(*result);
  });
}

// Not after a scan of the test's own, of whose thread something may still be left.
TEST(WithoutThreads, AScanSaysSoAndAListingNeedsNone) {
  DUNMERE_NEEDS(Feature::threadLimit);
  const TemporaryTree tree;
  const auto files = makePlatformFileSystem();
  const ChildResult result = runInChild([&] {
    forbidThreads();
    EXPECT_EQ(errorOf(scan(*files, tree.url(), 3)), EAGAIN);
    EXPECT_TRUE(DiskSweeperScan::columnChildren(*files, tree.url(), SweepInventory::emptyFor(tree.url())));
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

// ---- The listing ----

class ListingFaults : public SystemFaults {
 protected:
  using Column = std::expected<std::vector<SweeperItem>, SweepError>;

  Column list() { return DiskSweeperScan::columnChildren(*files, folder, full); }

  const FileUrl folder = tree.url("a");

  template <typename Check>
  void failEachOfListing(Fallible call, int error, Check check, bool lasting = false) {
    tree.link("a/link", "one");
    tree.file("a/new", 5'000);
    const auto whole = list().value();
    const auto descriptors = openDescriptors();
    int first = 1;
    for (bool hasFailed = true; hasFailed && !HasFailure(); ++first) {
      SCOPED_TRACE("call " + std::to_string(first));
      std::optional<Column> column;
      {
        const FailingCall failing(call, first, error, {.lasting = lasting});
        try {
          column = list();
        } catch (const std::bad_alloc&) {
        }
        hasFailed = failing.hasFailed();
      }
      if (hasFailed) check(first, column, whole);
      EXPECT_EQ(openDescriptors(), descriptors);
    }
    EXPECT_GT(first, 2) << "nothing failed";
  }
};

TEST_F(ListingFaults, UnreadableFolderFails) {
  for (const auto call : {Fallible::open, Fallible::getdents}) {
    tree.remove("a");
    tree.folder("a");
    const auto fails = [call](int first, const std::optional<Column>& column, const std::vector<SweeperItem>& whole) {
      // The folder itself is opened first. After it a link may be, to find where it leads: it then leads nowhere.
      if (call == Fallible::open && first > 1 && *column)
        EXPECT_EQ((*column)->size(), whole.size());
      else
        EXPECT_EQ(errorOf(*column), EIO);
    };
    failEachOfListing(call, EIO, fails, true);
  }
}

TEST_F(ListingFaults, EntryWithoutAttributesKeepsItsRow) {
  failEachOfListing(Fallible::statx, EIO,
                    [](int, const std::optional<Column>& column, const std::vector<SweeperItem>& whole) {
                      ASSERT_TRUE(*column);
                      EXPECT_EQ((*column)->size(), whole.size());
                    });
}

TEST_F(ListingFaults, OutOfMemoryFailsOrIsWhole) {
  failEachOfListing(Fallible::memory, ENOMEM,
                    [](int first, const std::optional<Column>& column, const std::vector<SweeperItem>& whole) {
                      // Only the error itself has nobody to fall back on.
                      ASSERT_TRUE(column || first == 1);
                      if (!column) return;
                      if (*column)
                        EXPECT_EQ(**column, whole);
                      else
                        EXPECT_EQ(errorOf(*column), ENOMEM);
                    });
}

// A column is listed again for every snapshot, with what the listing before remembered.
TEST_F(ListingFaults, MemoryOfAFailedListingIsNotBelieved) {
  const SweepInventory empty = SweepInventory::emptyFor(tree.url());
  ColumnRows rows;
  // The first listing finds nothing counted, the second one everything, so that rows move.
  const auto listTwice = [&](ColumnListing& listing, int failingListing, int first, bool& hasFailed) {
    rows = {};
    for (int number = 0; number < 2; ++number) {
      std::optional<FailingCall> failing;
      if (number == failingListing) failing.emplace(Fallible::memory, first, ENOMEM);
      bool listed = false;
      try {
        const auto result = listing.list(*files, number == 0 ? empty : full);
        listed = result.has_value();
        rows = result.value_or(ColumnRows());
      } catch (const std::bad_alloc&) {  // for want of the error itself
        EXPECT_EQ(first, 1);
        rows = {};
      }
      if (failing) hasFailed = failing->hasFailed();
      EXPECT_TRUE(listed || rows.empty());
    }
  };
  for (const std::string name : {"three", "four", "five and more than fits into a short string"}) {
    tree.file("a/" + name, 5'000);
  }
  const auto whole = list().value();
  for (const int failingListing : {0, 1}) {
    int first = 1;
    for (bool hasFailed = true; hasFailed; ++first) {
      SCOPED_TRACE("call " + std::to_string(first) + " of listing " + std::to_string(failingListing));
      ColumnListing listing(folder);
      listTwice(listing, failingListing, first, hasFailed);
      for (int again = 0; again < 2; ++again) {
        ASSERT_EQ(listing.list(*files, full).value().items(), whole);
      }
    }
    EXPECT_GT(first, 10) << "hardly anything failed";
  }
}

// ---- The pane ----

/// A pane with the real threads. Never destroyed: they may still be at work for it.
struct ThreadedPane {
  explicit ThreadedPane(FileSystem& files)
      : pane(files, desktop, mainThread, background, {[] { return false; }, [](bool) {}}) {}

  static ThreadedPane& make(FileSystem& files) {
    static auto& panes = *new std::deque<ThreadedPane>();
    return panes.emplace_back(files);
  }

  FakeDesktop desktop;
  MainThreadQueue mainThread;
  BackgroundThreads background;
  DiskSweeperPane pane;
};

TEST_F(ListingFaults, AColumnOfThePaneFailsOrIsWhole) {
  tree.link("a/link", "one");
  const std::size_t whole = list().value().size();
  constexpr std::size_t kRootRows = 6;
  int first = 1;
  for (bool hasFailed = true; hasFailed && !HasFailure(); ++first) {
    SCOPED_TRACE("call " + std::to_string(first));
    ThreadedPane& world = ThreadedPane::make(*files);
    DiskSweeperPane& pane = world.pane;
    const auto isListed = [&pane](std::size_t column, std::size_t rows) {
      return pane.loadError() || pane.columnChildren().at(column).size() == rows;
    };
    pane.beginBrowsing(tree.url());
    ASSERT_TRUE(world.mainThread.runUntil([&] { return pane.inventory()->scanComplete && isListed(0, kRootRows); }));
    const FailingCall failing(Fallible::memory, first, ENOMEM, {.lasting = false, .sparesCaller = true});
    pane.selectItem({folder, "a", true}, 0);
    EXPECT_TRUE(world.mainThread.runUntil([&] { return isListed(1, whole); }));
    hasFailed = failing.hasFailed();
  }
  EXPECT_GT(first, 10) << "hardly anything failed";
}

TEST_F(SystemFaults, PaneHearsOfAScanThatRanOutOfMemoryOnceThereIsSomeAgain) {
  for (int first = 1; first < 60 && !HasFailure(); ++first) {
    FakeDesktop desktop;
    MainThreadQueue mainThread;
    BackgroundQueue background;
    DiskSweeperPane pane(*files, desktop, mainThread, background, {[] { return false; }, [](bool) {}});
    std::optional<FailingCall> failing;
    pane.beginBrowsing(tree.url());
    failing.emplace(Fallible::memory, first, ENOMEM, FailingCall::Manner{.lasting = true, .sparesCaller = true});
    mainThread.runUntil([&] { return failing->hasFailed() || !pane.showsStatusStrip(); });
    failing.reset();
    EXPECT_TRUE(mainThread.runUntil([&] { return !pane.showsStatusStrip(); }));
    if (pane.phase() == Phase::browsing)
      EXPECT_EQ(pane.scanBytesSoFar(), full.totalFileBytes);
    else
      EXPECT_TRUE(pane.loadError().has_value());
  }
}

}  // namespace
}  // namespace dunmere::test
