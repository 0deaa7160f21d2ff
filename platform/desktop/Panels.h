#pragma once

#include <QString>
#include <optional>
#include <string>
#include <vector>

#include "platform/FileURL.h"
#include "platform/Panels.h"
#include "platform/desktop/PanelFolder.h"

namespace quibel::desktop {

/// The desktop's own file dialogs, modally over the active window. To be made once, when
/// there is an application: Qt's own dialog, which serves where the desktop has none, then
/// writes nothing about itself to the disk.
class Panels {
 public:
  Panels();

  std::optional<platform::FileURL> runModal(const platform::OpenPanel& panel);

  /// A name that does not end in the panel's first extension gets it. No file that exists
  /// is returned unless the person has said that it may be replaced.
  std::optional<platform::FileURL> runModal(const platform::SavePanel& panel);

 private:
  PanelFolder folder_;
};

/// The filter line of a file dialog for these types, as in "Audio (*.mp3 *.wav)".
QString nameFilter(const std::vector<platform::ContentType>& types);

/// `url` with `.extension` at its end, unless it ends so already, in either case.
platform::FileURL withExtension(const platform::FileURL& url, const std::string& extension);

}  // namespace quibel::desktop
