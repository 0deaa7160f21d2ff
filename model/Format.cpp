#include "model/Format.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace quibel {
namespace {

/// Truncation toward zero; times beyond 64 bits give the nearest integer there is.
std::int64_t truncated(double seconds) {
  constexpr double limit = 9223372036854775808.0;  // 2^63
  if (seconds >= limit) return std::numeric_limits<std::int64_t>::max();
  if (seconds < -limit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(seconds);
}

/// `text` with zeros before it up to `width` characters. A negative field never
/// needs any: its sign already fills the place.
std::string zeroPadded(std::string text, std::size_t width) {
  if (text.size() < width) text.insert(0, width - text.size(), '0');
  return text;
}

}  // namespace

std::string format(double seconds) {
  if (!std::isfinite(seconds)) return "00:00.0";
  const auto minutes = truncated(seconds) / 60;
  const double rest = std::fmod(seconds, 60.0);

  // std::to_chars, since printf would put the locale's comma for the point.
  // A remainder below 60 needs at most "-60.0".
  std::array<char, 16> digits{};
  const auto end = std::to_chars(digits.begin(), digits.end(), rest, std::chars_format::fixed, 1);
  return zeroPadded(std::to_string(minutes), 2) + ":" +
         zeroPadded(std::string(digits.begin(), end.ptr), 4);
}

}  // namespace quibel
