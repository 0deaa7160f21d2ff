#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "song/decoding/RateConverter.h"

namespace quibel::song {
namespace {

using Sound = std::vector<std::vector<float>>;  // by channel

/// A tone of 440 Hz on the channels of these levels.
Sound tone(int rate, std::size_t frames, const std::vector<float>& levels) {
  Sound sound;
  for (const float level : levels) {
    auto& channel = sound.emplace_back(frames);
    for (std::size_t i = 0; i < frames; ++i) {
      const double angle = 2 * std::numbers::pi * 440 * static_cast<double>(i) / rate;
      channel[i] = level * static_cast<float>(std::sin(angle));
    }
  }
  return sound;
}

/// What comes out of a whole sound in blocks of that many frames, and of its end.
Sound converted(const Sound& in, RateConverter::Form from, RateConverter::Form to,
                std::size_t block) {
  auto converter = RateConverter::open(from, to);
  EXPECT_TRUE(converter);
  Sound out(static_cast<std::size_t>(to.channels));
  const auto take = [&](const float* const* planes, std::size_t frames) {
    const auto frame = converter->convert(planes, static_cast<int>(frames));
    EXPECT_TRUE(frame);
    for (std::size_t i = 0; i < out.size(); ++i) {
      const auto* const samples = reinterpret_cast<const float*>((*frame)->extended_data[i]);
      out[i].insert(out[i].end(), samples, samples + (*frame)->nb_samples);
    }
  };
  for (std::size_t at = 0; at < in[0].size(); at += block) {
    std::vector<const float*> planes;
    for (const auto& channel : in) planes.push_back(channel.data() + at);
    take(planes.data(), std::min(block, in[0].size() - at));
  }
  take(nullptr, 0);
  return out;
}

float greatest(const std::vector<float>& samples) {
  float most = 0;
  for (const float sample : samples) most = std::max(most, std::fabs(sample));
  return most;
}

TEST(RateConverter, GivesTheSameSoundAtAnotherRateAndInItsPlace) {
  for (const int rate : {22'050, 88'200, 96'000}) {
    const int to = rate == 96'000 ? 48'000 : 44'100;
    const auto source = tone(rate, static_cast<std::size_t>(rate) / 2, {0.5F});
    const auto expected = tone(to, static_cast<std::size_t>(to) / 2, {0.5F})[0];
    const auto sound = converted(source, {rate, 1}, {to, 1}, 1'000)[0];
    ASSERT_NEAR(static_cast<double>(sound.size()), static_cast<double>(expected.size()), 2) << rate;
    for (std::size_t i = 2'000; i < expected.size() - 2'000; ++i) {
      ASSERT_NEAR(sound[i], expected[i], 1e-3) << rate << " at " << i;
    }
  }
}

TEST(RateConverter, GivesTheSameInBlocksOfAnySize) {
  const auto source = tone(32'000, 8'000, {0.5F, 0.25F});
  const auto whole = converted(source, {32'000, 2}, {48'000, 2}, 8'000);
  EXPECT_EQ(converted(source, {32'000, 2}, {48'000, 2}, 77), whole);
}

TEST(RateConverter, KeepsSoundLouderThanFullScale) {
  const auto sound = converted(tone(44'100, 4'410, {1.5F}), {44'100, 1}, {44'100, 1}, 512)[0];
  EXPECT_NEAR(greatest(sound), 1.5F, 1e-3);
}

TEST(RateConverter, MixesEveryChannelDownWithoutExceedingFullScale) {
  const RateConverter::Form surround{48'000, 6};
  const RateConverter::Form stereo{48'000, 2};
  const auto all = converted(tone(48'000, 4'800, {1, 1, 1, 1, 1, 1}), surround, stereo, 512);
  EXPECT_LE(greatest(all[0]), 1.001F);
  for (const std::size_t alone : {0U, 1U, 2U, 4U, 5U}) {  // the fourth is the bass
    std::vector<float> levels(6, 0.0F);
    levels[alone] = 1;
    const auto sound = converted(tone(48'000, 4'800, levels), surround, stereo, 512);
    EXPECT_GT(std::max(greatest(sound[0]), greatest(sound[1])), 0.1F) << alone;
  }
  const auto centre = converted(tone(48'000, 4'800, {0, 0, 1, 0, 0, 0}), surround, stereo, 512);
  EXPECT_EQ(centre[0], centre[1]);
}

}  // namespace
}  // namespace quibel::song
