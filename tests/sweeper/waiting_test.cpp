// What the pane says of its waiting, from the first moment of a slow scan to its end: the progress line, whether the
// spinner turns, the footer, and which sizes are marked as a least.

#include <gmock/gmock.h>

#include <new>
#include <ostream>

#include "tests/sweeper/pane_test.h"

namespace dunmere::test {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

constexpr const char* kIndexing = "Indexing… folder sizes with + grow";
constexpr const char* kUnread = "Some folders could not be read";

/// What can be read on the screen about the scan.
struct Shown {
  bool spinner = false;
  std::string progress;
  std::vector<std::string> rows;  ///< of the root column, from top to bottom: name, then size as shown

  friend bool operator==(const Shown&, const Shown&) = default;
  friend void PrintTo(const Shown& shown, std::ostream* out) {
    *out << (shown.spinner ? "turning" : "still") << " | " << shown.progress;
    for (const std::string& row : shown.rows) *out << " | " << row;
  }
};

class Waiting : public PaneTest {
 protected:
  Waiting() {
    fileSystem_.addFile("/data/note", 2'000);
    fileSystem_.addFile("/data/big/one", 3'000'000);
    fileSystem_.addFile("/data/big/deep/two", 1'000'000);
    fileSystem_.addFile("/data/small/three", 500);
  }

  Shown shown() const {
    std::vector<std::string> rows;
    for (const SweeperItem& item : pane().columnChildren().at(0).items())
      rows.push_back(item.name + " " + DiskSweeperPane::sizeLabel(item));
    return {pane().showsStatusStrip(), pane().statusStripText(), rows};
  }

  /// What is shown once the next snapshot is applied.
  Shown afterNextSnapshot() {
    EXPECT_TRUE(mainThread_.runNext());
    return shown();
  }
};

TEST_F(Waiting, NothingIsWaitedForBeforeASweep) {
  EXPECT_FALSE(pane().showsStatusStrip());
  EXPECT_EQ(pane().footerStatus(), "Select an item.");
}

TEST_F(Waiting, EveryStageTellsWhatIsKnownByThen) {
  pane().beginBrowsing(FileUrl("/data"));
  EXPECT_EQ(shown(), (Shown{true, "Starting…", {"note 2 KB", "big Zero KB+", "small Zero KB+"}}));
  EXPECT_EQ(afterNextSnapshot(),
            (Shown{true, "1 files · 2 KB scanned", {"note 2 KB", "big Zero KB+", "small Zero KB+"}}));
  EXPECT_EQ(afterNextSnapshot(), (Shown{true, "2 files · 3 MB scanned", {"big 3 MB+", "note 2 KB", "small Zero KB+"}}));
  EXPECT_EQ(afterNextSnapshot(), (Shown{true, "3 files · 4 MB scanned", {"big 4 MB+", "note 2 KB", "small Zero KB+"}}));
  EXPECT_EQ(afterNextSnapshot(),
            (Shown{true, "4 files · 4 MB scanned", {"big 4 MB+", "note 2 KB", "small 500 bytes+"}}));
  EXPECT_THAT(pane().footerStatus(), StartsWith(kIndexing));
  EXPECT_EQ(afterNextSnapshot(), (Shown{false, "4 files · 4 MB", {"big 4 MB", "note 2 KB", "small 500 bytes"}}));
  EXPECT_EQ(pane().footerStatus(), "data / /");
}

TEST_F(Waiting, AScanThatIsStuckNeverLooksDone) {
  world_.holdScansAt("/data/small");
  pane().beginBrowsing(FileUrl("/data"));
  runUntilCounted(3);
  const Shown stuck = shown();
  fileSystem_.advanceClock(std::chrono::hours(1));
  pane().reloadVisibleColumns();
  EXPECT_EQ(shown(), stuck);
  EXPECT_TRUE(stuck.spinner);
  EXPECT_EQ(stuck.progress, "3 files · 4 MB scanned");
  EXPECT_THAT(stuck.rows, ElementsAre("big 4 MB+", "note 2 KB", "small Zero KB+"));
  EXPECT_THAT(pane().footerStatus(), StartsWith(kIndexing));
}

TEST_F(Waiting, AFolderOpenedMeanwhileIsMarkedToo) {
  world_.holdScansAt("/data/big/deep");
  pane().beginBrowsing(FileUrl("/data"));
  click(0, "big");
  EXPECT_EQ(DiskSweeperPane::sizeLabel(row(1, "deep")), "Zero KB+");
  EXPECT_EQ(DiskSweeperPane::sizeLabel(row(1, "one")), "3 MB");
  world_.releaseScans();
  runUntilComplete();
  EXPECT_EQ(DiskSweeperPane::sizeLabel(row(1, "deep")), "1 MB");
}

TEST_F(Waiting, AfterReadErrorsSizesStayALeastAndTheFooterSaysWhy) {
  fileSystem_.makeUnreadable("/data/big/deep");
  pane().beginBrowsing(FileUrl("/data"));
  EXPECT_EQ(shown().progress, "Starting…");
  EXPECT_EQ(afterNextSnapshot().progress, "1 files · 2 KB scanned");
  EXPECT_EQ(afterNextSnapshot().progress, "2 files · 3 MB scanned");
  EXPECT_EQ(afterNextSnapshot(),
            (Shown{true, "3 files · 3 MB scanned", {"big 3 MB+", "note 2 KB", "small 500 bytes+"}}));
  EXPECT_TRUE(pane().inventory()->hadReadErrors);
  EXPECT_THAT(pane().footerStatus(), StartsWith(kIndexing)) << "the errors are told when there is nothing to wait for";
  EXPECT_EQ(afterNextSnapshot(), (Shown{false, "3 files · 3 MB", {"big 3 MB+", "note 2 KB", "small 500 bytes+"}}));
  EXPECT_THAT(pane().footerStatus(), StartsWith(kUnread));
}

TEST_F(Waiting, ARootThatCannotBeReadIsDoneAtOnceAndSaysSo) {
  fileSystem_.makeUnreadable("/data");
  world_.holdScansAt("/data");
  pane().beginBrowsing(FileUrl("/data"));
  EXPECT_EQ(shown(), (Shown{true, "Starting…", {}}));
  world_.releaseScans();
  EXPECT_EQ(afterNextSnapshot(), (Shown{false, "0 files · Zero KB", {}}));
  EXPECT_EQ(pane().footerStatus(), "The file “data” couldn’t be opened because you don’t have permission to view it.");
}

TEST_F(Waiting, AScanThatCannotBeginStopsTheSpinner) {
  world_.holdScansAt("/gone");
  pane().beginBrowsing(FileUrl("/gone"));
  EXPECT_TRUE(pane().showsStatusStrip());
  EXPECT_EQ(pane().statusStripText(), "Starting…");
  world_.releaseScans();
  ASSERT_TRUE(mainThread_.runNext());
  EXPECT_FALSE(pane().showsStatusStrip());
  EXPECT_EQ(pane().phase(), Phase::chooseTarget);
  EXPECT_EQ(pane().loadError(), "The file couldn’t be opened.");
}

TEST_F(Waiting, AScanThatFailsHalfWayStopsTheSpinner) {
  fileSystem_.onRead([](const std::string& path) {
    if (path == "/data/big/deep") throw std::bad_alloc();
  });
  pane().beginBrowsing(FileUrl("/data"));
  EXPECT_EQ(afterNextSnapshot().progress, "1 files · 2 KB scanned");
  EXPECT_EQ(afterNextSnapshot().progress, "2 files · 3 MB scanned");
  EXPECT_TRUE(pane().showsStatusStrip());
  ASSERT_TRUE(mainThread_.runNext());
  EXPECT_FALSE(pane().showsStatusStrip());
  EXPECT_EQ(pane().phase(), Phase::chooseTarget);
  EXPECT_EQ(pane().loadError(), pane().footerStatus());
  EXPECT_TRUE(pane().loadError());
}

TEST_F(Waiting, ANewSweepWaitsAnew) {
  sweep("/data");
  ASSERT_FALSE(pane().showsStatusStrip());
  world_.holdScansAt("/data/big");
  pane().beginBrowsing(FileUrl("/data/big"));
  EXPECT_EQ(shown(), (Shown{true, "Starting…", {"one 3 MB", "deep Zero KB+"}}));
  EXPECT_THAT(pane().footerStatus(), StartsWith(kIndexing));
}

TEST_F(Waiting, ASweepThatWasLeftIsNotWaitedFor) {
  world_.holdScansAt("/data/big");
  pane().beginBrowsing(FileUrl("/data"));
  pane().backToVolumes();
  EXPECT_FALSE(pane().showsStatusStrip());
  EXPECT_EQ(pane().footerStatus(), "Select an item.");
}

}  // namespace
}  // namespace dunmere::test
