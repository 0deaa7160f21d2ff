#include "song/ringtone/Exporter.h"

#include <algorithm>
#include <new>
#include <optional>
#include <span>
#include <utility>

#include "song/decoding/RateConverter.h"
#include "song/file/Errors.h"
#include "song/ringtone/AacEncoder.h"
#include "song/ringtone/ExportPlan.h"
#include "song/ringtone/MovieWriter.h"
#include "song/ringtone/OutputFile.h"

namespace quibel::song {

namespace {

// Frames read at a time.
constexpr std::uint32_t chunkFrames = 8192;

// 24 dB over full scale: no music is as loud, and the encoder fails at numbers of any size.
constexpr float loudest = 16;

void limit(platform::AudioPCMBuffer& buffer, std::uint32_t channels) {
  for (std::uint32_t channel = 0; channel < channels; ++channel) {
    for (float& sample : std::span(buffer.floatChannelData()[channel], buffer.frameLength()))
      sample = std::clamp(sample, -loudest, loudest);
  }
}

}  // namespace

platform::Result<void> exportRange(platform::AudioFile& song, const platform::TimeRange& range,
                                   const platform::FileURL& output, const std::stop_token& stop) {
  const platform::AudioFormat format = song.processingFormat();
  const RateConverter::Form from{.rate = static_cast<int>(format.sampleRate),
                                 .channels = static_cast<int>(format.channelCount),
                                 .speakers = format.speakers};
  const RateConverter::Form to{.rate = outputRate(from.rate),
                               .channels = outputChannels(from.channels)};
  const Fragment fragment = fragmentOf(range, song.length(), from.rate, to.rate);
  if (fragment.outputFrames == 0) return std::unexpected(makeError(Failure::emptyRange));

  auto encoder = AacEncoder::open(to.rate, to.channels);
  if (!encoder) return std::unexpected(encoder.error());
  std::optional<RateConverter> converter;
  if (from != to) {
    auto opened = RateConverter::open(from, to);
    if (!opened) return std::unexpected(opened.error());
    converter = std::move(*opened);
  }
  auto file = OutputFile::create(output);
  if (!file) return std::unexpected(file.error());
  auto writer = MovieWriter::open(**file, *encoder->parameters(), fragment.outputFrames);
  if (!writer) return std::unexpected(writer.error());
  const auto accept = [&](AVPacket& packet) { return writer->write(packet); };

  // A resampler's last frame may lie a fraction beyond the range.
  std::int64_t remaining = fragment.outputFrames;
  const auto encode = [&](const float* const* samples, int frames) {
    const auto count = static_cast<int>(std::min<std::int64_t>(frames, remaining));
    remaining -= count;
    return encoder->encode(samples, count, accept);
  };
  const auto encodeConverted = [&](const float* const* samples,
                                   int frames) -> platform::Result<void> {
    const auto converted = converter->convert(samples, frames);
    if (!converted) return std::unexpected(converted.error());
    return encode(reinterpret_cast<const float* const*>((*converted)->extended_data),
                  (*converted)->nb_samples);
  };

  if (auto moved = song.seek(fragment.begin); !moved) return moved;
  const auto buffer = song.makeBuffer(chunkFrames);
  if (!buffer) throw std::bad_alloc();
  for (std::int64_t left = fragment.frames; left > 0;) {
    if (stop.stop_requested()) return std::unexpected(makeError(Failure::cancelled));
    const auto wanted = static_cast<std::uint32_t>(std::min<std::int64_t>(left, chunkFrames));
    if (auto read = song.read(*buffer, wanted); !read) return read;
    if (buffer->frameLength() == 0) return std::unexpected(makeError(Failure::damaged));
    limit(*buffer, format.channelCount);
    const float* const* const samples = buffer->floatChannelData();
    const int frames = static_cast<int>(buffer->frameLength());
    auto encoded = converter ? encodeConverted(samples, frames) : encode(samples, frames);
    if (!encoded) return encoded;
    left -= frames;
  }
  for (std::int64_t before = -1; converter && remaining != std::exchange(before, remaining);) {
    if (auto flushed = encodeConverted(nullptr, 0); !flushed) return flushed;
  }
  if (auto finished = encoder->finish(accept); !finished) return finished;
  if (auto finished = writer->finish(); !finished) return finished;
  return (*file)->close();
}

}  // namespace quibel::song
