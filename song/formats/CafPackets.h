#pragma once

#include <cstdint>
#include <optional>

#include "song/file/Input.h"

namespace quibel::song {

/// What a CAF file says of all its packets' frames.
struct CafPackets {
  std::int64_t song = 0;       ///< frames of the song itself
  std::int64_t priming = 0;    ///< before it
  std::int64_t remainder = 0;  ///< behind it
};

/// Reads the packet table of a Core Audio Format file, "pakt". Nothing where there is none.
std::optional<CafPackets> readCafPackets(Input& input);

}  // namespace quibel::song
