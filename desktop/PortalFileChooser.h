#pragma once

#include <QDBusConnection>
#include <expected>
#include <optional>

#include "desktop/FileQuestion.h"
#include "platform/FileURL.h"

namespace quibel::desktop {

/// The desktop's own file chooser, which a program of the desktop's shows when its portal
/// (org.freedesktop.portal.FileChooser) is asked. It is modal over the active window.
class PortalFileChooser {
 public:
  explicit PortalFileChooser(const QDBusConnection& bus = QDBusConnection::sessionBus());

  /// There is no portal, or it shows no files.
  struct Unavailable {};

  /// The chosen file, or nothing if the person cancelled. Before it saves, the chooser has
  /// asked whether a file of the chosen name may be replaced.
  std::expected<std::optional<platform::FileURL>, Unavailable> ask(const FileQuestion& question);

 private:
  QDBusConnection bus_;
};

}  // namespace quibel::desktop
