// AccessibleItem: an item as assistive technology sees it, where Qt's own view of items does not tell enough.
#pragma once

#include <QAccessibleActionInterface>
#include <QAccessibleObject>
#include <QQuickItem>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace dunmere {

/// Without children, able to take the keyboard; its name and description are what the views attach to the item. Unlike
/// Qt's own it says when the item is disabled. Derived classes say what the item is. Main thread.
class AccessibleItem : public QAccessibleObject, public QAccessibleActionInterface {
 public:
  explicit AccessibleItem(QQuickItem* item);

  QWindow* window() const override;
  QAccessibleInterface* parent() const override;
  int childCount() const override;
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QString text(QAccessible::Text kind) const override;
  QRect rect() const override;
  QAccessible::State state() const override;
  void* interface_cast(QAccessible::InterfaceType type) override;

  QStringList actionNames() const override;
  void doAction(const QString& actionName) override;
  QStringList keyBindingsForAction(const QString& actionName) const override;

 protected:
  QQuickItem* item() const;
  /// The value of the attached property Accessible.`property`.
  QVariant told(const QString& property) const;
};

}  // namespace dunmere
