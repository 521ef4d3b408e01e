#include "platform/linux/desktop/file_manager.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QString>
#include <QStringList>

#include "platform/posix/paths.h"

namespace dunmere {
namespace {

// https://www.freedesktop.org/wiki/Specifications/file-manager-interface/
QDBusMessage showItemsRequest(const FileUrl& url) {
  const QString name = QStringLiteral("org.freedesktop.FileManager1");
  QDBusMessage request = QDBusMessage::createMethodCall(name, QStringLiteral("/org/freedesktop/FileManager1"), name,
                                                        QStringLiteral("ShowItems"));
  const QString noStartupId;
  request << QStringList{QString::fromStdString(fileUri(url.path()))} << noStartupId;
  return request;
}

}  // namespace

FileManager::FileManager(const QDBusConnection& bus, UrlOpener& urlOpener, std::chrono::milliseconds timeout)
    : bus_(bus), urlOpener_(urlOpener), timeout_(timeout) {}

void FileManager::reveal(const FileUrl& url) {
  if (!bus_.isConnected()) return openFolderOf(url);
  const QDBusPendingCall call = bus_.asyncCall(showItemsRequest(url), static_cast<int>(timeout_.count()));
  auto* const watcher = new QDBusPendingCallWatcher(call, &pending_);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &pending_, [this, url, watcher] {
    watcher->deleteLater();
    if (watcher->isError()) openFolderOf(url);
  });
}

void FileManager::openFolderOf(const FileUrl& url) {
  urlOpener_.open(fileUri(url.deletingLastPathComponent().path()));
}

}  // namespace dunmere
