#pragma once

#include <chrono>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include <sys/types.h>

namespace quibel::playback {

/// Watches how long threads that could run wait for a core: a machine that gives them none
/// makes holes in a sound of which no program is the cause.
class CoreWaits {
 public:
  /// Watches all threads of these processes as long as this lives.
  explicit CoreWaits(std::vector<pid_t> processes);

  struct Wait {
    std::chrono::duration<double> length{};
    std::string thread;
  };

  /// The longest one so far. Thread-safe.
  Wait longest() const;

 private:
  void watch(const std::stop_token& stop);

  const std::vector<pid_t> processes_;
  mutable std::mutex mutex_;
  Wait longest_;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace quibel::playback
