#include "benchmarks/LoopRecording.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace quibel::benchmarks {
namespace {

/// Whole numbers up to here are exact in a float's 24 bits.
constexpr float scale = 1 << 24;

constexpr std::int32_t silent = -1;

constexpr int secondsKept = 10;

}  // namespace

test::Sound numberedSong(int rate, double seconds) {
  std::vector<float> samples(static_cast<std::size_t>(seconds * rate));
  for (std::size_t frame = 0; frame < samples.size(); ++frame)
    samples[frame] = static_cast<float>(frame + 1) / scale;
  return {rate, {samples, samples}};
}

LoopRecording::LoopRecording(int rate, double start)
    : rate_(rate),
      start_(static_cast<std::int32_t>(std::lround(start * rate))),
      recent_(static_cast<std::size_t>(secondsKept) * static_cast<std::size_t>(rate), silent),
      monitor_(rate, [this](std::span<const float> samples) {
        const std::lock_guard lock(mutex_);
        for (std::size_t left = 0; left < samples.size(); left += 2)
          look(static_cast<std::int32_t>(std::lround(samples[left] * scale)) - 1);
      }) {}

LoopRecording::Totals LoopRecording::totals() const {
  const std::lock_guard lock(mutex_);
  return totals_;
}

std::optional<double> LoopRecording::heardAt(Clock::time_point time) const {
  const std::lock_guard lock(mutex_);
  const auto at =
      std::llround(std::chrono::duration<double>(time - monitor_.beginning()).count() * rate_);
  if (at >= recorded_ || at < 0 || at < recorded_ - std::ssize(recent_)) return std::nullopt;
  const auto frame = recent_[static_cast<std::size_t>(at) % recent_.size()];
  if (frame == silent) return std::nullopt;
  return static_cast<double>(frame) / rate_;
}

void LoopRecording::look(std::int32_t frame) {
  recent_[static_cast<std::size_t>(recorded_++) % recent_.size()] = frame;
  if (frame == silent) {
    ++silence_;
    return;
  }
  if (silence_ > 0 && last_ != silent) {
    ++totals_.holes;
    totals_.holeFrames += silence_;
    totals_.longestHole = std::max(totals_.longestHole, silence_);
  }
  if (frame == start_)
    ++totals_.passes;
  else if (frame != last_ + 1)
    ++totals_.strays;
  last_ = frame;
  silence_ = 0;
}

}  // namespace quibel::benchmarks
