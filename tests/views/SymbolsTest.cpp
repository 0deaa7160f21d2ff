#include <QSvgRenderer>

#include "tests/views/Pixels.h"
#include "views/Symbols.h"

namespace quibel {
namespace {

struct Named {
  Symbol symbol;
  const char* name;
};

constexpr Named symbols[] = {
    {Symbol::waveformBadgePlus, "waveform.badge.plus"},
    {Symbol::musicNote, "music.note"},
    {Symbol::repeat, "repeat"},
    {Symbol::stopFill, "stop.fill"},
    {Symbol::squareAndArrowDown, "square.and.arrow.down"},
    {Symbol::line3Horizontal, "line.3.horizontal"},
    {Symbol::windowClose, "window.close"},
    {Symbol::windowMinimise, "window.minimise"},
    {Symbol::windowMaximise, "window.maximise"},
    {Symbol::windowRestore, "window.restore"},
};

constexpr QRect place(0, 0, 48, 48);

QImage painted(Symbol symbol, const QColor& color) {
  QImage image(place.size(), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  paintSymbol(painter, symbol, place, color);
  return image;
}

QImage drawing(const char* name) {
  QSvgRenderer renderer(QStringLiteral(":/symbols/%1.svg").arg(QLatin1String(name)));
  EXPECT_TRUE(renderer.isValid()) << name;
  QImage image(place.size(), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  renderer.render(&painter, place);
  return image;
}

TEST(Symbols, EachIsTheDrawingOfItsName) {
  for (const auto& [symbol, name] : symbols) {
    EXPECT_EQ(painted(symbol, Qt::black), drawing(name)) << name;
  }
}

TEST(Symbols, NoTwoLookTheSame) {
  for (const auto& one : symbols) {
    for (const auto& other : symbols) {
      if (one.symbol == other.symbol) continue;
      EXPECT_NE(painted(one.symbol, Qt::black), painted(other.symbol, Qt::black))
          << one.name << " and " << other.name;
    }
  }
}

TEST(Symbols, EachTakesTheColourItIsPaintedIn) {
  const QColor color(0x20, 0x80, 0xc0);
  for (const auto& [symbol, name] : symbols) {
    const auto image = painted(symbol, color);
    int opaque = 0;
    int inColor = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        const auto pixel = image.pixelColor(x, y);
        opaque += pixel.alpha() == 255;
        inColor += pixel.alpha() == 255 && alike(pixel, color);
      }
    }
    EXPECT_GT(opaque, 0) << name;
    EXPECT_EQ(inColor, opaque) << name;
  }
}

}  // namespace
}  // namespace quibel
