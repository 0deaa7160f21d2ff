#include "views/DeviceGrid.h"

#include <algorithm>
#include <cmath>

namespace quibel {
namespace {

constexpr double farAway = 1e6;  // points; no view is that wide

double edge(double points, double scale, double fraction) {
  const double finite = std::isnan(points) ? 0 : std::clamp(points, -farAway, farAway);
  return finite * scale + fraction;
}

}  // namespace

DeviceGrid DeviceGrid::of(const QPainter& painter) {
  const auto toDevice = painter.deviceTransform();
  const auto inPixel = [](double x) {
    const double fraction = x - std::floor(x);
    // The sums behind a whole number may end a hair below it.
    return fraction > 1 - 1e-6 ? 0 : fraction;
  };
  return {toDevice.m11(), QPointF(inPixel(toDevice.dx()), inPixel(toDevice.dy()))};
}

QRect DeviceGrid::snapped(const QRectF& points) const {
  const auto pixel = [this](double p, double offset) {
    return static_cast<int>(std::lround(edge(p, scale, offset)));
  };
  const QPoint topLeft(pixel(points.left(), fraction.x()), pixel(points.top(), fraction.y()));
  const QPoint end(pixel(points.right(), fraction.x()), pixel(points.bottom(), fraction.y()));
  return {topLeft, QSize(end.x() - topLeft.x(), end.y() - topLeft.y())};
}

int DeviceGrid::snappedLength(double points) const {
  return std::max(1, static_cast<int>(std::lround(points * scale)));
}

QRect DeviceGrid::covering(const QRectF& points) const {
  return QRectF(points.x() * scale + fraction.x(), points.y() * scale + fraction.y(),
                points.width() * scale, points.height() * scale)
      .toAlignedRect();
}

QRect DeviceGrid::coveringPoints(const QRect& pixels) const {
  return QRectF((pixels.x() - fraction.x()) / scale, (pixels.y() - fraction.y()) / scale,
                pixels.width() / scale, pixels.height() / scale)
      .toAlignedRect();
}

void DeviceGrid::enter(QPainter& painter) const {
  painter.scale(1 / scale, 1 / scale);
  painter.translate(-fraction);
}

}  // namespace quibel
