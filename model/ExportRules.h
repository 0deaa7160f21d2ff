#pragma once

#include <string>

#include "platform/ExportSession.h"
#include "platform/FileURL.h"

namespace quibel {

/// The file name proposed for a song's ringtone: Mi canción.mp3 gives Mi canción.m4r.
/// Only the last extension is replaced.
std::string proposedFileName(const platform::FileURL& song);

/// The name of a finished ringtone that is about to replace another in the same folder. If the
/// program ends before it does, the name still says what the file is.
std::string replacementName(const std::string& uuid);

/// The part of the song that a fragment exports: from `start` on, `end` − `start`
/// seconds but at most `maximumDuration`, in units of 1/600 s.
platform::TimeRange exportTimeRange(double start, double end, double maximumDuration);

}  // namespace quibel
