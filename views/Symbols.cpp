#include "views/Symbols.h"

#include <QImage>
#include <QPixmap>
#include <QPixmapCache>
#include <QSvgRenderer>

#include "views/Tint.h"

namespace quibel {
namespace {

QString fileName(Symbol symbol) {
  switch (symbol) {
    case Symbol::waveformBadgePlus:
      return QStringLiteral("waveform.badge.plus");
    case Symbol::musicNote:
      return QStringLiteral("music.note");
    case Symbol::repeat:
      return QStringLiteral("repeat");
    case Symbol::stopFill:
      return QStringLiteral("stop.fill");
    case Symbol::squareAndArrowDown:
      return QStringLiteral("square.and.arrow.down");
    case Symbol::line3Horizontal:
      return QStringLiteral("line.3.horizontal");
    case Symbol::windowClose:
      return QStringLiteral("window.close");
    case Symbol::windowMinimise:
      return QStringLiteral("window.minimise");
    case Symbol::windowMaximise:
      return QStringLiteral("window.maximise");
    case Symbol::windowRestore:
      return QStringLiteral("window.restore");
  }
  return {};
}

QPixmap drawn(Symbol symbol, QSize pixels, const QColor& color, double degrees) {
  QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPointF centre(pixels.width() / 2.0, pixels.height() / 2.0);
  painter.translate(centre);
  painter.rotate(degrees);
  painter.translate(-centre);
  QSvgRenderer(QStringLiteral(":/symbols/%1.svg").arg(fileName(symbol)))
      .render(&painter, QRectF(QPointF(), pixels));
  painter.end();
  return QPixmap::fromImage(tinted(std::move(image), color));
}

}  // namespace

void paintSymbol(QPainter& painter, Symbol symbol, const QRectF& rect, const QColor& color,
                 double degrees) {
  const auto toDevice = painter.deviceTransform();
  const auto device = toDevice.mapRect(rect);
  const QSize pixels(qMax(1, qRound(device.width())), qMax(1, qRound(device.height())));

  const auto key = QStringLiteral("quibel-symbol-%1-%2x%3-%4-%5")
                       .arg(static_cast<int>(symbol))
                       .arg(pixels.width())
                       .arg(pixels.height())
                       .arg(color.rgba())
                       .arg(degrees);
  QPixmap pixmap;
  if (!QPixmapCache::find(key, &pixmap)) {
    pixmap = drawn(symbol, pixels, color, degrees);
    QPixmapCache::insert(key, pixmap);
  }

  painter.save();
  // One unit of the painter becomes one device pixel, its origin staying put.
  painter.scale(1 / toDevice.m11(), 1 / toDevice.m22());
  const QPointF origin(toDevice.dx(), toDevice.dy());
  painter.drawPixmap(QPointF(device.topLeft().toPoint()) - origin, pixmap);
  painter.restore();
}

}  // namespace quibel
