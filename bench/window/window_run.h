// WindowRun: the application's real window, driven by a program instead of a hand, with every frame noted.
#pragma once

#include <QQmlApplicationEngine>
#include <QString>
#include <chrono>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "bench/window/frame_recorder.h"
#include "engine/file_system.h"
#include "platform/desktop/platform_desktop.h"
#include "platform/desktop/qt_main_thread.h"
#include "shell/content_model.h"
#include "sweeper/background_threads.h"
#include "sweeper/desktop.h"

namespace dunmere::bench {

/// Says that it was moved and stays where it is.
class UnmovedItem : public TrashableItem {
 public:
  std::expected<void, SweepError> moveToTrash() override { return {}; }
};

/// Chooses one folder without asking; its Trash takes everything and leaves it where it is.
class ScriptedDesktop : public Desktop {
 public:
  explicit ScriptedDesktop(FileUrl folder) : folder_(std::move(folder)) {}

  std::optional<FileUrl> chooseFolder(const std::string&) override { return folder_; }
  void reveal(const FileUrl&) override {}
  std::unique_ptr<TrashableItem> holdItem(const FileUrl&) override { return std::make_unique<UnmovedItem>(); }

 private:
  FileUrl folder_;
};

class NoUrlOpener : public UrlOpener {
 public:
  bool open(const std::string&) override { return false; }
};

/// Main thread. The file system must outlive the scans, so the process ends by std::_Exit.
class WindowRun {
 public:
  /// Shows the window and waits for its first frame. `animated` adds a small item that moves with every frame, so that
  /// each chance to paint is taken.
  WindowRun(FileSystem& fileSystem, const std::string& folder, bool animated);

  FrameRecorder& frames() { return *frames_; }
  SweeperViewModel& pane() { return *content_.pane(); }

  void goToDrives() { content_.goToDrives(); }

  // These run the event loop.
  void run(std::chrono::milliseconds span);
  void runUntilSweepEnds();

  void runUntilColumnHasRows(int column);

  /// Runs the event loop until the column has rows. The row of a folder whose name sorts last, looked for from the end;
  /// the program ends when there is none.
  int lastRowNamed(int column, const QString& name);

 private:
  RowListModel* rowsOf(int column);

  ScriptedDesktop desktop_;
  NoUrlOpener urlOpener_;
  QtMainThread mainThread_;
  BackgroundThreads background_;
  ContentModel content_;
  QQmlApplicationEngine engine_;
  std::unique_ptr<FrameRecorder> frames_;
};

}  // namespace dunmere::bench
