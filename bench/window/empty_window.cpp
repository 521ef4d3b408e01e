// empty_window: shows an empty Qt Quick window and prints as JSON when its first frame was on the screen, in
// nanoseconds of the monotonic clock, and the most memory until then, in bytes. --software paints without OpenGL.
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "bench/json_text.h"
#include "bench/peak_memory.h"

namespace {

void printFrame() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  dunmere::JsonText json;
  json.openObject();
  json.key("firstFrame").integer(std::chrono::nanoseconds(now).count());
  json.key("peakRssBytes").integer(dunmere::peakRssBytes().value_or(0));
  json.closeObject();
  std::cout << json.str() << std::endl;
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc == 2 && std::string_view(argv[1]) == "--software")
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  const QGuiApplication application(argc, argv);
  QQmlApplicationEngine engine;
  engine.loadData("import QtQuick\nWindow { width: 1080; height: 680; visible: true }");
  const auto* const window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
  if (!window) return EXIT_FAILURE;
  QObject::connect(window, &QQuickWindow::frameSwapped, window, printFrame, Qt::DirectConnection);
  return QGuiApplication::exec();
}
