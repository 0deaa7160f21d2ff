#pragma once

#include <cstdint>
#include <optional>

#include "platform/ffmpeg/Input.h"

namespace quibel::ffmpeg {

/// What a CAF file says of all its packets' frames.
struct CafPackets {
  std::int64_t song = 0;       ///< frames of the song itself
  std::int64_t priming = 0;    ///< before it
  std::int64_t remainder = 0;  ///< behind it

  friend bool operator==(const CafPackets&, const CafPackets&) = default;
};

/// Reads the packet table ("pakt" in Apple's specification of the Core Audio Format).
/// Nothing where there is none.
std::optional<CafPackets> readCafPackets(Input& input);

}  // namespace quibel::ffmpeg
