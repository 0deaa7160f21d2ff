#include <cstddef>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "song/formats/FlacChecksum.h"

namespace quibel::song {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Bit by bit, as the format describes it (RFC 9639, 9.3).
unsigned checksum(const Bytes& bytes) {
  unsigned value = 0;
  for (const std::uint8_t byte : bytes) {
    value ^= unsigned{byte} << 8U;
    for (int bit = 0; bit < 8; ++bit) {
      value = value << 1U ^ ((value & 0x8000U) != 0 ? 0x18005U : 0U);
    }
  }
  return value;
}

Bytes frame(std::size_t size, std::mt19937& random) {
  Bytes bytes(size);
  for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
  const unsigned sum = checksum(bytes);
  bytes.push_back(static_cast<std::uint8_t>(sum >> 8U));
  bytes.push_back(static_cast<std::uint8_t>(sum));
  return bytes;
}

TEST(FlacChecksum, IsRightForFramesOfAnySize) {
  std::mt19937 random(1);
  for (std::size_t size = 0; size < 300; ++size) {
    EXPECT_TRUE(hasValidChecksum(frame(size, random))) << size;
  }
}

TEST(FlacChecksum, IsWrongAfterAnyBitChanged) {
  std::mt19937 random(2);
  for (const std::size_t size : {1U, 13U, 14U, 15U, 30U, 100U}) {
    const Bytes whole = frame(size, random);
    for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
      Bytes damaged = whole;
      damaged[bit / 8] = static_cast<std::uint8_t>(damaged[bit / 8] ^ 1U << bit % 8);
      EXPECT_FALSE(hasValidChecksum(damaged)) << size << " bytes, bit " << bit;
    }
  }
}

}  // namespace
}  // namespace quibel::song
