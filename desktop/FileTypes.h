#pragma once

#include <QString>
#include <QStringList>
#include <vector>

#include "platform/Panels.h"

namespace quibel::desktop {

/// Which files a panel offers, and how it calls them.
struct FileTypes {
  QString name;
  QStringList patterns;  ///< sorted, each once, as in "*.mp3"
};

/// Those of an audio panel, or of one for these extensions. Every pattern of audio is
/// there in capitals, too: not every desktop's panel compares names without case.
FileTypes fileTypes(const std::vector<platform::ContentType>& types);

}  // namespace quibel::desktop
