// Runs the tests that need an application object, without a screen.
#include <gmock/gmock.h>

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QTemporaryDir settings;  // Qt asks once where settings are kept
  qputenv("XDG_CONFIG_HOME", QFile::encodeName(settings.path()));
  const QTemporaryDir caches;  // of fonts, say, which are no settings
  qputenv("XDG_CACHE_HOME", QFile::encodeName(caches.path()));
  testing::InitGoogleMock(&argc, argv);
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
