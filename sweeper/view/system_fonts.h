// SystemFonts: the desktop's font families that a view cannot name by itself.
#pragma once

#include <QtQml/qqmlregistration.h>

#include <QFontDatabase>
#include <QObject>
#include <QString>

namespace dunmere {

class SystemFonts : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(QString monospacedFamily READ monospacedFamily CONSTANT FINAL)

 public:
  using QObject::QObject;

  QString monospacedFamily() const { return QFontDatabase::systemFont(QFontDatabase::FixedFont).family(); }
};

}  // namespace dunmere
