// ContinuousRectangle: a filled and optionally outlined rectangle with continuous corners, smooth on every renderer.
#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace dunmere {

/// Main thread, like every item. Lengths are in device-independent pixels. The outline lies inside the item's bounds.
class ContinuousRectangle : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(qreal radius MEMBER radius_ NOTIFY changed FINAL)
  Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed FINAL)
  Q_PROPERTY(QColor borderColor MEMBER borderColor_ NOTIFY changed FINAL)
  Q_PROPERTY(qreal borderWidth MEMBER borderWidth_ NOTIFY changed FINAL)

 public:
  explicit ContinuousRectangle(QQuickItem* parent = nullptr);

  void paint(QPainter* painter) override;

 Q_SIGNALS:
  void changed();

 private:
  qreal radius_ = 0;
  QColor color_ = Qt::transparent;
  QColor borderColor_ = Qt::transparent;
  qreal borderWidth_ = 0;
};

}  // namespace dunmere
