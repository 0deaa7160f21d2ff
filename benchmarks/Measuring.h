#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quibel::benchmarks {

/// Seconds.
struct Times {
  double processor = 0;  ///< of this process, all threads, or of the child
  double wall = 0;
};

/// std::printf() at once; throws where it fails.
[[gnu::format(printf, 1, 2)]] void print(const char* format, ...);

/// Runs `work` once in this process.
Times measure(const std::function<void()>& work);

/// Runs a program once; throws where it fails.
Times measureProgram(const std::vector<std::string>& command);

/// Takes turns at several pieces of work, so that whatever else the machine does
/// meets all of them, and returns the median of each one's times.
std::vector<Times> medians(const std::vector<std::function<Times()>>& works, int rounds);

/// Runs a whole benchmark and returns what its program ends with, having printed what
/// it threw.
int finish(void (*run)());

}  // namespace quibel::benchmarks
