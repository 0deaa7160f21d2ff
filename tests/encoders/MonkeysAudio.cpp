// Encodes two channels as Monkey's Audio: version 3.99, at its fastest level.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tests/encoders/Encoder.h"

namespace quibel::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// A range coder as Schindler described it, with carries; 31 bits of range.
class RangeEncoder {
 public:
  /// Symbols of `frequency` from `below` on, of all `total`.
  void encode(std::uint32_t frequency, std::uint32_t below, std::uint32_t total) {
    normalize();
    narrow(range_ / total, frequency, below);
  }

  /// The same where all are 2^bits.
  void encodeOfPower(std::uint32_t frequency, std::uint32_t below, unsigned bits) {
    normalize();
    narrow(range_ >> bits, frequency, below);
  }

  /// All bytes, and as many more as a decoder looks ahead.
  Bytes finish() {
    for (int i = 0; i < 8; ++i) {
      range_ = bottom;
      normalize();
    }
    return std::move(bytes_);
  }

 private:
  static constexpr std::uint32_t top = std::uint32_t{1} << 31;
  static constexpr std::uint32_t bottom = top >> 8;
  static constexpr unsigned shift = 23;

  void narrow(std::uint32_t unit, std::uint32_t frequency, std::uint32_t below) {
    low_ += unit * below;
    range_ = unit * frequency;
  }

  void normalize() {
    for (; range_ <= bottom; range_ <<= 8, low_ = low_ << 8 & (top - 1)) {
      const bool isCarry = (low_ & top) != 0;
      if (!isCarry && low_ >= std::uint32_t{0xFF} << shift) {
        ++undecided_;  // a carry may still come
        continue;
      }
      bytes_.push_back(static_cast<std::uint8_t>(pending_ + (isCarry ? 1 : 0)));
      bytes_.insert(bytes_.end(), undecided_, isCarry ? 0 : 0xFF);
      undecided_ = 0;
      pending_ = static_cast<std::uint8_t>(low_ >> shift);
    }
  }

  std::uint32_t low_ = 0;
  std::uint32_t range_ = top;
  std::uint8_t pending_ = 0;  ///< decoders pass over the first
  std::size_t undecided_ = 0;
  Bytes bytes_;
};

/// Codes one channel's residuals, with a model of how large they are.
class ResidualEncoder {
 public:
  void encode(RangeEncoder& coder, std::int32_t residual) {
    const auto value = static_cast<std::uint32_t>(residual > 0 ? 2 * residual - 1 : -2 * residual);
    const std::uint32_t pivot = std::max(mean_ >> 5U, std::uint32_t{1});
    encodeOverflow(coder, value / pivot);
    coder.encode(1, value % pivot, pivot);
    mean_ += (value + 1) / 2 - ((mean_ + 16) >> 5U);
  }

 private:
  // How often out of 65,536 the residual is so many times the expected one.
  static constexpr std::array<std::uint32_t, 22> counts{
      0,      19'578, 36'160, 48'417, 56'323, 60'899, 63'265, 64'435, 64'971, 65'232, 65'351,
      65'416, 65'447, 65'466, 65'476, 65'482, 65'485, 65'488, 65'490, 65'491, 65'492, 65'493};
  static constexpr std::uint32_t escape = 63;

  static void encodeOverflow(RangeEncoder& coder, std::uint32_t times) {
    if (times + 1 < counts.size()) {
      coder.encodeOfPower(counts[times + 1] - counts[times], counts[times], 16);
      return;
    }
    coder.encodeOfPower(1, 65'535 - escape + std::min(times, escape), 16);
    if (times < escape) return;
    coder.encodeOfPower(1, times >> 16U, 16);
    coder.encodeOfPower(1, times & 0xFFFFU, 16);
  }

  std::uint32_t mean_ = 16 << 10;
};

/// A value and its differences to the one before, the newest first.
template <std::size_t Order>
struct History {
  std::array<std::int32_t, Order> values{};

  void push(std::int32_t value) {
    std::shift_right(values.begin() + 1, values.end(), 1);
    values[1] = value - values[0];
    values[0] = value;
  }
};

/// Foretells one channel from its own past and from the other channel, and learns.
class Predictor {
 public:
  /// What is left of `sample`, and with it what `other` may foretell from.
  std::int32_t residual(std::int32_t sample, std::int32_t other) {
    own_.push(last_);
    others_.push(other - (formerOther_ * 31 >> 5));
    formerOther_ = other;
    const std::int32_t foretold =
        (weighed(own_, ownWeights_) + (weighed(others_, otherWeights_) >> 1)) >> 10;
    last_ = sample - (filtered_ * 31 >> 5);
    filtered_ = sample;
    const std::int32_t left = last_ - foretold;
    learn(own_, ownWeights_, left);
    learn(others_, otherWeights_, left);
    return left;
  }

 private:
  static std::int32_t sign(std::int32_t value) { return (value < 0 ? 1 : 0) - (value > 0 ? 1 : 0); }

  template <std::size_t Order>
  static std::int32_t weighed(const History<Order>& history,
                              const std::array<std::int32_t, Order>& weights) {
    std::int32_t sum = 0;
    for (std::size_t i = 0; i < Order; ++i) sum += history.values[i] * weights[i];
    return sum;
  }

  template <std::size_t Order>
  static void learn(const History<Order>& history, std::array<std::int32_t, Order>& weights,
                    std::int32_t left) {
    for (std::size_t i = 0; i < Order; ++i) weights[i] += sign(history.values[i]) * sign(left);
  }

  History<4> own_;
  History<5> others_;
  std::array<std::int32_t, 4> ownWeights_{360, 317, -109, 98};
  std::array<std::int32_t, 5> otherWeights_{};
  std::int32_t last_ = 0;
  std::int32_t filtered_ = 0;
  std::int32_t formerOther_ = 0;
};

void append(Bytes& bytes, std::uint32_t value, int size) {
  for (int i = 0; i < size; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

/// The upper 31 bits of the CRC-32 of the samples.
std::uint32_t checksum(std::span<const std::int16_t> samples) {
  std::uint32_t crc = 0xFFFF'FFFF;
  for (const std::int16_t sample : samples) {
    for (const unsigned byte :
         {static_cast<unsigned>(sample) & 0xFFU, static_cast<unsigned>(sample) >> 8U & 0xFFU}) {
      crc ^= byte;
      for (int bit = 0; bit < 8; ++bit) crc = crc >> 1U ^ ((crc & 1U) != 0 ? 0xEDB8'8320U : 0U);
    }
  }
  return ~crc >> 1U;
}

/// One block of the file, which is decoded without those before it, of pairs of samples.
Bytes encodeBlock(std::span<const std::int16_t> samples) {
  RangeEncoder coder;
  std::array<ResidualEncoder, 2> residuals;
  std::array<Predictor, 2> predictors;
  std::int32_t formerMiddle = 0;
  for (std::size_t i = 0; i < samples.size(); i += 2) {
    const std::int32_t side = samples[i + 1] - samples[i];
    const std::int32_t middle = samples[i] + side / 2;
    residuals[0].encode(coder, predictors[0].residual(side, formerMiddle));
    residuals[1].encode(coder, predictors[1].residual(middle, side));
    formerMiddle = middle;
  }

  Bytes stream;
  const std::uint32_t crc = checksum(samples);
  for (const unsigned shift : {24U, 16U, 8U, 0U}) {
    stream.push_back(static_cast<std::uint8_t>(crc >> shift));
  }
  const Bytes coded = coder.finish();
  stream.insert(stream.end(), coded.begin(), coded.end());
  // The file's words have their least significant byte first.
  stream.resize((stream.size() + 3) / 4 * 4);
  for (std::size_t i = 0; i < stream.size(); i += 4) {
    std::reverse(stream.begin() + static_cast<std::ptrdiff_t>(i),
                 stream.begin() + static_cast<std::ptrdiff_t>(i) + 4);
  }
  return stream;
}

Bytes encodeFile(const Wav& wav) {
  if (wav.channels != 2) throw std::invalid_argument("two channels, please");
  constexpr std::uint32_t framesPerBlock = 73'728;
  constexpr std::uint32_t descriptorSize = 52;
  constexpr std::uint32_t headerSize = 24;
  const auto frames = static_cast<std::uint32_t>(wav.samples.size() / 2);
  const std::uint32_t blocks = (frames + framesPerBlock - 1) / framesPerBlock;

  Bytes data;
  Bytes places;
  for (std::uint32_t block = 0; block < blocks; ++block) {
    const std::uint32_t begin = block * framesPerBlock;
    const std::uint32_t count = std::min(framesPerBlock, frames - begin);
    append(places,
           descriptorSize + headerSize + 4 * blocks + static_cast<std::uint32_t>(data.size()), 4);
    const Bytes coded =
        encodeBlock(std::span(wav.samples).subspan(2 * std::size_t{begin}, 2 * std::size_t{count}));
    data.insert(data.end(), coded.begin(), coded.end());
  }

  Bytes file{'M', 'A', 'C', ' '};
  append(file, 3990, 2);
  append(file, 0, 2);
  append(file, descriptorSize, 4);
  append(file, headerSize, 4);
  append(file, static_cast<std::uint32_t>(places.size()), 4);
  append(file, 0, 4);  // no header of the WAV file
  append(file, static_cast<std::uint32_t>(data.size()), 4);
  append(file, 0, 4);
  append(file, 0, 4);           // nor anything behind its samples
  file.resize(descriptorSize);  // no MD5
  append(file, 1000, 2);        // the fastest level
  append(file, 32, 2);          // decoders make the header
  append(file, framesPerBlock, 4);
  append(file, frames - (blocks - 1) * framesPerBlock, 4);
  append(file, blocks, 4);
  append(file, 16, 2);
  append(file, 2, 2);
  append(file, static_cast<std::uint32_t>(wav.rate), 4);
  file.insert(file.end(), places.begin(), places.end());
  file.insert(file.end(), data.begin(), data.end());
  return file;
}

}  // namespace
}  // namespace quibel::test

int main(int count, char** arguments) {
  return quibel::test::runEncoder(count, arguments, quibel::test::encodeFile);
}
