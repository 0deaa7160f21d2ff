#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/StereoMix.h"
#include "tests/song/Boxes.h"
#include "tests/song/ringtone/ExportFixture.h"

namespace quibel::test {
namespace {

/// The frames at 44.1 kHz of a time, which counts in whole 1/600 s.
std::size_t framesOf(double seconds) {
  return static_cast<std::size_t>(platform::makeTime(seconds, 600).value * 147 / 2);
}

/// The mean power of a stretch, in decibels to full scale.
double level(const std::vector<float>& samples, std::size_t from, std::size_t to) {
  double sum = 0;
  for (std::size_t i = from; i < to; ++i) sum += double{samples[i]} * double{samples[i]};
  return 10 * std::log10(sum / static_cast<double>(to - from));
}

TEST_F(Export, FirstFrameIsTheSongsFrameAtTheStart) {
  // No noise in it: of that any coder leaves some out, and the level falls.
  const Sound source = sweep(44'100, 2, std::size_t{10} * 44'100, 0.4F);
  const auto path = wav(source);
  for (const double start : {0.0, 0.5, 3.21, 9.5}) {
    const double duration = std::min(2.0, 10 - start);
    const Sound tone = readAll(exported(path, start, duration));
    const auto begin = framesOf(start);
    const Sound expected = cut(source, begin, framesOf(duration));
    ASSERT_EQ(tone.frames(), expected.frames()) << start;
    EXPECT_EQ(lagBehind(expected, tone, 200, 200, expected.frames() - 400), 0) << start;
    for (std::size_t channel = 0; channel < 2; ++channel) {
      EXPECT_NEAR(level(tone.channels[channel], 0, tone.frames()),
                  level(expected.channels[channel], 0, tone.frames()), 0.1)
          << start;
    }
  }
}

TEST_F(Export, PureTonesKeepTheirLevelHoweverLoud) {
  for (const float amplitude : {0.5F, 0.9F, 1.0F, 1.5F}) {
    for (const double frequency : {100.0, 440.0, 4'000.0}) {
      const Sound source = sine(44'100, 2, 44'100, frequency, amplitude);
      writeWav(file("song.wav"), source, WavFormat::float32);
      const Sound tone = readAll(exported(file("song.wav"), 0, 1));
      for (const auto& channel : tone.channels)
        EXPECT_NEAR(level(channel, 4'096, 40'000), level(source.channels[0], 4'096, 40'000), 0.05)
            << frequency << " Hz at " << amplitude;
    }
  }
}

TEST_F(Export, ASilentChannelStaysSilentBesideALoudOne) {
  Sound source = sine(44'100, 2, 44'100, 440, 0.9F);
  for (const std::size_t silent : {1U, 0U}) {  // and then both
    std::ranges::fill(source.channels[silent], 0.0F);
    const Sound tone = readAll(exported(wav(source), 0, 1));
    for (std::size_t channel = 0; channel < 2; ++channel) {
      const bool isSilent = std::ranges::count(source.channels[channel], 0.0F) == 44'100;
      const double heard = level(tone.channels[channel], 4'096, 40'000);
      if (isSilent)
        EXPECT_LT(heard, -100) << channel;
      else
        EXPECT_NEAR(heard, 20 * std::log10(0.9 / std::sqrt(2)), 0.05) << channel;
    }
  }
}

TEST_F(Export, NothingFromBeforeOrBehindTheFragmentIsHeard) {
  // Loud everywhere but in the fragment.
  Sound source = noise(44'100, 1, std::size_t{5} * 44'100, 3, 0.9F);
  std::fill_n(source.channels[0].begin() + 44'100, 44'100, 0.0F);
  const Sound tone = readAll(exported(wav(source), 1, 1));
  EXPECT_EQ(tone.frames(), 44'100U);
  for (const float sample : tone.channels[0]) ASSERT_LT(std::fabs(sample), 1e-4F);
}

struct Form {
  int rate;
  int channels;
  int toRate;
  std::uint64_t toChannels;
};

class ExportOfForm : public Export, public testing::WithParamInterface<Form> {};

TEST_P(ExportOfForm, GivesTheRateChannelsPlaceAndLevel) {
  const Form form = GetParam();
  // A tone in one place of two seconds of quiet: its edges tell the place.
  Sound source = sine(form.rate, form.channels, 2 * static_cast<std::size_t>(form.rate), 440, 0.0F);
  const Sound tone = sine(form.rate, form.channels, source.frames(), 440, 0.4F);
  const auto first = static_cast<std::size_t>(form.rate * 3 / 4);
  const auto last = static_cast<std::size_t>(form.rate * 5 / 4);
  for (std::size_t channel = 0; channel < source.channels.size(); ++channel) {
    std::copy(tone.channels[channel].begin() + static_cast<std::ptrdiff_t>(first),
              tone.channels[channel].begin() + static_cast<std::ptrdiff_t>(last),
              source.channels[channel].begin() + static_cast<std::ptrdiff_t>(first));
  }
  const auto file = exported(wav(source), 0.5, 1);
  const Movie movie{Boxes(file)};
  EXPECT_EQ(movie.mediaTimescale, static_cast<std::uint64_t>(form.toRate));
  EXPECT_EQ(movie.editDuration, static_cast<std::uint64_t>(form.toRate));
  const Sound result = readAll(file);
  ASSERT_EQ(result.channels.size(), form.toChannels);
  ASSERT_EQ(result.frames(), static_cast<std::size_t>(form.toRate));
  const Sound expected = cut(sine(form.toRate, 1, 2 * static_cast<std::size_t>(form.toRate), 440),
                             static_cast<std::size_t>(form.toRate / 2), result.frames());
  const auto from = static_cast<std::size_t>(form.toRate * 3 / 10);
  const auto count = static_cast<std::size_t>(form.toRate * 4 / 10);
  // Within one frame of the song.
  EXPECT_LE(std::abs(lagBehind(expected, result, 40, from, count)),
            (form.toRate + form.rate - 1) / form.rate);
  const double inside = level(result.channels[0], from, from + count);
  const double outside = level(result.channels[0], 0, static_cast<std::size_t>(form.toRate / 5));
  EXPECT_GT(inside - outside, 40);
  if (form.channels <= 2) {
    EXPECT_NEAR(inside, 20 * std::log10(0.4 / std::sqrt(2)), 0.1);
  }
  for (const auto& channel : result.channels) {
    for (const float sample : channel) ASSERT_LT(std::fabs(sample), 1.0F);
  }
}

INSTANTIATE_TEST_SUITE_P(Forms, ExportOfForm,
                         testing::Values(Form{44'100, 1, 44'100, 1}, Form{44'100, 2, 44'100, 2},
                                         Form{48'000, 2, 48'000, 2}, Form{8'000, 1, 48'000, 1},
                                         Form{11'025, 2, 44'100, 2}, Form{22'050, 1, 44'100, 1},
                                         Form{32'000, 2, 48'000, 2}, Form{88'200, 2, 44'100, 2},
                                         Form{96'000, 2, 48'000, 2}, Form{192'000, 1, 48'000, 1},
                                         Form{48'000, 6, 48'000, 2}, Form{44'100, 3, 44'100, 2},
                                         Form{44'100, 8, 44'100, 2}),
                         [](const auto& parameter) {
                           return "Rate" + std::to_string(parameter.param.rate) + "Channels" +
                                  std::to_string(parameter.param.channels);
                         });

TEST_F(Export, DownmixKeepsTheCentreAndDoesNotClip) {
  // In 5.1 the third channel is the centre.
  Sound source = sine(48'000, 6, 48'000, 440, 1.0F);
  Sound result = readAll(exported(wav(source), 0, 1));
  // A coder may overshoot where the tone sets in.
  for (std::size_t i = 4096; i < 40'000; ++i) {
    ASSERT_LT(std::fabs(result.channels[0][i]), 1.01F);
  }
  for (const std::size_t channel : {0U, 1U, 3U, 4U, 5U}) {
    std::ranges::fill(source.channels[channel], 0.0F);
  }
  result = readAll(exported(wav(source), 0, 1));
  for (const auto& channel : result.channels) {
    EXPECT_GT(level(channel, 10'000, 40'000), -20) << "the centre alone";
  }
}

TEST_F(Export, EveryChannelIsExportedAsItIsHeard) {
  constexpr float amplitude = 0.5F;
  for (const unsigned channels : {3U, 5U, 6U, 8U, 16U}) {
    const auto gains = platform::stereoMix({.sampleRate = 44'100, .channelCount = channels});
    for (const unsigned alone : {2U, channels - 1}) {
      Sound source = sine(44'100, static_cast<int>(channels), 22'050, 440, amplitude);
      for (unsigned channel = 0; channel < channels; ++channel) {
        if (channel != alone) std::ranges::fill(source.channels[channel], 0.0F);
      }
      const Sound result = readAll(exported(wav(source), 0, 0.5));
      for (const std::size_t side : {0U, 1U}) {
        const double gain = double{gains[side * channels + alone]};
        const double heard = level(result.channels[side], 5'000, 17'000);
        if (gain > 0) {
          EXPECT_NEAR(heard, 20 * std::log10(double{amplitude} * gain / std::sqrt(2)), 0.1)
              << alone << " of " << channels << ", side " << side;
        } else {
          EXPECT_LT(heard, -60) << alone << " of " << channels << ", side " << side;
        }
      }
    }
  }
}

TEST_F(Export, NumbersBeyondAllMeasureSpoilNothingElse) {
  Sound source = sine(44'100, 2, 88'200, 440);
  source.channels[0][30'000] = std::numeric_limits<float>::quiet_NaN();
  source.channels[0][30'100] = std::numeric_limits<float>::infinity();
  std::fill_n(source.channels[1].begin() + 31'000, 1'000, 1e30F);
  writeWav(file("song.wav"), source, WavFormat::float32);
  const Sound result = readAll(exported(file("song.wav"), 0, 2));
  ASSERT_EQ(result.frames(), 88'200U);
  for (const auto& channel : result.channels)
    EXPECT_NEAR(level(channel, 60'000, 80'000), 20 * std::log10(0.5 / std::sqrt(2)), 0.1);
}

}  // namespace
}  // namespace quibel::test
