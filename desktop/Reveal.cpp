#include "desktop/Reveal.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QStringList>
#include <QUrl>

#include "desktop/Urls.h"

namespace quibel::desktop {
namespace {

void openFolder(const platform::FileURL& file) {
  const platform::FileURL folder(file.path().parent_path());
  // Nothing is left to try after this, and a reveal has no message of its own.
  QDesktopServices::openUrl(QUrl::fromEncoded(fileURI(folder)));
}

}  // namespace

void reveal(const std::vector<platform::FileURL>& urls, std::chrono::milliseconds patience) {
  if (urls.empty()) return;
  QStringList uris;
  for (const auto& url : urls) uris.append(QString::fromLatin1(fileURI(url)));

  auto call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
                                             QStringLiteral("/org/freedesktop/FileManager1"),
                                             QStringLiteral("org.freedesktop.FileManager1"),
                                             QStringLiteral("ShowItems"));
  call << uris << QString();
  const auto reply =
      QDBusConnection::sessionBus().asyncCall(call, static_cast<int>(patience.count()));
  auto* const watcher = new QDBusPendingCallWatcher(reply, QCoreApplication::instance());
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                   [file = urls.front()](QDBusPendingCallWatcher* finished) {
                     finished->deleteLater();
                     if (finished->isError()) openFolder(file);
                   });
}

}  // namespace quibel::desktop
