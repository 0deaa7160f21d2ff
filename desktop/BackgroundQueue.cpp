#include "desktop/BackgroundQueue.h"

#include <system_error>
#include <utility>

namespace quibel::desktop {

BackgroundQueue::~BackgroundQueue() {
  // A block may submit another one while these are waited for.
  for (;;) {
    std::list<Worker> rest;
    {
      const std::lock_guard lock(mutex_);
      // A running worker marks itself in its list node: splicing keeps nodes in place.
      rest.splice(rest.end(), workers_);
    }
    if (rest.empty()) return;
    for (auto& worker : rest) worker.thread.join();
  }
}

void BackgroundQueue::async(std::function<void()> block) {
  auto finished = takeFinished();
  for (auto& worker : finished) worker.thread.join();

  const std::lock_guard lock(mutex_);
  auto& worker = workers_.emplace_back();
  try {
    worker.thread = std::thread([this, &worker, block]() mutable {
      std::exchange(block, nullptr)();
      const std::lock_guard done(mutex_);
      worker.done = true;
    });
  } catch (const std::system_error&) {
    workers_.pop_back();
    block();
  }
}

std::list<BackgroundQueue::Worker> BackgroundQueue::takeFinished() {
  std::list<Worker> finished;
  const std::lock_guard lock(mutex_);
  for (auto worker = workers_.begin(); worker != workers_.end();) {
    const auto next = std::next(worker);
    if (worker->done) finished.splice(finished.end(), workers_, worker);
    worker = next;
  }
  return finished;
}

}  // namespace quibel::desktop
