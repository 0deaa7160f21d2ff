// One line for each format that songs come in: whether its length is exact, whether
// seeks deliver the samples of a decode from the start, and how long loading takes
// beside a bare decoding loop. It prints the table of docs/formats.md.

#include <random>
#include <stdexcept>

#include "benchmarks/BareDecoding.h"
#include "benchmarks/Loading.h"
#include "benchmarks/Measuring.h"
#include "tests/song/Songs.h"
#include "tests/support/MadeFiles.h"

namespace quibel::benchmarks {
namespace {

constexpr int rounds = 5;
constexpr int seeks = 50;
constexpr std::size_t longFrames = std::size_t{60} * 44'100;

// How many of some random places deliver other samples than a decode from the start.
int inexactSeeks(const std::filesystem::path& file, float tolerance) {
  const test::Sound whole = test::readAll(file);
  const auto song = test::openSong(file);
  std::mt19937_64 random(7);
  int inexact = 0;
  for (int i = 0; i < seeks; ++i) {
    const auto frame = static_cast<std::int64_t>(random() % whole.frames());
    if (!song->seek(frame)) throw std::runtime_error("no seek");
    const test::Sound part = test::readFrames(*song, 4096);
    const float difference = test::greatestDifference(whole, static_cast<std::size_t>(frame), part);
    if (!(difference <= tolerance)) ++inexact;
  }
  return inexact;
}

void row(const test::SongFormat& format, const std::filesystem::path& folder) {
  const auto wav = folder / "source.wav";
  test::writeWav(wav, test::song(format.rate, 2, test::sourceLength));
  const auto length = test::openSong(test::makeSong(format, wav))->length();

  test::writeWav(wav, test::song(format.rate, 2, longFrames));
  const auto song = folder / format.file;
  test::runOn(format.command, wav, song);
  const int inexact = inexactSeeks(song, format.isLossless ? 0.0F : 1e-6F);
  const auto times = medians({[&] { return measure([&] { loadAnew(song); }); },
                              [&] { return measure([&] { decodeBarely(song); }); }},
                             rounds);
  print("| %s | %lld | %+lld | %d of %d | %.2f |\n", format.name.c_str(),
        static_cast<long long>(length), static_cast<long long>(length - format.expectedLength),
        seeks - inexact, seeks, times[0].processor / times[1].processor);
}

void run() {
  print("| format | length | off by | exact seeks | load, to bare decoding |\n");
  print("| --- | --- | --- | --- | --- |\n");
  for (const test::SongFormat& format : test::songFormats()) {
    const test::TemporaryDirectory directory;
    row(format, directory.path());
  }
}

}  // namespace
}  // namespace quibel::benchmarks

int main() { return quibel::benchmarks::finish(quibel::benchmarks::run); }
