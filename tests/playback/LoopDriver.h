#pragma once

#include <chrono>
#include <thread>
#include <vector>

#include "platform/AudioPlayer.h"

namespace quibel::playback {

/// Loops a fragment as the editor's timer does, every 25 ms.
class LoopDriver {
 public:
  using Clock = std::chrono::steady_clock;

  struct Look {
    Clock::time_point when;
    double playhead = 0;
    bool jumped = false;
    double heard = 0;  ///< before a jump
  };

  LoopDriver(platform::AudioPlayer& player, double start, double end)
      : player_(player), start_(start), end_(end) {
    player_.setCurrentTime(start_);
    player_.prepareToPlay();
    player_.play();
  }

  /// As the handles do, from the next tick on.
  void select(double start, double end) {
    start_ = start;
    end_ = end;
  }

  void tick() {
    next_ += std::chrono::milliseconds(25);
    std::this_thread::sleep_until(next_);
    Look look;
    look.heard = player_.currentTime();
    if (look.heard >= end_ || !player_.isPlaying()) {
      look.jumped = true;
      player_.setCurrentTime(start_);
      player_.play();
    }
    look.when = Clock::now();
    look.playhead = player_.currentTime();
    looks_.push_back(look);
  }

  const std::vector<Look>& looks() const { return looks_; }

 private:
  platform::AudioPlayer& player_;
  double start_;
  double end_;
  Clock::time_point next_ = Clock::now();
  std::vector<Look> looks_;
};

}  // namespace quibel::playback
