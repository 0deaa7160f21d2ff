#include "views/Theme.h"

#include <QApplication>
#include <QFontInfo>
#include <algorithm>
#include <cmath>

namespace quibel {
namespace {

constexpr double legibleContrast = 4.5;  // WCAG 2.1, level AA, text
constexpr double highContrast = 7;       // the same, level AAA

// A palette of black and white, 21 : 1, asks for all the contrast there is. No
// other comes near: black on the usual light grey is 18 : 1.
constexpr double contrastOfBlackAndWhite = 20;

// The highlight of Qt's built-in palette: no desktop has chosen an accent.
constexpr QRgb builtInHighlight = qRgb(48, 140, 198);

double linear(float channel) {
  const double c = channel;
  return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& c) {
  return 0.2126 * linear(c.redF()) + 0.7152 * linear(c.greenF()) + 0.0722 * linear(c.blueF());
}

QColor opaque(QColor color) {
  color.setAlpha(255);
  return color;
}

// The faintest mix of `text` with that contrast to all of `backgrounds`.
template <std::size_t n>
QColor faintest(const QColor& text, const QColor (&backgrounds)[n], double contrast) {
  for (int percent = 58; percent < 100; ++percent) {
    const auto mix = blended(text, percent / 100.0, backgrounds[0]);
    if (std::ranges::all_of(backgrounds, [&](const QColor& background) {
          return contrastRatio(mix, background) >= contrast;
        })) {
      return mix;
    }
  }
  return text;
}

// `accent`, darkened only as far as white text on it needs.
QColor fillForWhiteText(const QColor& accent, double contrast) {
  auto fill = accent;
  for (int step = 0; step < 100 && contrastRatio(Qt::white, fill) < contrast; ++step) {
    fill = blended(Qt::black, 0.02, fill);
  }
  return fill;
}

}  // namespace

bool isBuiltInPalette(const QPalette& palette) {
  return palette.color(QPalette::Active, QPalette::Highlight).rgb() == builtInHighlight;
}

QColor withOpacity(QColor color, double opacity) {
  color.setAlphaF(static_cast<float>(color.alphaF() * opacity));
  return color;
}

QColor blended(const QColor& top, double opacity, const QColor& bottom) {
  const auto mix = [opacity](float a, float b) {
    return static_cast<float>(a * opacity + b * (1 - opacity));
  };
  return QColor::fromRgbF(mix(top.redF(), bottom.redF()), mix(top.greenF(), bottom.greenF()),
                          mix(top.blueF(), bottom.blueF()));
}

double contrastRatio(const QColor& a, const QColor& b) {
  const auto [low, high] = std::minmax({luminance(a), luminance(b)});
  return (high + 0.05) / (low + 0.05);
}

Colors colors(const QPalette& palette) {
  Colors c;
  c.windowBackground = opaque(palette.color(QPalette::Active, QPalette::Window));
  c.controlBackground = opaque(palette.color(QPalette::Active, QPalette::Base));
  c.text = opaque(palette.color(QPalette::Active, QPalette::WindowText));
  c.isDark = luminance(c.windowBackground) < luminance(c.text);

  const bool blackAndWhite = contrastRatio(c.text, c.windowBackground) > contrastOfBlackAndWhite;
  const double contrast = blackAndWhite ? highContrast : legibleContrast;

  const auto highlight = opaque(palette.color(QPalette::Active, QPalette::Highlight));
  const QColor blue = c.isDark ? QColor(0x3d, 0x95, 0xff) : QColor(0x0a, 0x6c, 0xf0);
  c.accent = isBuiltInPalette(palette) ? blue : highlight;
  const bool blackOnAccent = contrastRatio(Qt::white, c.accent) < 2.2;
  c.accentFill = blackOnAccent ? c.accent : fillForWhiteText(c.accent, contrast);
  c.onAccentFill = blackOnAccent ? Qt::black : Qt::white;

  const QColor backgrounds[] = {c.windowBackground, c.controlBackground,
                                blended(c.accent, 0.09, c.windowBackground)};
  c.secondary = faintest(c.text, backgrounds, contrast);
  c.green = c.isDark ? QColor(0x2f, 0xb8, 0x57) : QColor(0x1f, 0xa4, 0x4a);
  c.orange = c.isDark ? QColor(0xff, 0x9a, 0x1f) : QColor(0xf5, 0x8a, 0x0b);
  return c;
}

QFont font(TextStyle style, const QFont& body) {
  const int bodySize = QFontInfo(body).pixelSize();
  // 13 points is the body size that the styles' own sizes go with.
  const auto scaled = [bodySize](double points) {
    return static_cast<int>(std::lround(bodySize * points / 13));
  };
  // Small print stays readable where the desktop's font is small already.
  const auto small = [&](double points) {
    return std::max(scaled(points), std::min(bodySize, 10));
  };

  auto font = body;
  const auto set = [&font](int pixelSize, QFont::Weight weight) {
    font.setPixelSize(std::max(1, pixelSize));
    font.setWeight(weight);
  };
  switch (style) {
    case TextStyle::largeTitle:
      // 32 points as they are; only a desktop set to large text makes it larger.
      set(std::max(32, 2 * bodySize), QFont::Bold);
      font.setFamilies(QStringList{QStringLiteral("Nunito"), QStringLiteral("Quicksand"),
                                   QStringLiteral("Varela Round"), QStringLiteral("Cantarell")} +
                       body.families());
      break;
    case TextStyle::title2:
      set(scaled(17), QFont::DemiBold);
      break;
    case TextStyle::title3:
      set(scaled(15), QFont::Normal);
      break;
    case TextStyle::title3Bold:
      set(scaled(15), QFont::Bold);
      break;
    case TextStyle::headline:
      set(scaled(13), QFont::Bold);
      break;
    case TextStyle::body:
      set(scaled(13), QFont::Normal);
      break;
    case TextStyle::callout:
      set(small(12), QFont::Normal);
      break;
    case TextStyle::caption:
      set(small(10), QFont::Normal);
      break;
    case TextStyle::caption2Bold:
      set(small(10), QFont::Bold);
      break;
  }
  return font;
}

QFont font(TextStyle style) { return font(style, QApplication::font()); }

}  // namespace quibel
