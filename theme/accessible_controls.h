// Buttons, splitters and lists as assistive technology sees them.
#pragma once

#include <QAccessibleValueInterface>
#include <QList>

#include "theme/accessible_item.h"
#include "theme/splitter.h"

namespace dunmere {

/// From now on every button, splitter and ListView is seen as the classes below tell; each must have an accessible
/// name. To be called once, before the first window.
void installAccessibleControls();

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
