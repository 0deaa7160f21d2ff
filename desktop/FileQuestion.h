#pragma once

#include <QString>
#include <QStringList>

namespace quibel::desktop {

/// What a panel asks of the person, whichever program shows it.
struct FileQuestion {
  enum class Kind { open, save };

  Kind kind = Kind::open;
  QString title;
  bool allowsMultipleSelection = false;  ///< the first one counts
  QString filterName;                    ///< of the files that it offers, as in "Audio"
  QStringList patterns;                  ///< theirs, as in "*.mp3"
  QString folder;                        ///< where it starts, an absolute path
  QString name;                          ///< that it proposes, when it saves
};

}  // namespace quibel::desktop
