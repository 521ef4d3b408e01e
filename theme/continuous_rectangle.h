// ContinuousRectangle: a filled and optionally outlined rectangle whose corners grow out of its sides without a jump in
// curvature, smooth on every renderer.
#pragma once

#include <QColor>
#include <QPainterPath>
#include <QQuickPaintedItem>
#include <QRectF>

namespace dunmere {

/// The shortest side, in radii, that has room for two such corners.
inline constexpr qreal continuousCornerMinimumSide = 3.06;

/// A closed outline inside `bounds`. Corners reach 1.53 radii along the sides; a rectangle too small for that has plain
/// circular corners of at most half its shorter side. A radius of 0 or less gives the rectangle itself.
QPainterPath continuousCornerPath(const QRectF& bounds, qreal radius);

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
