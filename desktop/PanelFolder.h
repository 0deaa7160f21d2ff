#pragma once

#include <QString>

#include "platform/FileURL.h"

namespace quibel::desktop {

/// The folder that the next panel opens in: where the last one was confirmed, or else
/// the person's music folder, or else home. Kept in memory alone, and never as the
/// process's working folder, which could not be ejected.
class PanelFolder {
 public:
  /// The first of them that exists.
  QString toOpenFrom() const;

  /// The first of them in which files can be written.
  QString toSaveIn() const;

  void remember(const platform::FileURL& confirmed);

 private:
  QString last_;
};

}  // namespace quibel::desktop
