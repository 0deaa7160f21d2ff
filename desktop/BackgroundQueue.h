#pragma once

#include <list>
#include <mutex>
#include <thread>

#include "platform/Platform.h"

namespace quibel::desktop {

/// Runs every block on a thread of its own: a load that takes long, because the
/// song does or its disk, never holds up the next one.
class BackgroundQueue final : public platform::DispatchQueue {
 public:
  BackgroundQueue() = default;

  /// Waits for every block. Whoever owns the queue asks the blocks to end first.
  ~BackgroundQueue() override;

  /// Where the system has no thread left the block runs at once, on the caller's.
  void async(std::function<void()> block) override;

 private:
  struct Worker {
    std::thread thread;
    bool done = false;
  };

  std::list<Worker> takeFinished();

  std::mutex mutex_;
  std::list<Worker> workers_;
};

}  // namespace quibel::desktop
