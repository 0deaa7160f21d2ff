#pragma once

#include <memory>

#include "platform/AudioFile.h"
#include "platform/AudioPlayer.h"
#include "playback/Sink.h"

namespace quibel::playback {

class AudioThread;

/// A sound output. It has one thread that makes every call to
/// the sound server; the main thread only leaves word for it. Main thread, but
/// for warmUp().
class AudioOutput {
 public:
  /// The output that `connect` leads to.
  explicit AudioOutput(Connect connect);

  /// Silences what still plays. Waits at most 1 s for the sound server.
  ~AudioOutput();

  AudioOutput(const AudioOutput&) = delete;
  AudioOutput& operator=(const AudioOutput&) = delete;

  /// Any thread, at once: begins to connect to the sound server.
  void warmUp();

  /// A player of the song, at its beginning. Fails if the song has no channels
  /// or less than 1,000 frames a second, and if there is no sound output: that
  /// answer is waited for, at most 1.5 s.
  platform::Result<std::unique_ptr<platform::AudioPlayer>> makePlayer(
      std::unique_ptr<platform::AudioFile> song);

 private:
  const std::shared_ptr<AudioThread> thread_;
};

}  // namespace quibel::playback
