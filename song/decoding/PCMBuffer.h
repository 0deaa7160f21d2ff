#pragma once

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

}  // namespace quibel::song
