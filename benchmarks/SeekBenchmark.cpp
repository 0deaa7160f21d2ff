// Going to the end of a song of three hours, beside decoding it up to there.

#include <functional>
#include <stdexcept>

#include "benchmarks/LongSongs.h"
#include "benchmarks/Measuring.h"
#include "song/decoding/OpenSong.h"
#include "tests/support/TestAudio.h"

namespace quibel::benchmarks {
namespace {

constexpr int rounds = 3;
constexpr std::uint32_t bufferFrames = 4096;

void readOn(platform::AudioFile& song, std::int64_t until) {
  const auto buffer = song.makeBuffer(bufferFrames);
  while (song.framePosition() < until) {
    if (const auto result = song.read(*buffer, bufferFrames); !result) {
      throw std::runtime_error(result.error().localizedDescription());
    }
  }
}

void seek(platform::AudioFile& song, std::int64_t frame) {
  if (const auto result = song.seek(frame); !result) {
    throw std::runtime_error(result.error().localizedDescription());
  }
}

void run() {
  const test::TemporaryDirectory directory;
  const auto songs = makeLongSongs(directory.path());

  print("Medians of %d interleaved runs, in ms of processor time.\n\n", rounds);
  print("%-10s %12s %12s %10s\n", "file", "seek", "decode", "ratio");
  for (const auto& file : songs) {
    const auto song = song::openAudioFile(platform::FileURL(file));
    if (!song) throw std::runtime_error(song.error().localizedDescription());
    const std::int64_t end = (*song)->length() - bufferFrames;
    const auto fromTheBeginning = [&](const std::function<void()>& work) {
      seek(**song, 0);
      return measure(work);
    };
    const auto times = medians({[&] {
                                  return fromTheBeginning([&] {
                                    seek(**song, end);
                                    readOn(**song, (*song)->length());
                                  });
                                },
                                [&] { return fromTheBeginning([&] { readOn(**song, end); }); }},
                               rounds);
    print("%-10s %12.1f %12.1f %10.4f\n", file.filename().c_str(), times[0].processor * 1e3,
          times[1].processor * 1e3, times[0].processor / times[1].processor);
  }
}

}  // namespace
}  // namespace quibel::benchmarks

int main() { return quibel::benchmarks::finish(quibel::benchmarks::run); }
