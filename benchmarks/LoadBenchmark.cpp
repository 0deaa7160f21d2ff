// Loading a song of five minutes, as the editor does it, beside a bare decoding
// loop on one thread over the same file, and beside the ffmpeg command. For WAV
// the bare loop reads the bytes and takes their maximum.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

#include "benchmarks/BareDecoding.h"
#include "benchmarks/Loading.h"
#include "benchmarks/Measuring.h"
#include "tests/support/TestAudio.h"

namespace quibel::benchmarks {
namespace {

constexpr int rounds = 21;

struct Song {
  std::string name;
  std::vector<std::string> command;
};

void readMaximum(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  static std::vector<std::int16_t> block(std::size_t{64} << 10);
  int maximum = 0;
  while (true) {
    const ssize_t bytes = read(descriptor, block.data(), block.size() * sizeof(std::int16_t));
    if (bytes <= 0) break;
    const auto count = static_cast<std::size_t>(bytes) / sizeof(std::int16_t);
    std::int16_t highest = 0;
    for (std::size_t i = 0; i < count; ++i) highest = std::max(highest, block[i]);
    maximum = std::max<int>(maximum, highest);
  }
  close(descriptor);
  if (maximum == 0) throw std::runtime_error("nothing read");
}

void run() {
  const test::TemporaryDirectory directory;
  const auto file = [&](const std::string& name) { return (directory.path() / name).string(); };
  print("Making five minutes of stereo at 44.1 kHz …\n");
  test::writeWav(file("song.wav"), test::song(44'100, 2, std::size_t{300} * 44'100));
  const std::vector<Song> songs{
      {"song.wav", {}},
      {"song.flac", {"flac", "-s", "-o", file("song.flac"), file("song.wav")}},
      {"song.mp3", {"lame", "--quiet", file("song.wav"), file("song.mp3")}},
      {"song.m4a", {"ffmpeg", "-v", "error", "-i", file("song.wav"), file("song.m4a")}},
      {"song.ogg", {"oggenc", "-Q", "-o", file("song.ogg"), file("song.wav")}},
  };
  for (const Song& song : songs) {
    if (!song.command.empty()) test::run(song.command);
  }

  print("Medians of %d interleaved runs, in ms of processor time.\n\n", rounds);
  print("%-10s %8s %8s %8s | %8s %8s %8s | %14s\n", "file", "load", "bare", "ffmpeg", "/ bare",
        "/ ffmpeg", "wall", "wall of bare");
  for (const Song& song : songs) {
    const std::filesystem::path path = file(song.name);
    const bool isPCM = song.name == "song.wav";
    const auto times = medians(
        {[&] { return measure([&] { loadAnew(path); }); },
         [&] { return measure([&] { isPCM ? readMaximum(path) : decodeBarely(path); }); },
         [&] {
           return measureProgram({"ffmpeg", "-v", "error", "-i", path.string(), "-f", "null", "-"});
         }},
        rounds);
    print("%-10s %8.1f %8.1f %8.1f | %8.2f %8.2f %8.2f | %14.1f\n", song.name.c_str(),
          times[0].processor * 1e3, times[1].processor * 1e3, times[2].processor * 1e3,
          times[0].processor / times[1].processor, times[0].processor / times[2].processor,
          times[0].wall / times[1].wall, times[1].wall * 1e3);
  }
}

}  // namespace
}  // namespace quibel::benchmarks

int main() { return quibel::benchmarks::finish(quibel::benchmarks::run); }
