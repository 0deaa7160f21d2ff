#include "platform/desktop/Panels.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeDatabase>
#include <QScreen>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>
#include <algorithm>
#include <utility>

#include "platform/desktop/LocalFileManager.h"
#include "platform/desktop/Urls.h"

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
  // Not every desktop's dialog compares names without regard to case.
  for (qsizetype index = 0, count = patterns.size(); index < count; ++index)
    patterns.append(patterns[index].toUpper());
  patterns.removeDuplicates();
  patterns.sort();
  return patterns;
}

/// What was chosen, as the dialog knows it.
std::optional<platform::FileURL> chosenIn(const QFileDialog& dialog) {
  const auto urls = dialog.selectedUrls();
  return urls.isEmpty() ? std::nullopt : fileURL(urls.front());
}

/// The same with its name's own bytes.
platform::FileURL withOwnBytes(const platform::FileURL& chosen) {
  if (LocalFileManager().fileExists(chosen)) return chosen;
  return fileShownAs(QFile::decodeName(chosen.path().c_str()));
}

/// What stands beside the files in Qt's own dialog: the person's folders that there are,
/// and the machine, with its disks.
QList<QUrl> places() {
  QList<QUrl> urls;
  for (const auto place : {QStandardPaths::HomeLocation, QStandardPaths::MusicLocation,
                           QStandardPaths::DownloadLocation, QStandardPaths::DesktopLocation}) {
    const auto folder = QStandardPaths::writableLocation(place);
    const auto url = QUrl::fromLocalFile(folder);
    if (QFileInfo(folder).isDir() && !urls.contains(url)) urls.append(url);
  }
  urls.append(QUrl(QStringLiteral("file:")));
  return urls;
}

/// Room and places for Qt's own dialog; a desktop's has its own.
void furnish(QFileDialog& dialog) {
  dialog.setSidebarUrls(places());
  dialog.resize(QSize(860, 560).boundedTo(dialog.screen()->availableSize()));
}

bool mayReplace(const platform::FileURL& url) {
  const auto name = QFile::decodeName(url.lastPathComponent().c_str());
  return QMessageBox::warning(QApplication::activeWindow(), QStringLiteral("Quibel"),
                              QStringLiteral("«%1» ya existe.\n¿Quieres reemplazarlo?").arg(name),
                              QMessageBox::Yes | QMessageBox::No,
                              QMessageBox::No) == QMessageBox::Yes;
}

}  // namespace

QString nameFilter(const std::vector<platform::ContentType>& types) {
  const bool anyAudio =
      std::ranges::find(types, platform::ContentType::audio()) != types.end() || types.empty();
  if (anyAudio) return QStringLiteral("Audio (%1)").arg(audioPatterns().join(QLatin1Char(' ')));
  QStringList patterns;
  for (const auto& type : types)
    patterns.append(QStringLiteral("*.") + QString::fromStdString(type.filenameExtension));
  return QStringLiteral("Tono para iPhone (%1)").arg(patterns.join(QLatin1Char(' ')));
}

platform::FileURL withExtension(const platform::FileURL& url, const std::string& extension) {
  const auto name = QString::fromStdString(url.lastPathComponent());
  const auto ending = QLatin1Char('.') + QString::fromStdString(extension);
  if (extension.empty() || name.endsWith(ending, Qt::CaseInsensitive)) return url;
  return url.appendingPathExtension(extension);
}

Panels::Panels() {
  // No folder can be made below it, so that nothing is read or written there.
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
}

std::optional<platform::FileURL> Panels::runModal(const platform::OpenPanel& panel) {
  QFileDialog dialog(QApplication::activeWindow(), QString::fromStdString(panel.title));
  dialog.setDirectory(folder_.toOpenFrom());
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(panel.allowsMultipleSelection ? QFileDialog::ExistingFiles
                                                   : QFileDialog::ExistingFile);
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setNameFilter(nameFilter(panel.allowedContentTypes));
  furnish(dialog);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  const auto chosen = chosenIn(dialog).transform(withOwnBytes);
  if (chosen) folder_.remember(*chosen);
  return chosen;
}

std::optional<platform::FileURL> Panels::runModal(const platform::SavePanel& panel) {
  const std::string extension =
      panel.allowedContentTypes.empty() ? "" : panel.allowedContentTypes.front().filenameExtension;
  QFileDialog dialog(QApplication::activeWindow(), QString::fromStdString(panel.title));
  dialog.setDirectory(folder_.toSaveIn());
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.setNameFilter(nameFilter(panel.allowedContentTypes));
  furnish(dialog);
  dialog.selectFile(QFile::decodeName(panel.nameFieldStringValue.c_str()));
  while (dialog.exec() == QDialog::Accepted) {
    const auto chosen = chosenIn(dialog);
    if (!chosen) return std::nullopt;
    // A dialog asks about the name it knows. One with our extension is ours to ask about:
    // told of it, a desktop's dialog would add it too, and only after asking.
    auto named = withExtension(withOwnBytes(*chosen), extension);
    if (named == *chosen || !LocalFileManager().fileExists(named) || mayReplace(named)) {
      folder_.remember(named);
      return named;
    }
  }
  return std::nullopt;
}

}  // namespace quibel::desktop
