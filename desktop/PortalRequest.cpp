#include "desktop/PortalRequest.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingReply>
#include <QUuid>
#include <utility>

namespace quibel::desktop {
namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");

/// For a portal that has to be started first; one that takes longer is not worth waiting for.
constexpr int patienceInMilliseconds = 10'000;

/// Where the answer will come from, by the portal's documentation.
QString requestPath(const QDBusConnection& bus, const QString& token) {
  auto sender = bus.baseService().mid(1);
  sender.replace(QLatin1Char('.'), QLatin1Char('_'));
  return QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
}

}  // namespace

PortalRequest::PortalRequest(const QDBusConnection& bus, const QString& interface,
                             const QString& method, const QString& window, const QString& title,
                             QVariantMap options)
    : bus_(bus), service_(service, bus, QDBusServiceWatcher::WatchForUnregistration) {
  connect(&service_, &QDBusServiceWatcher::serviceUnregistered, this,
          [this] { finish(Outcome::cancelled); });

  const auto token = QStringLiteral("quibel") + QUuid::createUuid().toString(QUuid::Id128);
  options.insert(QStringLiteral("handle_token"), token);
  // Before the call, as the answer may come right after it.
  listenAt(requestPath(bus_, token));

  auto call = QDBusMessage::createMethodCall(
      service, QStringLiteral("/org/freedesktop/portal/desktop"), interface, method);
  call << window << title << options;
  auto* const watcher =
      new QDBusPendingCallWatcher(bus_.asyncCall(call, patienceInMilliseconds), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, &PortalRequest::taken);
}

void PortalRequest::listenAt(const QString& path) {
  path_ = path;
  // Without a bus the call fails as well.
  static_cast<void>(bus_.connect(service, path, QStringLiteral("org.freedesktop.portal.Request"),
                                 QStringLiteral("Response"), this,
                                 SLOT(respond(unsigned, QVariantMap))));
}

void PortalRequest::taken(QDBusPendingCallWatcher* call) {
  const QDBusPendingReply<QDBusObjectPath> reply = *call;
  call->deleteLater();
  if (reply.isError()) return finish(Outcome::unavailable);
  // Portals before 0.9 choose a path of their own.
  if (reply.value().path() != path_) listenAt(reply.value().path());
}

void PortalRequest::respond(unsigned response, const QVariantMap& results) {
  constexpr unsigned success = 0;
  finish(response == success ? Outcome::answered : Outcome::cancelled, results);
}

void PortalRequest::finish(Outcome outcome, const QVariantMap& results) {
  if (std::exchange(isFinished_, true)) return;
  Q_EMIT finished(outcome, results);
}

}  // namespace quibel::desktop
