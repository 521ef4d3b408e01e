// Dunmere's entry: makes what the window needs, shows it, and leaves.
#include <QApplication>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QVariant>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/desktop/platform_desktop.h"
#include "platform/desktop/qt_main_thread.h"
#include "platform/platform_file_system.h"
#include "shell/content_model.h"
#include "sweeper/background_threads.h"
#include "theme/accessible_controls.h"

namespace {

using namespace Qt::StringLiterals;

void describeApplication() {
  QApplication::setApplicationName(u"dunmere"_s);
  QApplication::setApplicationDisplayName(u"Dunmere"_s);
  QApplication::setApplicationVersion(QStringLiteral(DUNMERE_VERSION));
  QGuiApplication::setDesktopFileName(u"dunmere"_s);
  QApplication::setWindowIcon(QIcon::fromTheme(u"dunmere"_s, QIcon(u":/dunmere/dunmere-128.png"_s)));
}

/// Shows the window until it is closed; by then the views and the sweep are gone, and scans wait for nobody.
int runWindow(dunmere::FileSystem& fileSystem, dunmere::Desktop& desktop, dunmere::QtMainThread& mainThread,
              dunmere::Background& background, dunmere::UrlOpener& urlOpener) {
  dunmere::ContentModel content(fileSystem, desktop, mainThread, background, urlOpener);
  QQmlApplicationEngine engine;  // after the model: its views go first
  engine.addImportPath(u"qrc:/qt/qml"_s);
  engine.setInitialProperties({{u"content"_s, QVariant::fromValue(&content)}});
  engine.load(QUrl(u"qrc:/qt/qml/Dunmere/Shell/MainWindow.qml"_s));
  if (engine.rootObjects().isEmpty()) return EXIT_FAILURE;
  const int code = QApplication::exec();
  mainThread.closeForQuit();
  return code;
}

/// To be called before the first window. Variables of the environment that choose how to paint are respected.
void choosePainting() {
  // The window needs so few shaders that a cache on disk is not worth it.
  QCoreApplication::setAttribute(Qt::AA_DisableShaderDiskCache);
  const bool isChosen = qEnvironmentVariableIsSet("QT_QUICK_BACKEND") || qEnvironmentVariableIsSet("QSG_RHI_BACKEND");
  if (!isChosen && !dunmere::hasGraphicsProcessor()) QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

}  // namespace

int main(int argc, char* argv[]) {
  choosePainting();
  const QApplication application(argc, argv);
  describeApplication();
  dunmere::installAccessibleControls();
  const std::unique_ptr<dunmere::FileSystem> fileSystem = dunmere::makePlatformFileSystem();
  const std::unique_ptr<dunmere::UrlOpener> urlOpener = dunmere::makePlatformUrlOpener();
  const std::unique_ptr<dunmere::Desktop> desktop = dunmere::makePlatformDesktop(*fileSystem, *urlOpener);
  dunmere::QtMainThread mainThread;
  dunmere::BackgroundThreads background;
  const int code = runWindow(*fileSystem, *desktop, mainThread, background, *urlOpener);
  // Scans and background work are never cancelled and may still run, so nothing that they use is destroyed.
  std::fflush(nullptr);
  std::_Exit(code);
}
