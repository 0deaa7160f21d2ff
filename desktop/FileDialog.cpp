#include "desktop/FileDialog.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QScreen>
#include <QSettings>
#include <QStandardPaths>
#include <QUrl>

#include "desktop/Urls.h"

namespace quibel::desktop {
namespace {

/// The person's folders that exist, and the machine, with its disks.
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

}  // namespace

FileDialog::FileDialog() {
  // No folder can be made below it, so that nothing is read or written there.
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
}

std::optional<platform::FileURL> FileDialog::ask(const FileQuestion& question) {
  QFileDialog dialog(QApplication::activeWindow(), question.title);
  const bool saves = question.kind == FileQuestion::Kind::save;
  dialog.setAcceptMode(saves ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(saves                              ? QFileDialog::AnyFile
                     : question.allowsMultipleSelection ? QFileDialog::ExistingFiles
                                                        : QFileDialog::ExistingFile);
  // There are hundreds of patterns for audio.
  dialog.setOption(QFileDialog::HideNameFilterDetails, !saves);
  dialog.setNameFilter(
      QStringLiteral("%1 (%2)").arg(question.filterName, question.patterns.join(QLatin1Char(' '))));
  dialog.setDirectory(question.folder);
  dialog.setSidebarUrls(places());
  dialog.resize(QSize(860, 560).boundedTo(dialog.screen()->availableSize()));
  if (!question.name.isEmpty()) dialog.selectFile(question.name);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  const auto urls = dialog.selectedUrls();
  return urls.isEmpty() ? std::nullopt : fileURL(urls.front());
}

}  // namespace quibel::desktop
