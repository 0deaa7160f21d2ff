#pragma once

#include <QDBusConnection>
#include <optional>
#include <string>

#include "platform/FileURL.h"
#include "platform/Panels.h"
#include "platform/desktop/FileDialog.h"
#include "platform/desktop/FileQuestion.h"
#include "platform/desktop/PanelFolder.h"
#include "platform/desktop/PortalFileChooser.h"

namespace quibel::desktop {

/// The file panels, modally over the active window: the desktop's own chooser through its
/// portal, or a dialog of this process where there is none. To be made once, when there is
/// an application.
class Panels {
 public:
  explicit Panels(const QDBusConnection& bus = QDBusConnection::sessionBus());

  std::optional<platform::FileURL> runModal(const platform::OpenPanel& panel);

  /// A name that does not end in the panel's first extension gets it. No file that exists
  /// is returned unless the person has said that it may be replaced.
  std::optional<platform::FileURL> runModal(const platform::SavePanel& panel);

 private:
  std::optional<platform::FileURL> ask(const FileQuestion& question);

  PanelFolder folder_;
  PortalFileChooser portal_;
  FileDialog dialog_;
};

/// `url` with `.extension` at its end, unless it ends so already, in either case.
platform::FileURL withExtension(const platform::FileURL& url, const std::string& extension);

}  // namespace quibel::desktop
