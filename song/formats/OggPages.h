#pragma once

#include <optional>
#include <vector>

#include "song/file/Input.h"
#include "song/formats/SongRange.h"

namespace quibel::song {

/// The byte positions at which the links of an Ogg file (RFC 3533, 4) begin: one,
/// unless several songs were put one after the other. Empty where the file does
/// not begin with a page.
std::vector<std::int64_t> readOggLinks(Input& input);

/// What the pages of a single link say about one of its streams, `index` counting
/// them in the order of their first pages. Nothing where they make no sense.
std::optional<OggGranules> readOggGranules(Input& input, int index);

}  // namespace quibel::song
