#include "tests/playback/PulseRecorder.h"

#include <algorithm>
#include <iterator>
#include <span>

namespace quibel::playback {

PulseRecorder::PulseRecorder(int rate)
    : rate_(rate), monitor_(rate, [this](std::span<const float> samples) {
        const std::lock_guard lock(mutex_);
        samples_.insert(samples_.end(), samples.begin(), samples.end());
      }) {}

std::vector<float> PulseRecorder::samples() const {
  const std::lock_guard lock(mutex_);
  return samples_;
}

double PulseRecorder::frameAt(std::chrono::steady_clock::time_point time) const {
  return std::chrono::duration<double>(time - monitor_.beginning()).count() * rate_;
}

bool PulseRecorder::endsInSilence() const {
  const auto recorded = samples();
  const auto silence = static_cast<std::ptrdiff_t>(rate_);  // half a second of both channels
  const auto isSilent = [](float sample) { return sample == 0; };
  return std::ssize(recorded) > silence && !std::ranges::all_of(recorded, isSilent) &&
         std::all_of(recorded.end() - silence, recorded.end(), isSilent);
}

}  // namespace quibel::playback
