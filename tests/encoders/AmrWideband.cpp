// Encodes one channel at 16 kHz as AMR-WB at its highest bit rate.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <vo-amrwbenc/enc_if.h>

#include "tests/encoders/Encoder.h"

namespace quibel::test {
namespace {

std::vector<std::uint8_t> encode(const Wav& wav) {
  if (wav.channels != 1 || wav.rate != 16'000) throw std::invalid_argument("16 kHz mono, please");
  constexpr std::size_t framesPerPacket = 320;
  constexpr int highestRate = 8;
  constexpr std::string_view signature = "#!AMR-WB\n";  // RFC 4867, 5
  const std::unique_ptr<void, decltype(&E_IF_exit)> encoder(E_IF_init(), E_IF_exit);
  if (!encoder) throw std::runtime_error("no encoder");
  std::vector<std::uint8_t> file(signature.begin(), signature.end());
  for (std::size_t begin = 0; begin < wav.samples.size(); begin += framesPerPacket) {
    std::array<std::int16_t, framesPerPacket> samples{};
    std::copy_n(wav.samples.begin() + static_cast<std::ptrdiff_t>(begin),
                std::min(framesPerPacket, wav.samples.size() - begin), samples.begin());
    std::array<std::uint8_t, 64> packet{};
    const int size = E_IF_encode(encoder.get(), highestRate, samples.data(), packet.data(), 0);
    if (size <= 0) throw std::runtime_error("not encoded");
    file.insert(file.end(), packet.begin(), packet.begin() + size);
  }
  return file;
}

}  // namespace
}  // namespace quibel::test

int main(int count, char** arguments) {
  return quibel::test::runEncoder(count, arguments, quibel::test::encode);
}
