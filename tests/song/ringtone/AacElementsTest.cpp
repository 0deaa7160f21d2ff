#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "song/ringtone/AacElements.h"

namespace quibel::song {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// Bytes of zeros and ones; blanks set its fields apart.
Bytes bits(const std::string& text) {
  Bytes bytes;
  std::size_t count = 0;
  for (const char digit : text) {
    if (digit == ' ') continue;
    if (count++ % 8 == 0) bytes.push_back(0);
    bytes.back() =
        static_cast<std::uint8_t>(unsigned{bytes.back()} << 1U | (digit == '1' ? 1U : 0U));
  }
  for (; count % 8 != 0; ++count)
    bytes.back() = static_cast<std::uint8_t>(unsigned{bytes.back()} << 1U);
  return bytes;
}

// Element, tag, gain, the rest of the channel, end.
const Bytes left = bits("000 0000 10001100 1011001110001 111");
const Bytes right = bits("000 0000 01100100 00010 111");

TEST(AacElements, AChannelIsMadeLouderByItsGainAlone) {
  EXPECT_EQ(amplified(left, 8), bits("000 0000 10010100 1011001110001 111"));
}

TEST(AacElements, TwoChannelsMakeAPairWithAWindowEach) {
  EXPECT_EQ(channelPair(left, right, 8),
            bits("001 0000 0 10010100 1011001110001 01101100 00010 111"));
}

TEST(AacElements, ZerosBehindTheEndAreNoPartOfAChannel) {
  Bytes longer = right;
  longer.push_back(0);
  EXPECT_EQ(amplified(longer, 0), right);
}

TEST(AacElements, AChannelThatEndsInOnesKeepsThem) {
  const Bytes block = bits("000 0000 01100100 0111 111");
  EXPECT_EQ(amplified(block, 0), block);
}

TEST(AacElements, AnythingElseIsRefused) {
  const Bytes aPair = channelPair(left, right, 0);
  for (const Bytes& block : {Bytes{}, Bytes{0, 0}, bits("000 0000 01100100"), aPair}) {
    EXPECT_EQ(amplified(block, 8), Bytes{});
    EXPECT_EQ(channelPair(left, block, 8), Bytes{});
    EXPECT_EQ(channelPair(block, right, 8), Bytes{});
  }
}

TEST(AacElements, AGainBeyondTheGreatestIsRefused) {
  const Bytes loud = bits("000 0000 11111110 0101 111");
  EXPECT_NE(amplified(loud, 1), Bytes{});
  EXPECT_EQ(amplified(loud, 2), Bytes{});
}

}  // namespace
}  // namespace quibel::song
