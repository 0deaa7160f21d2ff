#pragma once

#include <memory>

#include "platform/Error.h"
#include "song/file/Input.h"
#include "song/file/Pointers.h"

namespace quibel::song {

/// More channels than the resampler takes, and than any song has: what says so lies.
constexpr int maximumChannels = 64;

/// The packets of a file's one chosen audio stream. Everything else in the file
/// (pictures, video, further songs) is passed over.
class Demuxer {
 public:
  enum class Status { packet, end, error };

  /// Opens a container from its first byte; throws std::bad_alloc.
  static platform::Result<std::unique_ptr<Demuxer>> open(const std::shared_ptr<Input>& input);

  /// The next packet of the stream. An error is either the input's (see
  /// Input::failure) or a lack of memory.
  Status read(AVPacket& packet);

  /// Moves to the last packet that the container can find at or before `time`,
  /// in the stream's time base. False if it cannot; the position is then unknown.
  bool seek(std::int64_t time);

  /// Moves to a packet that begins at a byte position of the file. Its time and those
  /// of all that follow are then unknown. False if it cannot.
  bool seekToByte(std::int64_t position);

  const AVStream& stream() const { return *stream_; }
  const AVFormatContext& format() const { return *format_; }
  bool isOgg() const { return isOgg_; }

 private:
  explicit Demuxer(const std::shared_ptr<Input>& input) : input_(input), io_(input) {}

  std::shared_ptr<const Input> input_;
  InputStream io_;
  InputFormatPointer format_;
  AVStream* stream_ = nullptr;
  bool isOgg_ = false;
  bool isMpeg_ = false;  ///< raw MPEG audio
};

}  // namespace quibel::song
