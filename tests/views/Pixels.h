#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QRect>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "views/Symbols.h"
#include "views/Theme.h"

namespace quibel {

/// The largest difference of two colours in red, green or blue.
inline int distance(const QColor& a, const QColor& b) {
  return std::max({std::abs(a.red() - b.red()), std::abs(a.green() - b.green()),
                   std::abs(a.blue() - b.blue())});
}

/// Whether two colours are the same but for rounding.
inline bool alike(const QColor& a, const QColor& b, int tolerance = 2) {
  return distance(a, b) <= tolerance;
}

#define EXPECT_ALIKE(actual, expected) \
  EXPECT_TRUE(alike(actual, expected)) \
      << testing::PrintToString(actual) << " is not " << testing::PrintToString(expected) << ' '

/// A desktop's scheme on a display of so many device pixels a point.
struct Display {
  bool isDark;
  double ratio;

  QPalette palette() const {
    const auto grey = [this](int light, int dark) {
      const int value = isDark ? dark : light;
      return QColor(value, value, value);
    };
    QPalette palette;
    palette.setColor(QPalette::Window, grey(0xef, 0x32));
    palette.setColor(QPalette::Base, grey(0xff, 0x1e));
    palette.setColor(QPalette::WindowText, grey(0, 0xff));
    palette.setColor(QPalette::Highlight, QColor(0x35, 0x84, 0xe4));
    return palette;
  }

  Colors colors() const { return quibel::colors(palette()); }
};

/// Both schemes at every usual ratio.
inline auto displays() {
  return testing::Values(Display{false, 1}, Display{false, 1.25}, Display{false, 1.5},
                         Display{false, 2}, Display{true, 1}, Display{true, 1.25},
                         Display{true, 1.5}, Display{true, 2});
}

inline std::string displayName(const testing::TestParamInfo<Display>& info) {
  return (info.param.isDark ? "DarkAt" : "LightAt") +
         std::to_string(static_cast<int>(info.param.ratio * 100)) + "Percent";
}

/// What a widget and all in it paint over `ground`.
class Picture {
 public:
  Picture(QWidget& widget, double ratio, const QColor& ground) : ratio_(ratio) {
    image_ = QImage((QSizeF(widget.size()) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image_.setDevicePixelRatio(ratio);
    image_.fill(ground);
    widget.render(&image_, {}, {}, QWidget::DrawChildren);
  }

  const QImage& image() const { return image_; }

  /// The pixel that holds a point of the widget.
  QColor at(QPointF point) const {
    return image_.pixelColor(static_cast<int>(std::floor(point.x() * ratio_)),
                             static_cast<int>(std::floor(point.y() * ratio_)));
  }

  /// Whether just this symbol is painted in `place`.
  bool shows(Symbol symbol, const QRectF& place, const QColor& color) const {
    auto expected = image_;
    QPainter painter(&expected);
    painter.fillRect(place, at(place.topLeft()));
    paintSymbol(painter, symbol, place, color);
    painter.end();
    return difference(image_, expected, pixelsOf(place)) <= 3;
  }

  /// The colour of `place`'s pixels that is farthest from the one at its corner: that of
  /// what is painted there, where any of it covers a whole pixel.
  QColor inkIn(const QRectF& place) const {
    const auto ground = at(place.topLeft());
    QColor ink = ground;
    forEachPixel(pixelsOf(place), [&](int x, int y) {
      const auto pixel = image_.pixelColor(x, y);
      if (distance(pixel, ground) > distance(ink, ground)) ink = pixel;
    });
    return ink;
  }

 private:
  QRect pixelsOf(const QRectF& place) const {
    return QRectF(place.topLeft() * ratio_, place.size() * ratio_).toAlignedRect() & image_.rect();
  }

  static void forEachPixel(const QRect& pixels, const std::function<void(int x, int y)>& visit) {
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
      for (int x = pixels.left(); x <= pixels.right(); ++x) visit(x, y);
    }
  }

  static int difference(const QImage& a, const QImage& b, const QRect& pixels) {
    int largest = 0;
    forEachPixel(pixels, [&](int x, int y) {
      largest = std::max(largest, distance(a.pixelColor(x, y), b.pixelColor(x, y)));
    });
    return largest;
  }

  double ratio_;
  QImage image_;
};

}  // namespace quibel

/// Prints a colour in a failed expectation.
inline void PrintTo(const QColor& color, std::ostream* out) {
  *out << color.name(QColor::HexArgb).toStdString();
}

inline void PrintTo(const QRect& rect, std::ostream* out) {
  *out << rect.x() << ',' << rect.y() << ' ' << rect.width() << 'x' << rect.height();
}
