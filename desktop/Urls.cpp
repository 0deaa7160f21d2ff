#include "desktop/Urls.h"

#include <QFile>
#include <QStringList>
#include <QSysInfo>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace quibel::desktop {
namespace {

namespace fs = std::filesystem;

/// Programs that drag files name the machine in one of three ways (RFC 8089, 2).
bool isThisMachine(const QString& host) {
  return host.isEmpty() || host == QLatin1String("localhost") ||
         host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0;
}

/// The one entry of `folder` that Qt shows as `name`, or the name as it is.
std::string entryShownAs(const fs::path& folder, const QString& name) {
  std::string plain = QFile::encodeName(name).toStdString();
  if (!name.contains(QChar::ReplacementCharacter)) return plain;
  std::optional<std::string> match;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    auto bytes = entry->path().filename().string();
    if (QFile::decodeName(bytes.c_str()) != name) continue;
    if (match) return plain;
    match = std::move(bytes);
  }
  return match.value_or(plain);
}

}  // namespace

std::optional<platform::FileURL> fileURL(const QUrl& url) {
  if (!url.isLocalFile()) return std::nullopt;
  if (!isThisMachine(url.host())) return std::nullopt;
  // Not through a QString path: QUrl keeps percent codes that are no UTF-8, a
  // decoded QString could not.
  const auto bytes = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
  if (!bytes.startsWith('/') || bytes.contains('\0')) return std::nullopt;
  return platform::FileURL(bytes.toStdString());
}

QByteArray fileURI(const platform::FileURL& url) {
  return "file://" + QByteArray::fromStdString(url.path().string()).toPercentEncoding("/");
}

platform::FileURL fileShownAs(const QString& path) {
  fs::path found("/");
  for (const auto& name : path.split(QLatin1Char('/'), Qt::SkipEmptyParts))
    found /= entryShownAs(found, name);
  return platform::FileURL(std::move(found));
}

}  // namespace quibel::desktop
