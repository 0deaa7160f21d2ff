#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "song/decoding/Samples.h"
#include "tests/song/InputOf.h"

namespace quibel::song {
namespace {

using test::FileBytes;
using Floats = std::vector<float>;

struct Coded {
  AVCodecID codec;
  FileBytes bytes;
  Floats samples;
};

const std::int64_t quarter = std::bit_cast<std::uint32_t>(0.25F);
const std::int64_t loud = std::bit_cast<std::int64_t>(-1.5);

const std::vector<Coded> codings{
    {AV_CODEC_ID_PCM_U8, {0, 128, 192}, {-1, 0, 0.5}},
    {AV_CODEC_ID_PCM_S8, {0x80, 0, 0x40}, {-1, 0, 0.5}},
    {AV_CODEC_ID_PCM_S16LE, {0, 0x80, 1, 0, 0, 0x40}, {-1, 0x1p-15F, 0.5}},
    {AV_CODEC_ID_PCM_S16BE, {0x80, 0, 0, 1, 0x40, 0}, {-1, 0x1p-15F, 0.5}},
    {AV_CODEC_ID_PCM_S24LE, {0, 0, 0x80, 1, 0, 0, 0, 0, 0x40}, {-1, 0x1p-23F, 0.5}},
    {AV_CODEC_ID_PCM_S24BE, {0x80, 0, 0, 0, 0, 1, 0x40, 0, 0}, {-1, 0x1p-23F, 0.5}},
    {AV_CODEC_ID_PCM_S32LE, {0, 0, 0, 0x80, 1, 0, 0, 0, 0, 0, 0, 0x40}, {-1, 0x1p-31F, 0.5}},
    {AV_CODEC_ID_PCM_S32BE, {0x80, 0, 0, 0, 0, 0, 0, 1, 0x40, 0, 0, 0}, {-1, 0x1p-31F, 0.5}},
    {AV_CODEC_ID_PCM_F32LE, FileBytes{}.little(quarter, 4).zeros(4), {0.25, 0}},
    {AV_CODEC_ID_PCM_F32BE, FileBytes{}.big(quarter, 4).zeros(4), {0.25, 0}},
    {AV_CODEC_ID_PCM_F64LE, FileBytes{}.little(loud, 8).zeros(8), {-1.5, 0}},
    {AV_CODEC_ID_PCM_F64BE, FileBytes{}.big(loud, 8).zeros(8), {-1.5, 0}},
    // ITU-T G.711: the loudest and the softest value of each sign.
    {AV_CODEC_ID_PCM_ALAW,
     {0xAA, 0x2A, 0xD5, 0x55},
     {32256 / 32768.0F, -32256 / 32768.0F, 0x1p-12F, -0x1p-12F}},
    {AV_CODEC_ID_PCM_MULAW,
     {0x80, 0x00, 0xFF, 0xFE},
     {32124 / 32768.0F, -32124 / 32768.0F, 0, 0x1p-12F}},
};

TEST(PcmSamples, OfEveryCodingBecomeFloats) {
  for (const auto& [codec, bytes, samples] : codings) {
    const char* const name = avcodec_get_name(codec);
    EXPECT_EQ(bytesPerSample(codec), std::ssize(bytes) / std::ssize(samples)) << name;
    Floats decoded(samples.size());
    const std::array<float*, 1> out{decoded.data()};
    convertPCM(codec, bytes, 1, out.data(), 0);
    EXPECT_EQ(decoded, samples) << name;
  }
}

TEST(PcmSamples, ThatAreNoFiniteNumbersAreSilent) {
  const std::vector<std::uint8_t> floats{0,    0,    0xC0, 0x7F,          // not a number
                                         0,    0,    0x80, 0x7F,          // infinite
                                         0,    0,    0x80, 0xFF,          // the same below zero
                                         0xFF, 0xFF, 0x7F, 0x7F};         // the greatest number
  const std::vector<std::uint8_t> doubles{0, 0, 0, 0, 0, 0, 0xF0, 0x7E};  // beyond all floats
  Floats decoded(4, 9);
  const std::array<float*, 1> out{decoded.data()};
  convertPCM(AV_CODEC_ID_PCM_F32LE, floats, 1, out.data(), 0);
  EXPECT_EQ(decoded, (Floats{0, 0, 0, std::numeric_limits<float>::max()}));
  convertPCM(AV_CODEC_ID_PCM_F64LE, doubles, 1, out.data(), 3);
  EXPECT_EQ(decoded[3], 0);
}

TEST(PcmSamples, OfOtherCodecsAreUnknown) {
  EXPECT_EQ(bytesPerSample(AV_CODEC_ID_MP3), 0);
  EXPECT_EQ(bytesPerSample(AV_CODEC_ID_PCM_BLURAY), 0);
}

TEST(PcmSamples, GoToTheirChannelsFromAPositionOn) {
  for (const std::size_t channels : {1U, 2U, 3U}) {
    FileBytes bytes;
    for (std::size_t i = 0; i < 2 * channels; ++i) bytes.push_back(static_cast<std::uint8_t>(i));
    std::vector<Floats> sound(channels, Floats(4, 9));
    std::vector<float*> out;
    for (auto& channel : sound) out.push_back(channel.data());
    convertPCM(AV_CODEC_ID_PCM_S8, bytes, static_cast<int>(channels), out.data(), 1);
    for (std::size_t i = 0; i < channels; ++i) {
      const auto one = static_cast<float>(i) / 128;
      const auto two = static_cast<float>(i + channels) / 128;
      EXPECT_EQ(sound[i], (Floats{9, one, two, 9})) << i << " of " << channels;
    }
  }
}

template <class Number>
FramePointer frameOf(AVSampleFormat format, int channels, std::vector<Number> numbers) {
  FramePointer frame(av_frame_alloc());
  frame->format = format;
  frame->nb_samples = static_cast<int>(std::ssize(numbers)) / channels;
  av_channel_layout_default(&frame->ch_layout, channels);
  if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
  const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
  const std::size_t planes = isPlanar ? static_cast<std::size_t>(channels) : 1;
  const std::size_t each = numbers.size() / planes;
  for (std::size_t i = 0; i < planes; ++i) {
    std::memcpy(frame->extended_data[i], numbers.data() + i * each, each * sizeof(Number));
  }
  return frame;
}

// Frames 1 and 2 of three, which begin with a silent one, go to positions 1 and 2.
template <class Number>
void expectCopied(AVSampleFormat packed, Number silence, Number half) {
  for (const bool isPlanar : {false, true}) {
    const auto format = isPlanar ? av_get_planar_sample_fmt(packed) : packed;
    const auto numbers = isPlanar ? std::vector{silence, half, silence, silence, silence, half}
                                  : std::vector{silence, silence, half, silence, silence, half};
    const auto frame = frameOf<Number>(format, 2, numbers);
    Floats left(3, 9);
    Floats right(3, 9);
    const std::array<float*, 2> out{left.data(), right.data()};
    ASSERT_TRUE(copySamples(*frame, 1, 2, out.data(), 1));
    EXPECT_EQ(left, (Floats{9, 0.5, 0})) << av_get_sample_fmt_name(format);
    EXPECT_EQ(right, (Floats{9, 0, 0.5})) << av_get_sample_fmt_name(format);
  }
}

TEST(FrameSamples, OfEveryFormatBecomeFloats) {
  expectCopied<std::uint8_t>(AV_SAMPLE_FMT_U8, 128, 192);
  expectCopied<std::int16_t>(AV_SAMPLE_FMT_S16, 0, 0x4000);
  expectCopied<std::int32_t>(AV_SAMPLE_FMT_S32, 0, 0x4000'0000);
  expectCopied<std::int64_t>(AV_SAMPLE_FMT_S64, 0, std::int64_t{1} << 62);
  expectCopied<float>(AV_SAMPLE_FMT_FLT, 0, 0.5);
  expectCopied<double>(AV_SAMPLE_FMT_DBL, 0, 0.5);
}

TEST(FrameSamples, ThatAreNoFiniteNumbersAreSilent) {
  expectCopied<float>(AV_SAMPLE_FMT_FLT, std::numeric_limits<float>::quiet_NaN(), 0.5);
  expectCopied<double>(AV_SAMPLE_FMT_DBL, std::numeric_limits<double>::infinity(), 0.5);
}

TEST(FrameSamples, OfAnUnknownFormatAreNotCopied) {
  FramePointer frame(av_frame_alloc());
  frame->format = AV_SAMPLE_FMT_NONE;
  EXPECT_FALSE(copySamples(*frame, 0, 0, nullptr, 0));
}

}  // namespace
}  // namespace quibel::song
