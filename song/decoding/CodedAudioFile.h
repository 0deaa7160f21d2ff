#pragma once

#include <memory>

#include "platform/AudioFile.h"
#include "song/decoding/FrameSource.h"
#include "song/decoding/Length.h"
#include "song/formats/SongRange.h"

namespace quibel::song {

/// A song whose packets a codec decodes. Each decoded block is put where its
/// position says; where none comes, there is silence.
class CodedAudioFile final : public platform::AudioFile {
 public:
  static platform::Result<std::unique_ptr<platform::AudioFile>> open(
      std::shared_ptr<Input> input, std::unique_ptr<Demuxer> demuxer, Length length);

  std::int64_t length() const override { return range_.length; }
  platform::AudioFormat processingFormat() const override;
  std::int64_t framePosition() const override { return position_; }
  std::unique_ptr<platform::AudioPCMBuffer> makeBuffer(std::uint32_t frameCapacity) const override;
  platform::Result<void> read(platform::AudioPCMBuffer& into, std::uint32_t frameCount) override;
  platform::Result<void> seek(std::int64_t frame) override;
  std::unique_ptr<platform::AudioFile> anotherReader() const override;

 private:
  CodedAudioFile(std::shared_ptr<Input> input, FrameSource source, const FrameSource::Plan& plan,
                 const SongRange& range);

  platform::Result<void> advance();
  void adoptBlock();

  // What other threads see, in anotherReader(), stays as it is.
  const std::shared_ptr<Input> input_;
  const FrameSource::Plan plan_;
  const SongRange range_;
  const bool seeks_;

  FrameSource source_;
  std::int64_t position_ = 0;

  // The source's frame at hand, in frames of the song.
  std::int64_t blockBegin_ = 0;
  std::int64_t blockEnd_ = 0;
  bool ended_ = false;  ///< the source has no more
};

}  // namespace quibel::song
