#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "platform/AudioFile.h"

namespace quibel::playback {

/// A song whose samples are a function of frame and channel.
class SyntheticSong : public platform::AudioFile {
 public:
  using Sample = std::function<float(std::int64_t frame, std::uint32_t channel)>;

  SyntheticSong(platform::AudioFormat format, std::int64_t length, Sample sample)
      : format_(format), length_(length), sample_(std::move(sample)) {}

  /// From this frame on reading fails.
  void failFrom(std::int64_t frame) { failFrom_ = frame; }

  std::int64_t length() const override { return length_; }
  platform::AudioFormat processingFormat() const override { return format_; }
  std::int64_t framePosition() const override { return position_; }

  std::unique_ptr<platform::AudioPCMBuffer> makeBuffer(std::uint32_t capacity) const override {
    return std::make_unique<platform::AudioPCMBuffer>(format_.channelCount, capacity);
  }

  platform::Result<void> read(platform::AudioPCMBuffer& into, std::uint32_t count) override {
    if (failFrom_ && position_ + count > *failFrom_)
      return std::unexpected(platform::Error("El archivo está dañado."));
    const auto frames = std::min<std::int64_t>(count, length_ - position_);
    for (std::uint32_t channel = 0; channel < format_.channelCount; ++channel)
      for (std::int64_t frame = 0; frame < frames; ++frame)
        into.floatChannelData()[channel][frame] = sample_(position_ + frame, channel);
    into.setFrameLength(static_cast<std::uint32_t>(frames));
    position_ += frames;
    return {};
  }

  platform::Result<void> seek(std::int64_t frame) override {
    position_ = frame;
    return {};
  }

 private:
  const platform::AudioFormat format_;
  const std::int64_t length_;
  const Sample sample_;
  std::int64_t position_ = 0;
  std::optional<std::int64_t> failFrom_;
};

}  // namespace quibel::playback
