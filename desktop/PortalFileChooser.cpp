#include "desktop/PortalFileChooser.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QUrl>
#include <QVariantMap>

#include "desktop/ExportedWindow.h"
#include "desktop/PortalFilter.h"
#include "desktop/PortalRequest.h"
#include "desktop/Urls.h"

namespace quibel::desktop {
namespace {

QVariantMap options(const FileQuestion& question) {
  const auto filter = portalFilter(question.filterName, question.patterns);
  // The bytes of a path, with a zero at their end.
  auto folder = QFile::encodeName(question.folder);
  folder.append('\0');
  QVariantMap options{
      {QStringLiteral("filters"), QVariant::fromValue(QList{filter})},
      {QStringLiteral("current_filter"), QVariant::fromValue(filter)},
      {QStringLiteral("current_folder"), folder},
  };
  // An underscore is before the letter that the key Alt presses it with.
  if (question.kind == FileQuestion::Kind::open) {
    options.insert(QStringLiteral("accept_label"), QStringLiteral("_Abrir"));
    options.insert(QStringLiteral("multiple"), question.allowsMultipleSelection);
  } else {
    options.insert(QStringLiteral("accept_label"), QStringLiteral("_Guardar"));
    options.insert(QStringLiteral("current_name"), question.name);
  }
  return options;
}

std::optional<platform::FileURL> chosenIn(const QVariantMap& results) {
  const auto uris = results.value(QStringLiteral("uris")).toStringList();
  if (uris.isEmpty()) return std::nullopt;
  return fileURL(QUrl::fromEncoded(uris.front().toUtf8()));
}

/// Keeps the person's hands off every window of ours while it runs, without showing.
class Blocker final : public QDialog {
 public:
  /// A screen reader may come across it, and then says the title.
  Blocker(QWidget* parent, const QString& title) : QDialog(parent) {
    setAttribute(Qt::WA_DontShowOnScreen);
    setWindowTitle(title);
  }
};

}  // namespace

PortalFileChooser::PortalFileChooser(const QDBusConnection& bus) : bus_(bus) {
  registerPortalFilter();
}

std::expected<std::optional<platform::FileURL>, PortalFileChooser::Unavailable>
PortalFileChooser::ask(const FileQuestion& question) {
  if (!bus_.isConnected()) return std::unexpected(Unavailable());
  auto* const window = QApplication::activeWindow();
  std::optional<ExportedWindow> exported;
  if (window && window->windowHandle()) exported.emplace(*window->windowHandle());

  Blocker blocker(window, question.title);
  auto outcome = PortalRequest::Outcome::cancelled;
  std::optional<platform::FileURL> chosen;
  const PortalRequest request(
      bus_, QStringLiteral("org.freedesktop.portal.FileChooser"),
      question.kind == FileQuestion::Kind::open ? QStringLiteral("OpenFile")
                                                : QStringLiteral("SaveFile"),
      exported ? exported->identifier() : QString(), question.title, options(question));
  QObject::connect(&request, &PortalRequest::finished, &blocker,
                   [&](PortalRequest::Outcome how, const QVariantMap& results) {
                     outcome = how;
                     chosen = chosenIn(results);
                     blocker.accept();
                   });
  blocker.exec();
  if (outcome == PortalRequest::Outcome::unavailable) return std::unexpected(Unavailable());
  return outcome == PortalRequest::Outcome::answered ? chosen : std::nullopt;
}

}  // namespace quibel::desktop
