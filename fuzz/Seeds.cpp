// quibel_fuzz_seeds FOLDER: writes a short song of every format into a folder.

#include <exception>
#include <iostream>
#include <span>

#include "tests/song/Songs.h"

namespace {

// Short, so that a fuzzer tries many, and yet several packets of every codec.
constexpr std::size_t seedFrames = 11'003;

}  // namespace

int main(int argc, char** argv) try {
  using namespace quibel::test;
  if (argc != 2) {
    std::cerr << "usage: quibel_fuzz_seeds FOLDER\n";
    return 2;
  }
  const std::filesystem::path folder(std::span(argv, 2)[1]);
  std::filesystem::create_directories(folder);
  const TemporaryDirectory workshop;
  const auto wav = workshop.path() / "seed.wav";
  for (const SongFormat& format : songFormats()) {
    writeWav(wav, song(format.rate, 2, seedFrames));
    const auto made = makeSong(format, wav);
    std::filesystem::copy_file(made, folder / (format.name + made.extension().string()),
                               std::filesystem::copy_options::overwrite_existing);
  }
  return 0;
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
