#include "desktop/FilePanels.h"

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QString>

#include "desktop/FileTypes.h"
#include "desktop/LocalFileManager.h"
#include "desktop/Urls.h"

namespace quibel::desktop {
namespace {

/// Qt's dialog knows a name as it shows, which may not be its bytes.
platform::FileURL withOwnBytes(const platform::FileURL& chosen) {
  if (LocalFileManager().fileExists(chosen)) return chosen;
  return fileShownAs(QFile::decodeName(chosen.path().c_str()));
}

bool mayReplace(const platform::FileURL& url) {
  const auto name = QFile::decodeName(url.lastPathComponent().c_str());
  return QMessageBox::warning(QApplication::activeWindow(), QStringLiteral("Quibel"),
                              QStringLiteral("«%1» ya existe.\n¿Quieres reemplazarlo?").arg(name),
                              QMessageBox::Yes | QMessageBox::No,
                              QMessageBox::No) == QMessageBox::Yes;
}

}  // namespace

FilePanels::FilePanels(const QDBusConnection& bus) : portal_(bus) {}

platform::FileURL withExtension(const platform::FileURL& url, const std::string& extension) {
  const auto name = QString::fromStdString(url.lastPathComponent());
  const auto ending = QLatin1Char('.') + QString::fromStdString(extension);
  if (extension.empty() || name.endsWith(ending, Qt::CaseInsensitive)) return url;
  return url.appendingPathExtension(extension);
}

std::optional<platform::FileURL> FilePanels::ask(const FileQuestion& question) {
  const auto answer = portal_.ask(question);
  return answer ? *answer : dialog_.ask(question);
}

std::optional<platform::FileURL> FilePanels::runModal(const platform::OpenPanel& panel) {
  const auto types = fileTypes(panel.allowedContentTypes);
  const auto chosen = ask({.kind = FileQuestion::Kind::open,
                           .title = QString::fromStdString(panel.title),
                           .allowsMultipleSelection = panel.allowsMultipleSelection,
                           .filterName = types.name,
                           .patterns = types.patterns,
                           .folder = folder_.toOpenFrom(),
                           .name = {}})
                          .transform(withOwnBytes);
  if (chosen) folder_.remember(*chosen);
  return chosen;
}

std::optional<platform::FileURL> FilePanels::runModal(const platform::SavePanel& panel) {
  const auto types = fileTypes(panel.allowedContentTypes);
  const FileQuestion question{.kind = FileQuestion::Kind::save,
                              .title = QString::fromStdString(panel.title),
                              .filterName = types.name,
                              .patterns = types.patterns,
                              .folder = folder_.toSaveIn(),
                              .name = QFile::decodeName(panel.nameFieldStringValue.c_str())};
  const std::string extension =
      panel.allowedContentTypes.empty() ? "" : panel.allowedContentTypes.front().filenameExtension;
  while (const auto chosen = ask(question)) {
    // Whoever showed the panel has asked about the name it knows. One with our extension is
    // ours to ask about: told of it, a desktop's panel would add it too, and only after asking.
    auto named = withExtension(withOwnBytes(*chosen), extension);
    if (named == *chosen || !LocalFileManager().fileExists(named) || mayReplace(named)) {
      folder_.remember(named);
      return named;
    }
  }
  return std::nullopt;
}

}  // namespace quibel::desktop
