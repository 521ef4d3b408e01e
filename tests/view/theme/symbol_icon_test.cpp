#include "theme/symbol_icon.h"

#include <gtest/gtest.h>

#include <QString>
#include <cmath>

namespace dunmere {
namespace {

/// A point size at a device pixel ratio, with the stroke that belongs to it.
struct Raster {
  qreal pointSize;
  qreal scale;
  qreal stroke;
};

class EverySymbol : public testing::TestWithParam<const char*> {
 protected:
  QString name() const { return QString::fromLatin1(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(SymbolPaths, EverySymbol,
                         testing::Values("rectangle.split.3x1", "slider.horizontal.3", "externaldrive", "internaldrive",
                                         "trash", "folder", "chevron.right"));

TEST_P(EverySymbol, StaysInsideItsExtentAtEverySize) {
  for (const Raster raster :
       {Raster{10, 1, 1}, Raster{14, 1, 1}, Raster{14, 2, 3}, Raster{18, 1, 2}, Raster{20, 3, 5}}) {
    const qreal em = raster.pointSize * raster.scale;
    const QSizeF extent = *symbolExtent(name()) * em;
    // As an item measures it: whole points, an even width.
    const QRectF box(0, 0, 2 * std::ceil(extent.width() / raster.scale / 2) * raster.scale,
                     std::round(extent.height() / raster.scale) * raster.scale);
    const SymbolDrawing drawing = *symbolDrawing(name(), {box.center(), em, raster.stroke});
    QPainterPathStroker pen;
    pen.setWidth(raster.stroke);
    pen.setJoinStyle(Qt::RoundJoin);
    const QRectF inked = pen.createStroke(drawing.strokes).boundingRect().united(drawing.fills.boundingRect());
    EXPECT_TRUE(box.adjusted(-1e-6, -1e-6, 1e-6, 1e-6).contains(inked))
        << raster.pointSize << " at " << raster.scale << ": " << inked.left() << ' ' << inked.top() << ' '
        << inked.right() << ' ' << inked.bottom() << " in " << box.width() << " x " << box.height();
    EXPECT_GT(inked.height(), box.height() / 2);
  }
}

TEST_P(EverySymbol, StandsInTheMiddle) {
  const SymbolDrawing drawing = *symbolDrawing(name(), {QPointF(100, 100), 40, 4});
  const QRectF bounds = drawing.strokes.boundingRect();
  EXPECT_NEAR(bounds.center().x(), 100, 1.5);
}

TEST(SymbolPaths, AnUnknownNameHasNoDrawing) {
  EXPECT_FALSE(symbolExtent(u"internaldrive "));
  EXPECT_FALSE(symbolDrawing(u"internaldrive ", {QPointF(10, 10), 14, 1}));
  EXPECT_FALSE(symbolDrawing(u"", {QPointF(10, 10), 14, 1}));
}

// A stroke one pixel wide through the middle of a pixel covers that pixel and no other.
TEST(SymbolGrid, MovesStraightStrokesOntoWholePixels) {
  const SymbolGrid thin{QPointF(9, 8.5), 14, 1};
  EXPECT_EQ(thin.fitted(0.2, 0.2), QPointF(11.5, 11.5));
  EXPECT_EQ(thin.free(0.5, 0), QPointF(16, 8.5));
  const SymbolGrid thick{QPointF(9, 8.5), 14, 2};
  EXPECT_EQ(thick.fitted(0.2, 0.2), QPointF(12, 11));
}

}  // namespace
}  // namespace dunmere
