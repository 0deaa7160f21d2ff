#pragma once

#include <chrono>
#include <vector>

#include "platform/FileURL.h"

namespace quibel::desktop {

/// Shows the files selected in the desktop's file manager, by the interface
/// org.freedesktop.FileManager1. Where none answers within `patience`, opens the
/// first file's folder instead. Main thread; returns at once.
void reveal(const std::vector<platform::FileURL>& urls,
            std::chrono::milliseconds patience = std::chrono::seconds(2));

}  // namespace quibel::desktop
