#pragma once

#include <QIcon>

namespace quibel {

/// The application's icon in the sizes that window managers ask for. The docks
/// that know the desktop entry take the same drawing from the icon theme; this is
/// for all the others, and for a program that runs uninstalled.
QIcon applicationIcon();

}  // namespace quibel
