#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "tests/platform/ChildProcess.h"

namespace quibel::playback {

/// Records what the null sink plays, from the moment it is made.
class PulseRecorder {
 public:
  /// `rate`: the null sink's, so that the recording is what it played.
  explicit PulseRecorder(int rate);
  ~PulseRecorder();

  PulseRecorder(const PulseRecorder&) = delete;
  PulseRecorder& operator=(const PulseRecorder&) = delete;

  /// So far: interleaved stereo.
  std::vector<float> samples() const;

  /// The frame that was recorded at a time: counted from the moment when the
  /// recording's frames came in soonest.
  double frameAt(std::chrono::steady_clock::time_point time) const;

  /// Whether the sound that was recorded has been followed by silence.
  bool endsInSilence() const;

 private:
  void read(int fd);

  const int rate_;
  mutable std::mutex mutex_;
  std::vector<float> samples_;
  std::chrono::steady_clock::time_point beginning_ = std::chrono::steady_clock::time_point::max();
  std::unique_ptr<platform::ChildProcess> process_;
  std::thread reader_;
};

}  // namespace quibel::playback
