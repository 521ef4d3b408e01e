#include "tests/view/sweeper/sweeper_harness.h"

#include <QFile>
#include <QtQml>
#include <system_error>

namespace dunmere::test {
namespace {

using std::chrono::milliseconds;

// More than the time between two snapshots, so that every counted file is followed by one.
constexpr milliseconds kOneSnapshotPerFile{400};

std::string bytesOf(const QString& text) {
  return text.toStdString();
}

QStringList textsOf(const std::vector<FileUrl>& urls) {
  QStringList texts;
  for (const FileUrl& url : urls)
    texts.append(QString::fromLatin1(url.bytes().data(), static_cast<int>(url.bytes().size())));
  return texts;
}

void registerSweeperHarness() {
  qmlRegisterType<SweeperHarness>("Dunmere.SweeperTest", 1, 0, "SweeperHarness");
}
Q_COREAPP_STARTUP_FUNCTION(registerSweeperHarness)

}  // namespace

SweeperHarness::SweeperHarness(QObject* parent) : QObject(parent) {
  restart();
}

SweeperHarness::~SweeperHarness() = default;

void SweeperHarness::setPendingGoToDrives(bool pending) {
  if (pending == pendingGoToDrives_) return;
  pendingGoToDrives_ = pending;
  Q_EMIT pendingGoToDrivesChanged();
}

QStringList SweeperHarness::revealed() const {
  return textsOf(world_->desktop.revealed);
}

QStringList SweeperHarness::trashed() const {
  return textsOf(world_->desktop.trashed);
}

int SweeperHarness::folderChoices() const {
  return static_cast<int>(world_->desktop.chooserMessages.size());
}

void SweeperHarness::restart() {
  static std::vector<std::unique_ptr<World>>* const worlds = new std::vector<std::unique_ptr<World>>;
  worlds->push_back(std::make_unique<World>());
  world_ = worlds->back().get();
  world_->fileSystem.setClockStep(kOneSnapshotPerFile);
  world_->fileSystem.setMountedVolumes(std::vector<FileUrl>());
  world_->desktop.onTrash = [world = world_](const FileUrl& url) { world->fileSystem.remove(url.path()); };
  pendingGoToDrives_ = false;
  const BoolBinding pending{[this] { return pendingGoToDrives_; }, [this](bool value) { setPendingGoToDrives(value); }};
  SweeperViewModel* const old = viewModel_.release();
  viewModel_ = std::make_unique<SweeperViewModel>(world_->fileSystem, world_->desktop, world_->mainThread,
                                                  world_->background, pending);
  Q_EMIT viewModelChanged();
  // After the items that showed it, which go later in the event loop.
  if (old) old->deleteLater();
}

void SweeperHarness::addVolume(const QString& path, const QString& name, qint64 totalBytes, qint64 freeBytes) {
  VolumeValues values;
  values.name = bytesOf(name);
  values.totalBytes = totalBytes;
  values.availableBytes = freeBytes;
  world_->fileSystem.addFolder(bytesOf(path));
  world_->fileSystem.setVolumeValues(bytesOf(path), values);
  world_->volumes.push_back(FileUrl(bytesOf(path)));
  world_->fileSystem.setMountedVolumes(world_->volumes);
}

void SweeperHarness::addFolder(const QString& path) {
  world_->fileSystem.addFolder(bytesOf(path));
}

void SweeperHarness::addFile(const QString& path, qint64 bytes) {
  world_->fileSystem.addFile(bytesOf(path), bytes);
}

void SweeperHarness::addFileOfBytes(const QString& folder, const QByteArray& name, qint64 bytes) {
  world_->fileSystem.addFile(bytesOf(folder) + '/' + name.toStdString(), bytes);
}

void SweeperHarness::addFiles(const QString& folder, int count) {
  world_->fileSystem.setClockStep(milliseconds(0));
  for (int number = 0; number < count; ++number) {
    const QString name = QStringLiteral("/file%1.dat").arg(number, 5, 10, QLatin1Char('0'));
    world_->fileSystem.addFile(bytesOf(folder + name), 1'000'000 + count - number);
  }
}

void SweeperHarness::addLink(const QString& path, const QString& target) {
  world_->fileSystem.addLink(bytesOf(path), bytesOf(target));
}

void SweeperHarness::makeUnreadable(const QString& path) {
  world_->fileSystem.makeUnreadable(bytesOf(path));
}

void SweeperHarness::removeEntry(const QString& path) {
  world_->fileSystem.remove(bytesOf(path));
}

void SweeperHarness::holdDisk() {
  world_->background.hold();
}

void SweeperHarness::releaseDisk() {
  world_->background.release();
  world_->mainThread.runQueued();
}

void SweeperHarness::chooseFolder(const QString& path) {
  world_->desktop.nextChoice = path.isEmpty() ? std::nullopt : std::optional(FileUrl(bytesOf(path)));
}

void SweeperHarness::failTrash(int code) {
  world_->desktop.nextTrashError = std::nullopt;
  if (code == 0) return;
  world_->desktop.nextTrashError =
      SweepError{SweepAttempt::moveToTrash, FileUrl("/root/locked"), {code, std::generic_category()}, {}};
}

void SweeperHarness::sweepFolder(const QString& path) {
  chooseFolder(path);
  viewModel_->openFolderSweep();
}

bool SweeperHarness::applySnapshot() {
  return world_->mainThread.runNext();
}

bool SweeperHarness::finishScan() {
  return world_->mainThread.runUntil([this] { return !viewModel_->showsStatusStrip(); });
}

bool SweeperHarness::runMainThread() {
  world_->mainThread.runQueued();
  return true;
}

int SweeperHarness::rowOf(int column, const QString& name) const {
  const ColumnListModel& columns = *viewModel_->columns();
  const auto* rows = columns.data(columns.index(column), ColumnListModel::RowsRole).value<RowListModel*>();
  for (int row = 0; rows && row < rows->count(); ++row) {
    if (rows->data(rows->index(row), RowListModel::NameRole).toString() == name) return row;
  }
  return -1;
}

}  // namespace dunmere::test
