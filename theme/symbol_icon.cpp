#include "theme/symbol_icon.h"

#include <QDebug>
#include <QPainter>
#include <QtMath>
#include <algorithm>

#include "theme/symbol_paths.h"

namespace dunmere {
namespace {

/// Stroke width in ems: as heavy as the stems of text of this weight.
qreal strokeEms(int weight) {
  return 0.09 + (weight - QFont::Normal) * 0.00015;
}

/// A capital's height in ems.
constexpr qreal capitalHeight = 0.705;

}  // namespace

SymbolIcon::SymbolIcon(QQuickItem* parent) : QQuickPaintedItem(parent) {
  setAntialiasing(true);
  connect(this, &SymbolIcon::changed, this, &SymbolIcon::measure);
}

void SymbolIcon::measure() {
  const std::optional<QSizeF> symbol = symbolExtent(systemImage_);
  if (!symbol && !systemImage_.isEmpty()) qWarning() << "SymbolIcon: no symbol is named" << systemImage_;
  const QSizeF extent = symbol.value_or(QSizeF(0, 0)) * pixelSize_;
  // An even width has its centre on a pixel boundary, where symmetric symbols stay symmetric.
  setImplicitSize(2 * qCeil(extent.width() / 2), qRound(extent.height()));
  setBaselineOffset(implicitHeight() / 2 + capitalHeight * pixelSize_ / 2);
  update();
}

void SymbolIcon::paint(QPainter* painter) {
  const qreal scale = painter->deviceTransform().m11();
  const qreal stroke = std::max(1.0, qreal(qRound(strokeEms(weight_) * pixelSize_ * scale)));
  const SymbolGrid grid{boundingRect().center() * scale, pixelSize_ * scale, stroke};
  const std::optional<SymbolDrawing> drawing = symbolDrawing(systemImage_, grid);
  if (!drawing) return;
  painter->scale(1 / scale, 1 / scale);
  painter->strokePath(drawing->strokes, QPen(color_, stroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter->fillPath(drawing->fills, color_);
}

}  // namespace dunmere
