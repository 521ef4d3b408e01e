// RealPane: a pane on the real file system, Trash and background threads; the test is its main thread.
#pragma once

#include <memory>

#include "platform/platform_file_system.h"
#include "platform/trash.h"
#include "sweeper/background_threads.h"
#include "sweeper/disk_sweeper_pane.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/main_thread_queue.h"

namespace dunmere::test {

class TrashDesktop : public FakeDesktop {
 public:
  explicit TrashDesktop(FileSystem& files) : trash_(files) {}
  std::unique_ptr<TrashableItem> holdItem(const FileUrl& url) override { return trash_.hold(url); }

 private:
  Trash trash_;
};

/// A thread that hangs still uses it when the test's process ends: never destroyed.
struct RealPane {
  std::unique_ptr<FileSystem> files = makePlatformFileSystem();
  TrashDesktop desktop{*files};
  MainThreadQueue mainThread;
  BackgroundThreads background;
  DiskSweeperPane pane{*files, desktop, mainThread, background, {[] { return false; }, [](bool) {}}};
};

}  // namespace dunmere::test
