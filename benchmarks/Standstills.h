#pragma once

#include <chrono>
#include <mutex>
#include <stop_token>
#include <thread>

namespace quibel::benchmarks {

/// Watches a thread that only sleeps: where that comes late, whoever has less to wait for
/// came late too, and whatever was to be done in that time was not.
class Standstills {
 public:
  /// Counts those that last longer than `least`.
  explicit Standstills(std::chrono::duration<double> least);

  struct Totals {
    int count = 0;
    double seconds = 0;  ///< of all of them together
    double longest = 0;  ///< in seconds
  };
  Totals totals() const;

 private:
  void watch(const std::stop_token& stop);

  const std::chrono::duration<double> least_;
  mutable std::mutex mutex_;
  Totals totals_;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace quibel::benchmarks
