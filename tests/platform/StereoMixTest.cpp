#include <cstdint>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "platform/StereoMix.h"

namespace quibel::platform {
namespace {

using testing::ElementsAre;
using testing::Pair;

constexpr std::uint64_t sides51 = 0x60f;
constexpr std::uint64_t stereoWithBass = 0xb;

/// What a channel has on the left and on the right, in parts of what the first has on the left.
std::pair<float, float> gainOf(std::uint32_t channel, const AudioFormat& song) {
  const auto gains = stereoMix(song);
  return {gains[channel] / gains[0], gains[song.channelCount + channel] / gains[0]};
}

AudioFormat song(std::uint32_t channels, std::uint64_t speakers = 0) {
  return {.sampleRate = 48'000, .channelCount = channels, .speakers = speakers};
}

TEST(StereoMix, ThreeChannelsAreLeftRightAndCentreWhereNobodySays) {
  EXPECT_THAT(gainOf(0, song(3)), Pair(1, 0));
  EXPECT_THAT(gainOf(1, song(3)), Pair(0, 1));
  EXPECT_THAT(gainOf(2, song(3)), Pair(0.70710678F, 0.70710678F));
}

TEST(StereoMix, TheSpeakersThatASongNamesCount) {
  EXPECT_THAT(gainOf(2, song(3, stereoWithBass)), Pair(0, 0));
  EXPECT_THAT(gainOf(4, song(6, sides51)), Pair(0.70710678F, 0));
  EXPECT_THAT(gainOf(5, song(6, sides51)), Pair(0, 0.70710678F));
}

TEST(StereoMix, SpeakersThatAreNotAsManyAsTheChannelsDoNotCount) {
  EXPECT_EQ(stereoMix(song(6, stereoWithBass)), stereoMix(song(6)));
}

TEST(StereoMix, MoreThanEightChannelsAreHeardAlikeOnBothSides) {
  for (const float gain : stereoMix(song(16))) EXPECT_FLOAT_EQ(gain, 1.0F / 16);
}

TEST(StereoMix, FullScaleOnEveryChannelStaysFullScale) {
  for (std::uint32_t channels = 3; channels <= 64; ++channels) {
    const auto gains = stereoMix(song(channels));
    for (const auto side : {std::span(gains).first(channels), std::span(gains).last(channels)})
      EXPECT_NEAR(std::accumulate(side.begin(), side.end(), 0.0), 1, 1e-5) << channels;
  }
}

TEST(StereoMix, BassAloneIsSilent) { EXPECT_THAT(stereoMix(song(1, 0x8)), ElementsAre(0, 0)); }

}  // namespace
}  // namespace quibel::platform
