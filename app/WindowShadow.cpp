#include "app/WindowShadow.h"

#include <QLinearGradient>
#include <QPainterPath>
#include <QRadialGradient>
#include <array>

#include "views/Theme.h"

namespace quibel {
namespace {

constexpr double reach = 24;  // as far as the shadow is seen
constexpr double drop = 4;    // it lies below the window by that much

/// From the body's edge, at `from` (0 … 1), to where the shadow ends, at 1.
void fadeOut(QGradient& gradient, double from, double opacity) {
  constexpr int steps = 8;
  gradient.setColorAt(0, QColor::fromRgbF(0, 0, 0, static_cast<float>(opacity)));
  for (int step = 0; step <= steps; ++step) {
    const double t = static_cast<double>(step) / steps;
    const double left = (1 - t) * (1 - t) * (1 - t);
    gradient.setColorAt(from + (1 - from) * t,
                        QColor::fromRgbF(0, 0, 0, static_cast<float>(opacity * left)));
  }
}

void paintEdge(QPainter& painter, const QRectF& strip, QPointF from, QPointF to, double opacity) {
  QLinearGradient gradient(from, to);
  fadeOut(gradient, 0, opacity);
  painter.fillRect(strip, gradient);
}

}  // namespace

void paintShadow(QPainter& painter, const QRectF& body, bool isActive) {
  const double opacity = isActive ? 0.36 : 0.22;
  const auto shadow = body.translated(0, drop);
  const auto core = shadow.adjusted(cornerRadius, cornerRadius, -cornerRadius, -cornerRadius);
  constexpr double radius = cornerRadius + reach;
  for (const auto& centre :
       {core.topLeft(), core.topRight(), core.bottomLeft(), core.bottomRight()}) {
    QRadialGradient gradient(centre, radius);
    fadeOut(gradient, cornerRadius / radius, opacity);
    const double x = centre.x() == core.left() ? centre.x() - radius : centre.x();
    const double y = centre.y() == core.top() ? centre.y() - radius : centre.y();
    painter.fillRect(QRectF(x, y, radius, radius), gradient);
  }
  paintEdge(painter, {core.left(), shadow.top() - reach, core.width(), reach}, shadow.topLeft(),
            shadow.topLeft() - QPointF(0, reach), opacity);
  paintEdge(painter, {core.left(), body.bottom(), core.width(), drop + reach}, shadow.bottomLeft(),
            shadow.bottomLeft() + QPointF(0, reach), opacity);
  paintEdge(painter, {shadow.left() - reach, core.top(), reach, core.height()}, shadow.topLeft(),
            shadow.topLeft() - QPointF(reach, 0), opacity);
  paintEdge(painter, {shadow.right(), core.top(), reach, core.height()}, shadow.topRight(),
            shadow.topRight() + QPointF(reach, 0), opacity);
}

RoundedCorner::RoundedCorner(Qt::Corner corner, QWidget* window)
    : QWidget(window), corner_(corner) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  setFixedSize(cornerRadius, cornerRadius);
  // A name that keeps a widget from assistive technology.
  setObjectName(QStringLiteral("qt_rubberband"));
}

void RoundedCorner::place(const QRect& body, bool hasShadow) {
  body_ = body;
  hasShadow_ = hasShadow;
  const bool isLeft = corner_ == Qt::TopLeftCorner || corner_ == Qt::BottomLeftCorner;
  const bool isTop = corner_ == Qt::TopLeftCorner || corner_ == Qt::TopRightCorner;
  move(isLeft ? body.left() : body.right() + 1 - width(),
       isTop ? body.top() : body.bottom() + 1 - height());
  raise();
}

void RoundedCorner::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(-pos());
  QPainterPath inside;
  inside.addRoundedRect(body_, cornerRadius, cornerRadius);
  QPainterPath outside;
  outside.addRect(geometry());
  painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
  painter.fillPath(outside.subtracted(inside), Qt::black);
  if (hasShadow_) {
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
    paintShadow(painter, body_, isActiveWindow());
  }
  painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
  painter.setPen(withOpacity(colors(palette()).text, 0.14));
  painter.drawRoundedRect(QRectF(body_).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius - 0.5,
                          cornerRadius - 0.5);
}

}  // namespace quibel
