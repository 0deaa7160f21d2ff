#include <algorithm>
#include <array>
#include <random>

#include <gtest/gtest.h>

#include "song/ringtone/ExportPlan.h"

namespace quibel::song {
namespace {

using platform::makeTime;
using platform::TimeRange;

TimeRange range(double start, double duration) {
  return {makeTime(start, 600), makeTime(duration, 600)};
}

TEST(ExportPlan, RateStaysOrGoesToItsFamily) {
  EXPECT_EQ(outputRate(44'100), 44'100);
  EXPECT_EQ(outputRate(48'000), 48'000);
  for (const int rate : {11'025, 22'050, 88'200, 176'400}) EXPECT_EQ(outputRate(rate), 44'100);
  for (const int rate : {8'000, 12'000, 16'000, 24'000, 32'000, 64'000, 96'000, 192'000}) {
    EXPECT_EQ(outputRate(rate), 48'000);
  }
  EXPECT_EQ(outputRate(37'800), 48'000);
}

TEST(ExportPlan, MonoStaysMonoAndAllElseIsStereo) {
  EXPECT_EQ(outputChannels(1), 1);
  for (const int channels : {2, 3, 4, 6, 8}) EXPECT_EQ(outputChannels(channels), 2);
  EXPECT_EQ(bitRate(1), 128'000);
  EXPECT_EQ(bitRate(2), 256'000);
}

TEST(ExportPlan, FragmentBeginsAtTheFrameOfItsStart) {
  EXPECT_EQ(fragmentOf(range(12.5, 40), 100'000'000, 44'100, 44'100),
            (Fragment{551'250, 1'764'000, 1'764'000}));
  // Half a frame is none.
  EXPECT_EQ(fragmentOf(range(1.0 / 600, 1), 100'000'000, 44'100, 44'100).begin, 73);
}

TEST(ExportPlan, FramesAreRoundedDown) {
  EXPECT_EQ(fragmentOf(range(0, 1.0 / 600), 100'000, 44'100, 44'100).outputFrames, 73);
  EXPECT_EQ(fragmentOf(range(0, 39.999), 10'000'000, 48'000, 48'000).outputFrames, 23'999 * 80);
}

TEST(ExportPlan, WhatLiesBeforeTheSongIsLeftOut) {
  EXPECT_EQ(fragmentOf(range(-0.25, 1), 100'000, 44'100, 44'100), (Fragment{0, 33'075, 33'075}));
  EXPECT_EQ(fragmentOf(range(-2, 1), 100'000, 44'100, 44'100).outputFrames, 0);
}

TEST(ExportPlan, WhatLiesBehindTheSongIsLeftOut) {
  EXPECT_EQ(fragmentOf(range(1, 40), 88'200, 44'100, 44'100), (Fragment{44'100, 44'100, 44'100}));
  EXPECT_EQ(fragmentOf(range(3, 40), 88'200, 44'100, 44'100).outputFrames, 0);
}

TEST(ExportPlan, ResampledFramesFillTheRange) {
  EXPECT_EQ(fragmentOf(range(1, 40), 100'000'000, 96'000, 48'000),
            (Fragment{96'000, 3'840'000, 1'920'000}));
  EXPECT_EQ(fragmentOf(range(0, 1.0 / 600), 100'000, 22'050, 44'100), (Fragment{0, 37, 73}));
  // A song that ends first: no more than it has.
  EXPECT_EQ(fragmentOf(range(0, 40), 22'051, 22'050, 44'100).outputFrames, 44'102);
}

TEST(ExportPlan, NothingPresentedIsLongerThanTheRange) {
  for (const int rate : {8'000, 22'050, 44'100, 48'000, 96'000}) {
    for (std::int64_t start = 0; start < 10'000; start += 7) {
      const auto fragment =
          fragmentOf({{start, 600}, {24'000, 600}}, 1'000'000'000, rate, outputRate(rate));
      ASSERT_LE(fragment.outputFrames, 40LL * outputRate(rate));
      ASSERT_GE(fragment.frames * outputRate(rate), fragment.outputFrames * rate);
    }
  }
}

TEST(ExportPlan, NoFragmentOfFortySecondsAndMoreIsPresentedForLonger) {
  std::mt19937_64 random(40);
  std::uniform_real_distribution<double> starts(-1, 7'200);
  std::uniform_real_distribution<double> lengths(40, 10'800);
  constexpr std::array rates{8'000,  11'025, 16'000, 22'050, 32'000,  37'800,
                             44'100, 48'000, 88'200, 96'000, 176'400, 192'000};
  for (int count = 0; count < 10'000; ++count) {
    const double start = starts(random);
    const double end = start + lengths(random);
    const int songRate = rates[random() % rates.size()];
    const int fileRate = outputRate(songRate);
    const auto fragment =
        fragmentOf(range(start, std::min(end - start, 40.0)), 4'000'000'000, songRate, fileRate);
    ASSERT_LE(fragment.outputFrames, 40LL * fileRate) << start << " … " << end;
    // Not a frame less either, but for what lies before the song.
    if (start >= 0) {
      ASSERT_EQ(fragment.outputFrames, 40LL * fileRate) << start << " … " << end;
    }
  }
}

TEST(ExportPlan, TimesBeyondAllSongsGiveNothing) {
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  constexpr auto least = std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ(fragmentOf({{most, 600}, {600, 600}}, 1'000'000, 44'100, 44'100).outputFrames, 0);
  EXPECT_EQ(fragmentOf({{least, 600}, {600, 600}}, 1'000'000, 44'100, 44'100).outputFrames, 0);
  EXPECT_EQ(fragmentOf({{0, 600}, {least, 600}}, 1'000'000, 44'100, 44'100).outputFrames, 0);
  EXPECT_EQ(fragmentOf({{0, 600}, {most, 600}}, 1'000'000, 44'100, 44'100).outputFrames, 1'000'000);
}

}  // namespace
}  // namespace quibel::song
