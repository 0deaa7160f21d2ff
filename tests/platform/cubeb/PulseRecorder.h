#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "tests/platform/ChildProcess.h"

namespace quibel::playback {

/// A program that writes what the null sink plays to a pipe: frames of two 32-bit
/// floats, at the sink's own `rate`, so that they are what it played.
struct PulseMonitor {
  explicit PulseMonitor(int rate);

  int pipe = -1;  ///< closed by whoever reads it
  std::unique_ptr<platform::ChildProcess> process;
};

/// Records what the null sink plays, from the moment it is made.
class PulseRecorder {
 public:
  /// `rate`: the null sink's.
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
  PulseMonitor monitor_;
  mutable std::mutex mutex_;
  std::vector<float> samples_;
  std::chrono::steady_clock::time_point beginning_ = std::chrono::steady_clock::time_point::max();
  std::thread reader_;
};

}  // namespace quibel::playback
