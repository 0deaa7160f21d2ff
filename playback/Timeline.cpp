#include "playback/Timeline.h"

namespace quibel::playback {

Segment advanced(Segment segment, std::uint64_t frames, std::uint32_t step) {
  segment.sinkFrame += frames;
  if (segment.content == Content::sound)
    segment.songFrame += static_cast<std::int64_t>(frames * step);
  return segment;
}

std::optional<Segment> Timeline::at(std::uint64_t sinkFrame) {
  while (segments_.size() > 1 && segments_[1].sinkFrame <= sinkFrame) segments_.pop_front();
  if (segments_.empty() || segments_.front().sinkFrame > sinkFrame) return std::nullopt;
  return advanced(segments_.front(), sinkFrame - segments_.front().sinkFrame, step_);
}

}  // namespace quibel::playback
