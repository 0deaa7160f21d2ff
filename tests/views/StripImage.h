#pragma once

#include <QImage>
#include <QPainter>
#include <cmath>
#include <vector>

#include "tests/views/Pixels.h"
#include "views/StripPainter.h"

namespace quibel {

/// The strip painted over white on an image of its own, for looking at pixels.
struct StripImage {
  QSizeF size;
  double ratio = 1;
  Colors colors = quibel::colors(QPalette(QColor(0xef, 0xef, 0xef)));
  std::vector<double> samples = {};

  QImage blank() const {
    QImage image((size * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::white);
    return image;
  }

  QImage paint(const StripState& state) const {
    StripPainter strip;
    strip.setSamples(samples);
    auto image = blank();
    QPainter painter(&image);
    strip.paint(painter, state, size, colors, QRect(QPoint(), size.toSize()));
    return image;
  }

  /// The pixel of `image` that holds the point (x, y).
  QColor at(const QImage& image, double x, double y) const {
    return image.pixelColor(static_cast<int>(std::floor(x * ratio)),
                            static_cast<int>(std::floor(y * ratio)));
  }
};

}  // namespace quibel
