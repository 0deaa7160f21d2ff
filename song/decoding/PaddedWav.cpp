#include "song/decoding/PaddedWav.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "song/decoding/Demuxer.h"
#include "song/file/Bytes.h"

namespace quibel::song {

namespace {

// What samples of so many bytes are.
constexpr std::array codecs{AV_CODEC_ID_NONE, AV_CODEC_ID_PCM_U8, AV_CODEC_ID_PCM_S16LE,
                            AV_CODEC_ID_PCM_S24LE, AV_CODEC_ID_PCM_S32LE};

// The beginning of WAVE_FORMAT_EXTENSIBLE's chunk.
using FormatChunk = std::array<std::uint8_t, 40>;

std::optional<PcmLayout> parseFormat(const FormatChunk& chunk) {
  constexpr std::int64_t extensible = 0xFFFE;
  constexpr std::int64_t wholeNumbers = 1;
  const auto bytes = std::span<const std::uint8_t>(chunk);
  const std::int64_t channels = littleEndian(bytes.subspan(2, 2));
  const std::int64_t rate = littleEndian(bytes.subspan(4, 4));
  const std::int64_t frameSize = littleEndian(bytes.subspan(12, 2));
  const std::int64_t validBits = littleEndian(bytes.subspan(18, 2));
  if (littleEndian(bytes.first(2)) != extensible ||
      littleEndian(bytes.subspan(24, 2)) != wholeNumbers || channels < 1 ||
      channels > maximumChannels || rate < 1 || rate > 10'000'000 || frameSize % channels != 0) {
    return std::nullopt;
  }
  const std::int64_t sampleSize = frameSize / channels;
  const bool isPadded = 0 < validBits && validBits <= 8 * (sampleSize - 1);
  if (!isPadded || sampleSize >= std::ssize(codecs)) return std::nullopt;
  return PcmLayout{.codec = codecs[static_cast<std::size_t>(sampleSize)],
                   .channels = static_cast<int>(channels),
                   .rate = static_cast<int>(rate)};
}

}  // namespace

std::optional<PcmLayout> readPaddedWav(Input& input) {
  constexpr int chunkLimit = 1000;
  std::array<std::uint8_t, 12> header{};
  if (input.readAt(0, header) != std::ssize(header) || !startsWith(header, "RIFF") ||
      !startsWith(std::span(header).subspan(8), "WAVE")) {
    return std::nullopt;
  }
  std::optional<PcmLayout> layout;
  std::int64_t position = std::ssize(header);
  for (int i = 0; i < chunkLimit; ++i) {
    std::array<std::uint8_t, 8> chunk{};
    if (input.readAt(position, chunk) != std::ssize(chunk)) break;
    const std::int64_t size = littleEndian(std::span(chunk).subspan(4));
    position += std::ssize(chunk);
    if (startsWith(chunk, "fmt ")) {
      FormatChunk format{};
      if (size < std::ssize(format) || input.readAt(position, format) != std::ssize(format)) break;
      layout = parseFormat(format);
      if (!layout) break;
    } else if (startsWith(chunk, "data")) {
      if (!layout) break;
      // A program that writes to a pipe cannot know the size in advance.
      constexpr std::int64_t untold = 0xFFFF'FFFF;
      const bool isTold = size > 0 && size < untold;
      layout->begin = position;
      layout->end = isTold ? std::min(position + size, input.size()) : input.size();
      return layout;
    }
    position += size + size % 2;
  }
  return std::nullopt;
}

}  // namespace quibel::song
