#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quibel::playback {

/// Interleaved frames from one thread to another, without locks.
class FrameRing {
 public:
  FrameRing(std::uint32_t channels, std::size_t capacity)
      : channels_(channels), capacity_(capacity), samples_(capacity * channels) {}

  /// While neither side is in use.
  void clear() {
    written_.store(0, std::memory_order_relaxed);
    read_.store(0, std::memory_order_relaxed);
  }

  /// Frames read since it was cleared. Any thread, as the next three.
  std::uint64_t framesRead() const { return read_.load(std::memory_order_acquire); }
  std::size_t readable() const {
    const auto read = framesRead();
    return static_cast<std::size_t>(written_.load(std::memory_order_acquire) - read);
  }
  std::size_t writable() const { return capacity_ - readable(); }
  std::size_t capacity() const { return capacity_; }

  /// The writing thread: as many of the frames as there is room for.
  std::size_t write(const float* frames, std::size_t count) {
    const auto at = written_.load(std::memory_order_relaxed);
    count = std::min(count, writable());
    std::size_t done = 0;
    forParts(at, count, [&](float* part, std::size_t length) {
      std::copy_n(frames + done, length, part);
      done += length;
    });
    written_.store(at + count, std::memory_order_release);
    return count;
  }

  /// The reading thread: as many of the frames as there are.
  std::size_t read(float* frames, std::size_t count) noexcept {
    const auto at = read_.load(std::memory_order_relaxed);
    count = std::min(count, readable());
    std::size_t done = 0;
    forParts(at, count, [&](const float* part, std::size_t length) {
      std::copy_n(part, length, frames + done);
      done += length;
    });
    read_.store(at + count, std::memory_order_release);
    return count;
  }

 private:
  /// The samples of `count` frames from frame `at` on, in the one or two pieces
  /// that they lie in.
  template <class Use>
  void forParts(std::uint64_t at, std::size_t count, Use use) {
    const auto begin = static_cast<std::size_t>(at % capacity_);
    const auto first = std::min(count, capacity_ - begin);
    use(samples_.data() + begin * channels_, first * channels_);
    if (count > first) use(samples_.data(), (count - first) * channels_);
  }

  std::uint32_t channels_;
  std::size_t capacity_;
  std::vector<float> samples_;
  std::atomic<std::uint64_t> written_ = 0;
  std::atomic<std::uint64_t> read_ = 0;
};

}  // namespace quibel::playback
