#include "theme/continuous_rectangle.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace dunmere {
namespace {

/// One corner of the outline in radii: how far a point lies back along the incoming side, and in along the outgoing
/// one.
class CornerPen {
 public:
  CornerPen(QPainterPath& path, QPointF corner, QPointF incoming, QPointF outgoing, qreal radius)
      : path_(path), corner_(corner), incoming_(incoming * radius), outgoing_(outgoing * radius) {}

  void line(qreal back, qreal in) { path_.lineTo(at(back, in)); }
  void cubic(QPointF first, QPointF second, QPointF end) {
    path_.cubicTo(at(first.x(), first.y()), at(second.x(), second.y()), at(end.x(), end.y()));
  }

 private:
  QPointF at(qreal back, qreal in) const { return corner_ - incoming_ * back + outgoing_ * in; }

  QPainterPath& path_;
  QPointF corner_, incoming_, outgoing_;
};

/// The corner is symmetric: an easing cubic, the turn between two short straight pieces, and the easing mirrored.
void addCorner(CornerPen pen) {
  pen.line(1.528665, 0);
  pen.cubic({1.088493, 0}, {0.868407, 0}, {0.669934, 0.065496});
  pen.line(0.631494, 0.074911);
  pen.cubic({0.372824, 0.169059}, {0.169059, 0.372824}, {0.074911, 0.631494});
  pen.line(0.065496, 0.669934);
  pen.cubic({0, 0.868407}, {0, 1.088493}, {0, 1.528665});
}

}  // namespace

QPainterPath continuousCornerPath(const QRectF& bounds, qreal radius) {
  QPainterPath path;
  const qreal shorterSide = std::min(bounds.width(), bounds.height());
  if (radius <= 0) {
    path.addRect(bounds);
  } else if (shorterSide < continuousCornerMinimumSide * radius) {
    const qreal fitting = std::min(radius, shorterSide / 2);
    path.addRoundedRect(bounds, fitting, fitting);
  } else {
    const QPointF right(1, 0), down(0, 1), left(-1, 0), up(0, -1);
    path.moveTo(bounds.topLeft() + right * 1.528665 * radius);
    addCorner({path, bounds.topRight(), right, down, radius});
    addCorner({path, bounds.bottomRight(), down, left, radius});
    addCorner({path, bounds.bottomLeft(), left, up, radius});
    addCorner({path, bounds.topLeft(), up, right, radius});
    path.closeSubpath();
  }
  return path;
}

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
