#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "playback/FrameRing.h"

namespace quibel::playback {

/// The song from one jump on, as far as it is decoded and not yet rendered.
struct Passage {
  Passage(std::uint32_t channels, std::size_t capacity) : frames(channels, capacity) {}

  std::uint64_t generation = 0;  ///< which jump it belongs to, counted from 1
  std::int64_t firstFrame = 0;   ///< the song's frame it begins with
  FrameRing frames;
  std::atomic<bool> complete = false;  ///< nothing follows the frames that were written
};

/// Hands passages from the decoder's thread to the sink's, without locks: a jump
/// is a fresh passage, and the sink goes on with the old one until the fresh one
/// has sound. Three suffice: one that plays, one on offer, one being begun.
class PassageSlots {
 public:
  PassageSlots(std::uint32_t channels, std::size_t capacity);

  /// The decoder's thread: an empty passage. It takes back one that was offered
  /// and not taken.
  Passage& begin(std::uint64_t generation, std::int64_t firstFrame);

  /// The decoder's thread: lets the sink switch to the passage, to which more
  /// frames may still be written.
  void offer(Passage& passage);

  /// The sink's thread: the newest passage offered so far; null before the first.
  Passage* take() noexcept;

  /// Any thread: the one that take() last returned.
  const Passage* playing() const { return playing_.load(std::memory_order_acquire); }

 private:
  std::array<Passage, 3> passages_;
  std::atomic<Passage*> offered_ = nullptr;
  std::atomic<Passage*> playing_ = nullptr;
  Passage* lastOffered_ = nullptr;  // the decoder's thread only
};

}  // namespace quibel::playback
