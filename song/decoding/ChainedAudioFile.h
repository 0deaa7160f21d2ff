#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/AudioFile.h"
#include "song/decoding/RateConverter.h"
#include "song/file/Input.h"

namespace quibel::song {

/// Several songs one after the other in one file, as one song in the first
/// one's form.
class ChainedAudioFile final : public platform::AudioFile {
 public:
  /// Opens one of the songs by itself.
  using OpenPart = std::function<platform::Result<std::unique_ptr<platform::AudioFile>>(
      std::shared_ptr<Input> part)>;

  /// `begins` holds the byte positions of the sections. Sections that cannot be
  /// decoded are left out; if none can, that is an error.
  static platform::Result<std::unique_ptr<platform::AudioFile>> open(
      const std::shared_ptr<Input>& input, const std::vector<std::int64_t>& begins, OpenPart open);

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

  explicit ChainedAudioFile(OpenPart open) : open_(std::move(open)) {}

  platform::Result<void> enter(std::size_t section);
  platform::Result<void> fill();

  OpenPart open_;
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

}  // namespace quibel::song
