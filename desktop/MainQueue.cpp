#include "desktop/MainQueue.h"

#include <QCoreApplication>
#include <QEvent>
#include <utility>

namespace quibel::desktop {

void MainQueue::async(std::function<void()> block) {
  const std::lock_guard lock(mutex_);
  if (closed_) return;
  blocks_.push_back(std::move(block));
  // Posted under the lock, so that shutDown() has no event of this queue under way.
  QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

void MainQueue::shutDown() {
  std::deque<std::function<void()>> dropped;
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    dropped.swap(blocks_);
  }
  // What the blocks own is released here, without the lock: it may submit again.
}

void MainQueue::customEvent(QEvent*) {
  std::function<void()> block;
  {
    const std::lock_guard lock(mutex_);
    if (blocks_.empty()) return;
    block = std::move(blocks_.front());
    blocks_.pop_front();
  }
  block();
}

}  // namespace quibel::desktop
