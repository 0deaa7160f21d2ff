#include "views/Theme.h"

#include <QApplication>
#include <QFontInfo>
#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace quibel {
namespace {

constexpr double legibleContrast = 4.5;  // WCAG 2.1, level AA, text
constexpr double highContrast = 7;       // the same, level AAA
constexpr double visibleContrast = 3;    // level AA, parts of controls

// How much the two handles differ in lightness, for those who see no hues.
constexpr double contrastOfHandles = 1.15;

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

using Backgrounds = std::initializer_list<QColor>;

bool standsOut(const QColor& color, Backgrounds backgrounds, double contrast) {
  return std::ranges::all_of(backgrounds, [&](const QColor& background) {
    return contrastRatio(color, background) >= contrast;
  });
}

// `color`, mixed with `toward` only as far as that contrast to `backgrounds` needs.
QColor shaded(const QColor& color, const QColor& toward, Backgrounds backgrounds, double contrast) {
  for (int percent = 0; percent < 100; ++percent) {
    const auto mix = blended(toward, percent / 100.0, color);
    if (standsOut(mix, backgrounds, contrast)) return mix;
  }
  return toward;
}

QColor hovered(const QColor& color, bool isDark) {
  if (!isDark) return blended(Qt::black, 0.18, color);
  // Lighter, as far as the white lines allow.
  for (int percent = 16; percent > 0; --percent) {
    const auto lighter = blended(Qt::white, percent / 100.0, color);
    if (contrastRatio(Qt::white, lighter) >= visibleContrast) return lighter;
  }
  return color;
}

void setHandleColors(Colors& c) {
  const auto under = stripGrounds(c);
  const Backgrounds grounds{under.strip, under.fragment};
  if (c.isDark) {
    c.green = shaded(QColor(0x1f, 0x8a, 0x44), Qt::white, grounds, visibleContrast);
    c.orange = shaded(QColor(0xd4, 0x62, 0x18), Qt::white, grounds, visibleContrast);
    c.orange = shaded(c.orange, Qt::white, {c.green}, contrastOfHandles);
  } else {
    c.orange = shaded(QColor(0xc0, 0x56, 0x00), Qt::black, grounds, visibleContrast);
    c.green = shaded(QColor(0x18, 0x7a, 0x38), Qt::black, grounds, visibleContrast);
    c.green = shaded(c.green, Qt::black, {c.orange}, contrastOfHandles);
  }
  c.greenHovered = hovered(c.green, c.isDark);
  c.orangeHovered = hovered(c.orange, c.isDark);
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
  c.text = opaque(palette.color(QPalette::Active, QPalette::WindowText));
  c.isDark = luminance(c.windowBackground) < luminance(c.text);

  const bool blackAndWhite = contrastRatio(c.text, c.windowBackground) > contrastOfBlackAndWhite;
  const double contrast = blackAndWhite ? highContrast : legibleContrast;

  // In the dark a panel is lighter than the window and the strip in it darker: black
  // at the strip's opacity cannot be told from a dark panel.
  c.controlBackground = c.isDark ? blended(c.text, blackAndWhite ? 0.16 : 0.1, c.windowBackground)
                                 : opaque(palette.color(QPalette::Active, QPalette::Base));
  c.stripGround = c.isDark ? blended(Qt::black, 0.45, c.windowBackground) : Qt::transparent;

  const auto highlight = opaque(palette.color(QPalette::Active, QPalette::Highlight));
  const QColor blue = c.isDark ? QColor(0x3d, 0x95, 0xff) : QColor(0x0a, 0x6c, 0xf0);
  c.accent = isBuiltInPalette(palette) ? blue : highlight;
  const bool blackOnAccent = contrastRatio(Qt::white, c.accent) < 2.2;
  c.accentFill = blackOnAccent ? c.accent : fillForWhiteText(c.accent, contrast);
  c.onAccentFill = blackOnAccent ? Qt::black : Qt::white;

  const QColor tinted = blended(c.accent, 0.09, c.windowBackground);
  const Backgrounds backgrounds{c.windowBackground, c.controlBackground, tinted};
  c.secondary = shaded(blended(c.text, 0.58, c.windowBackground), c.text, backgrounds, contrast);
  c.buttonFill = blended(Qt::white, c.isDark ? 0.08 : 0.6, c.controlBackground);
  c.edge = shaded(blended(c.text, 0.2, c.windowBackground), c.text, backgrounds, visibleContrast);
  c.accentEdge = shaded(c.accentFill, c.text, backgrounds, visibleContrast);
  c.focusRing =
      shaded(c.accent, c.text, {c.windowBackground, c.controlBackground, tinted, c.buttonFill},
             visibleContrast);
  setHandleColors(c);
  return c;
}

StripGrounds stripGrounds(const Colors& c) {
  StripGrounds grounds;
  const auto window = blended(c.accent, 0.09, c.windowBackground);
  grounds.panel = blended(c.controlBackground, panelOpacity, window);
  const auto below = c.stripGround.alpha() == 0 ? grounds.panel : c.stripGround;
  grounds.strip = blended(Qt::black, 0.09, below);
  grounds.fragment = blended(c.accent, 0.17, grounds.strip);
  return grounds;
}

QPalette toolTipPalette(const QPalette& palette) {
  const auto c = colors(palette);
  auto toolTips = palette;
  toolTips.setColor(QPalette::ToolTipBase, c.controlBackground);
  toolTips.setColor(QPalette::ToolTipText, c.text);
  return toolTips;
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
      font.setFamilies(QStringList{QStringLiteral("Quicksand"), QStringLiteral("Nunito"),
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
