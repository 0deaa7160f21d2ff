#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>

namespace quibel::playback {

/// At most `capacity` small values from one thread to another, without locks.
template <class T, std::size_t capacity>
class SpscQueue {
 public:
  /// The writing thread. False, and the value is not kept, if there is no room.
  bool push(const T& value) noexcept {
    const auto at = pushed_.load(std::memory_order_relaxed);
    if (at - popped_.load(std::memory_order_acquire) == capacity) return false;
    values_[at % capacity] = value;
    pushed_.store(at + 1, std::memory_order_release);
    return true;
  }

  /// The reading thread.
  std::optional<T> pop() {
    const auto at = popped_.load(std::memory_order_relaxed);
    if (at == pushed_.load(std::memory_order_acquire)) return std::nullopt;
    const T value = values_[at % capacity];
    popped_.store(at + 1, std::memory_order_release);
    return value;
  }

 private:
  std::array<T, capacity> values_{};
  std::atomic<std::size_t> pushed_ = 0;
  std::atomic<std::size_t> popped_ = 0;
};

}  // namespace quibel::playback
