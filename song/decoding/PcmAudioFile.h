#pragma once

#include <memory>
#include <vector>

#include "platform/AudioFile.h"
#include "song/decoding/Demuxer.h"
#include "song/decoding/PaddedWav.h"

namespace quibel::song {

/// A song stored as plain samples in one piece (WAV, AIFF, AU, CAF and the
/// like): read straight from the file, without a codec.
class PcmAudioFile final : public platform::AudioFile {
 public:
  /// Whether a stream is of this kind.
  static bool canRead(const Demuxer& demuxer);

  static platform::Result<std::unique_ptr<platform::AudioFile>> open(std::shared_ptr<Input> input,
                                                                     Demuxer& demuxer);

  /// A song whose samples lie where `layout` says.
  PcmAudioFile(std::shared_ptr<Input> input, const PcmLayout& layout);

  std::int64_t length() const override { return length_; }
  platform::AudioFormat processingFormat() const override { return format_; }
  std::int64_t framePosition() const override { return position_; }
  std::unique_ptr<platform::AudioPCMBuffer> makeBuffer(std::uint32_t frameCapacity) const override;
  platform::Result<void> read(platform::AudioPCMBuffer& into, std::uint32_t frameCount) override;
  platform::Result<void> seek(std::int64_t frame) override;

 private:
  std::shared_ptr<Input> input_;
  platform::AudioFormat format_;
  AVCodecID codec_;
  std::int64_t frameSize_;  ///< bytes
  std::int64_t dataBegin_;  ///< byte position of the first frame
  std::int64_t length_;
  std::int64_t position_ = 0;
  std::vector<std::uint8_t> bytes_;
};

}  // namespace quibel::song
