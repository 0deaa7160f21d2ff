#pragma once

#include <cstdint>
#include <vector>

#include "platform/Error.h"
#include "song/file/Pointers.h"

namespace quibel::song {

/// FFmpeg's encoder of AAC-LC for one channel. One thread at a time.
class AacChannel {
 public:
  /// Whether the encoder is there at all.
  static bool isAvailable();

  static platform::Result<AacChannel> open(int rate);

  const AVCodecContext& codec() const { return *codec_; }

  using Packets = std::vector<PacketPointer>;

  /// Encodes frames, any number at a time, and gives the packets that are ready by now.
  /// What the encoder gets is `scale` times what it is given. Throws std::bad_alloc.
  platform::Result<Packets> encode(const float* samples, int frames, float scale);

  /// Encodes what is still inside; no more may follow.
  platform::Result<Packets> finish();

 private:
  explicit AacChannel(CodecPointer codec);

  void beginBlock();
  platform::Result<void> send(const AVFrame* block, Packets& packets);

  CodecPointer codec_;
  FramePointer block_;  ///< being filled: the encoder takes blocks of one size
  int filled_ = 0;
  std::int64_t position_ = 0;
};

}  // namespace quibel::song
