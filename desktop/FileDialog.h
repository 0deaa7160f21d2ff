#pragma once

#include <optional>

#include "desktop/FileQuestion.h"
#include "platform/FileURL.h"

namespace quibel::desktop {

/// A dialog in this process: that of the desktop's Qt theme, or Qt's own, with the
/// person's folders at its side. Modal over the active window.
class FileDialog {
 public:
  /// To be made when there is an application: Qt's own dialog then writes nothing about
  /// itself to the disk.
  FileDialog();

  /// The chosen file, or nothing if the person cancelled.
  std::optional<platform::FileURL> ask(const FileQuestion& question);
};

}  // namespace quibel::desktop
