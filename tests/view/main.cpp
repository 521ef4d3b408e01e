// Runs the QML tests of one room.
#include <QQmlEngine>
#include <QtQuickTest>

namespace dunmere::test {

class Setup : public QObject {
  Q_OBJECT

 public Q_SLOTS:
  void qmlEngineAvailable(QQmlEngine* engine) { engine->addImportPath(QStringLiteral("qrc:/qt/qml")); }
};

}  // namespace dunmere::test

QUICK_TEST_MAIN_WITH_SETUP(views, dunmere::test::Setup)

#include "main.moc"
