#include "theme/continuous_rectangle.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "theme/continuous_corner_path.h"

namespace dunmere {

ContinuousRectangle::ContinuousRectangle(QQuickItem* parent) : QQuickPaintedItem(parent) {
  setAntialiasing(true);
}

void ContinuousRectangle::setRadius(qreal radius) {
  if (radius_ == radius) return;
  radius_ = radius;
  Q_EMIT radiusChanged();
  update();
}

void ContinuousRectangle::setColor(const QColor& color) {
  if (color_ == color) return;
  color_ = color;
  Q_EMIT colorChanged();
  update();
}

void ContinuousRectangle::setBorderColor(const QColor& color) {
  if (borderColor_ == color) return;
  borderColor_ = color;
  Q_EMIT borderColorChanged();
  update();
}

void ContinuousRectangle::setBorderWidth(qreal width) {
  if (borderWidth_ == width) return;
  borderWidth_ = width;
  Q_EMIT borderWidthChanged();
  update();
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
