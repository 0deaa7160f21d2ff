#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "playback/Clock.h"
#include "playback/Sink.h"

namespace quibel::playback {

/// The connection to the sound output, made when it is first needed and made
/// again when it proves to be dead, at most once a second. Audio thread only.
class OutputDevice {
 public:
  /// `now` reports the time, for tests that step it.
  explicit OutputDevice(Connect connect, std::function<Clock::time_point()> now = Clock::now);

  /// Fails at once, with the last attempt's error, within a second of it.
  platform::Result<std::unique_ptr<Sink>> open(const SinkFormat& format, SinkSource& source);

  /// Connects if that has not been done.
  platform::Result<void> connect();

  /// Forgets the connection after one of its sinks has failed.
  void drop();

  /// To be called while there is no sink: keeps the connection only if it is quiet.
  void rest();

 private:
  platform::Error refuse(platform::Error error);

  const Connect connect_;
  const std::function<Clock::time_point()> now_;
  std::unique_ptr<SinkContext> context_;
  std::optional<platform::Error> lastError_;
  Clock::time_point lastFailure_;
};

}  // namespace quibel::playback
