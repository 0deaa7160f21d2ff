#include "platform/StereoMix.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>

namespace quibel::platform {
namespace {

constexpr float minus3dB = 0.70710678F;

struct Gains {
  float left = 0;
  float right = 0;
};

/// By the bits of AudioFormat::speakers: front left, right and centre, low frequencies, back
/// left and right, left and right of the centre, back centre, side left and right. Those above
/// the listener come after them and are heard as the centre is.
constexpr std::array<Gains, 11> speakerGains{{{1, 0},
                                              {0, 1},
                                              {minus3dB, minus3dB},
                                              {0, 0},
                                              {minus3dB, 0},
                                              {0, minus3dB},
                                              {1, 0},
                                              {0, 1},
                                              {minus3dB / 2, minus3dB / 2},
                                              {minus3dB, 0},
                                              {0, minus3dB}}};

/// Of 3 to 8 channels: L R C; with a back centre; with back left and right; 5.1; 6.1; 7.1.
constexpr std::array<std::uint64_t, 6> usualSpeakers{0x7, 0x107, 0x37, 0x3f, 0x70f, 0x63f};

std::uint64_t speakersOf(const AudioFormat& song) {
  if (std::popcount(song.speakers) == static_cast<int>(song.channelCount)) return song.speakers;
  const std::size_t index = std::size_t{song.channelCount} - 3;
  return index < usualSpeakers.size() ? usualSpeakers[index] : 0;
}

}  // namespace

std::vector<float> stereoMix(const AudioFormat& song) {
  const std::size_t channels = song.channelCount;
  std::vector<float> gains(2 * channels);
  std::uint64_t speakers = speakersOf(song);
  float left = 0;
  float right = 0;
  for (std::size_t channel = 0; channel < channels; ++channel) {
    Gains gain{1, 1};
    if (speakers != 0) {
      const auto speaker = static_cast<std::size_t>(std::countr_zero(speakers));
      gain = speaker < speakerGains.size() ? speakerGains[speaker] : Gains{minus3dB, minus3dB};
      speakers &= speakers - 1;
    }
    gains[channel] = gain.left;
    gains[channels + channel] = gain.right;
    left += gain.left;
    right += gain.right;
  }
  const float loudest = std::max(left, right);
  if (loudest > 0) {
    for (auto& gain : gains) gain /= loudest;
  }
  return gains;
}

}  // namespace quibel::platform
