// Buttons, splitters and lists as assistive technology sees them, where Qt's own view of items does not tell enough.
#pragma once

#include <QAccessibleActionInterface>
#include <QAccessibleObject>
#include <QAccessibleValueInterface>
#include <QList>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QVariant>

#include "theme/splitter.h"

namespace dunmere {

/// Shows every button, splitter and ListView to assistive technology by the classes below; each must have an accessible
/// name. To be called once, before the first window.
void installAccessibleControls();

/// An item without children, able to take the keyboard; its name and description are what the views attach to the item.
/// Unlike Qt's own it says when the item is disabled. Derived classes say what the item is. Main thread.
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

/// A button: pressable, and known to be disabled while it is. Main thread.
class AccessibleButton : public AccessibleItem {
 public:
  explicit AccessibleButton(QQuickItem* button);

  QAccessible::Role role() const override { return QAccessible::Button; }
  QAccessible::State state() const override;
  QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
  void doAction(const QString& actionName) override;
};

/// A splitter: its value is its position in points, and may be set. Main thread.
class AccessibleSplitter : public AccessibleItem, public QAccessibleValueInterface {
 public:
  using AccessibleItem::AccessibleItem;

  QAccessible::Role role() const override { return QAccessible::Splitter; }
  void* interface_cast(QAccessible::InterfaceType type) override;

  QVariant currentValue() const override { return splitter().position(); }
  void setCurrentValue(const QVariant& value) override { splitter().moveTo(value.toReal()); }
  QVariant maximumValue() const override { return splitter().maximum(); }
  QVariant minimumValue() const override { return splitter().minimum(); }
  QVariant minimumStepSize() const override { return Splitter::kStep; }

 private:
  Splitter& splitter() const { return *static_cast<Splitter*>(item()); }
};

/// A list view: its children are the rows that the view holds, in the order in which they stand. Qt's own lists them in
/// the order in which they were made, which differs as soon as a row has moved or was used again. Main thread.
class AccessibleList : public AccessibleItem {
 public:
  using AccessibleItem::AccessibleItem;

  QAccessible::Role role() const override { return QAccessible::List; }
  int childCount() const override { return static_cast<int>(rows().size()); }
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override;

 private:
  QQuickItem* row(int index) const;
  QList<QQuickItem*> rows() const;
};

}  // namespace dunmere
