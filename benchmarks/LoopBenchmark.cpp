// Looping a fragment with the window showing, heard through a null sink's monitor:
// what it costs, and, while the window is resized and other songs load, whether it
// has holes, whether the playhead stays with the sound and the memory where it was.
// Takes the seconds to do that for, and a display (xvfb-run).

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "benchmarks/LoopRecording.h"
#include "benchmarks/Measuring.h"
#include "benchmarks/Standstills.h"
#include "tests/playback/PulseServer.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TestAudio.h"

namespace quibel::benchmarks {
namespace {

using Clock = LoopRecording::Clock;

constexpr int rate = 44'100;
constexpr double start = 20;
constexpr double end = 22;

/// What the window says of itself.
struct Report {
  Clock::time_point when;
  double playhead = 0;   ///< seconds
  double processor = 0;  ///< seconds
  double memory = 0;     ///< MiB
};

/// A window that loops, and the reports that it prints.
class Window {
 public:
  explicit Window(const std::vector<std::string>& songs) {
    std::vector<std::string> command{LOOP_WINDOW, std::to_string(start), std::to_string(end)};
    command.insert(command.end(), songs.begin(), songs.end());
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    process_ = std::make_unique<platform::ChildProcess>(command, ends[1]);
    ::close(ends[1]);
    reports_ = ::fdopen(ends[0], "r");
  }
  ~Window() { static_cast<void>(std::fclose(reports_)); }
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  Report next() {
    long long nanoseconds = 0;
    long kibibytes = 0;
    Report report;
    if (std::fscanf(reports_, "%lld %lf %lf %ld", &nanoseconds, &report.playhead, &report.processor,
                    &kibibytes) != 4)
      throw std::runtime_error("the window has ended: " + rest());
    report.when = Clock::time_point(std::chrono::nanoseconds(nanoseconds));
    report.memory = static_cast<double>(kibibytes) / 1024;
    return report;
  }

 private:
  std::string rest() {
    std::string text;
    for (int byte = std::fgetc(reports_); byte != EOF; byte = std::fgetc(reports_))
      text += static_cast<char>(byte);
    return text;
  }

  std::unique_ptr<platform::ChildProcess> process_;
  std::FILE* reports_;
};

double secondsBetween(const Report& from, const Report& to) {
  return std::chrono::duration<double>(to.when - from.when).count();
}

double part(std::vector<double> values, double fraction) {
  if (values.empty()) throw std::runtime_error("nothing was heard");
  std::ranges::sort(values);
  return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1))];
}

void printCost(const std::string& song) {
  Window window({song});
  std::vector<double> costs;
  Report last = window.next();
  for (int skipped = 0; skipped < 20; ++skipped) last = window.next();
  while (costs.size() < 15) {
    const Report now = window.next();
    if (secondsBetween(last, now) < 2) continue;
    costs.push_back((now.processor - last.processor) / secondsBetween(last, now) * 100);
    last = now;
  }
  print("cost                 %.2f %% of a core (median of 15 times 2 s, most %.2f %%)\n",
        part(costs, 0.5), part(costs, 1));
}

void printLongRun(const std::string& song, const std::string& other, double seconds) {
  const LoopRecording recording(rate, start);
  // As long as the sound server has sound for.
  const Standstills standstills(std::chrono::milliseconds(40));
  Window window({song, other});
  const Report first = window.next();
  Report settled = first;
  Report last = first;
  Report pending = first;
  double mostMemory = 0;
  std::vector<double> early;
  std::vector<double> all;
  std::vector<double> late;
  const double tenth = seconds / 10;
  while (secondsBetween(first, last) < seconds) {
    // What a report says is in the recording by the time of the next ones.
    const auto heard = recording.heardAt(pending.when);
    const double since = secondsBetween(first, pending);
    // Around a jump the two lie a whole fragment apart for a moment.
    if (heard && std::abs(pending.playhead - *heard) < 0.5) {
      const double difference = (pending.playhead - *heard) * 1e3;
      all.push_back(difference);
      if (since < tenth) early.push_back(difference);
      if (since > seconds - tenth) late.push_back(difference);
    }
    pending = last;
    last = window.next();
    if (secondsBetween(first, last) < tenth)
      settled = last;
    else
      mostMemory = std::max(mostMemory, last.memory);
  }
  const auto totals = recording.totals();
  print("looped for           %.0f s, %lld passes\n", secondsBetween(first, last),
        static_cast<long long>(totals.passes));
  const auto milliseconds = [](std::int64_t frames) {
    return static_cast<double>(frames) * 1e3 / rate;
  };
  print("holes                %lld, %.1f ms in all, %.1f ms the longest; stray frames: %lld\n",
        static_cast<long long>(totals.holes), milliseconds(totals.holeFrames),
        milliseconds(totals.longestHole), static_cast<long long>(totals.strays));
  const auto still = standstills.totals();
  print(
      "  of the machine     %d times it did nothing for 40 ms and more, %.1f ms in all, "
      "%.1f ms the longest\n",
      still.count, still.seconds * 1e3, still.longest * 1e3);
  print("playhead - recording %.1f ms (median; 1st to 99th percentile %.1f … %.1f)\n",
        part(all, 0.5), part(all, 0.01), part(all, 0.99));
  print("  drift              %+.1f ms (median of the last tenth less that of the first)\n",
        part(late, 0.5) - part(early, 0.5));
  print("resident memory      %.1f MiB after a tenth, %.1f at the end, %.1f at most\n",
        settled.memory, last.memory, mostMemory);
  print("cost with all that   %.2f %% of a core\n",
        (last.processor - first.processor) / secondsBetween(first, last) * 100);
}

void run(double seconds) {
  const test::TemporaryDirectory directory;
  const auto file = [&](const std::string& name) { return (directory.path() / name).string(); };
  test::writeWav(file("numbered.wav"), numberedSong(rate, 60), test::WavFormat::float32);
  test::writeWav(file("other.wav"), test::song(rate, 2, std::size_t{180} * rate));
  test::run({"lame", "--quiet", file("other.wav"), file("other.mp3")});
  const playback::PulseServer server(rate);
  printCost(file("numbered.wav"));
  printLongRun(file("numbered.wav"), file("other.mp3"), seconds);
}

}  // namespace
}  // namespace quibel::benchmarks

int main(int count, char** arguments) {
  static const double seconds = count > 1 ? std::strtod(arguments[1], nullptr) : 60;
  return quibel::benchmarks::finish([] { quibel::benchmarks::run(seconds); });
}
