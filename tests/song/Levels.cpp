#include "tests/song/Levels.h"

#include <cmath>
#include <numbers>

namespace quibel::test {

namespace {

// A low-pass filter of 63 taps under a Hann window.
std::vector<float> lowPass(double edge) {
  constexpr int half = 31;
  std::vector<float> taps;
  for (int i = -half; i <= half; ++i) {
    const double window = 0.5 + 0.5 * std::cos(std::numbers::pi * i / (half + 1));
    const double ideal =
        i == 0 ? 2 * edge : std::sin(2 * std::numbers::pi * edge * i) / (std::numbers::pi * i);
    taps.push_back(static_cast<float>(window * ideal));
  }
  return taps;
}

}  // namespace

double level(const Sound& sound) {
  double sum = 0;
  for (const auto& channel : sound.channels) {
    for (const float sample : channel) sum += double{sample} * double{sample};
  }
  return 10 * std::log10(sum / static_cast<double>(sound.frames() * sound.channels.size()));
}

double levelBelow16kHz(const Sound& sound) {
  const auto taps = lowPass(16'000.0 / sound.rate);
  const std::size_t count = sound.frames() - taps.size() + 1;
  double sum = 0;
  for (const auto& channel : sound.channels) {
    for (std::size_t i = 0; i < count; ++i) {
      float sample = 0;
      for (std::size_t tap = 0; tap < taps.size(); ++tap) sample += taps[tap] * channel[i + tap];
      sum += double{sample} * double{sample};
    }
  }
  return 10 * std::log10(sum / static_cast<double>(count * sound.channels.size()));
}

}  // namespace quibel::test
