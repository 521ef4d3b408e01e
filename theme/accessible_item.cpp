#include "theme/accessible_item.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlProperty>
#include <QQuickWindow>

namespace dunmere {

AccessibleItem::AccessibleItem(QQuickItem* item) : QAccessibleObject(item) {}

QQuickItem* AccessibleItem::item() const {
  return static_cast<QQuickItem*>(object());
}

QVariant AccessibleItem::told(const QString& property) const {
  return QQmlProperty(item(), QStringLiteral("Accessible.") + property, qmlContext(item())).read();
}

QWindow* AccessibleItem::window() const {
  return item()->window();
}

QAccessibleInterface* AccessibleItem::parent() const {
  for (QQuickItem* above = item()->parentItem(); above; above = above->parentItem()) {
    if (QAccessibleInterface* const found = QAccessible::queryAccessibleInterface(above)) return found;
  }
  return QAccessible::queryAccessibleInterface(window());
}

int AccessibleItem::childCount() const {
  return 0;
}

QAccessibleInterface* AccessibleItem::child(int) const {
  return nullptr;
}

int AccessibleItem::indexOfChild(const QAccessibleInterface*) const {
  return -1;
}

QString AccessibleItem::text(QAccessible::Text kind) const {
  if (kind == QAccessible::Name) return told(QStringLiteral("name")).toString();
  if (kind == QAccessible::Description) return told(QStringLiteral("description")).toString();
  return {};
}

QRect AccessibleItem::rect() const {
  if (!window()) return {};
  const QRectF inWindow = item()->mapRectToScene(item()->boundingRect());
  return QRect(window()->mapToGlobal(inWindow.topLeft().toPoint()), inWindow.size().toSize());
}

// With the focus on a part of the item, the part has it.
QAccessible::State AccessibleItem::state() const {
  QAccessible::State state;
  state.invisible = !window() || !item()->isVisible();
  state.disabled = !item()->isEnabled();
  state.focusable = true;
  state.focused = !state.invisible && item()->window()->activeFocusItem() == item();
  return state;
}

void* AccessibleItem::interface_cast(QAccessible::InterfaceType type) {
  return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
}

QStringList AccessibleItem::actionNames() const {
  return {setFocusAction()};
}

void AccessibleItem::doAction(const QString& actionName) {
  if (actionName == setFocusAction()) item()->forceActiveFocus(Qt::OtherFocusReason);
}

QStringList AccessibleItem::keyBindingsForAction(const QString&) const {
  return {};
}

}  // namespace dunmere
