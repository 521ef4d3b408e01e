// symbolDrawing: the interface's icons by name, as outlines to stroke and dots to fill.
#pragma once

#include <QPainterPath>
#include <QPointF>
#include <QSizeF>
#include <QStringView>
#include <optional>

namespace dunmere {

/// Where a symbol is drawn, all in device pixels. One em is the symbol's point size in device pixels.
struct SymbolGrid {
  QPointF centre;
  qreal em = 0;
  /// Width of the strokes; a whole number puts straight strokes on whole pixels.
  qreal stroke = 1;

  /// The point (x, y) ems off the centre, moved to where horizontal and vertical strokes through it are crisp.
  QPointF fitted(qreal x, qreal y) const;
  /// The same point where it falls, for slanted and filled shapes.
  QPointF free(qreal x, qreal y) const;
};

struct SymbolDrawing {
  QPainterPath strokes;
  QPainterPath fills;
};

/// The symbol's own extent in ems, strokes included; none for an unknown name.
std::optional<QSizeF> symbolExtent(QStringView name);

/// The symbol on this grid; none for an unknown name.
std::optional<SymbolDrawing> symbolDrawing(QStringView name, const SymbolGrid& grid);

}  // namespace dunmere
