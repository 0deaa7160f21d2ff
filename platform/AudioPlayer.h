#pragma once

namespace quibel::platform {

/// Plays one song through the sound output. Main thread only; no call waits
/// for the sound server, only opening one does. Destroying it ends the sound.
class AudioPlayer {
 public:
  AudioPlayer() = default;
  AudioPlayer(const AudioPlayer&) = delete;
  AudioPlayer& operator=(const AudioPlayer&) = delete;
  virtual ~AudioPlayer() = default;

  /// The song position being heard, in seconds. After it is set it reads as set
  /// until the sound output has reached the jump.
  virtual double currentTime() const = 0;

  /// Moves playback to `seconds`, clamped to the song.
  virtual void setCurrentTime(double seconds) = 0;

  /// Gets the first sound ready, so that play() starts at once. False if that
  /// is not possible now.
  virtual bool prepareToPlay() = 0;

  /// Plays on from the current time. False if the sound output refuses.
  virtual bool play() = 0;

  /// False once playback has stopped by itself, at the song's end or because
  /// the sound output is gone.
  virtual bool isPlaying() const = 0;

  virtual void stop() = 0;
};

}  // namespace quibel::platform
