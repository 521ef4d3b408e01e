#include "theme/accessible_controls.h"

#include <QMetaObject>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlProperty>

namespace dunmere {
namespace {

QAccessibleInterface* makeAccessibleControl(const QString& className, QObject* object) {
  auto* const item = qobject_cast<QQuickItem*>(object);
  if (className == QLatin1String("QQuickAbstractButton")) return new AccessibleButton(item);
  if (className == QLatin1String("QQuickListView")) return new AccessibleList(item);
  if (className == QLatin1String("dunmere::Splitter")) return new AccessibleSplitter(item);
  return nullptr;
}

}  // namespace

void installAccessibleControls() {
  QAccessible::installFactory(makeAccessibleControl);
}

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

// Clients cache the state until they receive a change event. Qt may make two of these for a button; a second event does
// no harm.
AccessibleButton::AccessibleButton(QQuickItem* button) : AccessibleItem(button) {
  QObject::connect(button, &QQuickItem::enabledChanged, button, [button] {
    QAccessible::State changed;
    changed.disabled = true;
    QAccessibleStateChangeEvent event(button, changed);
    QAccessible::updateAccessibility(&event);
  });
}

QAccessible::State AccessibleButton::state() const {
  QAccessible::State state = AccessibleItem::state();
  state.selectable = attached(QStringLiteral("selectable")).toBool();
  state.selected = attached(QStringLiteral("selected")).toBool();
  return state;
}

void AccessibleButton::doAction(const QString& actionName) {
  if (actionName != pressAction()) return AccessibleItem::doAction(actionName);
  if (item()->isEnabled() && item()->isVisible()) QMetaObject::invokeMethod(item(), "clicked");
}

void* AccessibleSplitter::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
  return AccessibleItem::interface_cast(type);
}

QQuickItem* AccessibleList::row(int index) const {
  QQuickItem* found = nullptr;
  QMetaObject::invokeMethod(item(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, found), Q_ARG(int, index));
  return found;
}

// A view holds a run of rows: those on the screen and some beside them.
QList<QQuickItem*> AccessibleList::rows() const {
  int first = -1;
  QMetaObject::invokeMethod(item(), "indexAt", Q_RETURN_ARG(int, first), Q_ARG(qreal, 0),
                            Q_ARG(qreal, item()->property("contentY").toReal()));
  QList<QQuickItem*> held;
  if (first < 0) return held;
  while (first > 0 && row(first - 1)) --first;
  for (int index = first; QQuickItem* const at = row(index); ++index) held.append(at);
  return held;
}

QAccessibleInterface* AccessibleList::child(int index) const {
  return QAccessible::queryAccessibleInterface(rows().value(index));
}

int AccessibleList::indexOfChild(const QAccessibleInterface* child) const {
  return child ? static_cast<int>(rows().indexOf(qobject_cast<QQuickItem*>(child->object()))) : -1;
}

QAccessibleInterface* AccessibleList::childAt(int x, int y) const {
  if (!rect().contains(x, y)) return nullptr;
  for (QQuickItem* const at : rows()) {
    QAccessibleInterface* const found = QAccessible::queryAccessibleInterface(at);
    if (found && found->rect().contains(x, y)) return found;
  }
  return nullptr;
}

}  // namespace dunmere
