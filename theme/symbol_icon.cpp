#include "theme/symbol_icon.h"

#include <QDebug>
#include <QPainter>
#include <QtMath>
#include <algorithm>
#include <array>
#include <cmath>

namespace dunmere {
namespace {

/// Every symbol is one line of text high.
constexpr qreal symbolHeight = 1.2;
constexpr qreal cornerEms = 0.14;

qreal fit(qreal position, qreal stroke) {
  return std::round(position - stroke / 2) + stroke / 2;
}

void addLine(SymbolDrawing& drawing, QPointF from, QPointF to) {
  drawing.strokes.moveTo(from);
  drawing.strokes.lineTo(to);
}

void addBox(SymbolDrawing& drawing, QPointF topLeft, QPointF bottomRight, qreal radius) {
  drawing.strokes.addRoundedRect(QRectF(topLeft, bottomRight), radius, radius);
}

void addDot(SymbolDrawing& drawing, QPointF centre, qreal radius) {
  drawing.fills.addEllipse(centre, radius, radius);
}

void splitRectangle(const SymbolGrid& grid, SymbolDrawing& drawing) {
  addBox(drawing, grid.fitted(-0.58, -0.43), grid.fitted(0.58, 0.43), cornerEms * grid.em);
  addLine(drawing, grid.fitted(-0.2, -0.43), grid.fitted(-0.2, 0.43));
  addLine(drawing, grid.fitted(0.2, -0.43), grid.fitted(0.2, 0.43));
}

void sliders(const SymbolGrid& grid, SymbolDrawing& drawing) {
  struct Track {
    qreal y, knob;
  };
  constexpr std::array tracks{Track{-0.36, -0.22}, Track{0, 0.24}, Track{0.36, -0.22}};
  for (const Track& track : tracks) {
    const QPointF knob = grid.fitted(track.knob, track.y);
    const qreal radius = std::max(0.13 * grid.em, 1.5 * grid.stroke);
    addLine(drawing, grid.fitted(-0.56, track.y), knob - QPointF(radius, 0));
    drawing.strokes.addEllipse(knob, radius, radius);
    addLine(drawing, knob + QPointF(radius, 0), grid.fitted(0.56, track.y));
  }
}

void externalDrive(const SymbolGrid& grid, SymbolDrawing& drawing) {
  addBox(drawing, grid.fitted(-0.58, -0.37), grid.fitted(0.58, 0.37), cornerEms * grid.em);
  addLine(drawing, grid.fitted(-0.58, 0.03), grid.fitted(0.58, 0.03));
  addDot(drawing, grid.free(0.37, 0.21), std::max(0.065 * grid.em, 0.75));
}

/// A drive seen from the front and a little from above: its front is a box, its top narrows towards the back.
void internalDrive(const SymbolGrid& grid, SymbolDrawing& drawing) {
  const qreal radius = cornerEms * grid.em;
  const QPointF frontLeft = grid.fitted(-0.56, 0), frontRight = grid.fitted(0.56, 0);
  addBox(drawing, frontLeft, grid.fitted(0.56, 0.4), radius);
  const QPointF backLeft = grid.fitted(-0.38, -0.42), backRight = grid.fitted(0.38, -0.42);
  drawing.strokes.moveTo(frontLeft + QPointF(0, radius));
  drawing.strokes.lineTo(backLeft + QPointF(-0.04 * grid.em, 0.1 * grid.em));
  drawing.strokes.quadTo(backLeft, backLeft + QPointF(0.12 * grid.em, 0));
  drawing.strokes.lineTo(backRight - QPointF(0.12 * grid.em, 0));
  drawing.strokes.quadTo(backRight, backRight + QPointF(0.04 * grid.em, 0.1 * grid.em));
  drawing.strokes.lineTo(frontRight + QPointF(0, radius));
  addDot(drawing, grid.free(0.36, 0.2), std::max(0.06 * grid.em, 0.75));
}

void trash(const SymbolGrid& grid, SymbolDrawing& drawing) {
  const qreal radius = 0.1 * grid.em;
  const QPointF lidLeft = grid.fitted(-0.44, -0.4), lidRight = grid.fitted(0.44, -0.4);
  addLine(drawing, lidLeft, lidRight);
  const QPointF handleLeft = grid.fitted(-0.17, -0.54), handleRight = grid.fitted(0.17, -0.54);
  drawing.strokes.moveTo(handleLeft.x(), lidLeft.y());
  drawing.strokes.lineTo(handleLeft);
  drawing.strokes.lineTo(handleRight);
  drawing.strokes.lineTo(handleRight.x(), lidLeft.y());
  const QPointF bottomLeft = grid.fitted(-0.29, 0.52), bottomRight = grid.fitted(0.29, 0.52);
  drawing.strokes.moveTo(grid.free(-0.35, -0.4).x(), lidLeft.y());
  drawing.strokes.lineTo(bottomLeft - QPointF(0.01 * grid.em, radius));
  drawing.strokes.quadTo(bottomLeft, bottomLeft + QPointF(radius, 0));
  drawing.strokes.lineTo(bottomRight - QPointF(radius, 0));
  drawing.strokes.quadTo(bottomRight, bottomRight + QPointF(0.01 * grid.em, -radius));
  drawing.strokes.lineTo(grid.free(0.35, -0.4).x(), lidLeft.y());
  addLine(drawing, grid.fitted(-0.12, -0.18), grid.fitted(-0.12, 0.3));
  addLine(drawing, grid.fitted(0.12, -0.18), grid.fitted(0.12, 0.3));
}

void folder(const SymbolGrid& grid, SymbolDrawing& drawing) {
  const qreal radius = cornerEms * grid.em;
  const QPointF topLeft = grid.fitted(-0.58, -0.44), bottomRight = grid.fitted(0.58, 0.44);
  const qreal shoulder = grid.fitted(0, -0.3).y();
  QPainterPath& path = drawing.strokes;
  path.moveTo(topLeft + QPointF(0, radius));
  path.quadTo(topLeft, topLeft + QPointF(radius, 0));
  path.lineTo(grid.free(-0.2, 0).x(), topLeft.y());
  path.lineTo(grid.free(-0.06, 0).x(), shoulder);
  path.lineTo(bottomRight.x() - radius, shoulder);
  path.quadTo(QPointF(bottomRight.x(), shoulder), QPointF(bottomRight.x(), shoulder + radius));
  path.lineTo(bottomRight - QPointF(0, radius));
  path.quadTo(bottomRight, bottomRight - QPointF(radius, 0));
  path.lineTo(topLeft.x() + radius, bottomRight.y());
  path.quadTo(QPointF(topLeft.x(), bottomRight.y()), QPointF(topLeft.x(), bottomRight.y() - radius));
  path.closeSubpath();
  addLine(drawing, grid.fitted(-0.58, -0.08), grid.fitted(0.58, -0.08));
}

void chevronRight(const SymbolGrid& grid, SymbolDrawing& drawing) {
  drawing.strokes.moveTo(grid.free(-0.17, -0.36));
  drawing.strokes.lineTo(grid.free(0.19, 0));
  drawing.strokes.lineTo(grid.free(-0.17, 0.36));
}

struct Symbol {
  QStringView name;
  qreal width;
  void (*draw)(const SymbolGrid&, SymbolDrawing&);
};

const std::array symbols{
    Symbol{u"rectangle.split.3x1", 1.25, splitRectangle},
    Symbol{u"slider.horizontal.3", 1.25, sliders},
    Symbol{u"externaldrive", 1.25, externalDrive},
    Symbol{u"internaldrive", 1.25, internalDrive},
    Symbol{u"trash", 1.0, trash},
    Symbol{u"folder", 1.25, folder},
    Symbol{u"chevron.right", 0.6, chevronRight},
};

const Symbol* symbolNamed(QStringView name) {
  const auto found = std::ranges::find(symbols, name, &Symbol::name);
  return found == symbols.end() ? nullptr : &*found;
}

/// Stroke width in ems: as heavy as the stems of text of this weight.
qreal strokeEms(int weight) {
  return 0.09 + (weight - QFont::Normal) * 0.00015;
}

/// A capital's height in ems.
constexpr qreal capitalHeight = 0.705;

}  // namespace

QPointF SymbolGrid::fitted(qreal x, qreal y) const {
  const QPointF point = free(x, y);
  return {fit(point.x(), stroke), fit(point.y(), stroke)};
}

QPointF SymbolGrid::free(qreal x, qreal y) const {
  return centre + QPointF(x, y) * em;
}

std::optional<QSizeF> symbolExtent(QStringView name) {
  const Symbol* symbol = symbolNamed(name);
  return symbol ? std::optional(QSizeF(symbol->width, symbolHeight)) : std::nullopt;
}

std::optional<SymbolDrawing> symbolDrawing(QStringView name, const SymbolGrid& grid) {
  const Symbol* symbol = symbolNamed(name);
  if (!symbol) return std::nullopt;
  SymbolDrawing drawing;
  symbol->draw(grid, drawing);
  return drawing;
}

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
