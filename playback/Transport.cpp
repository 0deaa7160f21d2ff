#include "playback/Transport.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace quibel::playback {
namespace {

/// How long sound is taken to go on after it was last seen going on: some of
/// the audio thread's looks, in case it is kept from one.
constexpr std::chrono::duration<double> longestGuess = std::chrono::milliseconds(30);

}  // namespace

Transport::Transport(std::int64_t length, double sampleRate)
    : length_(length), sampleRate_(sampleRate) {}

std::optional<Transport::Jump> Transport::seek(double seconds) {
  const std::lock_guard lock(mutex_);
  setTime_ = std::isnan(seconds) ? 0 : std::clamp(seconds, 0.0, secondsAt(length_));
  const auto frame =
      std::min(std::llround(setTime_ * sampleRate_), static_cast<long long>(length_));
  const bool underWay = target_.generation != 0 && !jumpHeard() && target_.frame == frame;
  if (underWay) return std::nullopt;
  return jumpTo(frame);
}

std::optional<Transport::Jump> Transport::begin() {
  const std::lock_guard lock(mutex_);
  if (target_.generation != 0) return std::nullopt;
  return jumpTo(0);
}

void Transport::play() {
  const std::lock_guard lock(mutex_);
  intent_ = Intent::play;
}

void Transport::stop() {
  const std::lock_guard lock(mutex_);
  intent_ = Intent::stop;
}

bool Transport::isPlaying() const {
  const std::lock_guard lock(mutex_);
  return intent_ == Intent::play && hasOutput_;
}

bool Transport::hasOutput() const {
  const std::lock_guard lock(mutex_);
  return hasOutput_;
}

double Transport::currentTime(Clock::time_point now) {
  const std::lock_guard lock(mutex_);
  if (target_.generation == 0 || !jumpHeard()) return setTime_;
  double time = secondsAt(heard_.songFrame);
  if (heard_.content == Content::sound && intent_ == Intent::play && hasOutput_) {
    const std::chrono::duration<double> since = now - heardWhen_;
    time += std::clamp(since, decltype(since)::zero(), longestGuess).count();
  }
  lastReported_ = std::max(lastReported_, std::min(time, secondsAt(length_)));
  return lastReported_;
}

Transport::Intent Transport::intent() const {
  const std::lock_guard lock(mutex_);
  return intent_;
}

void Transport::publish(const Segment& heard, Clock::time_point when) {
  const std::lock_guard lock(mutex_);
  heard_ = heard;
  heardWhen_ = when;
  if (heard.content == Content::ended && jumpHeard() && intent_ == Intent::play)
    intent_ = Intent::rest;
}

void Transport::outputLost() {
  const std::lock_guard lock(mutex_);
  hasOutput_ = false;
  if (intent_ == Intent::play) intent_ = Intent::rest;
}

void Transport::outputFound() {
  const std::lock_guard lock(mutex_);
  hasOutput_ = true;
}

Transport::Jump Transport::resume() {
  const std::lock_guard lock(mutex_);
  if (!jumpHeard()) return jumpTo(target_.frame);
  setTime_ = secondsAt(heard_.songFrame);
  return jumpTo(heard_.songFrame);
}

Transport::Jump Transport::jumpTo(std::int64_t frame) {
  target_ = {target_.generation + 1, frame};
  lastReported_ = 0;
  return target_;
}

double Transport::secondsAt(std::int64_t frame) const {
  return static_cast<double>(frame) / sampleRate_;
}

}  // namespace quibel::playback
