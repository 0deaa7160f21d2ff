#include <cstddef>

#include "platform/AudioFile.h"

namespace quibel::platform {

AudioPCMBuffer::AudioPCMBuffer(std::uint32_t channelCount, std::uint32_t frameCapacity)
    : frameCapacity_(frameCapacity),
      samples_(static_cast<std::size_t>(channelCount) * frameCapacity),
      channels_(channelCount) {
  for (std::size_t channel = 0; channel < channels_.size(); ++channel)
    channels_[channel] = samples_.data() + channel * frameCapacity;
}

}  // namespace quibel::platform
