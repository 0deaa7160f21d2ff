#include "app/DesktopAppearance.h"

#include <QApplication>
#include <QDBusArgument>
#include <QWidget>

#include "views/Motion.h"
#include "views/Theme.h"

namespace quibel {
namespace {

std::optional<QColor> accentOf(const QVariant& value) {
  if (!value.canConvert<QDBusArgument>()) return std::nullopt;
  const auto argument = value.value<QDBusArgument>();
  if (argument.currentSignature() != QLatin1String("(ddd)")) return std::nullopt;
  double red = -1;
  double green = -1;
  double blue = -1;
  argument.beginStructure();
  argument >> red >> green >> blue;
  argument.endStructure();
  // A desktop without an accent says so with numbers that are no colour.
  for (const double channel : {red, green, blue}) {
    if (!(channel >= 0 && channel <= 1)) return std::nullopt;
  }
  return QColor::fromRgbF(static_cast<float>(red), static_cast<float>(green),
                          static_cast<float>(blue));
}

QPalette darkPalette() {
  const QColor window(0x2a, 0x2a, 0x2d);
  const QColor base(0x1e, 0x1e, 0x20);
  const QColor text(0xf2, 0xf2, 0xf4);
  const QColor faint(0x8a, 0x8a, 0x8e);
  QPalette palette(QColor(0x3a, 0x3a, 0x3d), window);
  palette.setColor(QPalette::Base, base);
  palette.setColor(QPalette::AlternateBase, window);
  palette.setColor(QPalette::ToolTipBase, base);
  palette.setColor(QPalette::ToolTipText, text);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(role, text);
    palette.setColor(QPalette::Disabled, role, faint);
  }
  palette.setColor(QPalette::BrightText, Qt::white);
  palette.setColor(QPalette::PlaceholderText, faint);
  palette.setColor(QPalette::Link, QColor(0x6a, 0xb0, 0xff));
  return palette;
}

void raiseContrast(QPalette& palette, bool isDark) {
  const QColor ground = isDark ? Qt::black : Qt::white;
  const QColor text = isDark ? Qt::white : Qt::black;
  for (const auto role : {QPalette::Window, QPalette::Base, QPalette::AlternateBase,
                          QPalette::Button, QPalette::ToolTipBase}) {
    palette.setColor(role, ground);
  }
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                          QPalette::ToolTipText, QPalette::PlaceholderText}) {
    palette.setColor(role, text);
  }
}

void setAccent(QPalette& palette, const QColor& accent) {
  palette.setColor(QPalette::Highlight, accent);
  palette.setColor(
      QPalette::HighlightedText,
      contrastRatio(Qt::white, accent) >= contrastRatio(Qt::black, accent) ? Qt::white : Qt::black);
}

double textScaleOf(const QVariant& value) {
  // The range of GNOME's setting.
  const double scale = value.toDouble();
  return scale >= 0.5 && scale <= 3 ? scale : 1;
}

std::optional<QFont> fontOf(const QVariant& value) {
  const auto description = value.toString();
  QFont font;
  // A name alone would be read as a font of any size.
  if (!description.contains(QLatin1Char(',')) || !font.fromString(description)) return std::nullopt;
  return font;
}

/// Views with a font of their own are told as well, which Qt leaves out.
void setFont(const QFont& font) {
  QApplication::setFont(font);
  for (auto* const widget : QApplication::allWidgets()) {
    QEvent changed(QEvent::ApplicationFontChange);
    QCoreApplication::sendEvent(widget, &changed);
  }
}

}  // namespace

Appearance appearance(const SettingGroups& groups) {
  constexpr unsigned preferDark = 1;
  constexpr unsigned higherContrast = 1;
  constexpr unsigned lessMotion = 1;
  const auto settings = groups.value(settings::appearance);
  const auto gnome = groups.value(settings::gnomeInterface);
  return {
      .isDark = settings.value(QStringLiteral("color-scheme")).toUInt() == preferDark,
      .isHighContrast = settings.value(QStringLiteral("contrast")).toUInt() == higherContrast,
      .accent = accentOf(settings.value(QStringLiteral("accent-color"))),
      .isMotionReduced = settings.value(QStringLiteral("reduced-motion")).toUInt() == lessMotion ||
                         !gnome.value(QStringLiteral("enable-animations"), true).toBool(),
      .textScale = textScaleOf(gnome.value(QStringLiteral("text-scaling-factor"))),
      .font = fontOf(groups.value(settings::kdeGeneral).value(QStringLiteral("font")))};
}

QPalette palette(const Appearance& appearance, const QPalette& light) {
  auto palette = appearance.isDark ? darkPalette() : light;
  if (appearance.isHighContrast) raiseContrast(palette, appearance.isDark);
  setAccent(palette, appearance.accent.value_or(light.color(QPalette::Highlight)));
  return palette;
}

QFont font(const Appearance& appearance, const QFont& own) {
  auto font = appearance.font.value_or(own);
  if (font.pointSizeF() > 0) {
    font.setPointSizeF(font.pointSizeF() * appearance.textScale);
  } else {
    font.setPixelSize(qRound(font.pixelSize() * appearance.textScale));
  }
  return font;
}

DesktopAppearance::DesktopAppearance(const DesktopSettings& settings)
    : ownPalette_(QApplication::palette()), ownFont_(QApplication::font()) {
  connect(&settings, &DesktopSettings::read, this,
          [this](const SettingGroups& groups) { show(appearance(groups)); });
}

void DesktopAppearance::show(Appearance appearance) const {
  setMotionReduced(appearance.isMotionReduced);
  // An X server's desktop gives its scale to Qt as the resolution of its screens.
  if (QGuiApplication::platformName() == QLatin1String("xcb")) appearance.textScale = 1;
  if (const auto wanted = font(appearance, ownFont_); wanted != QApplication::font())
    setFont(wanted);
  if (const auto wanted = paletteFor(appearance); wanted != QApplication::palette())
    QApplication::setPalette(wanted);
}

QPalette DesktopAppearance::paletteFor(const Appearance& appearance) const {
  if (isBuiltInPalette(ownPalette_)) return palette(appearance, ownPalette_);
  auto given = ownPalette_;
  if (appearance.accent) setAccent(given, *appearance.accent);
  return given;
}

}  // namespace quibel
