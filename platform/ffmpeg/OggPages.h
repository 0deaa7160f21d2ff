#pragma once

#include <optional>

#include "platform/ffmpeg/Extent.h"
#include "platform/ffmpeg/Input.h"

namespace quibel::ffmpeg {

/// What the pages of an Ogg file (RFC 3533) say about one of its streams.
struct OggStream {
  OggGranules granules;
  bool isChained = false;  ///< other streams follow after its end
};

/// Reads the file's first pages and its last ones. `index` counts the streams
/// in the order of their first pages. Nothing where the pages make no sense.
std::optional<OggStream> readOggStream(Input& input, int index);

}  // namespace quibel::ffmpeg
