#include "sweeper/view/accessible_list.h"

#include <QMetaObject>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlProperty>
#include <QQuickWindow>

namespace dunmere {
namespace {

QAccessibleInterface* makeAccessibleList(const QString& className, QObject* object) {
  if (className != QLatin1String("QQuickListView")) return nullptr;
  return new AccessibleList(qobject_cast<QQuickItem*>(object));
}

}  // namespace

void AccessibleList::install() {
  QAccessible::installFactory(makeAccessibleList);
}

AccessibleList::AccessibleList(QQuickItem* list) : QAccessibleObject(list) {}

QQuickItem* AccessibleList::list() const {
  return static_cast<QQuickItem*>(object());
}

QWindow* AccessibleList::window() const {
  return list()->window();
}

QAccessibleInterface* AccessibleList::parent() const {
  for (QQuickItem* item = list()->parentItem(); item; item = item->parentItem()) {
    if (QAccessibleInterface* const found = QAccessible::queryAccessibleInterface(item)) return found;
  }
  return QAccessible::queryAccessibleInterface(window());
}

QQuickItem* AccessibleList::row(int index) const {
  QQuickItem* item = nullptr;
  QMetaObject::invokeMethod(list(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item), Q_ARG(int, index));
  return item;
}

// A view holds a run of rows: those on the screen and some beside them.
QList<QQuickItem*> AccessibleList::rows() const {
  int first = -1;
  QMetaObject::invokeMethod(list(), "indexAt", Q_RETURN_ARG(int, first), Q_ARG(qreal, 0),
                            Q_ARG(qreal, list()->property("contentY").toReal()));
  QList<QQuickItem*> held;
  if (first < 0) return held;
  while (first > 0 && row(first - 1)) --first;
  for (int index = first; QQuickItem* const item = row(index); ++index) held.append(item);
  return held;
}

int AccessibleList::childCount() const {
  return static_cast<int>(rows().size());
}

QAccessibleInterface* AccessibleList::child(int index) const {
  return QAccessible::queryAccessibleInterface(rows().value(index));
}

int AccessibleList::indexOfChild(const QAccessibleInterface* child) const {
  return child ? static_cast<int>(rows().indexOf(qobject_cast<QQuickItem*>(child->object()))) : -1;
}

QAccessibleInterface* AccessibleList::childAt(int x, int y) const {
  if (!rect().contains(x, y)) return nullptr;
  for (QQuickItem* const item : rows()) {
    QAccessibleInterface* const found = QAccessible::queryAccessibleInterface(item);
    if (found && found->rect().contains(x, y)) return found;
  }
  return nullptr;
}

QString AccessibleList::text(QAccessible::Text kind) const {
  if (kind != QAccessible::Name) return {};
  return QQmlProperty(list(), QStringLiteral("Accessible.name"), qmlContext(list())).read().toString();
}

QRect AccessibleList::rect() const {
  if (!window()) return {};
  const QRectF inWindow = list()->mapRectToScene(list()->boundingRect());
  return QRect(window()->mapToGlobal(inWindow.topLeft().toPoint()), inWindow.size().toSize());
}

QAccessible::Role AccessibleList::role() const {
  return QAccessible::List;
}

// With the focus on a row, the row has it.
QAccessible::State AccessibleList::state() const {
  QAccessible::State state;
  state.invisible = !window() || !list()->isVisible();
  state.disabled = !list()->isEnabled();
  state.focusable = true;
  state.focused = !state.invisible && list()->window()->activeFocusItem() == list();
  return state;
}

void* AccessibleList::interface_cast(QAccessible::InterfaceType type) {
  return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
}

QStringList AccessibleList::actionNames() const {
  return {setFocusAction()};
}

void AccessibleList::doAction(const QString& actionName) {
  if (actionName == setFocusAction()) list()->forceActiveFocus(Qt::OtherFocusReason);
}

QStringList AccessibleList::keyBindingsForAction(const QString&) const {
  return {};
}

}  // namespace dunmere
