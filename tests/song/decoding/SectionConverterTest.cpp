#include <algorithm>

#include <gtest/gtest.h>

#include "song/decoding/SectionConverter.h"

namespace quibel::song {
namespace {

/// Frames that hold one value on every channel.
FramePointer frameOf(int rate, int channels, int count, float value) {
  FramePointer frame(av_frame_alloc());
  frame->format = AV_SAMPLE_FMT_FLTP;
  frame->sample_rate = rate;
  frame->nb_samples = count;
  av_channel_layout_default(&frame->ch_layout, channels);
  if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
  for (int i = 0; i < channels; ++i) {
    std::fill_n(reinterpret_cast<float*>(frame->extended_data[i]), count, value);
  }
  return frame;
}

float lastSample(const AVFrame& frame, int channel) {
  return reinterpret_cast<const float*>(frame.extended_data[channel])[frame.nb_samples - 1];
}

TEST(SectionConverter, LeavesFramesOfTheFirstFormAsTheyAre) {
  SectionConverter converter({44'100, 2});
  const auto frame = frameOf(44'100, 2, 1024, 0.5F);
  EXPECT_EQ(converter.convert(*frame), frame.get());
}

TEST(SectionConverter, GivesOtherSectionsTheFormOfTheFirst) {
  struct Form {
    int rate, channels;
  };
  for (const auto& [rate, channels] : {Form{44'100, 1}, Form{22'050, 2}, Form{48'000, 6}}) {
    SectionConverter converter({44'100, 2});
    const auto frame = frameOf(rate, channels, 4096, 0.25F);
    int frames = 0;
    for (int i = 0; i < 8; ++i) {
      const AVFrame* const converted = converter.convert(*frame);
      ASSERT_NE(converted, nullptr);
      EXPECT_EQ(converted->ch_layout.nb_channels, 2);
      EXPECT_EQ(converted->sample_rate, 44'100);
      frames += converted->nb_samples;
      if (i > 0) {
        EXPECT_GT(lastSample(*converted, 1), 0.1F);
      }
    }
    EXPECT_NEAR(frames, 8.0 * 4096 * 44'100 / rate, 100) << rate;
  }
}

TEST(SectionConverter, SetsItselfUpForEachSection) {
  SectionConverter converter({44'100, 1});
  const auto slow = frameOf(22'050, 1, 4096, 0.25F);
  const auto fast = frameOf(88'200, 1, 4096, 0.25F);
  for (const auto& [frame, expected] :
       {std::pair{slow.get(), 8192}, {fast.get(), 2048}, {slow.get(), 8192}}) {
    const AVFrame* const converted = converter.convert(*frame);
    ASSERT_NE(converted, nullptr);
    EXPECT_NEAR(converted->nb_samples, expected, 64);
  }
}

TEST(SectionConverter, NothingOfTheLastSectionIsHeardAfterAReset) {
  SectionConverter converter({44'100, 1});
  ASSERT_NE(converter.convert(*frameOf(22'050, 1, 4096, 1)), nullptr);
  converter.reset();
  const auto silence = frameOf(22'050, 1, 4096, 0);
  const AVFrame* const converted = converter.convert(*silence);
  ASSERT_NE(converted, nullptr);
  const auto* const samples = reinterpret_cast<const float*>(converted->extended_data[0]);
  EXPECT_EQ(std::count(samples, samples + converted->nb_samples, 0.0F), converted->nb_samples);
}

TEST(SectionConverter, GivesNothingOfWhatCannotBeConverted) {
  SectionConverter converter({44'100, 2});
  const auto frame = frameOf(22'050, 2, 1024, 0.5F);
  frame->format = AV_SAMPLE_FMT_NONE;
  EXPECT_EQ(converter.convert(*frame), nullptr);
}

}  // namespace
}  // namespace quibel::song
