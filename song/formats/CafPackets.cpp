#include "song/formats/CafPackets.h"

#include <array>
#include <span>

#include "song/file/Bytes.h"

namespace quibel::song {

std::optional<CafPackets> readCafPackets(Input& input) {
  constexpr int chunkLimit = 1000;
  std::array<std::uint8_t, 8> header{};
  if (input.readAt(0, header) != std::ssize(header) || !startsWith(header, "caff")) {
    return std::nullopt;
  }
  std::int64_t position = std::ssize(header);
  for (int i = 0; i < chunkLimit; ++i) {
    std::array<std::uint8_t, 12> chunk{};
    if (input.readAt(position, chunk) != std::ssize(chunk)) break;
    position += std::ssize(chunk);
    if (startsWith(chunk, "pakt")) {
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

}  // namespace quibel::song
