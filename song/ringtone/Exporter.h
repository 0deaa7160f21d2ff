#pragma once

#include <stop_token>

#include "platform/AudioFile.h"
#include "platform/ExportSession.h"

namespace quibel::song {

/// Writes a time range of a song as a new AAC file in an MPEG-4 container.
/// Blocks until that is done. An error leaves an incomplete file behind, for
/// the caller to remove. Throws std::bad_alloc.
platform::Result<void> exportRange(platform::AudioFile& song, const platform::TimeRange& range,
                                   const platform::FileURL& output, const std::stop_token& stop);

}  // namespace quibel::song
