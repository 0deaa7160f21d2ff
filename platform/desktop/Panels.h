#pragma once

#include <QString>
#include <optional>
#include <string>
#include <vector>

#include "platform/FileURL.h"
#include "platform/Panels.h"

namespace quibel::desktop {

/// To be called once, when there is an application. The first panel then opens in the
/// person's music folder, where there is one, or else at home, any later one where the
/// last was confirmed; and Qt's own dialog, which serves where the desktop has none,
/// keeps that to itself instead of writing it to the disk.
void preparePanels();

/// Each runs the desktop's own file dialog, where it offers one, modally over
/// the active window.
std::optional<platform::FileURL> runOpenPanel(const platform::OpenPanel& panel);

/// A name without an extension gets the panel's first one. Nothing that exists
/// is returned unless the person has said that it may be replaced.
std::optional<platform::FileURL> runSavePanel(const platform::SavePanel& panel);

/// The filter line of a file dialog for these types, as in "Audio (*.mp3 *.wav)".
QString nameFilter(const std::vector<platform::ContentType>& types);

/// `url` with `.extension` at its end if its name has no extension.
platform::FileURL withExtension(const platform::FileURL& url, const std::string& extension);

}  // namespace quibel::desktop
