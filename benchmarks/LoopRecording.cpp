#include "benchmarks/LoopRecording.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include <unistd.h>

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
      monitor_(rate),
      recent_(static_cast<std::size_t>(secondsKept) * static_cast<std::size_t>(rate), silent),
      reader_([this] { read(); }) {}

LoopRecording::~LoopRecording() {
  monitor_.process.reset();
  reader_.join();
}

LoopRecording::Totals LoopRecording::totals() const {
  const std::lock_guard lock(mutex_);
  return totals_;
}

std::optional<double> LoopRecording::heardAt(Clock::time_point time) const {
  const std::lock_guard lock(mutex_);
  // The moment when the recording's frames came in soonest is taken for its beginning.
  const auto at = std::llround(std::chrono::duration<double>(time - beginning_).count() * rate_);
  if (at >= recorded_ || at < 0 || at < recorded_ - std::ssize(recent_)) return std::nullopt;
  const auto frame = recent_[static_cast<std::size_t>(at) % recent_.size()];
  if (frame == silent) return std::nullopt;
  return static_cast<double>(frame) / rate_;
}

void LoopRecording::read() {
  std::array<char, 16'384> bytes{};
  constexpr std::size_t frameSize = 2 * sizeof(float);
  std::size_t rest = 0;  // of a frame that came in part
  for (;;) {
    const auto got = ::read(monitor_.pipe, bytes.data() + rest, bytes.size() - rest);
    const auto now = Clock::now();
    if (got <= 0) break;
    const auto available = rest + static_cast<std::size_t>(got);
    const auto frames = available / frameSize;
    const std::lock_guard lock(mutex_);
    for (std::size_t frame = 0; frame < frames; ++frame) {
      float left = 0;
      std::memcpy(&left, bytes.data() + frame * frameSize, sizeof left);
      look(static_cast<std::int32_t>(std::lround(left * scale)) - 1);
    }
    rest = available % frameSize;
    std::memmove(bytes.data(), bytes.data() + frames * frameSize, rest);
    const std::chrono::duration<double> length(static_cast<double>(recorded_) / rate_);
    beginning_ = std::min(beginning_, now - std::chrono::duration_cast<Clock::duration>(length));
  }
  ::close(monitor_.pipe);
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
