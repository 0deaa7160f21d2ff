// The most memory that loading takes, for songs of ten seconds and of ten hours, each
// in a process of its own.

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "benchmarks/Measuring.h"
#include "model/Waveform.h"
#include "song/decoding/OpenSong.h"
#include "tests/support/TestAudio.h"

namespace quibel::benchmarks {
namespace {

constexpr int buckets = 900;
constexpr int shortSong = 10;        // seconds
constexpr int longSong = 10 * 3600;  // seconds
constexpr std::int64_t rate = 44'100;

double mebibytes(double bytes) { return bytes / (1 << 20); }

// Bytes at the peak of a process that loads a song and ends.
double peakOfLoading(const std::filesystem::path& file) {
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) {
    const auto song = song::openAudioFile(platform::FileURL(file));
    _exit(song && waveform(**song, buckets) ? EXIT_SUCCESS : EXIT_FAILURE);
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child || status != 0) {
    throw std::runtime_error("cannot load " + file.string());
  }
  return static_cast<double>(usage.ru_maxrss) * 1024;
}

void append(std::string& bytes, std::uint64_t value, int size) {
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i));
}

// 16-bit stereo silence that takes no room on the disk (EBU Tech 3306: RF64).
void writeSparseWav(const std::filesystem::path& file, std::int64_t frames) {
  const auto dataSize = static_cast<std::uint64_t>(frames) * 4;
  std::string header = "RF64";
  append(header, 0xFFFFFFFF, 4);
  header += "WAVEds64";
  append(header, 28, 4);
  append(header, dataSize + 72, 8);
  append(header, dataSize, 8);
  append(header, static_cast<std::uint64_t>(frames), 8);
  append(header, 0, 4);
  header += "fmt ";
  append(header, 16, 4);
  append(header, 1, 2);
  append(header, 2, 2);
  append(header, rate, 4);
  append(header, rate * 4, 4);
  append(header, 4, 2);
  append(header, 16, 2);
  header += "data";
  append(header, 0xFFFFFFFF, 4);
  std::ofstream(file, std::ios::binary) << header;
  std::filesystem::resize_file(file, header.size() + dataSize);
}

void run() {
  const test::TemporaryDirectory directory;
  const auto file = [&](const std::string& name) { return (directory.path() / name).string(); };
  print("Making ten seconds and ten hours of stereo at 44.1 kHz …\n");
  for (const auto& [name, seconds] : {std::pair{"short", shortSong}, std::pair{"long", longSong}}) {
    const auto duration = std::to_string(seconds);
    writeSparseWav(file(name + std::string(".wav")), seconds * rate);
    test::run({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "anullsrc=r=44100:cl=stereo", "-t",
               duration, file(name + std::string(".flac"))});
  }
  test::run({"ffmpeg", "-v", "error", "-i", file("short.wav"), file("short.mp3")});
  test::run({"ffmpeg", "-v", "error", "-stream_loop", std::to_string(longSong / shortSong - 1),
             "-i", file("short.mp3"), "-c", "copy", file("long.mp3")});

  print("Peak of resident memory, in MiB.\n\n");
  print("%-6s %10s %10s %12s\n", "file", "10 s", "10 h", "difference");
  for (const char* extension : {".wav", ".flac", ".mp3"}) {
    const double ten = mebibytes(peakOfLoading(file(std::string("short") + extension)));
    const double hours = mebibytes(peakOfLoading(file(std::string("long") + extension)));
    print("%-6s %10.1f %10.1f %12.1f\n", extension + 1, ten, hours, hours - ten);
  }
}

}  // namespace
}  // namespace quibel::benchmarks

int main() { return quibel::benchmarks::finish(quibel::benchmarks::run); }
