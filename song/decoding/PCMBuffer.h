#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

#include "platform/AudioFile.h"

namespace quibel::song {

/// A buffer of a format, or null where there is no memory for it.
inline std::unique_ptr<platform::AudioPCMBuffer> makePCMBuffer(const platform::AudioFormat& format,
                                                               std::uint32_t frameCapacity) try {
  return std::make_unique<platform::AudioPCMBuffer>(format.channelCount, frameCapacity);
} catch (const std::bad_alloc&) {
  return nullptr;
}

/// Empties a buffer for a read of `frameCount` frames of a song that has `left` of them; returns
/// how many it is to deliver, as many as have room.
inline std::uint32_t beginRead(platform::AudioPCMBuffer& into, std::uint32_t frameCount,
                               std::int64_t left) {
  into.setFrameLength(0);
  return static_cast<std::uint32_t>(
      std::min<std::int64_t>({frameCount, into.frameCapacity(), left}));
}

}  // namespace quibel::song
