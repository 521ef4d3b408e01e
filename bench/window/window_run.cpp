#include "bench/window/window_run.h"

#include <QEventLoop>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTimer>
#include <QUrl>
#include <QVariant>
#include <cstdio>
#include <cstdlib>

namespace dunmere::bench {
namespace {

using namespace Qt::StringLiterals;

constexpr const char* kMovingItem = R"(import QtQuick
Rectangle {
    width: 8
    height: 8
    z: 1000
    color: "steelblue"
    NumberAnimation on x {
        from: 0
        to: 100
        duration: 1000
        loops: Animation.Infinite
    }
})";

[[noreturn]] void fail(const QString& why) {
  std::fprintf(stderr, "window_probe: %s\n", qUtf8Printable(why));
  std::_Exit(EXIT_FAILURE);
}

void addMovingItem(QQmlEngine& engine, QQuickWindow& window) {
  QQmlComponent component(&engine);
  component.setData(kMovingItem, QUrl());
  auto* const item = qobject_cast<QQuickItem*>(component.create());
  if (!item) fail(component.errorString());
  item->setParent(&window);
  item->setParentItem(window.contentItem());
}

}  // namespace

WindowRun::WindowRun(FileSystem& fileSystem, const std::string& folder, bool animated)
    : desktop_(FileUrl(folder)), content_(fileSystem, desktop_, mainThread_, background_, urlOpener_) {
  engine_.addImportPath(u"qrc:/qt/qml"_s);
  engine_.setInitialProperties({{u"content"_s, QVariant::fromValue(&content_)}});
  engine_.load(QUrl(u"qrc:/qt/qml/Dunmere/Shell/MainWindow.qml"_s));
  auto* const window = qobject_cast<QQuickWindow*>(engine_.rootObjects().value(0));
  if (!window) fail(u"the window does not load"_s);
  frames_ = std::make_unique<FrameRecorder>(*window);
  QEventLoop loop;
  // Queued: with a render thread the signal comes from there.
  QObject::connect(window, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit, Qt::QueuedConnection);
  loop.exec();
  if (animated) addMovingItem(engine_, *window);
}

void WindowRun::run(std::chrono::milliseconds span) {
  QEventLoop loop;
  QTimer::singleShot(span, &loop, &QEventLoop::quit);
  loop.exec();
}

void WindowRun::runUntilSweepEnds() {
  QEventLoop loop;
  QObject::connect(&pane(), &SweeperViewModel::showsStatusStripChanged, &loop, &QEventLoop::quit);
  if (pane().showsStatusStrip()) loop.exec();
}

RowListModel* WindowRun::rowsOf(int column) {
  ColumnListModel& columns = *pane().columns();
  return columns.data(columns.index(column), ColumnListModel::RowsRole).value<RowListModel*>();
}

void WindowRun::runUntilColumnHasRows(int column) {
  QEventLoop loop;
  RowListModel* const rows = rowsOf(column);
  if (!rows) fail(u"there is no column %1"_s.arg(column));
  QObject::connect(rows, &RowListModel::rowsInserted, &loop, &QEventLoop::quit);
  if (rows->count() == 0) loop.exec();
}

int WindowRun::lastRowNamed(int column, const QString& name) {
  runUntilColumnHasRows(column);
  const RowListModel* const rows = rowsOf(column);
  for (int row = rows->count() - 1; row >= 0; --row) {
    if (rows->data(rows->index(row), RowListModel::NameRole).toString() == name) return row;
  }
  fail(u"column %1 has no row named %2"_s.arg(column).arg(name));
}

}  // namespace dunmere::bench
