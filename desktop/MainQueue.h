#pragma once

#include <QObject>
#include <deque>
#include <mutex>

#include "platform/Platform.h"

namespace quibel::desktop {

/// Blocks run on the thread that made the queue, the one with Qt's event loop,
/// one event a block, so that they also run while a dialog has an event loop of
/// its own.
class MainQueue final : public QObject, public platform::DispatchQueue {
 public:
  MainQueue() = default;

  /// Blocks that have not run are destroyed with the queue.
  ~MainQueue() override = default;

  void async(std::function<void()> block) override;

  /// From here on blocks are dropped: those that wait and those that are still
  /// submitted. Main thread.
  void shutDown();

 protected:
  void customEvent(QEvent* event) override;

 private:
  // The blocks cross threads in a queue of our own rather than inside Qt's
  // events: Qt is then only woken, and thread checkers see the hand-over.
  std::mutex mutex_;
  std::deque<std::function<void()>> blocks_;
  bool closed_ = false;
};

}  // namespace quibel::desktop
