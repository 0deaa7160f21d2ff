#include "song/ringtone/AacElements.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>

namespace quibel::song {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The elements' names (id_syn_ele), with three bits each.
constexpr unsigned singleChannel = 0;
constexpr unsigned pair = 1;
constexpr unsigned end = 7;
constexpr std::size_t idBits = 3;
constexpr std::size_t tagBits = 4;  // tells elements of one kind apart
constexpr std::size_t gainBits = 8;
constexpr int greatestGain = 255;

/// Up to eight bits from bit `at` on.
unsigned bitsAt(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t bits) {
  const std::size_t byte = at / 8;
  const unsigned next = byte + 1 < bytes.size() ? bytes[byte + 1] : 0U;
  const unsigned both = unsigned{bytes[byte]} << 8U | next;
  return both >> (16 - at % 8 - bits) & ((1U << bits) - 1U);
}

class BitWriter {
 public:
  /// At most eight bits.
  void put(unsigned value, std::size_t bits) {
    pending_ = pending_ << bits | value;
    count_ += bits;
    if (count_ < 8) return;
    count_ -= 8;
    bytes_.push_back(static_cast<std::uint8_t>(pending_ >> count_ & 0xFFU));
  }
  void put(std::span<const std::uint8_t> bytes, std::size_t from, std::size_t to) {
    for (; from < to; from += 8) {
      const std::size_t count = std::min<std::size_t>(8, to - from);
      put(bitsAt(bytes, from, count), count);
    }
  }
  /// All of them, with zeros to the whole byte.
  Bytes take() {
    if (count_ > 0) put(0, 8 - count_);
    return std::move(bytes_);
  }

 private:
  Bytes bytes_;
  unsigned pending_ = 0;  // its last bits, `count_` of them, are still to be written
  std::size_t count_ = 0;
};

/// A channel in its block: its gain, and where what follows that lies.
struct Channel {
  int gain = -1;  ///< below 0: there is none
  std::size_t begin = 0;
  std::size_t end = 0;
};

Channel channelIn(std::span<const std::uint8_t> block) {
  constexpr std::size_t gainBegin = idBits + tagBits;
  // Behind the mark of the end there are only zeros, to the whole byte.
  while (!block.empty() && block.back() == 0) block = block.first(block.size() - 1);
  if (block.empty()) return {};
  const auto bits = block.size() * 8 - static_cast<std::size_t>(std::countr_zero(block.back()));
  if (bits < gainBegin + gainBits + idBits) return {};

  if (bitsAt(block, 0, idBits) != singleChannel || bitsAt(block, bits - idBits, idBits) != end)
    return {};
  return {.gain = static_cast<int>(bitsAt(block, gainBegin, gainBits)),
          .begin = gainBegin + gainBits,
          .end = bits - idBits};
}

/// An individual_channel_stream. False if there is none.
bool putChannel(BitWriter& out, std::span<const std::uint8_t> block, int steps) {
  const Channel channel = channelIn(block);
  const int gain = channel.gain + steps;
  if (channel.gain < 0 || gain > greatestGain) return false;
  out.put(static_cast<unsigned>(gain), gainBits);
  out.put(block, channel.begin, channel.end);
  return true;
}

}  // namespace

Bytes amplified(std::span<const std::uint8_t> block, int steps) {
  BitWriter out;
  out.put(singleChannel, idBits);
  out.put(0, tagBits);
  if (!putChannel(out, block, steps)) return {};
  out.put(end, idBits);
  return out.take();
}

Bytes channelPair(std::span<const std::uint8_t> left, std::span<const std::uint8_t> right,
                  int steps) {
  BitWriter out;
  out.put(pair, idBits);
  out.put(0, tagBits);
  out.put(0, 1);  // no common window
  if (!putChannel(out, left, steps) || !putChannel(out, right, steps)) return {};
  out.put(end, idBits);
  return out.take();
}

}  // namespace quibel::song
