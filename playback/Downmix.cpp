#include "playback/Downmix.h"

#include <algorithm>

#include "platform/StereoMix.h"

namespace quibel::playback {
Downmix::Downmix(const platform::AudioFormat& song, std::uint32_t step)
    : songChannels_(song.channelCount), step_(step), sinkChannels_(std::min(songChannels_, 2U)) {
  if (songChannels_ == 1) gains_ = {1};
  if (songChannels_ == 2) gains_ = {1, 0, 0, 1};
  if (songChannels_ > 2) gains_ = platform::stereoMix(song);
}

std::size_t Downmix::mix(const float* const* song, std::size_t songFrames, float* out) const {
  const std::size_t frames = songFrames / step_;
  std::fill_n(out, frames * sinkChannels_, 0.0F);
  for (std::uint32_t side = 0; side < sinkChannels_; ++side) {
    for (std::uint32_t channel = 0; channel < songChannels_; ++channel) {
      const float gain = gains_[side * songChannels_ + channel] / static_cast<float>(step_);
      if (gain == 0) continue;
      const float* from = song[channel];
      for (std::size_t frame = 0; frame < frames; ++frame)
        for (std::uint32_t part = 0; part < step_; ++part)
          out[frame * sinkChannels_ + side] += gain * *from++;
    }
  }
  return frames;
}

}  // namespace quibel::playback
