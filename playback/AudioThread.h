#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/Error.h"
#include "playback/Clock.h"
#include "playback/PlayerEngine.h"

namespace quibel::playback {

/// The one thread that talks to the sound output. It lives on by itself while
/// the sound server keeps it waiting, so that no other thread waits.
class AudioThread : public std::enable_shared_from_this<AudioThread> {
 public:
  static std::shared_ptr<AudioThread> start(Connect connect);

  /// Any thread, at once: looks after the players.
  void wake();

  /// Any thread, at once: connects to the sound output, so that a later open()
  /// finds it connected.
  void warmUp();

  /// Main thread: opens the player's sink and keeps the player until remove().
  /// Waits for the sound server for 1.5 s; where it has kept the thread waiting
  /// that long already, not at all.
  platform::Result<void> open(std::shared_ptr<PlayerEngine> player);

  /// Any thread, at once: ends the player's sound and lets go of it.
  void remove(std::shared_ptr<PlayerEngine> player);

  /// Ends the thread with all its players' sound; called once. Waits for it, but
  /// no longer than 1 s for a sound server that does not answer.
  void shutDown();

 private:
  using Players = std::vector<std::shared_ptr<PlayerEngine>>;
  using Task = std::function<void(OutputDevice&, Players&)>;

  explicit AudioThread(Connect connect) : connect_(std::move(connect)) {}

  void post(Task task);
  void run();
  bool waitForWork(std::optional<Clock::time_point> due);
  void runTasks(OutputDevice& device, Players& players);

  const Connect connect_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Task> tasks_;
  bool woken_ = false;
  bool stopped_ = false;
  bool ended_ = false;
  std::optional<Clock::time_point> busySince_;  ///< nothing while the thread waits for work
  std::thread thread_;
};

}  // namespace quibel::playback
