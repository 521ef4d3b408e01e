// Splitter: what divides two views, for keys and assistive technology; its container handles the mouse.
#pragma once

#include <QtQml/qqmlregistration.h>

#include <QQuickItem>

namespace dunmere {

/// With the keyboard, the arrow keys ask for another position, Home and End for the outermost ones. All lengths in
/// points. Main thread.
class Splitter : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(qreal position READ position WRITE setPosition NOTIFY positionChanged FINAL)
  Q_PROPERTY(qreal minimum MEMBER minimum_ NOTIFY boundsChanged FINAL)
  Q_PROPERTY(qreal maximum MEMBER maximum_ NOTIFY boundsChanged FINAL)

 public:
  static constexpr qreal kStep = 10;

  using QQuickItem::QQuickItem;

  qreal position() const { return position_; }
  void setPosition(qreal position);
  qreal minimum() const { return minimum_; }
  qreal maximum() const { return maximum_; }

  /// Asks for the position within the bounds that is nearest to this one.
  Q_INVOKABLE void moveTo(qreal position);

 Q_SIGNALS:
  void positionChanged();
  void boundsChanged();
  /// The user wants it there; whoever owns the views moves it.
  void moveRequested(qreal position);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  qreal position_ = 0;
  qreal minimum_ = 0;
  qreal maximum_ = 0;
};

}  // namespace dunmere
