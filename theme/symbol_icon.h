// SymbolIcon: one of the interface's own icons, drawn as vectors in a font's size and weight.
#pragma once

#include <QColor>
#include <QFont>
#include <QQuickPaintedItem>

namespace dunmere {

/// Sits in a row of text like a character of that size: one line high, centred on the capitals, its baseline where
/// theirs is. A name that it does not know draws nothing and is warned about. Main thread, like every item.
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
