#include "platform/ffmpeg/AacElements.h"

#include <bit>
#include <cstddef>
#include <utility>

namespace quibel::ffmpeg {
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

unsigned bitAt(std::span<const std::uint8_t> bytes, std::size_t at) {
  return unsigned{bytes[at / 8]} >> (7 - at % 8) & 1U;
}

class BitWriter {
 public:
  void put(unsigned value, std::size_t bits) {
    while (bits-- > 0) putBit(value >> bits & 1U);
  }
  void put(std::span<const std::uint8_t> bytes, std::size_t from, std::size_t to) {
    for (; from < to; ++from) putBit(bitAt(bytes, from));
  }
  Bytes take() { return std::move(bytes_); }

 private:
  void putBit(unsigned bit) {
    if (free_ == 0) {
      bytes_.push_back(0);
      free_ = 8;
    }
    bytes_.back() = static_cast<std::uint8_t>(bytes_.back() | bit << --free_);
  }

  Bytes bytes_;
  unsigned free_ = 0;  // bits of the last byte
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

  const auto number = [&](std::size_t from, std::size_t count) {
    unsigned value = 0;
    for (std::size_t at = from; at < from + count; ++at) value = value << 1U | bitAt(block, at);
    return value;
  };
  if (number(0, idBits) != singleChannel || number(bits - idBits, idBits) != end) return {};
  return {.gain = static_cast<int>(number(gainBegin, gainBits)),
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

}  // namespace quibel::ffmpeg
