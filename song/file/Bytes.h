#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace quibel::song {

/// A number of at most eight bytes, the most significant one first.
inline std::int64_t bigEndian(std::span<const std::uint8_t> bytes) {
  std::uint64_t value = 0;
  for (const std::uint8_t byte : bytes) value = value << 8U | byte;
  return static_cast<std::int64_t>(value);
}

/// The same with the least significant one first.
inline std::int64_t littleEndian(std::span<const std::uint8_t> bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = bytes.size(); i > 0; --i) value = value << 8U | bytes[i - 1];
  return static_cast<std::int64_t>(value);
}

/// Whether a text stands at the beginning.
inline bool startsWith(std::span<const std::uint8_t> bytes, std::string_view text) {
  return bytes.size() >= text.size() && std::equal(text.begin(), text.end(), bytes.begin());
}

}  // namespace quibel::song
