#include "playback/PlayerEngine.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace quibel::playback {
namespace {

/// The highest rate a sink takes; above it a song's frames are averaged.
constexpr double highestRate = 192'000;

/// How often the position is looked at while a sink runs: well within the
/// 25 ms of the loop's own timer.
constexpr auto pollInterval = std::chrono::milliseconds(10);

constexpr auto attemptInterval = std::chrono::seconds(1);

Downmix downmixFor(const platform::AudioFormat& song) {
  const auto step = std::max(1.0, std::ceil(song.sampleRate / highestRate));
  return {song, static_cast<std::uint32_t>(step)};
}

SinkFormat sinkFormatFor(const platform::AudioFormat& song, const Downmix& downmix) {
  return {static_cast<std::uint32_t>(std::lround(song.sampleRate / downmix.step())),
          downmix.sinkChannels()};
}

std::size_t passageCapacity(const SinkFormat& format) {
  return static_cast<std::size_t>(Reader::passageLength * format.rate);
}

}  // namespace

PlayerEngine::PlayerEngine(std::unique_ptr<platform::AudioFile> song, std::function<void()> wake)
    : downmix_(downmixFor(song->processingFormat())),
      format_(sinkFormatFor(song->processingFormat(), downmix_)),
      wake_(std::move(wake)),
      transport_(song->length(), song->processingFormat().sampleRate),
      passages_(format_.channels, passageCapacity(format_)),
      reader_(std::move(song), downmix_, format_.rate, passages_, wake_) {}

void PlayerEngine::jump(const Transport::Jump& jump) { reader_.jump(jump.generation, jump.frame); }

platform::Result<void> PlayerEngine::open(OutputDevice& device) {
  renderer_.emplace(passages_, format_.channels, downmix_.step());
  timeline_.emplace(downmix_.step());
  auto sink = device.open(format_, *renderer_);
  if (!sink) return std::unexpected(sink.error());
  sink_ = std::move(*sink);
  return {};
}

void PlayerEngine::close() {
  sink_.reset();
  running_ = false;
}

std::optional<Clock::time_point> PlayerEngine::service(OutputDevice& device) {
  if (sink_ && sink_->hasFailed()) lose(device);

  const auto intent = transport_.intent();
  if (!sink_ && intent == Transport::Intent::play) {
    if (Clock::now() < nextAttempt_) return nextAttempt_;
    if (open(device)) {
      transport_.outputFound();
      jump(transport_.resume());
    } else {
      lose(device);
    }
  }
  if (!sink_) return std::nullopt;

  if (running_) {
    report();
    // Not only halted: what it still has queued would be heard when it starts again.
    if (intent == Transport::Intent::stop) close();
  } else if (intent == Transport::Intent::play && reader_.isReady()) {
    start(device);
  }
  if (!running_) return std::nullopt;
  const auto* const playing = passages_.playing();
  if (playing != nullptr && playing->frames.readable() < playing->frames.capacity() / 2)
    reader_.refill();
  return Clock::now() + pollInterval;
}

void PlayerEngine::start(OutputDevice& device) {
  running_ = sink_->start();
  if (!running_) lose(device);
}

void PlayerEngine::lose(OutputDevice& device) {
  close();
  device.drop();
  nextAttempt_ = Clock::now() + attemptInterval;
  transport_.outputLost();
}

void PlayerEngine::report() {
  // Asked first: what it plays by then has been noted before.
  const auto position = sink_->position();
  const auto when = Clock::now();
  while (const auto note = renderer_->nextNote()) timeline_->add(*note);
  if (!position) return;
  if (const auto heard = timeline_->at(std::min(*position, renderer_->framesRendered())))
    transport_.publish(*heard, when);
}

}  // namespace quibel::playback
