// The theme's controls as assistive technology sees them.
#pragma once

#include <QAccessibleValueInterface>

#include "theme/accessible_item.h"
#include "theme/splitter.h"

namespace dunmere {

/// From now on every button and splitter is seen as the classes below tell. To be called once, before the first window.
void installAccessibleControls();

/// A button: pressable, and known to be disabled while it is. Main thread.
class AccessibleButton : public AccessibleItem {
 public:
  explicit AccessibleButton(QQuickItem* button);

  QAccessible::Role role() const override;
  QAccessible::State state() const override;
  QStringList actionNames() const override;
  void doAction(const QString& actionName) override;
};

/// A splitter: its value is its position in points, and may be set. Main thread.
class AccessibleSplitter : public AccessibleItem, public QAccessibleValueInterface {
 public:
  using AccessibleItem::AccessibleItem;

  QAccessible::Role role() const override;
  void* interface_cast(QAccessible::InterfaceType type) override;

  QVariant currentValue() const override;
  void setCurrentValue(const QVariant& value) override;
  QVariant maximumValue() const override;
  QVariant minimumValue() const override;
  QVariant minimumStepSize() const override;

 private:
  Splitter& splitter() const;
};

}  // namespace dunmere
