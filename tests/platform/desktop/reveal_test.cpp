#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QStringList>
#include <optional>

#include "platform/linux/desktop/file_manager.h"
#include "tests/platform/desktop/event_loop.h"
#include "tests/platform/desktop/private_bus.h"
#include "tests/support/fake_url_opener.h"

namespace dunmere::test {

/// A file manager on the bus that remembers what it was asked to show.
class FakeFileManager : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
 public:
  enum class Manner { shows, refuses, hangs };

  QStringList shown;
  QString startupId = QStringLiteral("not asked");
  Manner manner = Manner::shows;

 public Q_SLOTS:
  void ShowItems(const QStringList& uris, const QString& startup) {
    shown += uris;
    startupId = startup;
    if (manner == Manner::refuses) sendErrorReply(QDBusError::Failed, QStringLiteral("no such item"));
    if (manner == Manner::hangs) setDelayedReply(true);
  }
};

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const QString kService = QStringLiteral("org.freedesktop.FileManager1");
const QString kObject = QStringLiteral("/org/freedesktop/FileManager1");

class Reveal : public testing::Test {
 protected:
  FileManager& fileManager(std::chrono::milliseconds timeout = FileManager::kTimeout) {
    return fileManager_.emplace(clientBus_, urlOpener, timeout);
  }
  void startService() {
    ASSERT_TRUE(serviceBus_.registerObject(kObject, &service, QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(serviceBus_.registerService(kService));
  }
  /// Waits until the service has answered all that it was asked so far: it answers one question after the other.
  void waitForAnswers() {
    bool answered = false;
    const QDBusPendingCallWatcher watcher(clientBus_.asyncCall(QDBusMessage::createMethodCall(
        kService, QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"))));
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &watcher, [&] { answered = true; });
    ASSERT_TRUE(waitUntil([&] { return answered; }));
  }
  void endFileManager() { fileManager_.reset(); }

  FakeUrlOpener urlOpener;
  FakeFileManager service;
  PrivateBus bus;

 private:
  QDBusConnection serviceBus_ = bus.connect(QStringLiteral("reveal test: service"));
  QDBusConnection clientBus_ = bus.connect(QStringLiteral("reveal test: client"));
  std::optional<FileManager> fileManager_;
};

TEST_F(Reveal, TheFileManagerIsAskedToShowExactlyTheItem) {
  startService();
  fileManager().reveal(FileUrl("/tmp/a b\xff/100%"));
  ASSERT_TRUE(waitUntil([&] { return !service.shown.isEmpty(); }));
  EXPECT_EQ(service.shown, QStringList{QStringLiteral("file:///tmp/a%20b%FF/100%25")});
  EXPECT_EQ(service.startupId, QString());
}

TEST_F(Reveal, AnAnswerLeavesTheFolderAlone) {
  startService();
  fileManager().reveal(FileUrl("/tmp/item"));
  waitForAnswers();
  EXPECT_EQ(service.shown.size(), 1);
  EXPECT_THAT(urlOpener.asked, IsEmpty());
}

TEST_F(Reveal, ATrailingSlashIsNoPartOfTheItem) {
  startService();
  fileManager().reveal(FileUrl("/tmp/folder/"));
  ASSERT_TRUE(waitUntil([&] { return !service.shown.isEmpty(); }));
  EXPECT_EQ(service.shown, QStringList{QStringLiteral("file:///tmp/folder")});
}

TEST_F(Reveal, WithoutAFileManagerTheItemsFolderIsOpened) {
  fileManager().reveal(FileUrl("/tmp/a b\xff/item"));
  ASSERT_TRUE(waitUntil([&] { return !urlOpener.asked.empty(); }));
  EXPECT_THAT(urlOpener.asked, ElementsAre("file:///tmp/a%20b%FF"));
}

TEST_F(Reveal, AFileManagerThatRefusesHasTheItemsFolderOpened) {
  service.manner = FakeFileManager::Manner::refuses;
  startService();
  fileManager().reveal(FileUrl("/tmp/folder/item"));
  ASSERT_TRUE(waitUntil([&] { return !urlOpener.asked.empty(); }));
  EXPECT_EQ(service.shown.size(), 1);
  EXPECT_THAT(urlOpener.asked, ElementsAre("file:///tmp/folder"));
}

TEST_F(Reveal, AFileManagerThatHangsHasTheItemsFolderOpened) {
  service.manner = FakeFileManager::Manner::hangs;
  startService();
  fileManager(std::chrono::milliseconds(50)).reveal(FileUrl("/tmp/folder/item"));
  EXPECT_THAT(urlOpener.asked, IsEmpty());  // it did not wait for the answer
  ASSERT_TRUE(waitUntil([&] { return !urlOpener.asked.empty(); }));
  EXPECT_EQ(service.shown.size(), 1);
  EXPECT_THAT(urlOpener.asked, ElementsAre("file:///tmp/folder"));
}

TEST_F(Reveal, WithoutABusTheItemsFolderIsOpened) {
  FileManager(QDBusConnection(QStringLiteral("no such connection")), urlOpener).reveal(FileUrl("/tmp/folder/item"));
  EXPECT_THAT(urlOpener.asked, ElementsAre("file:///tmp/folder"));
}

TEST_F(Reveal, AFolderThatCannotBeOpenedIsNoFailure) {
  fileManager().reveal(FileUrl("/item"));
  ASSERT_TRUE(waitUntil([&] { return !urlOpener.asked.empty(); }));
  EXPECT_THAT(urlOpener.asked, ElementsAre("file:///"));
}

TEST_F(Reveal, ARequestEndsWithItsFileManager) {
  service.manner = FakeFileManager::Manner::hangs;
  startService();
  fileManager(std::chrono::milliseconds(1)).reveal(FileUrl("/tmp/folder/item"));
  endFileManager();
  ASSERT_TRUE(waitUntil([&] { return !service.shown.isEmpty(); }));
  EXPECT_THAT(urlOpener.asked, IsEmpty());
}

}  // namespace
}  // namespace dunmere::test

#include "reveal_test.moc"
