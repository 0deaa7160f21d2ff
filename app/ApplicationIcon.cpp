#include "app/ApplicationIcon.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace quibel {

QIcon applicationIcon() {
  // Small, it is drawn with every edge on a pixel's.
  const auto drawingFor = [](int pixels) {
    return pixels == 16 || pixels == 24
               ? QStringLiteral(":/icons/org.quibel.quibel-%1.svg").arg(pixels)
               : QStringLiteral(":/icons/org.quibel.quibel.svg");
  };
  QIcon icon;
  for (const int pixels : {16, 24, 32, 48, 64, 128, 256}) {
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QSvgRenderer(drawingFor(pixels)).render(&painter);
    painter.end();
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace quibel
