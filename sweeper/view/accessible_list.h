// AccessibleList: a list view as assistive technology sees it.
#pragma once

#include <QList>
#include <QPoint>

#include "theme/accessible_item.h"

namespace dunmere {

/// Its children are the rows that the view holds, in the order in which they stand. Qt's own lists them in the order in
/// which they were made, which is another one as soon as a row has moved or was used again. Main thread.
class AccessibleList : public AccessibleItem {
 public:
  /// From now on every ListView is seen so; it must have an accessible name. To be called once, before the first
  /// window.
  static void install();

  using AccessibleItem::AccessibleItem;

  int childCount() const override;
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override;
  QAccessible::Role role() const override;

 private:
  QQuickItem* row(int index) const;
  QList<QQuickItem*> rows() const;
};

}  // namespace dunmere
