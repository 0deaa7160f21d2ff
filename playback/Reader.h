#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

#include "platform/AudioFile.h"
#include "playback/Downmix.h"
#include "playback/Passage.h"

namespace quibel::playback {

/// Decodes a song ahead of its sink, on a thread of its own, from each jump on.
/// A passage that cannot be read on ends where reading failed.
class Reader {
 public:
  /// Seconds of sound that a passage has room for. Half of it lasts between two
  /// refills, the other half covers a slow disk.
  static constexpr double passageLength = 0.75;

  /// `onReady` is called on the decoder's thread each time the sound of a jump
  /// is on offer. `passages` outlives the decoder.
  Reader(std::unique_ptr<platform::AudioFile> song, const Downmix& downmix, std::uint32_t sinkRate,
         PassageSlots& passages, std::function<void()> onReady);

  /// Waits for the block that is being decoded.
  ~Reader() = default;

  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  /// Any thread, at once: begins a passage at the song's `frame`, 0 … length.
  /// Of several jumps the one with the highest generation counts.
  void jump(std::uint64_t generation, std::int64_t frame);

  /// Any thread, at once: fills the newest passage up.
  void refill();

  /// Any thread: whether the sound of the last jump is on offer.
  bool isReady() const { return offered_.load() == requested_.load(); }

 private:
  struct Jump {
    std::uint64_t generation = 0;
    std::int64_t frame = 0;
  };

  void run(const std::stop_token& stop);
  void begin(const Jump& jump, const std::stop_token& stop);
  void offer();
  void fill(std::size_t frames, const std::stop_token& stop);
  void decodeBlock();
  bool seekBehindHead();
  void remember(const float* samples, std::size_t frames);
  std::size_t headFrames() const { return head_.size() / downmix_.sinkChannels(); }

  const std::unique_ptr<platform::AudioFile> song_;
  const Downmix downmix_;
  PassageSlots& passages_;
  const std::function<void()> onReady_;
  const std::size_t blockFrames_;  ///< of the sink, 20 ms
  const std::size_t headCapacity_;
  const std::unique_ptr<platform::AudioPCMBuffer> buffer_;

  // The decoder's thread only.
  std::vector<float> block_;
  Passage* passage_ = nullptr;
  std::size_t decoded_ = 0;  ///< frames of the sink written to passage_
  // The first sound of the last jump: a loop jumps to the same place over and
  // over, and plays from here while the song is still seeking.
  std::vector<float> head_;
  std::int64_t headFrame_ = -1;
  bool headComplete_ = false;  ///< the song ends with it

  std::atomic<std::uint64_t> requested_ = 0;
  std::atomic<std::uint64_t> offered_ = 0;
  std::mutex mutex_;
  std::condition_variable_any changed_;
  std::optional<Jump> jump_;
  bool refill_ = false;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace quibel::playback
