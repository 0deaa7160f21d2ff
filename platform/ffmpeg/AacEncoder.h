#pragma once

#include <functional>

#include "platform/Error.h"
#include "platform/ffmpeg/Pointers.h"

namespace quibel::ffmpeg {

/// Encodes planar floats as AAC-LC.
class AacEncoder {
 public:
  /// Whether the encoder is there at all.
  static bool isAvailable();

  static platform::Result<AacEncoder> open(int rate, int channels);

  const AVCodecContext& codec() const { return *codec_; }

  using Accept = std::function<platform::Result<void>(AVPacket&)>;

  /// Encodes frames of planar floats, any number at a time, to the song's end.
  /// `accept` takes each packet that results, and may refuse it with an error.
  /// Throws std::bad_alloc.
  platform::Result<void> encode(const float* const* samples, int frames, const Accept& accept);

  /// Encodes what is still inside; no more may follow.
  platform::Result<void> finish(const Accept& accept);

 private:
  explicit AacEncoder(CodecPointer codec);

  platform::Result<void> send(const AVFrame* block, const Accept& accept);
  void beginBlock();

  CodecPointer codec_;
  FramePointer block_;  ///< being filled: the encoder takes blocks of one size
  int filled_ = 0;
  PacketPointer packet_;
  std::int64_t position_ = 0;
};

}  // namespace quibel::ffmpeg
