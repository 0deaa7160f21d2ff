#pragma once

#include <QColor>
#include <QImage>
#include <QSizeF>
#include <vector>

#include "views/DeviceGrid.h"

namespace quibel {

/// The envelope's path for a strip of `size` points, stroked in `color` with
/// round caps, on the device pixels of `grid`; transparent elsewhere. Null for
/// no samples.
QImage strokedEnvelope(const std::vector<double>& samples, QSizeF size, const DeviceGrid& grid,
                       const QColor& color);

}  // namespace quibel
