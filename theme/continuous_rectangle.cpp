#include "theme/continuous_rectangle.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "theme/continuous_corner_path.h"

namespace dunmere {

ContinuousRectangle::ContinuousRectangle(QQuickItem* parent) : QQuickPaintedItem(parent) {
  setAntialiasing(true);
  connect(this, &ContinuousRectangle::changed, this, [this] { update(); });
}

void ContinuousRectangle::paint(QPainter* painter) {
  const QRectF bounds = boundingRect();
  painter->fillPath(continuousCornerPath(bounds, radius_), color_);
  if (borderWidth_ <= 0) return;
  // Whole pixels of the screen, and half of the pen inwards keeps the whole line inside: it stays sharp at any scale.
  const qreal scale = painter->deviceTransform().m11();
  const qreal width = std::max(1.0, std::round(borderWidth_ * scale)) / scale;
  const qreal inset = width / 2;
  const QPainterPath middle = continuousCornerPath(bounds.adjusted(inset, inset, -inset, -inset), radius_ - inset);
  painter->strokePath(middle, QPen(borderColor_, width));
}

}  // namespace dunmere
