#include "app/DesktopAppearance.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QMap>

#include "views/Theme.h"

namespace quibel {
namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");

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

}  // namespace

Appearance appearance(const QVariantMap& settings) {
  constexpr unsigned preferDark = 1;
  constexpr unsigned higherContrast = 1;
  return {settings.value(QStringLiteral("color-scheme")).toUInt() == preferDark,
          settings.value(QStringLiteral("contrast")).toUInt() == higherContrast,
          accentOf(settings.value(QStringLiteral("accent-color")))};
}

QPalette palette(const Appearance& appearance, const QPalette& light) {
  auto palette = appearance.isDark ? darkPalette() : light;
  if (appearance.isHighContrast) raiseContrast(palette, appearance.isDark);
  const auto accent = appearance.accent.value_or(light.color(QPalette::Highlight));
  palette.setColor(QPalette::Highlight, accent);
  palette.setColor(
      QPalette::HighlightedText,
      contrastRatio(Qt::white, accent) >= contrastRatio(Qt::black, accent) ? Qt::white : Qt::black);
  return palette;
}

DesktopAppearance::DesktopAppearance(const QDBusConnection& bus)
    : bus_(bus), light_(QApplication::palette()) {
  if (!isBuiltInPalette(light_)) return;
  // Without a bus the appearance is the one that the window began with.
  static_cast<void>(bus_.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                                 SLOT(settingChanged(QString))));
  ask();
}

void DesktopAppearance::settingChanged(const QString& group) {
  if (group == appearanceGroup) ask();
}

void DesktopAppearance::ask() {
  auto call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("ReadAll"));
  call.setArguments({QStringList{appearanceGroup}});
  auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, &DesktopAppearance::answered);
}

void DesktopAppearance::answered(QDBusPendingCallWatcher* call) {
  call->deleteLater();
  const auto reply = call->reply();
  if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("a{sa{sv}}"))
    return;
  QMap<QString, QVariantMap> groups;
  reply.arguments().constFirst().value<QDBusArgument>() >> groups;
  const auto wanted = palette(appearance(groups.value(appearanceGroup)), light_);
  if (wanted != QApplication::palette()) QApplication::setPalette(wanted);
}

}  // namespace quibel
