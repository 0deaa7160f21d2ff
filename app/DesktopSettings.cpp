#include "app/DesktopSettings.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace quibel {
namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");

QStringList followedGroups() {
  QStringList groups{settings::appearance, settings::gnomeInterface, settings::kdeGeneral};
  // Elsewhere a portal has these too: what GNOME begins with, and not what the desktop does.
  const auto desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(QLatin1Char(':'));
  if (desktops.contains(QLatin1String("GNOME"))) groups.append(settings::gnomeWindows);
  return groups;
}

}  // namespace

DesktopSettings::DesktopSettings(const QDBusConnection& bus) : bus_(bus) {
  // Without a bus the settings are those that the window began with.
  static_cast<void>(bus_.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                                 SLOT(settingChanged(QString))));
  ask();
}

void DesktopSettings::settingChanged(const QString& group) {
  if (followedGroups().contains(group)) ask();
}

void DesktopSettings::ask() {
  auto call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("ReadAll"));
  call.setArguments({followedGroups()});
  auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, &DesktopSettings::answered);
}

void DesktopSettings::answered(QDBusPendingCallWatcher* call) {
  call->deleteLater();
  const auto reply = call->reply();
  if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("a{sa{sv}}"))
    return;
  SettingGroups groups;
  reply.arguments().constFirst().value<QDBusArgument>() >> groups;
  Q_EMIT read(groups);
}

}  // namespace quibel
