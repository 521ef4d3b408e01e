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
  Q_PROPERTY(QString systemImage READ systemImage WRITE setSystemImage NOTIFY systemImageChanged FINAL)
  Q_PROPERTY(qreal pixelSize READ pixelSize WRITE setPixelSize NOTIFY pixelSizeChanged FINAL)
  Q_PROPERTY(int weight READ weight WRITE setWeight NOTIFY weightChanged FINAL)
  Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged FINAL)

 public:
  explicit SymbolIcon(QQuickItem* parent = nullptr);

  const QString& systemImage() const { return systemImage_; }
  void setSystemImage(const QString& name);
  /// The point size of the text that the icon goes with, in device-independent pixels.
  qreal pixelSize() const { return pixelSize_; }
  void setPixelSize(qreal size);
  /// As a font's weight: 400 regular, 500 medium, 600 semibold.
  int weight() const { return weight_; }
  void setWeight(int weight);
  QColor color() const { return color_; }
  void setColor(const QColor& color);

  void paint(QPainter* painter) override;

 Q_SIGNALS:
  void systemImageChanged();
  void pixelSizeChanged();
  void weightChanged();
  void colorChanged();

 private:
  void measure();

  QString systemImage_;
  qreal pixelSize_ = 14;
  int weight_ = QFont::Normal;
  QColor color_ = Qt::black;
};

}  // namespace dunmere
