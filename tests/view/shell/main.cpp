// Runs the QML tests of the window and the settings.
#include <QQmlEngine>
#include <QtQml>
#include <QtQuickTest>

#include "tests/view/shell/shell_harness.h"

namespace dunmere::test {

class Setup : public QObject {
  Q_OBJECT

 public Q_SLOTS:
  void qmlEngineAvailable(QQmlEngine* engine) {
    engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    qmlRegisterType<ShellHarness>("Dunmere.ShellTest", 1, 0, "ShellHarness");
  }
};

}  // namespace dunmere::test

QUICK_TEST_MAIN_WITH_SETUP(shell_views, dunmere::test::Setup)

#include "main.moc"
