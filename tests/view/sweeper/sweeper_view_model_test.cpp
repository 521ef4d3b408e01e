#include "sweeper/view/sweeper_view_model.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEvent>
#include <QMetaMethod>
#include <QSignalSpy>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/background_queue.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/main_thread_queue.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {
namespace {

/// How often each signal of an object was sent.
class SignalCounts {
 public:
  explicit SignalCounts(QObject& object) {
    const QMetaObject& type = *object.metaObject();
    for (int index = type.methodOffset(); index < type.methodCount(); ++index) {
      const QMetaMethod method = type.method(index);
      if (method.methodType() != QMetaMethod::Signal) continue;
      spies_.emplace(method.name().toStdString(), std::make_unique<QSignalSpy>(&object, method));
    }
  }

  /// The signals sent since the last call, with their counts.
  std::map<std::string, int> take() {
    std::map<std::string, int> counts;
    for (const auto& [name, spy] : spies_) {
      if (!spy->isEmpty()) counts[name] = static_cast<int>(spy->size());
      spy->clear();
    }
    return counts;
  }

 private:
  std::map<std::string, std::unique_ptr<QSignalSpy>> spies_;
};

using Counts = std::map<std::string, int>;

class SweeperViewModelTest : public testing::Test {
 protected:
  SweeperViewModelTest() {
    fileSystem_.addFile("/root/notes.txt", 900);
    fileSystem_.addFile("/root/Movies/first.mov", 1'200'000);
    fileSystem_.addFile("/root/Music/song.mp3", 300'000);
    mount({"/", "/Volumes/Backup"});
  }
  // A scan waits for its snapshots to be applied, so that none outlives the file system.
  ~SweeperViewModelTest() override { finishScan(); }

  void mount(const std::vector<std::string>& paths) {
    std::vector<FileUrl> volumes;
    for (const std::string& path : paths) {
      VolumeValues values;
      values.name = path == "/" ? "Main" : FileUrl(path).lastPathComponent();
      values.totalBytes = 2000;
      values.availableBytes = 500;
      fileSystem_.addFolder(path);
      fileSystem_.setVolumeValues(path, values);
      volumes.emplace_back(path);
    }
    fileSystem_.setMountedVolumes(volumes);
  }

  void sweep() {
    desktop_.nextChoice = FileUrl("/root");
    viewModel_.openFolderSweep();
    finishScan();
  }

  void finishScan() {
    mainThread_.runUntil([this] { return !viewModel_.showsStatusStrip(); });
  }

  RowListModel* rows(int column) {
    return viewModel_.columns()
        ->data(viewModel_.columns()->index(column), ColumnListModel::RowsRole)
        .value<RowListModel*>();
  }

  void select(int column, const QString& name) {
    RowListModel* model = rows(column);
    for (int row = 0; row < model->count(); ++row) {
      if (model->data(model->index(row), RowListModel::NameRole).toString() != name) continue;
      viewModel_.selectRow(column, row);
      return;
    }
    FAIL() << "no row is named " << name.toStdString();
  }

  MemoryFileSystem fileSystem_;
  FakeDesktop desktop_;
  MainThreadQueue mainThread_;
  BackgroundQueue background_;
  bool pendingGoToDrives_ = false;
  SweeperViewModel viewModel_{
      fileSystem_,
      desktop_,
      mainThread_,
      background_,
      {[this] { return pendingGoToDrives_; }, [this](bool value) { pendingGoToDrives_ = value; }}};
};

TEST_F(SweeperViewModelTest, AnActionTellsOnlyWhatItChanges) {
  viewModel_.appear();
  SignalCounts counts(viewModel_);
  viewModel_.selectVolume(1);
  EXPECT_EQ(counts.take(), (Counts{{"selectedVolumeChanged", 1}, {"canSweepSelectedChanged", 1}}));
  viewModel_.selectVolume(0);
  EXPECT_EQ(counts.take(), (Counts{{"selectedVolumeChanged", 1}}));
  viewModel_.selectVolume(0);
  EXPECT_EQ(counts.take(), Counts{});
  viewModel_.appear();
  EXPECT_EQ(counts.take(), Counts{});
}

TEST_F(SweeperViewModelTest, TheTrashQuestionTellsOnlyItself) {
  sweep();
  SignalCounts counts(viewModel_);
  viewModel_.requestTrash();
  EXPECT_EQ(counts.take(), (Counts{{"confirmTrashChanged", 1}}));
  viewModel_.dismissTrash();
  EXPECT_EQ(counts.take(), (Counts{{"confirmTrashChanged", 1}}));
}

TEST_F(SweeperViewModelTest, NumbersWithoutARowAreIgnored) {
  viewModel_.appear();
  viewModel_.selectVolume(7);
  EXPECT_EQ(viewModel_.selectedVolume(), -1);
  sweep();
  SignalCounts counts(viewModel_);
  viewModel_.selectRow(0, 99);
  viewModel_.selectRow(0, -1);
  viewModel_.selectRow(5, 0);
  viewModel_.selectRow(-1, 0);
  EXPECT_EQ(counts.take(), Counts{});
  EXPECT_EQ(viewModel_.columns()->count(), 1);
}

TEST_F(SweeperViewModelTest, AVolumeThatComesOrGoesLeavesTheOthersAndTheSelection) {
  viewModel_.appear();
  viewModel_.selectVolume(1);
  QSignalSpy inserted(viewModel_.volumes(), &QAbstractItemModel::rowsInserted);
  QSignalSpy removed(viewModel_.volumes(), &QAbstractItemModel::rowsRemoved);
  QSignalSpy reset(viewModel_.volumes(), &QAbstractItemModel::modelReset);
  mount({"/", "/Volumes/Added", "/Volumes/Backup"});
  viewModel_.appear();
  EXPECT_EQ(inserted.size(), 1);
  EXPECT_EQ(viewModel_.volumes()->count(), 3);
  EXPECT_EQ(viewModel_.selectedVolume(), 2);
  mount({"/"});
  viewModel_.appear();
  EXPECT_EQ(removed.size(), 2);
  EXPECT_EQ(reset.size(), 0);
  EXPECT_TRUE(viewModel_.canSweepSelected()) << "the choice is kept, although its volume is gone";
}

TEST_F(SweeperViewModelTest, ColumnsOfTheSameFoldersKeepTheirRows) {
  sweep();
  select(0, QStringLiteral("Movies"));
  const RowListModel* const root = rows(0);
  const RowListModel* const movies = rows(1);
  select(1, QStringLiteral("first.mov"));
  EXPECT_EQ(rows(1), movies);
  select(0, QStringLiteral("Movies"));
  EXPECT_EQ(rows(0), root);
  EXPECT_EQ(rows(1), movies);
  select(0, QStringLiteral("Music"));
  EXPECT_EQ(rows(0), root);
  EXPECT_NE(rows(1), movies);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(viewModel_.columns()->findChildren<RowListModel*>().size(), 2) << "closed columns are destroyed";
}

TEST_F(SweeperViewModelTest, ARightToLeftNameDoesNotChangePlacesWithItsSize) {
  fileSystem_.addFile("/root/שלום", 5'000'000);
  sweep();
  viewModel_.selectRow(0, 0);
  EXPECT_FALSE(viewModel_.footerStatus().isRightToLeft());
  EXPECT_EQ(viewModel_.footerStatus(), QStringLiteral(u"\u2066שלום\u2069 / /root"));
}

TEST_F(SweeperViewModelTest, ANameThatIsNoTextReachesTheTrashByItsBytes) {
  fileSystem_.addFile("/root/\xff\xfe.bin", 5'000'000);
  sweep();
  viewModel_.selectRow(0, 0);
  EXPECT_EQ(viewModel_.trashConfirmTitle(), QString::fromUtf8("Move “\xEF\xBF\xBD\xEF\xBF\xBD.bin” to Trash?"));
  viewModel_.confirmedTrash();
  ASSERT_EQ(desktop_.trashed.size(), 1u);
  EXPECT_EQ(desktop_.trashed.front().bytes(), "/root/\xff\xfe.bin");
}

}  // namespace
}  // namespace dunmere::test

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
