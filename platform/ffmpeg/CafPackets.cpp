#include "platform/ffmpeg/CafPackets.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace quibel::ffmpeg {

namespace {

std::int64_t bigEndian(std::span<const std::uint8_t> bytes) {
  std::uint64_t value = 0;
  for (const std::uint8_t byte : bytes) value = value << 8U | byte;
  return static_cast<std::int64_t>(value);
}

bool isNamed(std::span<const std::uint8_t> bytes, std::string_view name) {
  return std::equal(name.begin(), name.end(), bytes.begin());
}

}  // namespace

std::optional<CafPackets> readCafPackets(Input& input) {
  constexpr int chunkLimit = 1000;
  std::array<std::uint8_t, 8> header{};
  if (input.readAt(0, header) != std::ssize(header) || !isNamed(header, "caff")) {
    return std::nullopt;
  }
  std::int64_t position = std::ssize(header);
  for (int i = 0; i < chunkLimit; ++i) {
    std::array<std::uint8_t, 12> chunk{};
    if (input.readAt(position, chunk) != std::ssize(chunk)) break;
    position += std::ssize(chunk);
    if (isNamed(chunk, "pakt")) {
      std::array<std::uint8_t, 24> table{};
      if (input.readAt(position, table) != std::ssize(table)) break;
      const auto bytes = std::span<const std::uint8_t>(table).subspan(8);
      return CafPackets{.song = bigEndian(bytes.first(8)),
                        .priming = bigEndian(bytes.subspan(8, 4)),
                        .remainder = bigEndian(bytes.subspan(12, 4))};
    }
    const std::int64_t size = bigEndian(std::span<const std::uint8_t>(chunk).subspan(4));
    if (size < 0 || size > input.size() - position) break;
    position += size;
  }
  return std::nullopt;
}

}  // namespace quibel::ffmpeg
