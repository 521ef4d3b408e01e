// FileManager: shows items in the desktop's file manager, over the session bus.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <chrono>

#include "engine/file_url.h"
#include "platform/desktop/platform_desktop.h"

namespace dunmere {

/// Main thread only. Requests that are unanswered when this object is destroyed are dropped.
class FileManager {
 public:
  /// For a file manager to start and answer.
  static constexpr std::chrono::milliseconds kTimeout{5000};

  /// `urlOpener` must outlive this object.
  FileManager(const QDBusConnection& bus, UrlOpener& urlOpener, std::chrono::milliseconds timeout = kTimeout);

  /// Asks the file manager to show exactly this item, selected; returns at once. When there is none, or it fails or
  /// does not answer in time, the item's folder is opened instead; when that fails too, nothing is shown.
  void reveal(const FileUrl& url);

 private:
  void openFolderOf(const FileUrl& url);

  QDBusConnection bus_;
  UrlOpener& urlOpener_;
  std::chrono::milliseconds timeout_;
  QObject pending_;  // owns the requests under way
};

}  // namespace dunmere
