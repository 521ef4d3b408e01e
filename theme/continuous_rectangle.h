// ContinuousRectangle: a filled and optionally outlined rectangle with continuous corners, smooth on every renderer.
#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace dunmere {

/// Main thread, like every item. Lengths are in device-independent pixels. The outline lies inside the item's bounds.
class ContinuousRectangle : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(qreal radius READ radius WRITE setRadius NOTIFY radiusChanged FINAL)
  Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged FINAL)
  Q_PROPERTY(QColor borderColor READ borderColor WRITE setBorderColor NOTIFY borderColorChanged FINAL)
  Q_PROPERTY(qreal borderWidth READ borderWidth WRITE setBorderWidth NOTIFY borderWidthChanged FINAL)

 public:
  explicit ContinuousRectangle(QQuickItem* parent = nullptr);

  qreal radius() const { return radius_; }
  void setRadius(qreal radius);
  QColor color() const { return color_; }
  void setColor(const QColor& color);
  QColor borderColor() const { return borderColor_; }
  void setBorderColor(const QColor& color);
  qreal borderWidth() const { return borderWidth_; }
  void setBorderWidth(qreal width);

  void paint(QPainter* painter) override;

 Q_SIGNALS:
  void radiusChanged();
  void colorChanged();
  void borderColorChanged();
  void borderWidthChanged();

 private:
  qreal radius_ = 0;
  QColor color_ = Qt::transparent;
  QColor borderColor_ = Qt::transparent;
  qreal borderWidth_ = 0;
};

}  // namespace dunmere
