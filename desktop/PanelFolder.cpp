#include "desktop/PanelFolder.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <array>

#include <fcntl.h>
#include <unistd.h>

namespace quibel::desktop {
namespace {

bool exists(const QString& folder) { return QFileInfo(folder).isDir(); }

bool isWritable(const QString& folder) {
  const auto name = QFile::encodeName(folder);
  return exists(folder) && ::faccessat(AT_FDCWD, name.constData(), W_OK | X_OK, AT_EACCESS) == 0;
}

QString firstOf(const QString& last, bool (*suits)(const QString& folder)) {
  const auto home = QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
  const std::array folders{last, QStandardPaths::writableLocation(QStandardPaths::MusicLocation)};
  const auto* const found = std::ranges::find_if(folders, suits);
  return found == folders.end() ? home : *found;
}

}  // namespace

QString PanelFolder::toOpenFrom() const { return firstOf(last_, exists); }

QString PanelFolder::toSaveIn() const { return firstOf(last_, isWritable); }

void PanelFolder::remember(const platform::FileURL& confirmed) {
  last_ = QFile::decodeName(confirmed.path().parent_path().c_str());
}

}  // namespace quibel::desktop
