#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>

#include "app/DesktopSettings.h"

namespace quibel::fake {

/// A session bus of the test's own.
class Bus {
 public:
  Bus() {
    daemon_.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--session"), QStringLiteral("--nofork"),
                   QStringLiteral("--print-address")});
    if (daemon_.waitForStarted() && daemon_.waitForReadyRead()) {
      address = QString::fromLatin1(daemon_.readLine()).trimmed();
    }
  }
  ~Bus() {
    daemon_.terminate();
    daemon_.waitForFinished();
  }

  QString address;

 private:
  QProcess daemon_;
};

/// A settings portal with the settings that the test gives it.
class Portal : public QDBusVirtualObject {
 public:
  explicit Portal(const QString& bus)
      : connection_(QDBusConnection::connectToBus(bus, QStringLiteral("portal"))) {
    connection_.registerVirtualObject(path(), this);
    connection_.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
  }
  ~Portal() override { QDBusConnection::disconnectFromBus(QStringLiteral("portal")); }

  QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    if (message.member() != QLatin1String("ReadAll")) return false;
    ++asked;
    const auto wanted = message.arguments().constFirst().toStringList();
    QDBusArgument answer;
    answer.beginMap(QMetaType::fromType<QString>(), QMetaType::fromType<QVariantMap>());
    for (const auto& [group, values] : groups.asKeyValueRange()) {
      if (!wanted.contains(group)) continue;
      answer.beginMapEntry();
      answer << group << values;
      answer.endMapEntry();
    }
    answer.endMap();
    connection.send(message.createReply(QVariant::fromValue(answer)));
    return true;
  }

  void change(const QString& group, const QString& key, const QVariant& value) {
    groups[group].insert(key, value);
    auto signal =
        QDBusMessage::createSignal(path(), QStringLiteral("org.freedesktop.portal.Settings"),
                                   QStringLiteral("SettingChanged"));
    signal.setArguments({group, key, QVariant::fromValue(QDBusVariant(value))});
    connection_.send(signal);
  }

  SettingGroups groups;
  int asked = 0;

 private:
  static QString path() { return QStringLiteral("/org/freedesktop/portal/desktop"); }

  QDBusConnection connection_;
};

}  // namespace quibel::fake
