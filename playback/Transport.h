#pragma once

#include <cstdint>
#include <mutex>
#include <optional>

#include "playback/Clock.h"
#include "playback/Timeline.h"

namespace quibel::playback {

/// What the main thread wants of one player and what the audio thread knows of
/// it. Either thread; no call waits for more than another one's few instructions.
class Transport {
 public:
  enum class Intent : std::uint8_t {
    stop,
    play,
    rest,  ///< playback has stopped by itself; the sink may run on, silent
  };

  struct Jump {
    std::uint64_t generation = 0;  ///< counted from 1
    std::int64_t frame = 0;        ///< of the song
  };

  /// For a song of `length` frames, `sampleRate` of them a second.
  Transport(std::int64_t length, double sampleRate);

  /// Main thread: sets the position, clamped to the song; what is no number is
  /// its beginning. The jump to be made, or nothing if it is under way already.
  std::optional<Jump> seek(double seconds);

  /// Main thread: the jump to the song's beginning if there was none before.
  std::optional<Jump> begin();

  void play();
  void stop();
  bool isPlaying() const;
  bool hasOutput() const;

  /// The position being heard, in seconds; as set until the last jump is heard.
  double currentTime(Clock::time_point now);

  /// Audio thread.
  Intent intent() const;

  /// Audio thread: what was being heard at `when`.
  void publish(const Segment& heard, Clock::time_point when);

  /// Audio thread: playback has stopped because the output is gone.
  void outputLost();
  void outputFound();

  /// Audio thread: the jump with which a fresh sink plays on, from what was heard
  /// last or, if a jump was under way, from where that leads.
  Jump resume();

 private:
  Jump jumpTo(std::int64_t frame);
  bool jumpHeard() const { return heard_.generation == target_.generation; }
  double secondsAt(std::int64_t frame) const;

  const std::int64_t length_;
  const double sampleRate_;

  mutable std::mutex mutex_;
  Intent intent_ = Intent::stop;
  bool hasOutput_ = true;
  Jump target_;
  double setTime_ = 0;
  Segment heard_;
  Clock::time_point heardWhen_;
  double lastReported_ = 0;  ///< since the last jump: what is heard never goes back
};

}  // namespace quibel::playback
