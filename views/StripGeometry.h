#pragma once

#include <QPainterPath>
#include <QRectF>
#include <QSizeF>
#include <optional>
#include <vector>

namespace quibel {

/// How a handle is met: by the keyboard's focus, and by the pointer over it.
struct HandleState {
  bool focused = false;
  bool hovered = false;

  friend bool operator==(const HandleState&, const HandleState&) = default;
};

/// What the waveform strip shows besides the envelope: times in seconds, and how
/// its handles are met.
struct StripState {
  double duration = 0;
  double start = 0;
  double end = 0;
  double playhead = 0;
  HandleState startHandle = {};
  HandleState endHandle = {};
  /// How far a light has swept over the strip, 0 … 1, while its song is analysed.
  std::optional<double> sweep = {};

  friend bool operator==(const StripState&, const StripState&) = default;
};

/// Where the layers of a strip lie, in points from its left and top edges.
/// Nothing is clipped to the strip.
struct StripGeometry {
  double startX = 0;
  double endX = 0;
  QRectF fragment;                 ///< startX … endX, full height; no width where they are reversed
  std::optional<QRectF> playhead;  ///< only while it is in the fragment, bounds included
  std::optional<QRectF> sweep;     ///< the light, brightest in its middle
};

inline constexpr double stripCornerRadius = 14;
inline constexpr double handleHitWidth = 28;

StripGeometry stripGeometry(const StripState& state, QSizeF size);

/// Whole points of the strip, side by side.
struct Columns {
  int left = 0;
  int width = 0;

  friend bool operator==(const Columns&, const Columns&) = default;
};

/// The columns that grab a handle at `x`: those that its 28 points touch. The end
/// handle lies above the start handle and leaves out a first column that it only
/// touches. So the start keeps a column of its own, left of the end's, however
/// little they are apart.
Columns startHandleColumns(double x);
Columns endHandleColumns(double x);

/// A handle's bar and the grip on it, centred on `x` of a strip `height` points high.
QRectF handleBar(double x, double height);
QRectF handleGrip(double x, double height);
/// The square of the three lines on the grip.
QRectF handleLines(double x, double height);

/// One vertical line for each value, in the middle of its column: a value of 1
/// reaches 90 % of half the height, and none is shorter than 2 points. Values
/// are drawn as they come, also those outside 0 … 1.
QPainterPath envelopePath(const std::vector<double>& samples, QSizeF size);

/// 62 % of a column, at least 1 point. `count` is greater than 0.
double envelopeLineWidth(std::size_t count, double width);

}  // namespace quibel
