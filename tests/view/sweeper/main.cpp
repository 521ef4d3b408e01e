// Runs the QML tests of the sweeper's views.
#include <QQmlEngine>
#include <QtQml>
#include <QtQuickTest>

#include "tests/view/sweeper/sweeper_harness.h"

namespace dunmere::test {

class Setup : public QObject {
  Q_OBJECT

 public Q_SLOTS:
  void qmlEngineAvailable(QQmlEngine* engine) {
    engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    qmlRegisterType<SweeperHarness>("Dunmere.SweeperTest", 1, 0, "SweeperHarness");
  }
};

}  // namespace dunmere::test

QUICK_TEST_MAIN_WITH_SETUP(sweeper_views, dunmere::test::Setup)

#include "main.moc"
