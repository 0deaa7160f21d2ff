#include "song/decoding/Samples.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <utility>

namespace quibel::song {

namespace {

// Full scale of integers is the magnitude of their most negative value.
float toFloat(std::uint8_t value) { return static_cast<float>(value - 128) * (1.0F / 128); }
float toFloat(std::int8_t value) { return static_cast<float>(value) * (1.0F / 128); }
float toFloat(std::int16_t value) { return static_cast<float>(value) * (1.0F / 32768); }
float toFloat(std::int32_t value) { return static_cast<float>(value) * (1.0F / 2147483648.0F); }
float toFloat(std::int64_t value) { return static_cast<float>(value) * 0x1p-63F; }
// What is no number, or no finite one, is silence.
float toFloat(float value) {
  return std::fabs(value) <= std::numeric_limits<float>::max() ? value : 0.0F;
}
float toFloat(double value) { return toFloat(static_cast<float>(value)); }

/// A number of `Size` bytes as it lies in a file.
template <class Number, std::size_t Size, std::endian order>
struct Stored {
  static constexpr std::size_t size = Size;

  static float load(const std::uint8_t* bytes) {
    if constexpr (Size == 3) {
      // 24 bits in the upper part of 32.
      const auto [low, high] = order == std::endian::little ? std::pair{0, 2} : std::pair{2, 0};
      const std::uint32_t bits = std::uint32_t{bytes[low]} << 8U | std::uint32_t{bytes[1]} << 16U |
                                 std::uint32_t{bytes[high]} << 24U;
      return toFloat(static_cast<std::int32_t>(bits));
    } else {
      std::array<std::uint8_t, Size> data;
      std::memcpy(data.data(), bytes, Size);
      if constexpr (order != std::endian::native) std::ranges::reverse(data);
      return toFloat(std::bit_cast<Number>(data));
    }
  }
};

// ITU-T G.711: sign, 3 bits of exponent, 4 of mantissa.
constexpr float decodeALaw(std::uint8_t code) {
  const unsigned bits = code ^ 0x55U;
  const unsigned exponent = bits >> 4U & 7U;
  int magnitude = static_cast<int>((bits & 15U) << 4U) + 8;
  if (exponent > 0) magnitude = (magnitude + 256) << (exponent - 1);
  return static_cast<float>((bits & 0x80U) != 0 ? magnitude : -magnitude) * (1.0F / 32768);
}

constexpr float decodeMuLaw(std::uint8_t code) {
  const unsigned bits = ~static_cast<unsigned>(code);
  const int magnitude = ((static_cast<int>(bits & 15U) * 8 + 132) << (bits >> 4U & 7U)) - 132;
  return static_cast<float>((bits & 0x80U) != 0 ? -magnitude : magnitude) * (1.0F / 32768);
}

template <float (*decode)(std::uint8_t)>
constexpr auto makeTable() {
  std::array<float, 256> values{};
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = decode(static_cast<std::uint8_t>(i));
  return values;
}

template <float (*decode)(std::uint8_t)>
struct Companded {
  static constexpr std::size_t size = 1;
  static constexpr auto table = makeTable<decode>();

  static float load(const std::uint8_t* bytes) { return table[*bytes]; }
};

// Plain loops without aliasing, which the compiler turns into vector code.
template <class Sample>
void convertStride(const std::uint8_t* bytes, std::size_t frames, std::size_t channels,
                   float* __restrict out) {
  if (channels == 1) {
    for (std::size_t i = 0; i < frames; ++i) out[i] = Sample::load(bytes + i * Sample::size);
  } else {
    for (std::size_t i = 0; i < frames; ++i) {
      out[i] = Sample::load(bytes + i * channels * Sample::size);
    }
  }
}

template <class Sample>
void convertPair(const std::uint8_t* bytes, std::size_t frames, float* __restrict left,
                 float* __restrict right) {
  for (std::size_t i = 0; i < frames; ++i) {
    left[i] = Sample::load(bytes + 2 * i * Sample::size);
    right[i] = Sample::load(bytes + (2 * i + 1) * Sample::size);
  }
}

template <class Sample>
void deinterleave(const std::uint8_t* bytes, std::size_t frames, std::size_t channels,
                  float* const* out, std::uint32_t at) {
  if (channels == 2) return convertPair<Sample>(bytes, frames, out[0] + at, out[1] + at);
  for (std::size_t channel = 0; channel < channels; ++channel) {
    convertStride<Sample>(bytes + channel * Sample::size, frames, channels, out[channel] + at);
  }
}

template <class Number>
void copyFrom(const AVFrame& frame, bool isPlanar, int first, int count, float* const* out,
              std::uint32_t at) {
  using Sample = Stored<Number, sizeof(Number), std::endian::native>;
  const auto channels = static_cast<std::size_t>(frame.ch_layout.nb_channels);
  const auto skipped = static_cast<std::size_t>(first) * sizeof(Number);
  const auto frames = static_cast<std::size_t>(count);
  if (!isPlanar) {
    return deinterleave<Sample>(frame.extended_data[0] + skipped * channels, frames, channels, out,
                                at);
  }
  for (std::size_t channel = 0; channel < channels; ++channel) {
    const std::uint8_t* const samples = frame.extended_data[channel] + skipped;
    convertStride<Sample>(samples, frames, 1, out[channel] + at);
  }
}

constexpr auto little = std::endian::little;
constexpr auto big = std::endian::big;

// Calls `visit` with the type that reads the codec's samples, or returns false.
template <class Visit>
bool withStoredType(AVCodecID codec, Visit visit) {
  switch (codec) {
    case AV_CODEC_ID_PCM_U8:
      visit(Stored<std::uint8_t, 1, little>{});
      return true;
    case AV_CODEC_ID_PCM_S8:
      visit(Stored<std::int8_t, 1, little>{});
      return true;
    case AV_CODEC_ID_PCM_S16LE:
      visit(Stored<std::int16_t, 2, little>{});
      return true;
    case AV_CODEC_ID_PCM_S16BE:
      visit(Stored<std::int16_t, 2, big>{});
      return true;
    case AV_CODEC_ID_PCM_S24LE:
      visit(Stored<std::int32_t, 3, little>{});
      return true;
    case AV_CODEC_ID_PCM_S24BE:
      visit(Stored<std::int32_t, 3, big>{});
      return true;
    case AV_CODEC_ID_PCM_S32LE:
      visit(Stored<std::int32_t, 4, little>{});
      return true;
    case AV_CODEC_ID_PCM_S32BE:
      visit(Stored<std::int32_t, 4, big>{});
      return true;
    case AV_CODEC_ID_PCM_F32LE:
      visit(Stored<float, 4, little>{});
      return true;
    case AV_CODEC_ID_PCM_F32BE:
      visit(Stored<float, 4, big>{});
      return true;
    case AV_CODEC_ID_PCM_F64LE:
      visit(Stored<double, 8, little>{});
      return true;
    case AV_CODEC_ID_PCM_F64BE:
      visit(Stored<double, 8, big>{});
      return true;
    case AV_CODEC_ID_PCM_ALAW:
      visit(Companded<decodeALaw>{});
      return true;
    case AV_CODEC_ID_PCM_MULAW:
      visit(Companded<decodeMuLaw>{});
      return true;
    default:
      return false;
  }
}

}  // namespace

bool copySamples(const AVFrame& frame, int first, int count, float* const* out, std::uint32_t at) {
  const auto format = static_cast<AVSampleFormat>(frame.format);
  const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
  switch (av_get_packed_sample_fmt(format)) {
    case AV_SAMPLE_FMT_U8:
      copyFrom<std::uint8_t>(frame, isPlanar, first, count, out, at);
      return true;
    case AV_SAMPLE_FMT_S16:
      copyFrom<std::int16_t>(frame, isPlanar, first, count, out, at);
      return true;
    case AV_SAMPLE_FMT_S32:
      copyFrom<std::int32_t>(frame, isPlanar, first, count, out, at);
      return true;
    case AV_SAMPLE_FMT_S64:
      copyFrom<std::int64_t>(frame, isPlanar, first, count, out, at);
      return true;
    case AV_SAMPLE_FMT_FLT:
      copyFrom<float>(frame, isPlanar, first, count, out, at);
      return true;
    case AV_SAMPLE_FMT_DBL:
      copyFrom<double>(frame, isPlanar, first, count, out, at);
      return true;
    default:
      return false;
  }
}

int bytesPerSample(AVCodecID codec) {
  int size = 0;
  withStoredType(codec, [&](auto sample) { size = static_cast<int>(decltype(sample)::size); });
  return size;
}

void convertPCM(AVCodecID codec, std::span<const std::uint8_t> bytes, int channels,
                float* const* out, std::uint32_t at) {
  const auto count = static_cast<std::size_t>(channels);
  withStoredType(codec, [&](auto sample) {
    using Sample = decltype(sample);
    deinterleave<Sample>(bytes.data(), bytes.size() / (count * Sample::size), count, out, at);
  });
}

}  // namespace quibel::song
