#include "views/StripGeometry.h"

#include <algorithm>
#include <cmath>

#include "views/SelectionGeometry.h"

namespace quibel {
namespace {

QRectF centred(double x, double height, double itemWidth, double itemHeight) {
  return {x - itemWidth / 2, (height - itemHeight) / 2, itemWidth, itemHeight};
}

// A handle beyond any screen is out of reach, however far it is.
double reachable(double x) {
  constexpr double farAway = 1e6;
  return std::isnan(x) ? 0 : std::clamp(x, -farAway, farAway);
}

Columns between(double left, double right) {
  return {static_cast<int>(left), static_cast<int>(right - left)};
}

}  // namespace

StripGeometry stripGeometry(const StripState& state, QSizeF size) {
  const auto x = [&](double time) { return position(time, state.duration, size.width()); };
  StripGeometry geometry;
  geometry.startX = x(state.start);
  geometry.endX = x(state.end);
  const double width = std::max(0.0, geometry.endX - geometry.startX);
  geometry.fragment = QRectF(geometry.startX, 0, width, size.height());
  if (state.start <= state.playhead && state.playhead <= state.end) {
    geometry.playhead = QRectF(x(state.playhead), 0, 2, size.height());
  }
  if (state.sweep) {
    constexpr double light = 200;  // points
    const double left = *state.sweep * (size.width() + light) - light;
    geometry.sweep = QRectF(left, 0, light, size.height());
  }
  return geometry;
}

Columns startHandleColumns(double x) {
  constexpr double half = handleHitWidth / 2;
  return between(std::floor(reachable(x) - half), std::ceil(reachable(x) + half));
}

Columns endHandleColumns(double x) {
  constexpr double half = handleHitWidth / 2;
  return between(std::ceil(reachable(x) - half), std::ceil(reachable(x) + half));
}

QRectF handleBar(double x, double height) { return centred(x, height, 4, height); }
QRectF handleGrip(double x, double height) { return centred(x, height, 18, 38); }
QRectF handleLines(double x, double height) { return centred(x, height, 10, 10); }

QPainterPath envelopePath(const std::vector<double>& samples, QSizeF size) {
  QPainterPath path;
  const double mid = size.height() / 2;
  const double step = size.width() / static_cast<double>(samples.size());
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double x = static_cast<double>(i) * step + step / 2;
    const double half = std::max(1.0, samples[i] * mid * 0.9);
    path.moveTo(x, mid - half);
    path.lineTo(x, mid + half);
  }
  return path;
}

double envelopeLineWidth(std::size_t count, double width) {
  return std::max(1.0, width / static_cast<double>(count) * 0.62);
}

}  // namespace quibel
