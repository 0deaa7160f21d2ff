#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/AudioFile.h"

namespace quibel::playback {

/// Turns a song's channels into the one or two of a sink, and its frames into
/// the sink's where the song has more a second than a sink takes.
class Downmix {
 public:
  /// Channels beyond two are mixed by platform::stereoMix.
  /// `step`: so many of the song's frames are averaged into one, at least 1.
  Downmix(const platform::AudioFormat& song, std::uint32_t step);

  std::uint32_t sinkChannels() const { return sinkChannels_; }
  std::uint32_t step() const { return step_; }

  /// `songFrames` frames, one array a channel, as interleaved frames in `out`;
  /// returns their number, `songFrames` / `step`, the fraction dropped.
  std::size_t mix(const float* const* song, std::size_t songFrames, float* out) const;

 private:
  std::uint32_t songChannels_;
  std::uint32_t step_;
  std::uint32_t sinkChannels_;
  std::vector<float> gains_;  // sinkChannels_ times songChannels_
};

}  // namespace quibel::playback
