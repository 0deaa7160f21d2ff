#include "views/StripPainter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "views/EnvelopeImage.h"
#include "views/Symbols.h"
#include "views/Tint.h"

namespace quibel {
namespace {

// All of a strip's edges on its device pixels.
struct PixelLayers {
  QRect bounds;
  QRect fragment;
  QRect playhead;  // empty where there is none
  QRect sweep;     // the light, empty where there is none
  int startX = 0;
  int endX = 0;
};

PixelLayers pixelLayers(const StripState& state, QSizeF size, const DeviceGrid& grid) {
  const auto geometry = stripGeometry(state, size);
  PixelLayers layers;
  layers.bounds = grid.snapped(QRectF(QPointF(), size));
  layers.fragment = grid.snapped(geometry.fragment);
  layers.startX = layers.fragment.left();
  layers.endX = grid.snapped(QRectF(geometry.endX, 0, 0, 0)).left();
  if (geometry.playhead) {
    layers.playhead = grid.snapped(*geometry.playhead);
    layers.playhead.setWidth(grid.snappedLength(geometry.playhead->width()));
  }
  if (geometry.sweep) layers.sweep = grid.snapped(*geometry.sweep);
  return layers;
}

// A light that is brightest in its middle, a column of pixels at a time, so that it
// is the same wherever it is cut.
void paintSweep(QPainter& painter, const QRect& sweep, const QRect& pixels, bool isDark) {
  const double brightest = isDark ? 0.1 : 0.5;
  const auto seen = sweep & pixels;
  for (int x = seen.left(); x <= seen.right(); ++x) {
    const double rise = std::sin(std::numbers::pi * (x + 0.5 - sweep.left()) / sweep.width());
    painter.fillRect(x, seen.top(), 1, seen.height(),
                     withOpacity(Qt::white, brightest * rise * rise));
  }
}

// The same geometry as in points, `x` being a pixel edge of `grid`.
QRectF inPixels(const QRectF& aroundZero, int x, const DeviceGrid& grid, const QRect& bounds) {
  const double scale = grid.scale;
  return {x + aroundZero.x() * scale, bounds.top() + aroundZero.y() * scale,
          aroundZero.width() * scale, aroundZero.height() * scale};
}

constexpr double focusRingGap = 2;    // points between grip and ring
constexpr double focusRingWidth = 2;  // points

QRectF focusRing(double height) {
  constexpr double offset = focusRingGap + focusRingWidth / 2;
  return handleGrip(0, height).adjusted(-offset, -offset, offset, offset);
}

void drawCapsule(QPainter& painter, const QRectF& rect) {
  const double radius = rect.width() / 2;
  painter.drawRoundedRect(rect, radius, radius);
}

struct HandleLook {
  int x;
  QColor color;
  QColor hovered;
  HandleState state;
};

void paintHandle(QPainter& painter, const HandleLook& handle, const Colors& colors,
                 const DeviceGrid& grid, const QRect& bounds) {
  const double height = bounds.height() / grid.scale;
  const auto place = [&](const QRectF& r) { return inPixels(r, handle.x, grid, bounds); };
  const auto color = handle.state.hovered ? handle.hovered : handle.color;
  painter.fillRect(place(handleBar(0, height)), color);
  painter.setPen(Qt::NoPen);
  painter.setBrush(color);
  drawCapsule(painter, place(handleGrip(0, height)));
  if (handle.state.focused) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colors.text, focusRingWidth * grid.scale));
    drawCapsule(painter, place(focusRing(height)));
  }
  paintSymbol(painter, Symbol::line3Horizontal, place(handleLines(0, height)), Qt::white, 90);
}

// The pixels that a handle at `x` may touch, its focus ring included.
QRect handlePixels(int x, const DeviceGrid& grid, const QRect& bounds) {
  const double reach = 9 + focusRingGap + focusRingWidth;
  const int pixels = static_cast<int>(std::ceil(reach * grid.scale)) + 1;
  return {x - pixels, bounds.top(), 2 * pixels, bounds.height()};
}

QRect between(int a, int b, const QRect& bounds) {
  const auto [left, right] = std::minmax(a, b);
  return {left, bounds.top(), right - left, bounds.height()};
}

QPainterPath roundedRect(const QRectF& rect, double radius) {
  QPainterPath path;
  path.addRoundedRect(rect, radius, radius);
  return path;
}

bool touchesCorner(const QRect& pixels, const QRect& bounds, int radius) {
  const auto inner = bounds.adjusted(radius, 0, -radius, 0);
  return pixels.left() < inner.left() || pixels.right() > inner.right();
}

}  // namespace

void StripPainter::setSamples(const std::vector<double>& samples) {
  if (samples == samples_) return;
  samples_ = samples;
  stroked_ = false;
}

void StripPainter::strokeEnvelope() {
  const auto& [size, grid, colors] = key_;
  accentEnvelope_ = strokedEnvelope(samples_, size, grid, colors.accent);
  greyEnvelope_ = tinted(accentEnvelope_, withOpacity(colors.secondary, 0.4));
  stroked_ = true;
}

QImage StripPainter::composed(const QRect& pixels, const StripState& state) const {
  const auto& [size, grid, colors] = key_;
  const auto layers = pixelLayers(state, size, grid);
  const double radius = stripCornerRadius * grid.scale;

  QImage image(pixels.size(), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(-pixels.topLeft());

  painter.fillRect(layers.bounds, colors.stripGround);
  painter.fillRect(layers.bounds, withOpacity(Qt::black, 0.09));
  paintSweep(painter, layers.sweep, pixels, colors.isDark);
  if (!greyEnvelope_.isNull()) painter.drawImage(pixels.topLeft(), greyEnvelope_, pixels);
  const auto fragment = layers.fragment & pixels;
  if (!fragment.isEmpty()) {
    painter.fillRect(fragment, withOpacity(colors.accent, 0.17));
    if (!accentEnvelope_.isNull()) {
      painter.drawImage(fragment.topLeft(), accentEnvelope_, fragment);
    }
  }
  if (!layers.playhead.isEmpty()) painter.fillRect(layers.playhead, Qt::white);
  const HandleLook start{layers.startX, colors.green, colors.greenHovered, state.startHandle};
  const HandleLook end{layers.endX, colors.orange, colors.orangeHovered, state.endHandle};
  for (const auto& handle : {start, end}) {
    if (handlePixels(handle.x, grid, layers.bounds).intersects(pixels)) {
      paintHandle(painter, handle, colors, grid, layers.bounds);
    }
  }

  if (touchesCorner(pixels, layers.bounds, static_cast<int>(std::ceil(radius)))) {
    auto outside = roundedRect(layers.bounds, radius);
    outside.addRect(QRectF(layers.bounds).adjusted(-1, -1, 1, 1));
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.fillPath(outside, Qt::black);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
  }

  // The outline lies inside the border, so that it is a whole line of pixels. A
  // filled ring, because thin strokes depend on where they are clipped.
  const int line = grid.snappedLength(1);
  auto ring = roundedRect(layers.bounds, radius);
  ring.addPath(roundedRect(layers.bounds.adjusted(line, line, -line, -line), radius - line));
  painter.fillPath(ring, withOpacity(colors.secondary, 0.2));
  return image;
}

void StripPainter::paint(QPainter& painter, const StripState& state, QSizeF size,
                         const Colors& colors, const QRegion& dirty) {
  const Key key{size, DeviceGrid::of(painter), colors};
  if (!stroked_ || key != key_) {
    key_ = key;
    strokeEnvelope();
  }
  const auto bounds = key.grid.snapped(QRectF(QPointF(), size));
  painter.save();
  key.grid.enter(painter);
  for (const QRect& rect : dirty) {
    const auto pixels = key.grid.covering(rect) & bounds;
    if (!pixels.isEmpty()) painter.drawImage(pixels.topLeft(), composed(pixels, state));
  }
  painter.restore();
}

QRegion StripPainter::changed(const StripState& before, const StripState& after,
                              QSizeF size) const {
  if (before == after) return {};
  const auto& grid = key_.grid;
  const auto a = pixelLayers(before, size, grid);
  const auto b = pixelLayers(after, size, grid);
  QRegion pixels;
  const auto handle = [&](int oldX, int newX, bool metOtherwise) {
    if (oldX == newX && !metOtherwise) return;
    pixels += handlePixels(oldX, grid, a.bounds);
    pixels += handlePixels(newX, grid, a.bounds);
    pixels += between(oldX, newX, a.bounds);
  };
  handle(a.startX, b.startX, before.startHandle != after.startHandle);
  handle(a.endX, b.endX, before.endHandle != after.endHandle);
  if (a.sweep != b.sweep) pixels += QRegion(a.sweep) + b.sweep;
  if (a.playhead != b.playhead) pixels += QRegion(a.playhead) + b.playhead;

  QRegion points;
  for (const QRect& rect : pixels& a.bounds) points += grid.coveringPoints(rect);
  return points;
}

}  // namespace quibel
