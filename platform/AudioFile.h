#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/Error.h"

namespace quibel::platform {

/// The decoded form of a song: 32-bit float samples, one array a channel.
struct AudioFormat {
  double sampleRate = 0;  ///< frames per second
  std::uint32_t channelCount = 0;

  /// The speakers that the channels are meant for, in their order: a bit each, those of
  /// WAVEFORMATEXTENSIBLE's dwChannelMask. 0 for mono and stereo, and if the song does not say.
  std::uint64_t speakers = 0;

  friend bool operator==(const AudioFormat&, const AudioFormat&) = default;
};

/// Room for decoded frames: one array of 32-bit floats a channel, full scale at ±1.
class AudioPCMBuffer {
 public:
  /// Throws std::bad_alloc where there is no memory for `channelCount` times
  /// `frameCapacity` samples.
  AudioPCMBuffer(std::uint32_t channelCount, std::uint32_t frameCapacity);

  std::uint32_t frameCapacity() const { return frameCapacity_; }

  /// The number of valid frames, 0 … frameCapacity.
  std::uint32_t frameLength() const { return frameLength_; }
  void setFrameLength(std::uint32_t frames) { frameLength_ = frames; }

  /// One pointer a channel to `frameCapacity` samples; null for a buffer of no channels.
  float* const* floatChannelData() const { return channels_.empty() ? nullptr : channels_.data(); }

 private:
  std::uint32_t frameCapacity_;
  std::uint32_t frameLength_ = 0;
  std::vector<float> samples_;
  std::vector<float*> channels_;
};

/// An opened song, read from its first frame on. One thread at a time, but for
/// anotherReader().
class AudioFile {
 public:
  AudioFile() = default;
  AudioFile(const AudioFile&) = delete;
  AudioFile& operator=(const AudioFile&) = delete;
  virtual ~AudioFile() = default;

  /// Total frames: exactly as many as reads deliver.
  virtual std::int64_t length() const = 0;

  virtual AudioFormat processingFormat() const = 0;

  /// The next frame to be read, 0 … length.
  virtual std::int64_t framePosition() const = 0;

  /// A buffer in the processing format, or null where there is no memory for it.
  virtual std::unique_ptr<AudioPCMBuffer> makeBuffer(std::uint32_t frameCapacity) const = 0;

  /// Reads `frameCount` frames (at most the buffer's capacity) into the buffer
  /// from its beginning and sets its frame length. Fewer are delivered only at
  /// the song's end. On an error the buffer's contents are unspecified.
  virtual Result<void> read(AudioPCMBuffer& into, std::uint32_t frameCount) = 0;

  /// Makes `frame` (0 … length) the next one to be read: the samples that
  /// follow are those that reading from the beginning would have delivered.
  virtual Result<void> seek(std::int64_t frame) = 0;

  /// Another reader of the same song, at its first frame. Null where there is none, or
  /// none that seeks without decoding all before. Call it on the thread
  /// that will read it, while this one is read on its own: malloc arenas are per thread.
  virtual std::unique_ptr<AudioFile> anotherReader() const { return nullptr; }
};

}  // namespace quibel::platform
