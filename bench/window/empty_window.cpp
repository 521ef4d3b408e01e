// empty_window: shows an empty Qt Quick window and prints when its first frame was on the screen, in nanoseconds of the
// monotonic clock.
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <chrono>
#include <cstdio>

int main(int argc, char* argv[]) {
  const QGuiApplication application(argc, argv);
  QQmlApplicationEngine engine;
  engine.loadData("import QtQuick\nWindow { width: 1080; height: 680; visible: true }");
  const auto* const window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
  if (!window) return EXIT_FAILURE;
  QObject::connect(
      window, &QQuickWindow::frameSwapped, window,
      [] {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        std::printf("%lld\n", static_cast<long long>(std::chrono::nanoseconds(now).count()));
        std::fflush(stdout);
        std::_Exit(EXIT_SUCCESS);
      },
      Qt::DirectConnection);
  return QGuiApplication::exec();
}
