#pragma once

#include <chrono>
#include <mutex>
#include <vector>

#include "tests/playback/PulseMonitor.h"

namespace quibel::playback {

/// Records what the null sink plays, from the moment it is made.
class PulseRecorder {
 public:
  /// `rate`: the null sink's.
  explicit PulseRecorder(int rate);

  /// So far: interleaved stereo.
  std::vector<float> samples() const;

  /// The frame that was heard at a time.
  double frameAt(std::chrono::steady_clock::time_point time) const;

  /// Whether the sound that was recorded has been followed by silence.
  bool endsInSilence() const;

 private:
  const int rate_;
  mutable std::mutex mutex_;
  std::vector<float> samples_;
  PulseMonitor monitor_;  // last: it fills the above
};

}  // namespace quibel::playback
