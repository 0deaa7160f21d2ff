#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "platform/Error.h"

namespace quibel::playback {

/// 32-bit float samples, frames interleaved.
struct SinkFormat {
  std::uint32_t rate = 0;      ///< frames per second, 1,000 … 192,000
  std::uint32_t channels = 0;  ///< 1 or 2

  friend bool operator==(const SinkFormat&, const SinkFormat&) = default;
};

/// What a sink plays.
class SinkSource {
 public:
  SinkSource() = default;
  SinkSource(const SinkSource&) = delete;
  SinkSource& operator=(const SinkSource&) = delete;

  /// Fills `frames` frames. On the sink's real-time thread, one call at a time:
  /// takes no lock, allocates nothing, waits for nothing.
  virtual void render(float* out, std::uint32_t frames) noexcept = 0;

 protected:
  ~SinkSource() = default;
};

/// One stream to the sound output, silent until it is started. Audio thread only.
/// Each call may wait for the sound server.
class Sink {
 public:
  Sink() = default;
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;

  /// Ends the sound, along with what is queued. The source is not called any more
  /// once this returns.
  virtual ~Sink() = default;

  /// False if the sound output refuses.
  virtual bool start() = 0;

  /// Frames heard since the sink was made, or nothing if that is not known now.
  /// Never goes back.
  virtual std::optional<std::uint64_t> position() = 0;

  /// Whether the stream has died. It then has to be destroyed: it never plays again.
  virtual bool hasFailed() const = 0;
};

/// A connection to the sound output. Audio thread only. Its sinks keep what
/// they need of it alive.
class SinkContext {
 public:
  SinkContext() = default;
  SinkContext(const SinkContext&) = delete;
  SinkContext& operator=(const SinkContext&) = delete;
  virtual ~SinkContext() = default;

  virtual platform::Result<std::unique_ptr<Sink>> open(const SinkFormat& format,
                                                       SinkSource& source) = 0;

  /// Whether it wakes no thread up while it has no sink.
  virtual bool isQuiet() const = 0;
};

/// Connects to the sound output, or says why that cannot be. Audio thread only.
using Connect = std::function<platform::Result<std::unique_ptr<SinkContext>>()>;

}  // namespace quibel::playback
