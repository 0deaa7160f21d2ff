#include "views/EnvelopeImage.h"

#include <QPainterPathStroker>
#include <algorithm>
#include <cmath>

#include "views/StripGeometry.h"

namespace quibel {
namespace {

// Pixels stroked at a time. A path of 900 lines at once takes the rasteriser
// a second at two pixels a point, its lines in groups this wide a fortieth.
constexpr int tileWidth = 16;

// The lines `first` … `last` of an envelope's path.
QPainterPath lines(const QPainterPath& envelope, int first, int last) {
  QPainterPath path;
  for (int i = first; i <= last; ++i) {
    path.moveTo(envelope.elementAt(2 * i));
    path.lineTo(envelope.elementAt(2 * i + 1));
  }
  return path;
}

}  // namespace

QImage strokedEnvelope(const std::vector<double>& samples, QSizeF size, const DeviceGrid& grid,
                       const QColor& color) {
  const auto bounds = grid.snapped(QRectF(QPointF(), size));
  if (samples.empty() || bounds.isEmpty()) return {};
  const auto envelope = envelopePath(samples, size);
  const auto last = static_cast<int>(samples.size()) - 1;
  const double step = size.width() / static_cast<double>(samples.size());
  QPainterPathStroker stroker;
  stroker.setWidth(envelopeLineWidth(samples.size(), size.width()));
  stroker.setCapStyle(Qt::RoundCap);
  stroker.setJoinStyle(Qt::MiterJoin);

  QImage image(bounds.right() + 1, bounds.bottom() + 1, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  // Each pixel belongs to one tile and sees every line that touches it, so the
  // tiles together are the stroke of the whole path.
  for (int left = 0; left < image.width(); left += tileWidth) {
    const QRectF points = grid.coveringPoints({left, 0, tileWidth, 1});
    const auto column = [&](double x) {
      return static_cast<int>(std::clamp(std::floor(x / step), 0.0, static_cast<double>(last)));
    };
    auto outline = stroker.createStroke(lines(envelope, column(points.left() - stroker.width()),
                                              column(points.right() + stroker.width())));
    outline.setFillRule(Qt::WindingFill);
    painter.resetTransform();
    painter.setClipRect(left, 0, tileWidth, image.height());
    painter.translate(grid.fraction);
    painter.scale(grid.scale, grid.scale);
    painter.fillPath(outline, color);
  }
  return image;
}

}  // namespace quibel
