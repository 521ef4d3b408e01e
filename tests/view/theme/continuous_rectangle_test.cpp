#include "theme/continuous_rectangle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace dunmere {
namespace {

constexpr qreal radius = 8;
const QRectF wide(10, 20, 200, 100);

std::vector<QPointF> pointsOf(const QPainterPath& path) {
  std::vector<QPointF> points;
  for (int i = 0; i < path.elementCount(); ++i) points.push_back(path.elementAt(i));
  return points;
}

bool passes(const QPainterPath& path, QPointF wanted) {
  return std::ranges::any_of(pointsOf(path), [&](QPointF point) {
    return std::abs(point.x() - wanted.x()) < 1e-9 && std::abs(point.y() - wanted.y()) < 1e-9;
  });
}

TEST(ContinuousCornerPath, EveryCornerLeavesItsSidesOneAndAHalfRadiiBeforeTheCorner) {
  const QPainterPath path = continuousCornerPath(wide, radius);
  const qreal reach = 1.528665 * radius;
  for (const qreal x : {wide.left() + reach, wide.right() - reach}) {
    EXPECT_TRUE(passes(path, {x, wide.top()})) << x;
    EXPECT_TRUE(passes(path, {x, wide.bottom()})) << x;
  }
  for (const qreal y : {wide.top() + reach, wide.bottom() - reach}) {
    EXPECT_TRUE(passes(path, {wide.left(), y})) << y;
    EXPECT_TRUE(passes(path, {wide.right(), y})) << y;
  }
}

TEST(ContinuousCornerPath, TurnsThroughTheSamePointsAtEveryCorner) {
  const QPainterPath path = continuousCornerPath(wide, radius);
  const qreal far = 0.631494 * radius, near = 0.074911 * radius;
  for (const QPointF offset : {QPointF(far, near), QPointF(near, far)}) {
    EXPECT_TRUE(passes(path, {wide.left() + offset.x(), wide.top() + offset.y()}));
    EXPECT_TRUE(passes(path, {wide.right() - offset.x(), wide.top() + offset.y()}));
    EXPECT_TRUE(passes(path, {wide.left() + offset.x(), wide.bottom() - offset.y()}));
    EXPECT_TRUE(passes(path, {wide.right() - offset.x(), wide.bottom() - offset.y()}));
  }
}

TEST(ContinuousCornerPath, FillsItsBoundsButTheCorners) {
  const QPainterPath path = continuousCornerPath(wide, radius);
  EXPECT_EQ(path.boundingRect(), wide);
  EXPECT_TRUE(path.contains(wide.center()));
  EXPECT_TRUE(path.contains(QPointF(wide.center().x(), wide.top() + 0.1)));
  for (const QPointF corner : {wide.topLeft(), wide.topRight(), wide.bottomLeft(), wide.bottomRight()}) {
    const QPointF inwards = (wide.center() - corner) / 1000;
    EXPECT_FALSE(path.contains(corner + inwards));
  }
}

// The turn begins earlier and ends later than a circle's, and so cuts off more of the corner on the way.
TEST(ContinuousCornerPath, LeavesTheSideBeforeACircleWould) {
  QPainterPath circle;
  circle.addRoundedRect(wide, radius, radius);
  const QPointF justBeforeTheCircle(wide.left() + 1.05 * radius, wide.top() + 0.01);
  EXPECT_TRUE(circle.contains(justBeforeTheCircle));
  EXPECT_FALSE(continuousCornerPath(wide, radius).contains(justBeforeTheCircle));
}

TEST(ContinuousCornerPath, ATooSmallRectangleHasCircularCorners) {
  const QRectF small(0, 0, 100, 3.05 * radius);
  QPainterPath circle;
  circle.addRoundedRect(small, radius, radius);
  EXPECT_EQ(continuousCornerPath(small, radius), circle);
  const QRectF justEnough(0, 0, 100, 3.06 * radius);
  EXPECT_TRUE(passes(continuousCornerPath(justEnough, radius), {1.528665 * radius, 0}));
}

TEST(ContinuousCornerPath, ARadiusBeyondHalfTheSideMakesAPill) {
  QPainterPath pill;
  pill.addRoundedRect(QRectF(0, 0, 40, 10), 5, 5);
  EXPECT_EQ(continuousCornerPath(QRectF(0, 0, 40, 10), 50), pill);
}

TEST(ContinuousCornerPath, WithoutARadiusItIsTheRectangle) {
  for (const qreal none : {0.0, -1.0}) {
    QPainterPath rectangle;
    rectangle.addRect(wide);
    EXPECT_EQ(continuousCornerPath(wide, none), rectangle);
  }
}

}  // namespace
}  // namespace dunmere
