#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/AudioFile.h"
#include "playback/Clock.h"
#include "playback/Downmix.h"
#include "playback/OutputDevice.h"
#include "playback/Passage.h"
#include "playback/Reader.h"
#include "playback/Renderer.h"
#include "playback/Timeline.h"
#include "playback/Transport.h"

namespace quibel::playback {

/// All that one player has besides its face to the main thread: the decoder,
/// the sink, and the audio thread's part of the work between them.
class PlayerEngine {
 public:
  /// The song's rate is at least 1,000, and it has channels. `wake` has the
  /// audio thread call service(); any thread calls it.
  PlayerEngine(std::unique_ptr<platform::AudioFile> song, std::function<void()> wake);

  /// Any thread, at once.
  Transport& transport() { return transport_; }
  void jump(const Transport::Jump& jump);

  /// Audio thread: opens the sink.
  platform::Result<void> open(OutputDevice& device);

  /// Audio thread: ends the sound for good.
  void close();

  /// Audio thread: has the sink follow the transport and reports what is heard.
  /// When it should be called again, if at all before the next wake.
  std::optional<Clock::time_point> service(OutputDevice& device);

 private:
  void lose(OutputDevice& device);
  void start(OutputDevice& device);
  void report();

  // In this order: each uses those above it, and is destroyed before them.
  const Downmix downmix_;
  const SinkFormat format_;
  const std::function<void()> wake_;
  Transport transport_;
  PassageSlots passages_;
  Reader reader_;
  std::optional<Renderer> renderer_;
  std::optional<Timeline> timeline_;
  std::unique_ptr<Sink> sink_;
  bool running_ = false;
  Clock::time_point nextAttempt_;
};

}  // namespace quibel::playback
