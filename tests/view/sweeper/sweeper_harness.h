// SweeperHarness: gives QML tests a real view model over a file system in memory, and plays the world around it.
#pragma once

#include <QtQml/qqmlregistration.h>

#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <memory>

#include "sweeper/view/sweeper_view_model.h"
#include "tests/support/background_queue.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/main_thread_queue.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {

/// The clock is stepped so that a scan publishes after every counted file, and it waits for each snapshot to be
/// applied: the test lets it go on by one snapshot or to its end. Main thread.
class SweeperHarness : public QObject {
  Q_OBJECT
  Q_PROPERTY(dunmere::SweeperViewModel* viewModel READ viewModel NOTIFY viewModelChanged FINAL)
  Q_PROPERTY(
      bool pendingGoToDrives READ pendingGoToDrives WRITE setPendingGoToDrives NOTIFY pendingGoToDrivesChanged FINAL)
  Q_PROPERTY(QStringList revealed READ revealed)
  Q_PROPERTY(QStringList trashed READ trashed)
  Q_PROPERTY(int folderChoices READ folderChoices)

 public:
  explicit SweeperHarness(QObject* parent = nullptr);
  ~SweeperHarness() override;

  SweeperViewModel* viewModel() const { return viewModel_.get(); }
  bool pendingGoToDrives() const { return pendingGoToDrives_; }
  void setPendingGoToDrives(bool pending);
  QStringList revealed() const;
  QStringList trashed() const;
  int folderChoices() const;

  /// A new world: no entries, no volumes, a new view model. A scan of the old one runs to its end unseen.
  Q_INVOKABLE void restart();

  Q_INVOKABLE void addVolume(const QString& path, const QString& name, qint64 totalBytes, qint64 freeBytes);
  Q_INVOKABLE void addFolder(const QString& path);
  Q_INVOKABLE void addFile(const QString& path, qint64 bytes);
  Q_INVOKABLE void addFileOfBytes(const QString& folder, const QByteArray& name, qint64 bytes);
  /// Files "file00000.dat" and so on, each one byte larger than the next.
  Q_INVOKABLE void addFiles(const QString& folder, int count);
  Q_INVOKABLE void addLink(const QString& path, const QString& target);
  Q_INVOKABLE void makeUnreadable(const QString& path);
  Q_INVOKABLE void removeEntry(const QString& path);

  /// From now on the disk answers nothing, until releaseDisk().
  Q_INVOKABLE void holdDisk();
  Q_INVOKABLE void releaseDisk();

  /// What the folder chooser answers from now on; an empty path cancels.
  Q_INVOKABLE void chooseFolder(const QString& path);
  /// The system's code that the next moves to the Trash fail with; 0 lets them succeed.
  Q_INVOKABLE void failTrash(int code);

  /// Chooses and sweeps a folder, and applies nothing yet.
  Q_INVOKABLE void sweepFolder(const QString& path);
  /// Waits for the scan's next snapshot and applies it; false when none came.
  Q_INVOKABLE bool applySnapshot();
  Q_INVOKABLE bool finishScan();
  /// Does what waits for the main thread now; always true.
  Q_INVOKABLE bool runMainThread();
  /// The row of this name in an open column, -1 for none.
  Q_INVOKABLE int rowOf(int column, const QString& name) const;

 Q_SIGNALS:
  void viewModelChanged();
  void pendingGoToDrivesChanged();

 private:
  // Scans are never cancelled and use these to their end, so they are never destroyed.
  struct World {
    MemoryFileSystem fileSystem;
    MainThreadQueue mainThread;
    BackgroundQueue background;
    FakeDesktop desktop;
    std::vector<FileUrl> volumes;
  };

  World* world_ = nullptr;
  std::unique_ptr<SweeperViewModel> viewModel_;
  bool pendingGoToDrives_ = false;
};

}  // namespace dunmere::test
