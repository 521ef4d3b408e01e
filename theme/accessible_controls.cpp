#include "theme/accessible_controls.h"

#include <QMetaObject>

namespace dunmere {
namespace {

QAccessibleInterface* makeAccessibleControl(const QString& className, QObject* object) {
  if (className == QLatin1String("QQuickAbstractButton"))
    return new AccessibleButton(qobject_cast<QQuickItem*>(object));
  if (className == QLatin1String("dunmere::Splitter")) return new AccessibleSplitter(qobject_cast<QQuickItem*>(object));
  return nullptr;
}

}  // namespace

void installAccessibleControls() {
  QAccessible::installFactory(makeAccessibleControl);
}

// Whoever has asked for the state remembers it until it is told to have changed. Qt may make two of these for a button;
// the same news twice does no harm.
AccessibleButton::AccessibleButton(QQuickItem* button) : AccessibleItem(button) {
  QObject::connect(button, &QQuickItem::enabledChanged, button, [button] {
    QAccessible::State changed;
    changed.disabled = true;
    QAccessibleStateChangeEvent event(button, changed);
    QAccessible::updateAccessibility(&event);
  });
}

QAccessible::Role AccessibleButton::role() const {
  return QAccessible::Button;
}

QAccessible::State AccessibleButton::state() const {
  QAccessible::State state = AccessibleItem::state();
  state.selectable = told(QStringLiteral("selectable")).toBool();
  state.selected = told(QStringLiteral("selected")).toBool();
  return state;
}

QStringList AccessibleButton::actionNames() const {
  return {pressAction(), setFocusAction()};
}

void AccessibleButton::doAction(const QString& actionName) {
  if (actionName != pressAction()) return AccessibleItem::doAction(actionName);
  if (item()->isEnabled() && item()->isVisible()) QMetaObject::invokeMethod(item(), "clicked");
}

QAccessible::Role AccessibleSplitter::role() const {
  return QAccessible::Splitter;
}

void* AccessibleSplitter::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
  return AccessibleItem::interface_cast(type);
}

Splitter& AccessibleSplitter::splitter() const {
  return *static_cast<Splitter*>(item());
}

QVariant AccessibleSplitter::currentValue() const {
  return splitter().position();
}

void AccessibleSplitter::setCurrentValue(const QVariant& value) {
  splitter().moveTo(value.toReal());
}

QVariant AccessibleSplitter::maximumValue() const {
  return splitter().maximum();
}

QVariant AccessibleSplitter::minimumValue() const {
  return splitter().minimum();
}

QVariant AccessibleSplitter::minimumStepSize() const {
  return Splitter::kStep;
}

}  // namespace dunmere
