#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/AudioFile.h"
#include "platform/ffmpeg/Input.h"
#include "platform/ffmpeg/RateConverter.h"

namespace quibel::ffmpeg {

/// Several songs one behind the other in one file, as one song in the first
/// one's form.
class ChainedAudioFile final : public platform::AudioFile {
 public:
  /// `begins` holds the byte positions of the sections. Sections that cannot be
  /// decoded are left out; if none can, that is an error.
  static platform::Result<std::unique_ptr<platform::AudioFile>> open(
      const std::shared_ptr<Input>& input, const std::vector<std::int64_t>& begins);

  std::int64_t length() const override { return length_; }
  platform::AudioFormat processingFormat() const override { return format_; }
  std::int64_t framePosition() const override { return position_; }
  std::unique_ptr<platform::AudioPCMBuffer> makeBuffer(std::uint32_t frameCapacity) const override;
  platform::Result<void> read(platform::AudioPCMBuffer& into, std::uint32_t frameCount) override;
  platform::Result<void> seek(std::int64_t frame) override;

 private:
  struct Section {
    std::shared_ptr<Input> input;
    std::int64_t begin = 0;   ///< first frame in the whole
    std::int64_t length = 0;  ///< frames in the whole's rate
  };

  ChainedAudioFile() = default;

  platform::Result<void> enter(std::size_t section);
  platform::Result<void> fill();

  std::vector<Section> sections_;
  platform::AudioFormat format_;
  std::int64_t length_ = 0;
  std::int64_t position_ = 0;

  // The section at hand, and what was read of it and not yet delivered.
  std::size_t current_ = 0;
  std::unique_ptr<platform::AudioFile> song_;
  std::optional<RateConverter> converter_;
  std::unique_ptr<platform::AudioPCMBuffer> read_;
  const float* const* samples_ = nullptr;
  std::int64_t samplesBegin_ = 0;  ///< of these samples, in frames of the whole
  std::int64_t samplesEnd_ = 0;
};

}  // namespace quibel::ffmpeg
