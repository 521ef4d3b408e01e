#include "theme/splitter.h"

#include <QAccessible>
#include <QKeyEvent>
#include <algorithm>

namespace dunmere {

void Splitter::setPosition(qreal position) {
  if (position == position_) return;
  position_ = position;
  Q_EMIT positionChanged();
  QAccessibleValueChangeEvent event(this, position_);
  QAccessible::updateAccessibility(&event);
}

void Splitter::moveTo(qreal position) {
  Q_EMIT moveRequested(std::min(std::max(position, minimum_), maximum_));
}

void Splitter::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Left:
      return moveTo(position_ - kStep);
    case Qt::Key_Right:
      return moveTo(position_ + kStep);
    case Qt::Key_Home:
      return moveTo(minimum_);
    case Qt::Key_End:
      return moveTo(maximum_);
    default:
      event->ignore();
  }
}

}  // namespace dunmere
