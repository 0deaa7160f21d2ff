#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QString>
#include <optional>
#include <string>
#include <vector>

#include "tests/desktop/Application.h"
#include "tests/desktop/TemporaryFolder.h"
#include "tests/support/ChildProcess.h"

namespace quibel::desktop {

/// A session bus of the tests' own, on which no service starts by itself.
class PrivateBus {
 public:
  /// One for all tests: Qt connects to the session bus once a process.
  static PrivateBus& ofTheProcess() {
    static PrivateBus one;
    return one;
  }

  bool isThere() const { return isThere_; }
  QString address() const { return QString::fromLatin1(address_); }

 private:
  PrivateBus() {
    const auto socket = folder_.url("bus").path().string();
    const auto config = folder_.write(
        "bus.conf", "<busconfig><type>session</type><listen>unix:path=" + socket + R"(</listen>
        <policy context="default">
          <allow send_destination="*"/> <allow receive_sender="*"/> <allow own="*"/>
        </policy></busconfig>)");
    daemon_.emplace(std::vector<std::string>{"dbus-daemon", "--nofork",
                                             "--config-file=" + config.path().string()});
    address_ = "unix:path=" + QByteArray::fromStdString(socket);
    qputenv("DBUS_SESSION_BUS_ADDRESS", address_);
    isThere_ = eventually([&] { return daemon_->hasEnded() || answers(); }) && !daemon_->hasEnded();
  }

  // Its socket alone says nothing: it is there before the daemon listens on it.
  bool answers() const {
    const bool isConnected =
        QDBusConnection::connectToBus(address(), QStringLiteral("probe")).isConnected();
    QDBusConnection::disconnectFromBus(QStringLiteral("probe"));
    return isConnected;
  }

  TemporaryFolder folder_;
  std::optional<platform::ChildProcess> daemon_;
  QByteArray address_;
  bool isThere_ = false;
};

}  // namespace quibel::desktop
