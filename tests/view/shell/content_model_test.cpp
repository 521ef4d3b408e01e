#include "shell/content_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QPointer>
#include <QSignalSpy>
#include <QTimer>
#include <optional>

#include "tests/support/background_queue.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/fake_url_opener.h"
#include "tests/support/main_thread_queue.h"
#include "tests/support/memory_file_system.h"

namespace dunmere {
namespace {

class ContentModelTest : public testing::Test {
 protected:
  /// What a view does when it comes on screen.
  void showPane() { content.pane()->appear(); }
  /// Ends the sweep of a folder in the shown pane.
  void sweepToTheEnd() {
    fileSystem.addFile("/data/film", 7'000);
    desktop.nextChoice = FileUrl("/data");
    content.pane()->openFolderSweep();
    ASSERT_TRUE(mainThread.runUntil([&] { return !content.pane()->showsStatusStrip(); }));
  }
  static void deleteWhatIsDue() {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  int argc = 0;
  QCoreApplication application{argc, nullptr};
  test::MemoryFileSystem fileSystem;
  test::FakeDesktop desktop;
  test::MainThreadQueue mainThread;
  test::BackgroundQueue background;
  test::FakeUrlOpener urlOpener;
  ContentModel content{fileSystem, desktop, mainThread, background, urlOpener};
};

TEST_F(ContentModelTest, StartsOnFreeSpaceWithAPaneAndNoRequest) {
  EXPECT_EQ(content.selection(), SidebarItem::freeSpace);
  EXPECT_TRUE(content.freeSpaceSelected());
  EXPECT_FALSE(content.settingsSelected());
  EXPECT_FALSE(content.pendingGoToDrives());
  ASSERT_NE(content.pane(), nullptr);
  EXPECT_FALSE(content.pane()->browsing());
}

TEST_F(ContentModelTest, SettingsDiscardThePane) {
  const QPointer<SweeperViewModel> pane = content.pane();
  content.selectSettings();
  EXPECT_EQ(content.pane(), nullptr);
  deleteWhatIsDue();
  EXPECT_TRUE(pane.isNull());
}

// A view that goes is deleted by the event loop, and has the rows of its lists deleted by it in turn.
TEST_F(ContentModelTest, ThePaneOutlivesTheRowsOfItsViews) {
  const QPointer<SweeperViewModel> pane = content.pane();
  auto* const view = new QObject;
  auto* const row = new QObject;
  bool paneAtTheEnd = false;
  QObject::connect(view, &QObject::destroyed, row, &QObject::deleteLater);
  QObject::connect(row, &QObject::destroyed, [&] { paneAtTheEnd = !pane.isNull(); });
  QObject::connect(&content, &ContentModel::selectionChanged, view, &QObject::deleteLater);
  QEventLoop loop;
  QObject::connect(pane, &QObject::destroyed, &loop, &QEventLoop::quit, Qt::QueuedConnection);
  QTimer::singleShot(0, &content, &ContentModel::selectSettings);
  loop.exec();
  EXPECT_TRUE(paneAtTheEnd);
  EXPECT_TRUE(pane.isNull());
}

TEST_F(ContentModelTest, WithoutASelectionThePaneStays) {
  SweeperViewModel* const pane = content.pane();
  content.setSelection(std::nullopt);
  EXPECT_FALSE(content.freeSpaceSelected());
  EXPECT_FALSE(content.settingsSelected());
  EXPECT_EQ(content.pane(), pane);
  content.selectFreeSpace();
  EXPECT_EQ(content.pane(), pane);
}

TEST_F(ContentModelTest, FromSettingsToNoSelectionThePaneIsANewOne) {
  content.selectSettings();
  content.setSelection(std::nullopt);
  EXPECT_NE(content.pane(), nullptr);
}

TEST_F(ContentModelTest, ThePaneIsThereBeforeTheSelectionTellsIt) {
  content.selectSettings();
  bool therePane = false;
  QObject::connect(&content, &ContentModel::selectionChanged, [&] { therePane = content.pane() != nullptr; });
  content.selectFreeSpace();
  EXPECT_TRUE(therePane);
  content.selectSettings();
  EXPECT_TRUE(therePane) << "a view that goes must still find its pane";
}

TEST_F(ContentModelTest, SelectingFreeSpaceAgainAsksForNothing) {
  showPane();
  sweepToTheEnd();
  const QSignalSpy requests(&content, &ContentModel::pendingGoToDrivesChanged);
  content.selectFreeSpace();
  EXPECT_TRUE(requests.empty());
  EXPECT_TRUE(content.pane()->browsing());
}

TEST_F(ContentModelTest, DrivesEndTheSweepAndLeaveTheRequestLowered) {
  showPane();
  sweepToTheEnd();
  ASSERT_TRUE(content.pane()->browsing());
  const QSignalSpy requests(&content, &ContentModel::pendingGoToDrivesChanged);
  content.goToDrives();
  EXPECT_FALSE(content.pane()->browsing());
  EXPECT_FALSE(content.pendingGoToDrives());
  EXPECT_EQ(requests.size(), 2);  // raised, lowered
}

TEST_F(ContentModelTest, DrivesTwiceInARowAskTwice) {
  showPane();
  const QSignalSpy requests(&content, &ContentModel::pendingGoToDrivesChanged);
  content.goToDrives();
  content.goToDrives();
  EXPECT_EQ(requests.size(), 4);
  EXPECT_FALSE(content.pendingGoToDrives());
}

TEST_F(ContentModelTest, DrivesListTheVolumesAfresh) {
  fileSystem.setMountedVolumes(std::vector<FileUrl>());
  showPane();
  const int before = content.pane()->volumes()->rowCount();
  VolumeValues values;
  values.name = "Backup";
  values.totalBytes = 1'000'000'000;
  values.availableBytes = 400'000'000;
  for (const char* path : {"/media/one", "/media/two"}) {
    fileSystem.addFolder(path);
    fileSystem.setVolumeValues(path, values);
  }
  fileSystem.setMountedVolumes(std::vector<FileUrl>{FileUrl("/media/one"), FileUrl("/media/two")});
  content.goToDrives();
  EXPECT_NE(content.pane()->volumes()->rowCount(), before);
  EXPECT_EQ(content.pane()->volumes()->rowCount(), 2);
}

TEST_F(ContentModelTest, DrivesFromSettingsShowANewPaneInOneStep) {
  content.selectSettings();
  QObject::connect(&content, &ContentModel::selectionChanged, [&] { showPane(); });
  content.goToDrives();
  EXPECT_TRUE(content.freeSpaceSelected());
  EXPECT_FALSE(content.pane()->browsing());
  EXPECT_FALSE(content.pendingGoToDrives());
}

TEST_F(ContentModelTest, AFinishedSweepIsGoneAfterTheSettings) {
  showPane();
  sweepToTheEnd();
  content.selectSettings();
  content.selectFreeSpace();
  EXPECT_FALSE(content.pane()->browsing());
}

TEST_F(ContentModelTest, FullDiskAccessIsAskedOfTheSystem) {
  content.openFullDiskAccess();
  EXPECT_EQ(urlOpener.asked.size(), 3u);
}

}  // namespace
}  // namespace dunmere
