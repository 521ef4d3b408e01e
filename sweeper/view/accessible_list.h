// AccessibleList: a list view as assistive technology sees it.
#pragma once

#include <QAccessibleActionInterface>
#include <QAccessibleObject>
#include <QList>
#include <QPoint>
#include <QQuickItem>
#include <QRect>
#include <QString>
#include <QStringList>

namespace dunmere {

/// Its children are the rows that the view holds, in the order in which they stand. Qt's own lists them in the order in
/// which they were made, which is another one as soon as a row has moved or was used again. Main thread.
class AccessibleList : public QAccessibleObject, public QAccessibleActionInterface {
 public:
  /// From now on every ListView is seen so; it must have an accessible name. To be called once, before the first
  /// window.
  static void install();

  explicit AccessibleList(QQuickItem* list);

  QWindow* window() const override;
  QAccessibleInterface* parent() const override;
  int childCount() const override;
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override;
  QString text(QAccessible::Text kind) const override;
  QRect rect() const override;
  QAccessible::Role role() const override;
  QAccessible::State state() const override;
  void* interface_cast(QAccessible::InterfaceType type) override;

  QStringList actionNames() const override;
  void doAction(const QString& actionName) override;
  QStringList keyBindingsForAction(const QString& actionName) const override;

 private:
  QQuickItem* list() const;
  QQuickItem* row(int index) const;
  QList<QQuickItem*> rows() const;
};

}  // namespace dunmere
