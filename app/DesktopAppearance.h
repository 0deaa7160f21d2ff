#pragma once

#include <QColor>
#include <QDBusConnection>
#include <QObject>
#include <QPalette>
#include <QVariantMap>
#include <optional>

class QDBusPendingCallWatcher;

namespace quibel {

/// How a desktop wants its windows to look.
struct Appearance {
  bool isDark = false;
  bool isHighContrast = false;
  std::optional<QColor> accent;

  friend bool operator==(const Appearance&, const Appearance&) = default;
};

/// The appearance in the portal's settings `org.freedesktop.appearance`. What is
/// not there or makes no sense counts as no wish.
Appearance appearance(const QVariantMap& settings);

/// `light`, or a dark palette in its place, with the desktop's accent if it has one;
/// for high contrast, black and white instead of the greys.
QPalette palette(const Appearance& appearance, const QPalette& light);

/// Gives the application the desktop's light or dark scheme, contrast and accent, as
/// the settings portal tells them, now and whenever they change. Only where Qt
/// has not got a palette from the desktop by itself. It waits for nothing: until
/// the portal answers, or without one, everything stays as it is.
class DesktopAppearance : public QObject {
  Q_OBJECT

 public:
  explicit DesktopAppearance(const QDBusConnection& bus = QDBusConnection::sessionBus());

 private Q_SLOTS:
  void settingChanged(const QString& group);

 private:
  void ask();
  void answered(QDBusPendingCallWatcher* call);

  QDBusConnection bus_;
  QPalette light_;
};

}  // namespace quibel
