#include "playback/Reader.h"

#include <algorithm>
#include <utility>

namespace quibel::playback {
namespace {

/// Seconds that are decoded before a jump is on offer: as long as a busy machine
/// may keep this thread from decoding on, so that the first sound is not followed
/// by a hole. Decoding them takes few milliseconds.
constexpr double leadLength = 0.24;

/// Seconds kept of a jump's first sound: longer than any seek takes.
constexpr double headLength = 0.5;

std::size_t framesIn(double seconds, std::uint32_t rate) {
  return std::max<std::size_t>(1, static_cast<std::size_t>(seconds * rate));
}

}  // namespace

Reader::Reader(std::unique_ptr<platform::AudioFile> song, const Downmix& downmix,
               std::uint32_t sinkRate, PassageSlots& passages, std::function<void()> onReady)
    : song_(std::move(song)),
      downmix_(downmix),
      passages_(passages),
      onReady_(std::move(onReady)),
      blockFrames_(framesIn(0.02, sinkRate)),
      headCapacity_(framesIn(headLength, sinkRate)),
      buffer_(song_->makeBuffer(static_cast<std::uint32_t>(blockFrames_) * downmix.step())),
      block_(blockFrames_ * downmix.sinkChannels()),
      thread_([this](const std::stop_token& stop) { run(stop); }) {}

void Reader::jump(std::uint64_t generation, std::int64_t frame) {
  const std::lock_guard lock(mutex_);
  if (generation <= requested_.load()) return;
  jump_ = Jump{generation, frame};
  requested_.store(generation);
  changed_.notify_one();
}

void Reader::refill() {
  const std::lock_guard lock(mutex_);
  refill_ = true;
  changed_.notify_one();
}

void Reader::run(const std::stop_token& stop) {
  for (;;) {
    std::optional<Jump> jump;
    {
      std::unique_lock lock(mutex_);
      if (!changed_.wait(lock, stop, [this] { return jump_ || refill_; })) return;
      jump = std::exchange(jump_, std::nullopt);
      refill_ = false;
    }
    if (jump) begin(*jump, stop);
    if (passage_ != nullptr) fill(passage_->frames.capacity(), stop);
  }
}

void Reader::begin(const Jump& jump, const std::stop_token& stop) {
  if (jump.frame != headFrame_) {
    headFrame_ = jump.frame;
    head_.clear();
    headComplete_ = false;
  }
  passage_ = &passages_.begin(jump.generation, jump.frame);
  decoded_ = passage_->frames.write(head_.data(), headFrames());
  passage_->complete.store(headComplete_, std::memory_order_release);

  const auto lead = blockFrames_ * static_cast<std::size_t>(leadLength / 0.02);
  const bool atOnce = headComplete_ || decoded_ >= lead;
  if (atOnce) offer();
  if (headComplete_) return;
  if (!seekBehindHead()) passage_->complete.store(true, std::memory_order_release);
  if (atOnce) return;
  fill(lead, stop);
  offer();
}

void Reader::offer() {
  passages_.offer(*passage_);
  offered_.store(passage_->generation);
  onReady_();
}

bool Reader::seekBehindHead() {
  const auto frame = headFrame_ + static_cast<std::int64_t>(headFrames() * downmix_.step());
  return song_->framePosition() == frame || song_->seek(frame).has_value();
}

/// Decodes until the passage has `frames` or no room for another block, is
/// complete, or is not wanted any more.
void Reader::fill(std::size_t frames, const std::stop_token& stop) {
  while (!passage_->complete.load(std::memory_order_relaxed) &&
         passage_->frames.readable() < frames && passage_->frames.writable() >= blockFrames_ &&
         requested_.load() == passage_->generation && !stop.stop_requested())
    decodeBlock();
}

void Reader::decodeBlock() {
  const bool readOn = buffer_ != nullptr && song_->read(*buffer_, buffer_->frameCapacity());
  const auto frames =
      readOn ? downmix_.mix(buffer_->floatChannelData(), buffer_->frameLength(), block_.data()) : 0;
  const bool atEnd = readOn && song_->framePosition() >= song_->length();
  remember(block_.data(), frames);
  decoded_ += passage_->frames.write(block_.data(), frames);
  if (atEnd && decoded_ == headFrames()) headComplete_ = true;
  if (!readOn || atEnd || frames == 0) passage_->complete.store(true, std::memory_order_release);
}

/// Keeps what continues the head, as far as it has room.
void Reader::remember(const float* samples, std::size_t frames) {
  if (decoded_ != headFrames() || headFrames() + frames > headCapacity_) return;
  head_.insert(head_.end(), samples, samples + frames * downmix_.sinkChannels());
}

}  // namespace quibel::playback
