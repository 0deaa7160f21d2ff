#pragma once

#include <QColor>
#include <QPainter>
#include <QRectF>

namespace quibel {

/// The application's own pictures, one family of line drawings in one colour.
enum class Symbol {
  waveformBadgePlus,
  musicNote,
  repeat,
  stopFill,
  squareAndArrowDown,
  line3Horizontal,
  windowClose,
  windowMinimise,
  windowMaximise,
  windowRestore,
};

/// Paints `symbol` in `color` to fill `rect` of the painter's coordinates,
/// turned clockwise by `degrees`. It is drawn afresh for the painter's own
/// device pixels and placed on their grid, so it is sharp at any scale.
void paintSymbol(QPainter& painter, Symbol symbol, const QRectF& rect, const QColor& color,
                 double degrees = 0);

}  // namespace quibel
