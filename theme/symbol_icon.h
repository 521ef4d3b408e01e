// SymbolIcon: one of the interface's own icons, drawn as vectors in a font's size and weight, and its drawing.
#pragma once

#include <QColor>
#include <QFont>
#include <QPainterPath>
#include <QPointF>
#include <QQuickPaintedItem>
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

/// Sits in a row of text like a character of that size: one line high, centred on the capitals, its baseline where
/// theirs is. An unknown name draws nothing and logs a warning. Main thread, like every item.
class SymbolIcon : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString systemImage MEMBER systemImage_ NOTIFY changed FINAL)
  /// The point size of the text that the icon goes with, in device-independent pixels.
  Q_PROPERTY(qreal pixelSize MEMBER pixelSize_ NOTIFY changed FINAL)
  /// As a font's weight: 400 regular, 500 medium, 600 semibold.
  Q_PROPERTY(int weight MEMBER weight_ NOTIFY changed FINAL)
  Q_PROPERTY(QColor color MEMBER color_ NOTIFY changed FINAL)

 public:
  explicit SymbolIcon(QQuickItem* parent = nullptr);

  void paint(QPainter* painter) override;

 Q_SIGNALS:
  void changed();

 private:
  void measure();

  QString systemImage_;
  qreal pixelSize_ = 14;
  int weight_ = QFont::Normal;
  QColor color_ = Qt::black;
};

}  // namespace dunmere
