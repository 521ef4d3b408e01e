#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDesktopServices>
#include <QObject>
#include <QStringList>
#include <QUrl>
#include <memory>

#include "platform/desktop/platform_desktop.h"

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

class UrlOpenerTest : public testing::Test {
 protected:
  UrlOpenerTest() {
    for (const char* scheme : kSchemes) QDesktopServices::setUrlHandler(QLatin1String(scheme), &handler, "handle");
  }
  ~UrlOpenerTest() override {
    for (const char* scheme : kSchemes) QDesktopServices::unsetUrlHandler(QLatin1String(scheme));
  }

  static constexpr const char* kSchemes[] = {"file", "x-apple.systempreferences", ""};
  UrlHandler handler;
  std::unique_ptr<UrlOpener> opener = makePlatformUrlOpener();
};

TEST_F(UrlOpenerTest, AFileUrlIsHandedOverWithItsExactBytes) {
  EXPECT_TRUE(opener->open("file:///tmp/a%20b%FF/100%25"));
  EXPECT_EQ(handler.handled, QStringList{QStringLiteral("file:///tmp/a%20b%FF/100%25")});
}

TEST_F(UrlOpenerTest, AnotherSystemsSettingsAreDeclined) {
  EXPECT_FALSE(opener->open("x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles"));
  EXPECT_FALSE(opener->open("X-Apple.SystemPreferences:com.apple.preference.security"));
  EXPECT_TRUE(handler.handled.isEmpty());
}

TEST_F(UrlOpenerTest, WhatIsNoUrlIsDeclined) {
  EXPECT_FALSE(opener->open(""));
  EXPECT_FALSE(opener->open("/tmp"));
  EXPECT_FALSE(opener->open("file:///tmp/a b"));
  EXPECT_FALSE(opener->open("file://[broken"));
  EXPECT_TRUE(handler.handled.isEmpty());
}

}  // namespace
}  // namespace dunmere::test

#include "url_opener_test.moc"
