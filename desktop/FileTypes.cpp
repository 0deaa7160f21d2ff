#include "desktop/FileTypes.h"

#include <QMimeDatabase>
#include <algorithm>

namespace quibel::desktop {
namespace {

/// Kinds that the MIME database files under audio but that hold none: lists of
/// other files, and notes for an instrument.
bool holdsNoSound(const QString& mimeType) {
  static const QStringList names{
      QStringLiteral("audio/x-mpegurl"), QStringLiteral("audio/x-scpls"),
      QStringLiteral("audio/x-ms-asx"),  QStringLiteral("audio/x-iriver-pla"),
      QStringLiteral("audio/midi"),      QStringLiteral("audio/x-riff")};
  return names.contains(mimeType);
}

/// Containers that the MIME database files under video or application but that
/// often hold a song.
const QStringList& containerPatterns() {
  static const QStringList patterns{
      QStringLiteral("*.mp4"),  QStringLiteral("*.m4v"),  QStringLiteral("*.mov"),
      QStringLiteral("*.mkv"),  QStringLiteral("*.webm"), QStringLiteral("*.3gp"),
      QStringLiteral("*.ogg"),  QStringLiteral("*.ogx"),  QStringLiteral("*.avi"),
      QStringLiteral("*.asf"),  QStringLiteral("*.wmv"),  QStringLiteral("*.mpg"),
      QStringLiteral("*.m4r"),  QStringLiteral("*.caf"),  QStringLiteral("*.w64"),
      QStringLiteral("*.rf64"), QStringLiteral("*.ac3"),  QStringLiteral("*.dts")};
  return patterns;
}

QStringList audioPatterns() {
  QStringList patterns = containerPatterns();
  for (const auto& type : QMimeDatabase().allMimeTypes())
    if (type.name().startsWith(QLatin1String("audio/")) && !holdsNoSound(type.name()))
      patterns += type.globPatterns();
  for (qsizetype index = 0, count = patterns.size(); index < count; ++index)
    patterns.append(patterns[index].toUpper());
  patterns.removeDuplicates();
  patterns.sort();
  return patterns;
}

}  // namespace

FileTypes fileTypes(const std::vector<platform::ContentType>& types) {
  const bool anyAudio =
      std::ranges::find(types, platform::ContentType::audio()) != types.end() || types.empty();
  if (anyAudio) return {.name = QStringLiteral("Audio"), .patterns = audioPatterns()};
  QStringList patterns;
  for (const auto& type : types)
    patterns.append(QStringLiteral("*.") + QString::fromStdString(type.filenameExtension));
  patterns.removeDuplicates();
  patterns.sort();
  return {.name = QStringLiteral("Tono para iPhone"), .patterns = patterns};
}

}  // namespace quibel::desktop
