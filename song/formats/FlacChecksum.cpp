#include "song/formats/FlacChecksum.h"

extern "C" {
#include <libavutil/crc.h>
}

#include <algorithm>
#include <array>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

// A frame is a polynomial over two elements, its first bit the highest power. Its
// checksum is right if x^16 + x^15 + x^2 + 1 divides it, and zeros before or behind a
// polynomial change nothing about that.

namespace quibel::song {

namespace {

bool isDivisible(std::span<const std::uint8_t> bytes) {
  return av_crc(av_crc_get_table(AV_CRC_16_ANSI), 0, bytes.data(), bytes.size()) == 0;
}

#if defined(__x86_64__)

constexpr std::size_t blockSize = 16;
using Block = std::array<std::uint8_t, blockSize>;

// x to the power n, modulo the checksum's polynomial.
constexpr long long power(int n) {
  unsigned value = 1;
  for (; n > 0; --n) {
    value <<= 1U;
    if ((value & 0x10000U) != 0) value ^= 0x18005U;
  }
  return value;
}

// Sixteen bytes as a polynomial in a register, and back.
[[gnu::target("pclmul,ssse3")]] __m128i reversed(__m128i block) {
  return _mm_shuffle_epi8(block,
                          _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
}

[[gnu::target("pclmul,ssse3")]] __m128i load(const std::uint8_t* bytes) {
  return reversed(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)));
}

// Sixteen bytes that are divisible if all the bytes are: each block is brought down
// onto the next by what x^128 and x^192 leave, for its lower and its upper half.
[[gnu::target("pclmul,ssse3")]] Block folded(std::span<const std::uint8_t> bytes) {
  const __m128i factors = _mm_set_epi64x(power(192), power(128));
  Block block{};
  const std::size_t head = bytes.size() % blockSize;
  std::ranges::copy(bytes.first(head), block.end() - static_cast<std::ptrdiff_t>(head));
  __m128i rest = load(block.data());
  for (auto left = bytes.subspan(head); !left.empty(); left = left.subspan(blockSize)) {
    const __m128i lower = _mm_clmulepi64_si128(rest, factors, 0x00);
    const __m128i upper = _mm_clmulepi64_si128(rest, factors, 0x11);
    rest = _mm_xor_si128(_mm_xor_si128(lower, upper), load(left.data()));
  }
  _mm_storeu_si128(reinterpret_cast<__m128i*>(block.data()), reversed(rest));
  return block;
}

#endif

}  // namespace

bool hasValidChecksum(std::span<const std::uint8_t> frame) {
#if defined(__x86_64__)
  static const bool multiplies =
      __builtin_cpu_supports("pclmul") != 0 && __builtin_cpu_supports("ssse3") != 0;
  if (multiplies) return isDivisible(folded(frame));
#endif
  return isDivisible(frame);
}

}  // namespace quibel::song
