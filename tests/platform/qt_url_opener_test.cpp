#include "platform/desktop/qt_url_opener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDesktopServices>
#include <QObject>
#include <QStringList>
#include <QUrl>

namespace dunmere::test {

/// Stands in for the desktop's applications.
class UrlHandler : public QObject {
  Q_OBJECT
 public:
  QStringList handled;

 public Q_SLOTS:
  void handle(const QUrl& url) { handled.append(url.toString(QUrl::FullyEncoded)); }
};

namespace {

class QtUrlOpenerTest : public testing::Test {
 protected:
  QtUrlOpenerTest() {
    for (const char* scheme : kSchemes) QDesktopServices::setUrlHandler(QLatin1String(scheme), &handler, "handle");
  }
  ~QtUrlOpenerTest() override {
    for (const char* scheme : kSchemes) QDesktopServices::unsetUrlHandler(QLatin1String(scheme));
  }

  static constexpr const char* kSchemes[] = {"file", "x-apple.systempreferences", ""};
  UrlHandler handler;
  QtUrlOpener opener;
};

TEST_F(QtUrlOpenerTest, AFileUrlIsHandedOverWithItsExactBytes) {
  EXPECT_TRUE(opener.open("file:///tmp/a%20b%FF/100%25"));
  EXPECT_EQ(handler.handled, QStringList{QStringLiteral("file:///tmp/a%20b%FF/100%25")});
}

TEST_F(QtUrlOpenerTest, AnotherSystemsSettingsAreDeclined) {
  EXPECT_FALSE(opener.open("x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles"));
  EXPECT_FALSE(opener.open("X-Apple.SystemPreferences:com.apple.preference.security"));
  EXPECT_TRUE(handler.handled.isEmpty());
}

TEST_F(QtUrlOpenerTest, WhatIsNoUrlIsDeclined) {
  EXPECT_FALSE(opener.open(""));
  EXPECT_FALSE(opener.open("/tmp"));
  EXPECT_FALSE(opener.open("file:///tmp/a b"));
  EXPECT_FALSE(opener.open("file://[broken"));
  EXPECT_TRUE(handler.handled.isEmpty());
}

}  // namespace
}  // namespace dunmere::test

#include "qt_url_opener_test.moc"
