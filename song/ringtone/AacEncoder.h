#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "platform/Error.h"
#include "song/file/Pointers.h"
#include "song/ringtone/AacChannel.h"

namespace quibel::song {

/// Encodes planar floats as AAC-LC, however loud they are: each channel by an encoder and on
/// a thread of its own that gets it four times too quiet, with the gain put right in what it
/// writes.
///
/// FFmpeg's encoder makes each block quieter by itself that goes beyond 0.95 of full scale,
/// and cuts off the tops of tones that go beyond 0.47: noise at -35 dB instead of -50 in a
/// song that reaches full scale, 3 dB too little in a pure tone. What it writes for two
/// channels has their gains somewhere inside, for one channel in front.
class AacEncoder {
 public:
  /// For one channel or two.
  static platform::Result<AacEncoder> open(int rate, int channels);

  /// What a container has to know of the packets, whose times are frames. Throws
  /// std::bad_alloc.
  ParametersPointer parameters() const;

  using Accept = std::function<platform::Result<void>(AVPacket&)>;

  /// Encodes frames of planar floats, any number at a time, to the song's end.
  /// `accept` takes each packet that results, on this thread, and may refuse it with an
  /// error. Throws std::bad_alloc.
  platform::Result<void> encode(const float* const* samples, int frames, const Accept& accept);

  /// Encodes what is still inside; no more may follow.
  platform::Result<void> finish(const Accept& accept);

 private:
  explicit AacEncoder(std::vector<AacChannel> channels) : channels_(std::move(channels)) {}

  using Step = std::function<platform::Result<AacChannel::Packets>(std::size_t channel)>;
  platform::Result<void> run(const Step& step, const Accept& accept);

  std::vector<AacChannel> channels_;
};

}  // namespace quibel::song
