// TypeSelect: finds a row by the beginning of its name, as it is typed.
#pragma once

#include <QtQml/qqmlregistration.h>

#include <QAbstractItemModel>
#include <QBasicTimer>
#include <QObject>
#include <QString>

namespace dunmere {

/// Letters that follow each other within a second are one beginning. Case and accents do not matter, nor how an
/// accented letter is spelt. The same letter again and again walks the rows that begin with it. Main thread.
class TypeSelect : public QObject {
  Q_OBJECT
  QML_ELEMENT
  /// What has been typed and still counts; empty after a pause.
  Q_PROPERTY(QString typed READ typed NOTIFY typedChanged FINAL)

 public:
  using QObject::QObject;

  const QString& typed() const { return typed_; }

  /// Takes what one key has typed and returns the row to go to: of `rows`, by its role "name", from `current` on and
  /// then from the top. -1 for none, or when the key has typed nothing that stands in a name. `current` may be -1.
  Q_INVOKABLE int find(const QAbstractItemModel* rows, int current, const QString& text);

 Q_SIGNALS:
  void typedChanged();

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  void setTyped(const QString& typed);

  QString typed_;
  QBasicTimer pause_;
};

}  // namespace dunmere
