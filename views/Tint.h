#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>

namespace quibel {

/// `image` in one colour, as opaque as it was.
inline QImage tinted(QImage image, const QColor& color) {
  if (image.isNull()) return image;
  QPainter painter(&image);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(image.rect(), color);
  return image;
}

}  // namespace quibel
