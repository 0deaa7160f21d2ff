#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "song/file/Input.h"
#include "song/formats/SongRange.h"

namespace quibel::song {

/// The times that an MP4 file keeps about one of its tracks.
struct MovieTimes {
  std::int64_t movieTimescale = 0;
  std::int64_t mediaTimescale = 0;
  std::vector<Edit> edits;
};

/// Reads the boxes `mvhd`, `tkhd`, `mdhd` and `elst` (ISO/IEC 14496-12). Nothing
/// where the track is not found or its boxes make no sense.
std::optional<MovieTimes> readMovieTimes(Input& input, std::int64_t trackID);

/// The text of iTunes' note about gapless playing, "iTunSMPB": fields in
/// hexadecimal, of which the second is the delay, the third the padding and the
/// fourth the song's length, in frames. Nothing if the text is none.
std::optional<GaplessInfo> parseGaplessInfo(std::string_view text);

}  // namespace quibel::song
