#include "playback/Renderer.h"

#include <algorithm>
#include <cstddef>

namespace quibel::playback {

void Renderer::render(float* out, std::uint32_t frames) noexcept {
  const auto sinkFrame = rendered_.load(std::memory_order_relaxed);
  std::size_t filled = 0;
  if (Passage* const passage = passages_.take()) {
    // Asked before reading: frames written after the question are not the end.
    const bool complete = passage->complete.load(std::memory_order_acquire);
    Segment now{
        sinkFrame, passage->generation,
        passage->firstFrame + static_cast<std::int64_t>(passage->frames.framesRead() * step_),
        Content::sound};
    filled = passage->frames.read(out, frames);
    if (filled > 0) note(now);
    if (filled < frames) {
      now = advanced(now, filled, step_);
      now.content = complete ? Content::ended : Content::waiting;
      note(now);
    }
  }
  std::fill(out + filled * channels_, out + std::size_t{frames} * channels_, 0.0F);
  rendered_.store(sinkFrame + frames, std::memory_order_release);
}

void Renderer::note(const Segment& segment) noexcept {
  if (lastNote_ && segment == advanced(*lastNote_, segment.sinkFrame - lastNote_->sinkFrame, step_))
    return;
  if (notes_.push(segment)) lastNote_ = segment;
}

}  // namespace quibel::playback
