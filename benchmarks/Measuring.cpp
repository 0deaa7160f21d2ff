#include "benchmarks/Measuring.h"

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <sys/resource.h>
#include <time.h>

#include "tests/support/TestAudio.h"

namespace quibel::benchmarks {

namespace {

double processorSeconds() {
  timespec time{};
  if (clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time) != 0) throw std::runtime_error("no clock");
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

double childrensSeconds() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

Times measureWith(double (*processor)(), const std::function<void()>& work) {
  const auto wall = std::chrono::steady_clock::now();
  const double before = processor();
  work();
  return {processor() - before,
          std::chrono::duration<double>(std::chrono::steady_clock::now() - wall).count()};
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + std::ssize(values) / 2;
  std::ranges::nth_element(values, middle);
  return *middle;
}

}  // namespace

void print(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int written = std::vprintf(format, arguments);
  va_end(arguments);
  if (written < 0 || std::fflush(stdout) != 0) throw std::runtime_error("cannot print");
}

Times measure(const std::function<void()>& work) { return measureWith(processorSeconds, work); }

Times measureProgram(const std::vector<std::string>& command) {
  return measureWith(childrensSeconds, [&] { test::run(command); });
}

std::vector<Times> medians(const std::vector<std::function<Times()>>& works, int rounds) {
  std::vector<std::vector<double>> processor(works.size());
  std::vector<std::vector<double>> wall(works.size());
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < works.size(); ++i) {
      const Times times = works[i]();
      processor[i].push_back(times.processor);
      wall[i].push_back(times.wall);
    }
  }
  std::vector<Times> result;
  result.reserve(works.size());
  for (std::size_t i = 0; i < works.size(); ++i) {
    result.push_back({median(processor[i]), median(wall[i])});
  }
  return result;
}

int finish(void (*run)()) try {
  run();
  return EXIT_SUCCESS;
} catch (const std::exception& error) {
  print("%s\n", error.what());
  return EXIT_FAILURE;
}

}  // namespace quibel::benchmarks
