#pragma once

#include <cstdint>
#include <deque>
#include <optional>

namespace quibel::playback {

/// What a sink is given from one of its frames on.
enum class Content : std::uint8_t {
  sound,    ///< the song, one frame after the other
  waiting,  ///< silence, because the decoder is late
  ended,    ///< silence, because the passage is over
};

/// From the sink's frame `sinkFrame` on it is given `content`, which there
/// stands at the song's frame `songFrame` of the jump `generation`.
struct Segment {
  std::uint64_t sinkFrame = 0;
  std::uint64_t generation = 0;
  std::int64_t songFrame = 0;
  Content content = Content::waiting;

  friend bool operator==(const Segment&, const Segment&) = default;
};

/// The same segment as it stands `frames` sink frames later, where a sink frame
/// is made of `step` of the song's.
Segment advanced(Segment segment, std::uint64_t frames, std::uint32_t step);

/// Which part of the song each of a sink's frames came from.
class Timeline {
 public:
  /// `step`: the song's frames in one frame of the sink.
  explicit Timeline(std::uint32_t step) : step_(step) {}

  /// In the order of their sink frames.
  void add(const Segment& segment) { segments_.push_back(segment); }

  /// What is heard at `sinkFrame`, or nothing before the first segment. Forgets
  /// what lies before, so that the next call's frame is not below this one's.
  std::optional<Segment> at(std::uint64_t sinkFrame);

 private:
  std::uint32_t step_;
  std::deque<Segment> segments_;
};

}  // namespace quibel::playback
