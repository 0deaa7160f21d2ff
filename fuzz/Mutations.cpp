// quibel_mutations COUNT SEED [FIRST]: damages songs at random and has the editor
// load them. None may crash it, hold it up for long, or fill the memory.
//
// Song number n of a seed is the same on every machine with the same encoders.
// Each batch runs in a process of its own, so that one that dies is told from one
// that is refused. What goes wrong is named with the arguments that repeat it.

#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <new>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "model/AudioEditorModel.h"
#include "song/decoding/OpenSong.h"
#include "tests/song/Songs.h"
#include "tests/support/FakePlatform.h"

namespace quibel::fuzz {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Random = std::mt19937_64;

constexpr std::uint64_t batchSize = 250;
constexpr unsigned secondsForOne = 10;
constexpr long mostKilobytes = 512 << 10;
constexpr std::size_t songFrames = 22'050;

std::size_t below(Random& random, std::size_t bound) { return random() % bound; }

// The ways in which files go wrong.

void flipBits(Bytes& bytes, Random& random) {
  for (std::size_t n = 1 + below(random, 32); n > 0; --n) {
    bytes[below(random, bytes.size())] ^= static_cast<std::uint8_t>(1U << below(random, 8));
  }
}

void cut(Bytes& bytes, Random& random) { bytes.resize(1 + below(random, bytes.size())); }

void splice(Bytes& bytes, Random& random, const Bytes& other) {
  const auto from = static_cast<std::ptrdiff_t>(below(random, other.size()));
  cut(bytes, random);
  bytes.insert(bytes.end(), other.begin() + from, other.end());
}

void leaveOut(Bytes& bytes, Random& random) {
  const std::size_t from = below(random, bytes.size());
  const std::size_t count = 1 + below(random, bytes.size() - from);
  if (count == bytes.size()) return;
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(from);
  bytes.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
}

// Lengths and counts mostly stand in the first bytes or in the last ones, as whole
// numbers of up to eight bytes, and hurt most at the ends of their ranges.
void changeLength(Bytes& bytes, Random& random) {
  constexpr std::array<std::uint8_t, 4> values{0x00, 0x01, 0x7F, 0xFF};
  const std::size_t reach = std::min<std::size_t>(bytes.size(), 1024);
  const std::size_t begin = below(random, 2) == 0 ? 0 : bytes.size() - reach;
  for (std::size_t n = 1 + below(random, 3); n > 0; --n) {
    const std::size_t at = begin + below(random, reach);
    const std::size_t size = std::min(std::size_t{1} << below(random, 4), bytes.size() - at);
    const std::uint8_t value = values.at(below(random, values.size()));
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), size, value);
  }
}

Bytes mutated(const std::vector<Bytes>& songs, std::uint64_t seed, std::uint64_t number) {
  std::seed_seq mixed{seed, number};
  Random random(mixed);
  Bytes bytes = songs[below(random, songs.size())];
  for (std::size_t n = 1 + below(random, 3); n > 0; --n) {
    switch (below(random, 5)) {
      case 0:
        flipBits(bytes, random);
        break;
      case 1:
        cut(bytes, random);
        break;
      case 2:
        splice(bytes, random, songs[below(random, songs.size())]);
        break;
      case 3:
        leaveOut(bytes, random);
        break;
      default:
        changeLength(bytes, random);
        break;
    }
  }
  return bytes;
}

/// A machine stepped by hand whose songs are real.
class Machine final : public fake::Platform {
 public:
  platform::Result<std::unique_ptr<platform::AudioFile>> openAudioFile(
      const platform::FileURL& url) override {
    return song::openAudioFile(url);
  }
};

/// Loads a song as the window does; whether it could be edited then. Throws
/// where the editor says neither.
bool load(const std::filesystem::path& file) {
  Machine machine;
  const auto model = std::make_shared<AudioEditorModel>(machine);
  model->load(platform::FileURL(file));
  machine.background.runAll();
  machine.main.runAll();
  if (model->isLoading()) throw std::logic_error("the load has no end");
  if (model->showAlert() == !model->samples().empty()) {
    throw std::logic_error("neither a song nor an alert");
  }
  return !model->showAlert();
}

/// What the batches' processes tell this one.
struct Progress {
  std::uint64_t number = 0;  ///< of the song at hand
  std::uint64_t loaded = 0;
  long kilobytes = 0;  ///< the most memory that was in use
};

long peakKilobytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// Runs in a process of its own; the number of its exit is told by run().
int runBatch(const std::vector<Bytes>& songs, std::uint64_t seed, std::uint64_t end,
             const std::filesystem::path& file, Progress& progress) {
  for (; progress.number < end; ++progress.number) {
    test::writeBytes(file, mutated(songs, seed, progress.number));
    alarm(secondsForOne);
    if (load(file)) ++progress.loaded;
    alarm(0);
    progress.kilobytes = std::max(progress.kilobytes, peakKilobytes());
    if (progress.kilobytes > mostKilobytes) return 1;
  }
  return 0;
}

std::vector<Bytes> makeSongs(const std::filesystem::path& workshop) {
  std::vector<Bytes> songs;
  const auto wav = workshop / "source.wav";
  for (const test::SongFormat& format : test::songFormats()) {
    test::writeWav(wav, test::song(format.rate, 2, songFrames));
    songs.push_back(test::readBytes(test::makeSong(format, wav)));
  }
  return songs;
}

Progress& sharedProgress() {
  void* const memory =
      mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return *new (memory) Progress;
}

int run(std::uint64_t count, std::uint64_t seed, std::uint64_t first) {
  const test::TemporaryDirectory workshop;
  const auto songs = makeSongs(workshop.path());
  Progress& progress = sharedProgress();
  progress.number = first;
  int failures = 0;
  while (progress.number < first + count) {
    const std::uint64_t end = std::min(progress.number + batchSize, first + count);
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("no process for a batch");
    if (child == 0) {
      try {
        _exit(runBatch(songs, seed, end, workshop.path() / "song", progress));
      } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
      }
      _exit(2);
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child) throw std::runtime_error("a batch was lost");
    if (status == 0) continue;
    ++failures;
    const char* const what = WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM ? "took too long"
                             : WIFSIGNALED(status)                              ? "crashed"
                             : WEXITSTATUS(status) == 1 ? "filled the memory"
                                                        : "failed";
    std::cout << what << ": quibel_mutations 1 " << seed << ' ' << progress.number << '\n';
    ++progress.number;
    progress.kilobytes = 0;
  }
  std::cout << count << " songs: " << progress.loaded << " could be edited, " << failures
            << " went wrong\n";
  return failures == 0 ? 0 : 1;
}

}  // namespace
}  // namespace quibel::fuzz

int main(int argc, char** argv) try {
  const std::vector<std::string> arguments(argv, argv + argc);
  if (argc != 3 && argc != 4) {
    std::cerr << "usage: quibel_mutations COUNT SEED [FIRST]\n";
    return 2;
  }
  return quibel::fuzz::run(std::stoull(arguments[1]), std::stoull(arguments[2]),
                           argc == 4 ? std::stoull(arguments[3]) : 0);
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
