#include "theme/accessible_item.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlProperty>

namespace dunmere {

QVariant AccessibleItem::attached(const QString& property) const {
  return QQmlProperty(item(), QStringLiteral("Accessible.") + property, qmlContext(item())).read();
}

QAccessibleInterface* AccessibleItem::parent() const {
  for (QQuickItem* above = item()->parentItem(); above; above = above->parentItem()) {
    if (QAccessibleInterface* const found = QAccessible::queryAccessibleInterface(above)) return found;
  }
  return QAccessible::queryAccessibleInterface(window());
}

QString AccessibleItem::text(QAccessible::Text kind) const {
  if (kind == QAccessible::Name) return attached(QStringLiteral("name")).toString();
  if (kind == QAccessible::Description) return attached(QStringLiteral("description")).toString();
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

void AccessibleItem::doAction(const QString& actionName) {
  if (actionName == setFocusAction()) item()->forceActiveFocus(Qt::OtherFocusReason);
}

}  // namespace dunmere
