#include "app/ApplicationIcon.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace quibel {

QIcon applicationIcon() {
  QSvgRenderer drawing(QStringLiteral(":/icons/org.quibel.quibel.svg"));
  QIcon icon;
  for (const int pixels : {16, 24, 32, 48, 64, 128, 256}) {
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    drawing.render(&painter);
    painter.end();
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace quibel
