// A disk that takes its time: what the pane shows until it answers, and what becomes of answers that come late.

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <random>
#include <thread>

#include "engine/disk_sweeper_scan.h"
#include "tests/support/print_values.h"
#include "tests/support/random_seed.h"
#include "tests/sweeper/pane_test.h"

namespace dunmere::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SlowDisk : public PaneTest {
 protected:
  SlowDisk() {
    fileSystem_.addFile("/data/big/one", 3'000'000);
    fileSystem_.addFile("/data/big/deep/two", 1'000'000);
    fileSystem_.addFile("/data/small/three", 500);
    fileSystem_.addFile("/data/note", 2'000);
  }
  ~SlowDisk() override { background_.release(); }

  /// All that has come, as the main thread gets to it.
  void answer() {
    while (background_.runNext()) continue;
    mainThread_.runQueued();
  }
  std::vector<SweeperItem> fresh(const std::string& folder) {
    return DiskSweeperScan::columnChildren(fileSystem_, FileUrl(folder), *pane().inventory()).value();
  }
  /// Has `step` done in the middle of the next listing of the folder.
  void onNextListingOf(const std::string& folder, std::function<void()> step) {
    fileSystem_.onRead([this, folder, step, test = std::this_thread::get_id()](const std::string& path) {
      if (path != folder || std::this_thread::get_id() != test) return;  // scans read it too
      fileSystem_.onRead({});
      step();
    });
  }
  std::size_t listingsSoFar() const { return world_.listings().size(); }
};

TEST_F(SlowDisk, AColumnIsEmptyAndBeingReadUntilItsFolderAnswers) {
  world_.holdScansAt("/data");
  background_.hold();
  pane().beginBrowsing(FileUrl("/data"));
  EXPECT_EQ(pane().phase(), Phase::browsing);
  EXPECT_THAT(names(0), IsEmpty());
  EXPECT_TRUE(pane().isReadingColumn(0));
  world_.notifications = 0;
  answer();
  EXPECT_THAT(names(0), ElementsAre("note", "big", "small"));
  EXPECT_FALSE(pane().isReadingColumn(0));
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(SlowDisk, AFolderThatIsEmptyIsNotBeingRead) {
  fileSystem_.addFolder("/data/void");
  sweep("/data");
  background_.hold();
  click(0, "void");
  EXPECT_TRUE(pane().isReadingColumn(1));
  answer();
  EXPECT_FALSE(pane().isReadingColumn(1));
}

TEST_F(SlowDisk, NoTimeIsAFailure) {
  sweep("/data");
  background_.hold();
  click(0, "big");
  for (int i = 0; i < 10; ++i) {
    fileSystem_.advanceClock(std::chrono::hours(1));
    pane().reloadVisibleColumns();
  }
  EXPECT_EQ(pane().loadError(), std::nullopt);
  EXPECT_THAT(names(0), ElementsAre("big", "note", "small"));
}

TEST_F(SlowDisk, SnapshotsAreAppliedWhileListingsAreOpen) {
  world_.holdScansAt("/data/small");
  background_.hold();
  pane().beginBrowsing(FileUrl("/data"));
  runUntilCounted(3);
  EXPECT_EQ(pane().scanStatus(), "3 files · 4 MB scanned");
  EXPECT_TRUE(pane().isReadingColumn(0));
  answer();
  EXPECT_EQ(row(0, "big").sizeBytes, 4'000'000);
}

TEST_F(SlowDisk, SizesThatAreKnownDoNotWaitForTheFolder) {
  world_.holdScansAt("/data/small");
  background_.hold();
  pane().beginBrowsing(FileUrl("/data"));
  answer();
  EXPECT_EQ(row(0, "big").sizeBytes, 0);
  runUntilCounted(3);
  std::vector<std::int64_t> meanwhile;
  onNextListingOf("/data", [&] {
    for (const char* folder : {"big", "small"}) {
      EXPECT_TRUE(background_.runPlace("sizes of /data"));
      mainThread_.runQueued();
      meanwhile.push_back(row(0, folder).sizeBytes);
      world_.releaseScans();
      runUntilComplete();
    }
  });
  EXPECT_TRUE(background_.runPlace("/data"));
  EXPECT_THAT(meanwhile, ElementsAre(4'000'000, 500)) << "counted before the listing and while it goes on";
  answer();
  EXPECT_EQ(pane().columnChildren()[0].items(), fresh("/data"));
}

TEST_F(SlowDisk, AFolderThatWasNeverReadHasNoRowsWhateverIsCounted) {
  world_.holdScansAt("/data/small");
  background_.hold();
  bool isSized = false;
  onNextListingOf("/data", [&] {
    isSized = background_.runPlace("sizes of /data");
    mainThread_.runQueued();
    EXPECT_TRUE(pane().isReadingColumn(0));
    EXPECT_EQ(pane().loadError(), std::nullopt);
  });
  pane().beginBrowsing(FileUrl("/data"));
  answer();
  EXPECT_TRUE(isSized);
  EXPECT_THAT(names(0), ElementsAre("note", "big", "small"));
}

TEST_F(SlowDisk, TheNewestSnapshotReplacesListingsThatHaveNotBegun) {
  sweep("/data");
  background_.hold();
  for (int i = 0; i < 10; ++i)
    pane().applyColumn(0, pane().columnLoadIDs()[0], SweepInventory::emptyFor(FileUrl("/data")));
  pane().reloadVisibleColumns();
  const std::size_t before = listingsSoFar();
  answer();
  EXPECT_EQ(listingsSoFar(), before + 1);
  EXPECT_EQ(row(0, "big").sizeBytes, 4'000'000);
}

TEST_F(SlowDisk, RowsStayUntilTheNextListingHasCome) {
  sweep("/data");
  background_.hold();
  fileSystem_.remove("/data/note");
  pane().reloadVisibleColumns();
  EXPECT_THAT(names(0), ElementsAre("big", "note", "small"));
  answer();
  EXPECT_THAT(names(0), ElementsAre("big", "small"));
}

TEST_F(SlowDisk, AFolderThatIsOpenedAgainKeepsItsRowsMeanwhile) {
  sweep("/data");
  click(0, "big");
  background_.hold();
  const ColumnLoadId token = pane().columnLoadIDs()[1];
  click(0, "big");
  EXPECT_NE(pane().columnLoadIDs()[1], token);
  EXPECT_THAT(names(1), ElementsAre("one", "deep"));
  EXPECT_FALSE(pane().isReadingColumn(1));
  fileSystem_.makeUnreadable("/data/big");
  answer();
  EXPECT_THAT(names(1), IsEmpty());
  EXPECT_TRUE(pane().loadError());
}

TEST_F(SlowDisk, AnAnswerForAColumnThatWasReplacedIsDropped) {
  sweep("/data");
  background_.hold();
  fileSystem_.makeUnreadable("/data/big");
  click(0, "big");
  click(0, "small");
  answer();
  EXPECT_EQ(pane().pathDirectories(), urls({"/data", "/data/small"}));
  EXPECT_THAT(names(1), ElementsAre("three"));
  EXPECT_EQ(pane().loadError(), std::nullopt);
}

TEST_F(SlowDisk, AFolderThatNeverAnswersHoldsUpNoOther) {
  sweep("/data");
  background_.hold();
  click(0, "big");
  pane().reloadVisibleColumns();
  EXPECT_TRUE(background_.runPlace("/data"));
  mainThread_.runQueued();
  click(0, "small");
  EXPECT_TRUE(background_.runPlace("/data/small"));
  mainThread_.runQueued();
  EXPECT_THAT(names(1), ElementsAre("three"));
}

TEST_F(SlowDisk, DrivesAppearAsTheyAnswer) {
  fileSystem_.setMountedVolumes(urls({"/", "/mnt/alive", "/mnt/dead"}));
  fileSystem_.setVolumeValues("/", volumeOf("System", 1000, 400));
  fileSystem_.setVolumeValues("/mnt/alive", volumeOf("Alive", 2000, 500));
  fileSystem_.setVolumeValues("/mnt/dead", volumeOf("Backup", 3000, 600));
  background_.hold();
  pane().appear();
  EXPECT_THAT(pane().volumes(), IsEmpty());
  EXPECT_TRUE(background_.runNext());  // the table of mounts
  mainThread_.runQueued();
  EXPECT_TRUE(background_.runPlace("/"));
  EXPECT_TRUE(background_.runPlace("/mnt/alive"));
  mainThread_.runQueued();
  EXPECT_THAT(pane().volumes(), ElementsAre(SweeperVolume{FileUrl("/mnt/alive"), "Alive", 2000, 500},
                                            SweeperVolume{FileUrl("/mnt/dead"), "dead", 0, 0},
                                            SweeperVolume{FileUrl("/"), "System", 1000, 400}));
  EXPECT_EQ(DiskSweeperPane::volumeDetailText(pane().volumes()[1]), "Not answering yet");
  answer();
  EXPECT_EQ(pane().volumes()[1], (SweeperVolume{FileUrl("/mnt/dead"), "Backup", 3000, 600}));
}

TEST_F(SlowDisk, ADriveThatTurnsOutToBeNoneGoes) {
  fileSystem_.setMountedVolumes(urls({"/", "/mnt/tools"}));
  fileSystem_.setVolumeValues("/", volumeOf("System", 1000, 400));
  fileSystem_.setVolumeValues("/mnt/tools", volumeOf("Recovery", 2000, 500));
  background_.hold();
  pane().appear();
  EXPECT_TRUE(background_.runNext());
  mainThread_.runQueued();
  EXPECT_EQ(pane().volumes().size(), 2U);
  answer();
  EXPECT_EQ(pane().volumes().size(), 1U);
}

TEST_F(SlowDisk, AnswersOfAnEarlierListOfDrivesAreDropped) {
  fileSystem_.setMountedVolumes(urls({"/old"}));
  fileSystem_.setVolumeValues("/old", volumeOf("Old", 1000, 400));
  fileSystem_.setVolumeValues("/new", volumeOf("New", 1000, 400));
  background_.hold();
  pane().appear();
  EXPECT_TRUE(background_.runNext());
  mainThread_.runQueued();
  fileSystem_.setMountedVolumes(urls({"/new"}));
  pane().backToVolumes();
  answer();
  answer();
  EXPECT_THAT(pane().volumes(), ElementsAre(SweeperVolume{FileUrl("/new"), "New", 1000, 400}));
}

TEST_F(SlowDisk, AConfirmedMoveWaitsUntilItsItemIsHeld) {
  desktop_.onTrash = [this](const FileUrl& url) { fileSystem_.remove(url.path()); };
  sweep("/data");
  click(0, "note");
  background_.hold();
  pane().requestTrash();
  EXPECT_TRUE(pane().confirmTrash());
  EXPECT_THAT(desktop_.held, IsEmpty());
  pane().confirmedTrash();
  EXPECT_THAT(desktop_.trashed, IsEmpty());
  EXPECT_THAT(names(0), ElementsAre("big", "note", "small"));
  answer();
  EXPECT_THAT(desktop_.held, ElementsAre(FileUrl("/data/note")));
  EXPECT_THAT(desktop_.trashed, ElementsAre(FileUrl("/data/note")));
  EXPECT_EQ(pane().selectedLeafURL(), std::nullopt);
  answer();
  EXPECT_THAT(names(0), ElementsAre("big", "small"));
  EXPECT_EQ(desktop_.heldNow, 0);
}

TEST_F(SlowDisk, WhatIsSelectedWhileAnItemMovesStaysSelected) {
  sweep("/data");
  click(0, "note");
  background_.hold();
  pane().performTrash();
  click(0, "big");
  answer();
  click(1, "one");
  answer();
  EXPECT_THAT(desktop_.trashed, ElementsAre(FileUrl("/data/note")));
  EXPECT_EQ(pane().selectedLeafURL(), FileUrl("/data/big/one"));
}

TEST_F(SlowDisk, AnOpenQuestionNeverTurnsToSomethingElseBecauseAnItemHasGone) {
  desktop_.onTrash = [this](const FileUrl& url) { fileSystem_.remove(url.path()); };
  sweep("/data");
  click(0, "big");
  click(1, "one");
  background_.hold();
  pane().performTrash();
  pane().requestTrash();
  EXPECT_EQ(pane().trashConfirmTitle(), "Move “one” to Trash?");
  answer();
  EXPECT_FALSE(pane().confirmTrash());
  EXPECT_THAT(desktop_.trashed, ElementsAre(FileUrl("/data/big/one")));
}

TEST_F(SlowDisk, WhatWasSelectedInAFolderThatHasGoneIsNotSelectedAnyMore) {
  desktop_.onTrash = [this](const FileUrl& url) { fileSystem_.remove(url.path()); };
  sweep("/data");
  click(0, "big");
  background_.hold();
  pane().performTrash();
  click(1, "one");
  answer();
  EXPECT_EQ(pane().selectedLeafURL(), std::nullopt);
  EXPECT_EQ(pane().pathDirectories(), urls({"/data"}));
}

TEST_F(SlowDisk, LinksThatAnswerLateAreListedOnceMoreAndThatIsAll) {
  fileSystem_.addLink("/data/link", "big");
  world_.holdScansAt("/data");
  background_.hold();
  pane().beginBrowsing(FileUrl("/data"));
  int works = 0;
  while (works < 100 && background_.runNext()) ++works;
  mainThread_.runQueued();
  EXPECT_LT(works, 10);
  EXPECT_TRUE(row(0, "link").isDirectory);
}

TEST_F(SlowDisk, AFolderThatWasMovedAwayIsClosedWithAllThatWasOpenedInIt) {
  desktop_.onTrash = [this](const FileUrl& url) { fileSystem_.remove(url.path()); };
  sweep("/data");
  click(0, "big");
  background_.hold();
  pane().performTrash();
  click(1, "deep");
  EXPECT_EQ(pane().pathDirectories().size(), 3U);
  answer();
  answer();
  EXPECT_EQ(pane().pathDirectories(), urls({"/data"}));
  EXPECT_THAT(names(0), ElementsAre("note", "small"));
  EXPECT_EQ(pane().loadError(), std::nullopt);
}

TEST_F(SlowDisk, ThePaneMayBeLeftAtEveryStep) {
  desktop_.onTrash = [this](const FileUrl& url) { fileSystem_.remove(url.path()); };
  fileSystem_.setMountedVolumes(urls({"/"}));
  fileSystem_.setVolumeValues("/", volumeOf("System", 1000, 400));
  fileSystem_.addLink("/data/link", "big");
  for (int left = 0; left < 40; ++left) {
    pane_ = makePane();
    fileSystem_.addFile("/data/note", 2'000);
    int step = 0;
    const auto goOn = [&] {
      if (step++ == left) pane_.reset();
      return pane_ != nullptr;
    };
    background_.hold();
    const auto work = [&] {
      while (background_.waiting() > 0 && goOn()) {
        background_.runNext();
        if (goOn()) mainThread_.runQueued();
      }
    };
    pane().appear();
    work();
    if (pane_) pane().beginBrowsing(FileUrl("/data"));
    work();
    if (pane_) pane().selectItem({FileUrl("/data/big"), "big", true}, 0);
    work();
    if (pane_) pane().selectItem({FileUrl("/data/note"), "note"}, 0);
    if (pane_) pane().requestTrash();
    work();
    if (pane_) pane().confirmedTrash();
    work();
    if (pane_) pane().backToVolumes();
    work();
    pane_.reset();
    background_.release();
    mainThread_.runQueued();
    EXPECT_EQ(desktop_.heldNow, 0);
  }
}

// Whatever the user does and in whatever order answers come: in the end each column shows what a fresh listing would.
TEST_F(SlowDisk, InTheEndEveryColumnShowsAFreshListing) {
  std::mt19937_64 random(firstSeed());
  const auto below = [&random](std::size_t bound) { return static_cast<std::size_t>(random() % bound); };
  const std::vector<std::string> folders = {"/data", "/data/big", "/data/big/deep", "/data/small"};
  const std::thread::id test = std::this_thread::get_id();
  fileSystem_.addLink("/data/link", "big");
  sweep("/data");
  background_.hold();
  // The disk may be in the middle of a listing.
  fileSystem_.onRead([&](const std::string& path) {
    if (std::this_thread::get_id() == test && below(2) == 0) background_.runPlace("sizes of " + path);
  });
  const std::int64_t steps = rounds(3'000);
  for (std::int64_t step = 0; step < steps; ++step) {
    const std::string path = folders[below(folders.size())] + "/f" + std::to_string(below(6));
    switch (below(9)) {
      case 0:
        fileSystem_.addFile(path, static_cast<std::int64_t>(below(4)));
        break;
      case 1:
        if (below(2) == 0) fileSystem_.addFile(path, 1), fileSystem_.remove(path);
        break;
      case 2: {
        const std::size_t column = below(pane().columnChildren().size());
        const ColumnRows& rows = pane().columnChildren()[column];
        if (!rows.empty()) pane().selectItem(rows[below(rows.size())], column);
        break;
      }
      case 3:
        pane().reloadVisibleColumns();
        break;
      case 4:
        if (below(20) == 0) pane().beginBrowsing(FileUrl("/data"));
        break;
      case 5:
        mainThread_.runQueued();
        break;
      default:
        if (background_.waiting() > 0) background_.runNext(below(std::min<std::size_t>(background_.waiting(), 4)));
    }
  }
  fileSystem_.onRead({});
  background_.release();
  runUntilComplete();
  pane().reloadVisibleColumns();
  mainThread_.runQueued();
  for (std::size_t column = 0; column < pane().columnChildren().size(); ++column)
    EXPECT_EQ(pane().columnChildren()[column].items(), fresh(pane().pathDirectories()[column].path()));
}

}  // namespace
}  // namespace dunmere::test
