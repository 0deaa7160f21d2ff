#pragma once

#include <cstdint>
#include <vector>

namespace quibel::test {

/// Samples of 16 bits, those of all channels at one time behind each other.
struct Wav {
  int rate = 0;
  int channels = 0;
  std::vector<std::int16_t> samples;
};

/// A song's file; throws where this is no sound for it.
using Encode = std::vector<std::uint8_t>(const Wav& wav);

/// An encoder's whole program, IN.wav OUT, for WAV files as the tests write them. Returns
/// what main() does.
int runEncoder(int count, char** arguments, Encode& encode) noexcept;

}  // namespace quibel::test
