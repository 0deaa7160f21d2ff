#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "playback/Passage.h"
#include "playback/Sink.h"
#include "playback/SpscQueue.h"
#include "playback/Timeline.h"

namespace quibel::playback {

/// Gives one sink the newest passage's sound, silence where there is none, and
/// notes for each change what the sink got from which of its frames on.
class Renderer final : public SinkSource {
 public:
  /// `step`: the song's frames in one frame of the sink.
  Renderer(PassageSlots& passages, std::uint32_t channels, std::uint32_t step)
      : passages_(passages), channels_(channels), step_(step) {}

  void render(float* out, std::uint32_t frames) noexcept override;

  /// One other thread: the notes, oldest first, and the frames rendered so far.
  std::optional<Segment> nextNote() { return notes_.pop(); }
  std::uint64_t framesRendered() const { return rendered_.load(std::memory_order_acquire); }

 private:
  void note(const Segment& segment) noexcept;

  PassageSlots& passages_;
  std::uint32_t channels_;
  std::uint32_t step_;
  std::atomic<std::uint64_t> rendered_ = 0;
  std::optional<Segment> lastNote_;
  // A change each callback, at 10 ms each, fits for 2.5 s; what does not fit is
  // noted again by the next callback.
  SpscQueue<Segment, 256> notes_;
};

}  // namespace quibel::playback
