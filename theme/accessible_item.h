// AccessibleItem: an item as assistive technology sees it, where Qt's own view of items does not tell enough.
#pragma once

#include <QAccessibleActionInterface>
#include <QAccessibleObject>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace dunmere {

/// Without children, able to take the keyboard; its name and description are what the views attach to the item. Unlike
/// Qt's own it says when the item is disabled. Derived classes say what the item is. Main thread.
class AccessibleItem : public QAccessibleObject, public QAccessibleActionInterface {
 public:
  explicit AccessibleItem(QQuickItem* item) : QAccessibleObject(item) {}

  QWindow* window() const override { return item()->window(); }
  QAccessibleInterface* parent() const override;
  int childCount() const override { return 0; }
  QAccessibleInterface* child(int) const override { return nullptr; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  QString text(QAccessible::Text kind) const override;
  QRect rect() const override;
  QAccessible::State state() const override;
  void* interface_cast(QAccessible::InterfaceType type) override;

  QStringList actionNames() const override { return {setFocusAction()}; }
  void doAction(const QString& actionName) override;
  QStringList keyBindingsForAction(const QString&) const override { return {}; }

 protected:
  QQuickItem* item() const { return static_cast<QQuickItem*>(object()); }
  /// The value of the attached property Accessible.`property`.
  QVariant attached(const QString& property) const;
};

}  // namespace dunmere
