// continuousCornerPath: the outline of a rectangle whose corners grow out of its sides without a jump in curvature.
#pragma once

#include <QPainterPath>
#include <QRectF>

namespace dunmere {

/// The shortest side, in radii, that has room for two such corners.
inline constexpr qreal continuousCornerMinimumSide = 3.06;

/// A closed outline inside `bounds`. Corners reach 1.53 radii along the sides; a rectangle too small for that has plain
/// circular corners of at most half its shorter side. A radius of 0 or less gives the rectangle itself.
QPainterPath continuousCornerPath(const QRectF& bounds, qreal radius);

}  // namespace dunmere
