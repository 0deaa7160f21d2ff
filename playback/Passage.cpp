#include "playback/Passage.h"

#include <algorithm>

namespace quibel::playback {

PassageSlots::PassageSlots(std::uint32_t channels, std::size_t capacity)
    : passages_{Passage(channels, capacity), Passage(channels, capacity),
                Passage(channels, capacity)} {}

Passage& PassageSlots::begin(std::uint64_t generation, std::int64_t firstFrame) {
  Passage* fresh = offered_.exchange(nullptr, std::memory_order_acq_rel);
  if (fresh == nullptr) {
    // The last one offered was taken. The sink's thread may be about to say so,
    // and until then plays the one before it: neither is free.
    const Passage* const playing = playing_.load(std::memory_order_acquire);
    fresh = std::ranges::find_if(passages_, [&](const Passage& passage) {
      return &passage != lastOffered_ && &passage != playing;
    });
  }
  fresh->generation = generation;
  fresh->firstFrame = firstFrame;
  fresh->frames.clear();
  fresh->complete.store(false, std::memory_order_relaxed);
  return *fresh;
}

void PassageSlots::offer(Passage& passage) {
  lastOffered_ = &passage;
  offered_.store(&passage, std::memory_order_release);
}

Passage* PassageSlots::take() noexcept {
  if (Passage* const fresh = offered_.exchange(nullptr, std::memory_order_acq_rel))
    playing_.store(fresh, std::memory_order_release);
  return playing_.load(std::memory_order_relaxed);
}

}  // namespace quibel::playback
