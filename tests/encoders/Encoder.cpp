#include "tests/encoders/Encoder.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <stdexcept>

#include "tests/support/TestAudio.h"

namespace quibel::test {
namespace {

Wav readWav(const std::filesystem::path& file) {
  constexpr std::size_t header = 44;
  const auto bytes = readBytes(file);
  if (bytes.size() <= header || bytes[34] != 16) throw std::runtime_error("no WAV of 16 bits");
  Wav wav{.rate = bytes[24] | bytes[25] << 8 | bytes[26] << 16,
          .channels = bytes[22],
          .samples = std::vector<std::int16_t>((bytes.size() - header) / 2)};
  std::memcpy(wav.samples.data(), bytes.data() + header, 2 * wav.samples.size());
  return wav;
}

}  // namespace

int runEncoder(int count, char** arguments, Encode& encode) noexcept try {
  if (count != 3) throw std::invalid_argument("IN.wav OUT");
  writeBytes(arguments[2], encode(readWav(arguments[1])));
  return EXIT_SUCCESS;
} catch (const std::exception& error) {
  static_cast<void>(std::fprintf(stderr, "%s\n", error.what()));
  return EXIT_FAILURE;
}

}  // namespace quibel::test
