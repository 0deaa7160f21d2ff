#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace quibel {

/// The colours that views draw with, by their role.
struct Colors {
  QColor text;          ///< contrast of at least 4.5 : 1 wherever it is the palette's
  QColor secondary;     ///< the fainter text; at least 4.5 : 1 on every background here
  QColor accent;        ///< the desktop's, or a blue
  QColor accentFill;    ///< the accent, deep enough to carry `onAccentFill`
  QColor onAccentFill;  ///< text on accentFill, at least 4.5 : 1
  QColor windowBackground;
  QColor controlBackground;
  QColor stripGround;  ///< below the waveform strip; transparent where its panel is seen
  QColor buttonFill;
  QColor edge;        ///< around a button; at least 3 : 1 on what lies around it
  QColor accentEdge;  ///< the same around accentFill
  QColor focusRing;   ///< at least 3 : 1 on buttonFill and on what lies around a button
  // The handles: at least 3 : 1 on the strip and on its fragment, and the white lines
  // on them, at rest and under the pointer.
  QColor green;  ///< the start of the fragment
  QColor greenHovered;
  QColor orange;  ///< the end of the fragment
  QColor orangeHovered;
  bool isDark = false;

  friend bool operator==(const Colors&, const Colors&) = default;
};

/// The colours for a palette. A palette that no desktop has set (Qt's own) gets
/// our blue as accent. With one of black and white, which is what high contrast
/// means on a desktop, all text has a contrast of at least 7 : 1.
Colors colors(const QPalette& palette);

/// The opacity of a panel over the window, the fainter one of the two screens'.
inline constexpr double panelOpacity = 0.75;

/// The strip and its fragment, opaque, on a panel where the window is most tinted.
struct StripGrounds {
  QColor panel;
  QColor strip;
  QColor fragment;
};
StripGrounds stripGrounds(const Colors& colors);

/// `palette` with tooltips in the colours of the window.
QPalette toolTipPalette(const QPalette& palette);

/// Whether `palette` is the one that Qt brings itself, no desktop having given one.
bool isBuiltInPalette(const QPalette& palette);

/// `color` at `opacity` (0 … 1) of its own.
QColor withOpacity(QColor color, double opacity);

/// Opaque `top` at `opacity` over opaque `bottom`.
QColor blended(const QColor& top, double opacity, const QColor& bottom);

/// The contrast of two opaque colours, 1 … 21 (WCAG 2.1, relative luminance).
double contrastRatio(const QColor& a, const QColor& b);

enum class TextStyle {
  largeTitle,
  title2,
  title3,
  title3Bold,
  headline,
  body,
  callout,
  caption,
  caption2Bold
};

/// The font of a text style, from the desktop's own font `body`. One point of a
/// style is one device-independent pixel where the desktop's font is 13 of them
/// high; the others keep their proportion to it.
QFont font(TextStyle style, const QFont& body);

/// The same from the application's font.
QFont font(TextStyle style);

/// The gap between neighbours in a row or a column that states no other, in points.
inline constexpr int defaultSpacing = 8;

/// The gap between lines of text that belong together, in points.
inline constexpr int textSpacing = 2;

}  // namespace quibel
