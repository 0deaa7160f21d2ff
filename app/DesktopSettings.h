#pragma once

#include <QDBusConnection>
#include <QMap>
#include <QObject>
#include <QVariantMap>

class QDBusPendingCallWatcher;

namespace quibel {

/// The desktop's settings that Quibel follows, by group and key.
using SettingGroups = QMap<QString, QVariantMap>;

namespace settings {

inline const QString appearance = QStringLiteral("org.freedesktop.appearance");
inline const QString gnomeInterface = QStringLiteral("org.gnome.desktop.interface");
inline const QString gnomeWindows = QStringLiteral("org.gnome.desktop.wm.preferences");
inline const QString kdeGeneral = QStringLiteral("org.kde.kdeglobals.General");

}  // namespace settings

/// Reads them from the settings portal, now and whenever one changes. It waits for
/// nothing: without a portal it never reports.
class DesktopSettings : public QObject {
  Q_OBJECT

 public:
  explicit DesktopSettings(const QDBusConnection& bus = QDBusConnection::sessionBus());

 Q_SIGNALS:
  void read(const SettingGroups& groups);

 private Q_SLOTS:
  void settingChanged(const QString& group);

 private:
  void ask();
  void answered(QDBusPendingCallWatcher* call);

  QDBusConnection bus_;
};

}  // namespace quibel
