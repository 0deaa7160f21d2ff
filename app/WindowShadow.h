#pragma once

#include <QColor>
#include <QMargins>
#include <QPainter>
#include <QRectF>
#include <QWidget>

namespace quibel {

/// Of a window's corners, in points.
inline constexpr int cornerRadius = 12;

/// The room that the shadow takes around a window, in points.
inline constexpr QMargins shadowMargins{24, 20, 24, 28};

/// Paints the shadow of the window whose body is `body`, fainter below one that is not active.
void paintShadow(QPainter& painter, const QRectF& body, bool isActive);

/// Makes one corner of a window's body round, above all that the window shows: takes away
/// what is outside the arc, shows the shadow there, and ends the window with a line.
class RoundedCorner : public QWidget {
  Q_OBJECT

 public:
  RoundedCorner(Qt::Corner corner, QWidget* window);

  /// Puts it into the corner of a body.
  void place(const QRect& body, bool hasShadow);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  const Qt::Corner corner_;
  QRect body_;
  bool hasShadow_ = false;
};

}  // namespace quibel
