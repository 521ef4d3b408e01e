// Choosing a target: the drives, the folder chooser, the way back.

#include <gmock/gmock.h>

#include "tests/sweeper/pane_test.h"

namespace dunmere::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TargetChoice : public PaneTest {
 protected:
  TargetChoice() {
    fileSystem_.setMountedVolumes(urls({"/", "/media/Backup"}));
    fileSystem_.setVolumeValues("/", volumeOf("System", 500, 200));
    fileSystem_.setVolumeValues("/media/Backup", volumeOf("Backup", 1000, 100));
    fileSystem_.addFile("/media/Backup/old/tape", 7);
    fileSystem_.addFile("/media/Backup/note", 1);
  }

  std::vector<std::string> volumeNames() const {
    std::vector<std::string> names;
    for (const SweeperVolume& volume : pane().volumes()) names.push_back(volume.name);
    return names;
  }
};

TEST_F(TargetChoice, NewPaneIsEmpty) {
  EXPECT_FALSE(pane().pendingGoToDrives());
  EXPECT_THAT(pane().volumes(), IsEmpty());
  EXPECT_EQ(pane().selectedVolumeID(), std::nullopt);
  EXPECT_EQ(pane().phase(), Phase::chooseTarget);
  EXPECT_EQ(pane().sweepRoot(), std::nullopt);
  EXPECT_FALSE(pane().inventory());
  EXPECT_THAT(pane().pathDirectories(), IsEmpty());
  EXPECT_EQ(pane().selectedLeafURL(), std::nullopt);
  EXPECT_THAT(pane().columnChildren(), IsEmpty());
  EXPECT_THAT(pane().columnLoadIDs(), IsEmpty());
  EXPECT_EQ(pane().loadError(), std::nullopt);
  EXPECT_EQ(pane().scanStatus(), "");
  EXPECT_EQ(pane().scanFileCount(), 0);
  EXPECT_EQ(pane().scanBytesSoFar(), 0);
  EXPECT_FALSE(pane().confirmTrash());
  EXPECT_THAT(fileSystem_.measuredVolumes(), IsEmpty());
}

TEST_F(TargetChoice, TargetComesBeforeBrowsing) {
  EXPECT_EQ(static_cast<int>(Phase::chooseTarget), 0);
  EXPECT_EQ(static_cast<int>(Phase::browsing), 1);
}

TEST_F(TargetChoice, AppearingListsTheDrives) {
  pane().appear();
  EXPECT_THAT(volumeNames(), ElementsAre("Backup", "System"));
  EXPECT_EQ(pane().phase(), Phase::chooseTarget);
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(TargetChoice, RequestRaisedBeforeThePaneAppearedIsAnsweredThen) {
  world_.pendingGoToDrives = true;
  EXPECT_TRUE(pane().pendingGoToDrives());
  pane().appear();
  EXPECT_FALSE(world_.pendingGoToDrives);
  EXPECT_EQ(pane().phase(), Phase::chooseTarget);
  EXPECT_THAT(volumeNames(), ElementsAre("Backup", "System"));
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(TargetChoice, AppearingWithARequestLeavesASweep) {
  sweep("/media/Backup");
  world_.pendingGoToDrives = true;
  pane().appear();
  EXPECT_EQ(pane().phase(), Phase::chooseTarget);
  EXPECT_THAT(pane().pathDirectories(), IsEmpty());
}

TEST_F(TargetChoice, AppearingWithoutARequestLeavesTheSweepAlone) {
  sweep("/media/Backup");
  pane().appear();
  EXPECT_EQ(pane().phase(), Phase::browsing);
  EXPECT_EQ(pane().pathDirectories(), urls({"/media/Backup"}));
}

TEST_F(TargetChoice, RequestWhileBrowsingReturnsToTheDrives) {
  sweep("/media/Backup");
  fileSystem_.makeUnreadable("/media/Backup");
  pane().reloadVisibleColumns();
  ASSERT_TRUE(pane().loadError());
  fileSystem_.setMountedVolumes(urls({"/"}));
  world_.pendingGoToDrives = true;
  world_.notifications = 0;
  pane().pendingGoToDrivesChanged();
  EXPECT_FALSE(world_.pendingGoToDrives);
  EXPECT_EQ(pane().phase(), Phase::chooseTarget);
  EXPECT_THAT(pane().columnChildren(), IsEmpty());
  EXPECT_EQ(pane().loadError(), std::nullopt);
  EXPECT_THAT(volumeNames(), ElementsAre("System"));
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(TargetChoice, EachRequestIsAnswered) {
  for (int i = 0; i < 2; ++i) {
    sweep("/media/Backup");
    world_.pendingGoToDrives = true;
    pane().pendingGoToDrivesChanged();
    EXPECT_FALSE(world_.pendingGoToDrives);
    EXPECT_EQ(pane().phase(), Phase::chooseTarget);
  }
}

TEST_F(TargetChoice, LoweredFlagAsksForNothing) {
  sweep("/media/Backup");
  const auto before = state();
  world_.notifications = 0;
  pane().pendingGoToDrivesChanged();
  EXPECT_EQ(state(), before);
  EXPECT_EQ(world_.notifications, 0);
  EXPECT_THAT(fileSystem_.measuredVolumes(), IsEmpty());
}

TEST_F(TargetChoice, OwnerMayTellOfTheLoweringAtOnce) {
  DiskSweeperPane* told = nullptr;
  DiskSweeperPane owned(fileSystem_, desktop_, mainThread_, background_,
                        {[this] { return world_.pendingGoToDrives; },
                         [&](bool raised) {
                           world_.pendingGoToDrives = raised;
                           told->pendingGoToDrivesChanged();
                         }});
  told = &owned;
  owned.setListener([this] { ++world_.notifications; });
  world_.pendingGoToDrives = true;
  owned.pendingGoToDrivesChanged();
  EXPECT_FALSE(world_.pendingGoToDrives);
  EXPECT_EQ(world_.notifications, 1);
  EXPECT_EQ(fileSystem_.measuredVolumes().size(), 2u);
}

TEST_F(TargetChoice, SelectionIsKeptAsGiven) {
  pane().selectVolume("/media/Backup");
  EXPECT_EQ(pane().selectedVolumeID(), "/media/Backup");
  EXPECT_EQ(world_.notifications, 1);
  pane().selectVolume(std::nullopt);
  EXPECT_EQ(pane().selectedVolumeID(), std::nullopt);
}

TEST_F(TargetChoice, SweepingTheSelectedDriveBrowsesItsMountPoint) {
  pane().appear();
  pane().selectVolume("/media/Backup");
  world_.notifications = 0;
  pane().startSweepSelectedVolume();
  EXPECT_EQ(pane().phase(), Phase::browsing);
  EXPECT_EQ(pane().sweepRoot(), FileUrl("/media/Backup"));
  EXPECT_EQ(pane().pathDirectories(), urls({"/media/Backup"}));
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(TargetChoice, DriveIsFoundByItsPathText) {
  fileSystem_.setMountedVolumes(urls({"/", "/media/Backup/"}));
  pane().appear();
  pane().selectVolume("/media/Backup");
  pane().startSweepSelectedVolume();
  EXPECT_EQ(pane().sweepRoot(), FileUrl("/media/Backup/"));
}

TEST_F(TargetChoice, FirstOfTwoDrivesOnOneMountPointIsSwept) {
  fileSystem_.setMountedVolumes(urls({"/media/Backup/", "/media/Backup"}));
  pane().appear();
  ASSERT_EQ(pane().volumes().size(), 2u);
  pane().selectVolume("/media/Backup");
  pane().startSweepSelectedVolume();
  EXPECT_EQ(pane().sweepRoot(), pane().volumes().front().url);
}

TEST_F(TargetChoice, SweepingWithoutASelectionDoesNothing) {
  pane().appear();
  const auto before = state();
  pane().startSweepSelectedVolume();
  EXPECT_EQ(state(), before);
}

TEST_F(TargetChoice, SweepingBeforeTheDrivesAreListedDoesNothing) {
  pane().selectVolume("/media/Backup");
  const auto before = state();
  pane().startSweepSelectedVolume();
  EXPECT_EQ(state(), before);
}

TEST_F(TargetChoice, SweepingADriveThatWentAwayDoesNothing) {
  pane().appear();
  pane().selectVolume("/media/Backup");
  fileSystem_.setMountedVolumes(urls({"/"}));
  pane().backToVolumes();
  const auto before = state();
  pane().startSweepSelectedVolume();
  EXPECT_EQ(state(), before);
  EXPECT_EQ(pane().selectedVolumeID(), "/media/Backup");
}

TEST_F(TargetChoice, DotsInAChosenPathAreResolved) {
  fileSystem_.addFile("/disk/Movies/film", 5);
  const auto rootOf = [this](const std::string& chosen) {
    desktop_.nextChoice = FileUrl(chosen);
    pane().openFolderSweep();
    runUntilComplete();
    EXPECT_EQ(pane().pathDirectories(), std::vector{*pane().sweepRoot()});
    return *pane().sweepRoot();
  };
  EXPECT_EQ(rootOf("/disk/Movies/.."), FileUrl("/disk"));
  EXPECT_EQ(rootOf("/disk/./Movies/"), FileUrl("/disk/Movies"));
  EXPECT_EQ(rootOf("/.."), FileUrl("/"));
  EXPECT_FALSE(pane().canTrashSelection());
}

TEST_F(TargetChoice, ChosenFolderIsSwept) {
  desktop_.nextChoice = FileUrl("/media/Backup/old");
  pane().openFolderSweep();
  EXPECT_THAT(desktop_.chooserMessages, ElementsAre("Choose a folder to sweep (largest items first)."));
  EXPECT_EQ(pane().phase(), Phase::browsing);
  EXPECT_EQ(pane().sweepRoot(), FileUrl("/media/Backup/old"));
  EXPECT_EQ(pane().pathDirectories(), urls({"/media/Backup/old"}));
  EXPECT_THAT(names(0), ElementsAre("tape"));
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(TargetChoice, CancelledChooserLeavesThePaneAsItWas) {
  pane().appear();
  pane().selectVolume("/media/Backup");
  const auto before = state();
  pane().openFolderSweep();
  EXPECT_EQ(desktop_.chooserMessages.size(), 1u);
  EXPECT_EQ(state(), before);
}

TEST_F(TargetChoice, WayBackClearsTheSweepAndListsTheDrives) {
  pane().appear();
  pane().selectVolume("/media/Backup");
  pane().startSweepSelectedVolume();
  runUntilComplete();
  click(0, "note");
  fileSystem_.setVolumeValues("/media/Backup", volumeOf("Backup", 1000, 50));
  world_.notifications = 0;
  pane().backToVolumes();
  EXPECT_EQ(pane().sweepRoot(), std::nullopt);
  EXPECT_FALSE(pane().inventory());
  EXPECT_EQ(pane().phase(), Phase::chooseTarget);
  EXPECT_THAT(pane().pathDirectories(), IsEmpty());
  EXPECT_THAT(pane().columnChildren(), IsEmpty());
  EXPECT_EQ(pane().selectedLeafURL(), std::nullopt);
  EXPECT_EQ(pane().loadError(), std::nullopt);
  EXPECT_EQ(pane().volumes().front().freeBytes, 50);
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(TargetChoice, WayBackLeavesSelectionTokensCountersAndQuestion) {
  pane().appear();
  pane().selectVolume("/media/Backup");
  pane().startSweepSelectedVolume();
  runUntilComplete();
  click(0, "old");
  pane().requestTrash();
  const std::vector<ColumnLoadId> tokens = pane().columnLoadIDs();
  pane().backToVolumes();
  EXPECT_EQ(pane().selectedVolumeID(), "/media/Backup");
  EXPECT_EQ(tokens.size(), 2u);
  EXPECT_EQ(pane().columnLoadIDs(), tokens);
  EXPECT_EQ(pane().scanStatus(), "2 files · 8 bytes");
  EXPECT_EQ(pane().scanFileCount(), 2);
  EXPECT_EQ(pane().scanBytesSoFar(), 8);
  EXPECT_TRUE(pane().confirmTrash());
}

TEST_F(TargetChoice, FreshPaneKnowsNothingOfAnEarlierSweep) {
  sweep("/media/Backup");
  pane_.reset();
  pane_ = makePane();
  pane().appear();
  EXPECT_EQ(pane().phase(), Phase::chooseTarget);
  EXPECT_THAT(volumeNames(), ElementsAre("Backup", "System"));
  EXPECT_FALSE(pane().inventory());
  EXPECT_THAT(pane().columnChildren(), IsEmpty());
}

TEST_F(TargetChoice, DriveDetailTellsFreeUsedAndTotal) {
  EXPECT_EQ(DiskSweeperPane::volumeDetailText({FileUrl("/"), "System", 500'000'000'000, 123'400'000'000}),
            "123.4 GB free, 376.6 GB used, 500 GB total");
}

TEST_F(TargetChoice, DriveWithMoreFreeThanTotalUsesNothing) {
  EXPECT_EQ(DiskSweeperPane::volumeDetailText({FileUrl("/"), "System", 1'000, 2'000}),
            "2 KB free, Zero KB used, 1 KB total");
}

/// A desktop whose chooser does something while it is open.
class BusyChooser : public FakeDesktop {
 public:
  std::function<void()> whileOpen;

  std::optional<FileUrl> chooseFolder(const std::string& message) override {
    whileOpen();
    return FakeDesktop::chooseFolder(message);
  }
};

TEST_F(TargetChoice, PaneMayVanishWhileItsChooserIsOpen) {
  BusyChooser desktop;
  auto pane = std::make_unique<DiskSweeperPane>(fileSystem_, desktop, mainThread_, background_,
                                                BoolBinding{[] { return false; }, [](bool) {}});
  desktop.nextChoice = FileUrl("/media/Backup");
  desktop.whileOpen = [&pane] { pane.reset(); };
  pane->openFolderSweep();
  EXPECT_THAT(world_.listings(), IsEmpty());
  EXPECT_EQ(world_.scanOpenings(), 0);
}

}  // namespace
}  // namespace dunmere::test
