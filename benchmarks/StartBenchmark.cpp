// Starting Quibel beside starting a bare window of Qt Widgets: from the process's start
// to its first painted frame, and the most memory that takes.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include <unistd.h>

#include "benchmarks/Measuring.h"

namespace quibel::benchmarks {
namespace {

constexpr int rounds = 21;

/// A program that is started up to its first frame.
class Program {
 public:
  explicit Program(const std::string& path)
      : command_{"/usr/bin/env", "LD_PRELOAD=" FIRST_FRAME, "FIRST_FRAME_PEAK=" + peak_.string(),
                 path} {}

  Times start() const { return measureProgram(command_); }

  /// KiB, of the last start.
  double peak() const {
    double kibibytes = 0;
    std::ifstream(peak_) >> kibibytes;
    std::filesystem::remove(peak_);
    if (!(kibibytes > 0)) throw std::runtime_error(command_.back() + " has painted nothing");
    return kibibytes;
  }

 private:
  const std::filesystem::path peak_ =
      std::filesystem::temp_directory_path() / ("first_frame_peak." + std::to_string(getpid()));
  const std::vector<std::string> command_;
};

void run() {
  const Program bare(BARE_WINDOW);
  const Program quibel(QUIBEL);
  // Both programs' files are in memory then.
  bare.start();
  quibel.start();
  const auto times =
      medians({[&] { return bare.start(); }, [&] { return quibel.start(); }}, rounds);
  bare.start();
  const double barePeak = bare.peak();
  quibel.start();
  const double quibelPeak = quibel.peak();

  print("Medians of %d interleaved starts up to the first painted frame.\n\n", rounds);
  print("%-12s %12s %12s %12s\n", "", "processor ms", "elapsed ms", "peak MiB");
  print("%-12s %12.1f %12.1f %12.1f\n", "bare window", times[0].processor * 1e3,
        times[0].wall * 1e3, barePeak / 1024);
  print("%-12s %12.1f %12.1f %12.1f\n", "quibel", times[1].processor * 1e3, times[1].wall * 1e3,
        quibelPeak / 1024);
  print("%-12s %12.2f %12.2f %12.2f\n", "ratio", times[1].processor / times[0].processor,
        times[1].wall / times[0].wall, quibelPeak / barePeak);
}

}  // namespace
}  // namespace quibel::benchmarks

int main() {
  // The same platform for both; QT_QPA_PLATFORM=xcb or wayland measures another.
  if (setenv("QT_QPA_PLATFORM", "offscreen", 0) != 0) return EXIT_FAILURE;
  // What Qt remarks on such a platform would stand between the figures.
  if (setenv("QT_LOGGING_RULES", "*=false", 1) != 0) return EXIT_FAILURE;
  return quibel::benchmarks::finish(quibel::benchmarks::run);
}
