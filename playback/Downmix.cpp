#include "playback/Downmix.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace quibel::playback {
namespace {

/// The speakers of 3 to 8 channels: left, right, centre, low frequencies, side
/// or back left (l) and right (r), back centre (b).
constexpr std::array<std::string_view, 6> layouts{"LRC",    "LRCb",    "LRClr",
                                                  "LRCFlr", "LRCFblr", "LRCFlrlr"};

constexpr float minus3dB = 0.70710678F;

struct Gains {
  float left = 0;
  float right = 0;
};

Gains gainsOf(char speaker) {
  switch (speaker) {
    case 'L':
      return {1, 0};
    case 'R':
      return {0, 1};
    case 'C':
      return {minus3dB, minus3dB};
    case 'l':
      return {minus3dB, 0};
    case 'r':
      return {0, minus3dB};
    case 'b':
      return {minus3dB / 2, minus3dB / 2};
    default:
      return {};
  }
}

std::vector<float> stereoGains(std::uint32_t channels) {
  std::vector<float> gains(std::size_t{2} * channels);
  const auto layout = channels - 3 < layouts.size() ? layouts[channels - 3] : std::string_view();
  float left = 0;
  float right = 0;
  for (std::uint32_t channel = 0; channel < channels; ++channel) {
    // Channels that nobody has agreed upon are heard alike on both sides.
    const auto gain = layout.empty() ? Gains{1, 1} : gainsOf(layout[channel]);
    gains[channel] = gain.left;
    gains[channels + channel] = gain.right;
    left += gain.left;
    right += gain.right;
  }
  const float scale = 1 / std::max(left, right);
  for (auto& gain : gains) gain *= scale;
  return gains;
}

}  // namespace

Downmix::Downmix(std::uint32_t songChannels, std::uint32_t step)
    : songChannels_(songChannels), step_(step), sinkChannels_(std::min(songChannels, 2U)) {
  if (songChannels == 1) gains_ = {1};
  if (songChannels == 2) gains_ = {1, 0, 0, 1};
  if (songChannels > 2) gains_ = stereoGains(songChannels);
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
