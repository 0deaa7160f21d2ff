#pragma once

#include <QPainter>
#include <QPointF>
#include <QRect>
#include <QRectF>

namespace quibel {

/// How a view's points fall on device pixels. Pixel 0 is the one that the
/// view's left or top edge falls into; at a fractional scale the edge may lie
/// inside it.
struct DeviceGrid {
  double scale = 1;       ///< device pixels a point
  QPointF fraction = {};  ///< the view's origin within pixel 0, 0 … 1

  /// The grid that the painter's origin and scale fall on. The painter is not rotated.
  static DeviceGrid of(const QPainter& painter);

  /// `points` with each edge on the nearest pixel edge. Far outside any screen
  /// it is cut off, so that any input, infinite or NaN, gives a valid rectangle.
  QRect snapped(const QRectF& points) const;

  /// `width` points as whole pixels, at least 1.
  int snappedLength(double points) const;

  /// The pixels that `points` touches, and the points that `pixels` touches.
  QRect covering(const QRectF& points) const;
  QRect coveringPoints(const QRect& pixels) const;

  /// Lets the painter draw in pixels of this grid instead of the view's points.
  void enter(QPainter& painter) const;

  friend bool operator==(const DeviceGrid&, const DeviceGrid&) = default;
};

}  // namespace quibel
