#include <gmock/gmock.h>

#include "playback/Downmix.h"

namespace quibel::playback {
namespace {

using testing::ElementsAre;
using testing::FloatEq;
using testing::FloatNear;

/// The stereo frame that one frame of these channels becomes.
std::vector<float> mixOf(const std::vector<float>& channels) {
  std::vector<const float*> song;
  song.reserve(channels.size());
  for (const auto& sample : channels) song.push_back(&sample);
  const Downmix downmix({48'000, static_cast<std::uint32_t>(channels.size())}, 1);
  std::vector<float> out(downmix.sinkChannels());
  EXPECT_EQ(downmix.mix(song.data(), 1, out.data()), 1U);
  return out;
}

TEST(Downmix, LeavesMonoAndStereoAsTheyAre) {
  EXPECT_THAT(mixOf({0.3F}), ElementsAre(0.3F));
  EXPECT_THAT(mixOf({0.3F, -0.7F}), ElementsAre(0.3F, -0.7F));
}

TEST(Downmix, FivePointOneKeepsItsSidesApartAndItsCentreOnBoth) {
  const float full = 1 / (1 + 2 * 0.70710678F);
  const float low = full * 0.70710678F;
  EXPECT_THAT(mixOf({1, 0, 0, 0, 0, 0}), ElementsAre(FloatEq(full), 0));
  EXPECT_THAT(mixOf({0, 1, 0, 0, 0, 0}), ElementsAre(0, FloatEq(full)));
  EXPECT_THAT(mixOf({0, 0, 1, 0, 0, 0}), ElementsAre(FloatEq(low), FloatEq(low)));
  EXPECT_THAT(mixOf({0, 0, 0, 1, 0, 0}), ElementsAre(0, 0));
  EXPECT_THAT(mixOf({0, 0, 0, 0, 1, 0}), ElementsAre(FloatEq(low), 0));
  EXPECT_THAT(mixOf({0, 0, 0, 0, 0, 1}), ElementsAre(0, FloatEq(low)));
}

TEST(Downmix, AveragesAsManyFramesAsItsStep) {
  const std::vector<float> song{0.2F, 0.4F, -1, 1, 0.9F};
  const float* channel = song.data();
  std::vector<float> out(2);
  EXPECT_EQ(Downmix({48'000, 1}, 2).mix(&channel, song.size(), out.data()), 2U);
  EXPECT_THAT(out, ElementsAre(FloatEq(0.3F), FloatNear(0, 1e-7F)));
}

}  // namespace
}  // namespace quibel::playback
