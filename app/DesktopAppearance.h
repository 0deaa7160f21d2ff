#pragma once

#include <QColor>
#include <QFont>
#include <QObject>
#include <QPalette>
#include <optional>

#include "app/DesktopSettings.h"

namespace quibel {

/// How a desktop wants its windows to look.
struct Appearance {
  bool isDark = false;
  bool isHighContrast = false;
  std::optional<QColor> accent;
  bool isMotionReduced = false;
  double textScale = 1;
  std::optional<QFont> font;

  friend bool operator==(const Appearance&, const Appearance&) = default;
};

/// The appearance in a desktop's settings. What is not there or makes no sense counts
/// as no wish.
Appearance appearance(const SettingGroups& groups);

/// `light`, or a dark palette in its place, with the desktop's accent if it has one;
/// for high contrast, black and white instead of the greys.
QPalette palette(const Appearance& appearance, const QPalette& light);

/// The desktop's font, or else the application's `own`, at the desktop's scale.
QFont font(const Appearance& appearance, const QFont& own);

/// Gives the application the desktop's light or dark scheme, contrast, accent, font and
/// scale of text, and says whether to move less, whenever the settings are read. Where
/// Qt has got a palette from the desktop by itself, only the accent is added to it.
class DesktopAppearance : public QObject {
  Q_OBJECT

 public:
  /// Follows `settings`, which lives longer.
  explicit DesktopAppearance(const DesktopSettings& settings);

 private:
  void show(Appearance appearance) const;
  QPalette paletteFor(const Appearance& appearance) const;

  const QPalette ownPalette_;
  const QFont ownFont_;
};

}  // namespace quibel
