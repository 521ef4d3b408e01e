// FileManager: shows items in the desktop's file manager, over the session bus.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <chrono>

#include "engine/file_url.h"
#include "platform/desktop/url_opener.h"

namespace dunmere {

/// Main thread only. Requests that are still unanswered when this object goes are forgotten.
class FileManager {
 public:
  /// Time for a file manager to start and answer before the fallback is taken.
  static constexpr std::chrono::milliseconds kPatience{5000};

  /// `urlOpener` must outlive this object.
  FileManager(const QDBusConnection& bus, UrlOpener& urlOpener, std::chrono::milliseconds patience = kPatience);

  /// Asks the file manager to show exactly this item, selected; returns at once. When it is not there, reports an error
  /// or stays silent, the item's folder is opened instead; when that fails too, nothing is shown.
  void reveal(const FileUrl& url);

 private:
  void openFolderOf(const FileUrl& url);

  QDBusConnection bus_;
  UrlOpener& urlOpener_;
  std::chrono::milliseconds patience_;
  QObject pending_;  // owns the requests under way
};

}  // namespace dunmere
