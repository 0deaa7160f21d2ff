#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <span>

namespace quibel::playback {

/// Receives what the null sink "out" plays. Asks for no latency: the sink goes on working
/// in the cycles that its player alone asks for.
class PulseMonitor {
 public:
  using Clock = std::chrono::steady_clock;

  /// Interleaved stereo, on a thread of the monitor's own.
  using Receive = std::function<void(std::span<const float> samples)>;

  /// `rate`: the null sink's own, so that samples arrive as they were played. Throws
  /// std::runtime_error where the server or the sink does not answer.
  PulseMonitor(int rate, Receive receive);
  ~PulseMonitor();

  PulseMonitor(const PulseMonitor&) = delete;
  PulseMonitor& operator=(const PulseMonitor&) = delete;

  /// When the first frame received was heard: the median of what the server has said.
  /// Thread-safe.
  Clock::time_point beginning() const;

 private:
  class Client;
  std::unique_ptr<Client> client_;
};

}  // namespace quibel::playback
