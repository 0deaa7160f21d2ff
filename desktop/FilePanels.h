#pragma once

#include <QDBusConnection>
#include <optional>
#include <string>

#include "desktop/FileDialog.h"
#include "desktop/FileQuestion.h"
#include "desktop/PanelFolder.h"
#include "desktop/PortalFileChooser.h"
#include "platform/FileURL.h"
#include "platform/Panels.h"

namespace quibel::desktop {

/// The file panels, modally over the active window: the desktop's own chooser through its
/// portal, or a dialog of this process where there is none. To be made once, when there is
/// an application.
class FilePanels {
 public:
  explicit FilePanels(const QDBusConnection& bus = QDBusConnection::sessionBus());

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
