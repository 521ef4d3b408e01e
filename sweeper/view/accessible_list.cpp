#include "sweeper/view/accessible_list.h"

#include <QMetaObject>

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
  for (QQuickItem* const at : rows()) {
    QAccessibleInterface* const found = QAccessible::queryAccessibleInterface(at);
    if (found && found->rect().contains(x, y)) return found;
  }
  return nullptr;
}

QAccessible::Role AccessibleList::role() const {
  return QAccessible::List;
}

}  // namespace dunmere
