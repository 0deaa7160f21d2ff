#pragma once

#include <cstdint>

#include "song/file/Pointers.h"

namespace quibel::song {

/// What platform::AudioFormat::speakers says of a layout. FFmpeg's masks have its bits.
inline std::uint64_t speakersOf(const AVChannelLayout& layout) {
  return layout.order == AV_CHANNEL_ORDER_NATIVE && layout.nb_channels > 2 ? layout.u.mask : 0;
}

}  // namespace quibel::song
