#include "desktop/PulseCookie.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <sys/mman.h>
#include <unistd.h>

namespace quibel::desktop {
namespace {

constexpr const char* place = "PULSE_COOKIE";

bool hasCookie() {
  const auto settings = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  return QFile::exists(settings + QStringLiteral("/pulse/cookie")) ||
         QFile::exists(QDir::homePath() + QStringLiteral("/.pulse-cookie"));
}

}  // namespace

void keepPulseCookieInMemory() {
  if (qEnvironmentVariableIsSet(place) || hasCookie()) return;
  const int file = ::memfd_create("pulse-cookie", MFD_CLOEXEC);
  // A system that denies even this gets the cookie on its disk.
  if (file < 0) return;
  // By the process's number: in a program started from here, "self" would be another.
  qputenv(place, QByteArrayLiteral("/proc/") + QByteArray::number(::getpid()) + "/fd/" +
                     QByteArray::number(file));
}

}  // namespace quibel::desktop
