#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "song/decoding/Decoder.h"
#include "song/decoding/Demuxer.h"
#include "song/decoding/SectionConverter.h"
#include "song/formats/Codecs.h"
#include "song/formats/SongRange.h"

namespace quibel::song {

/// Gives packets their positions in the coded stream, in frames at the output's
/// rate. Coded positions count everything that the stream holds, encoder delay
/// and padding included; they may begin below 0.
class PacketClock {
 public:
  PacketClock(Clock kind, const Demuxer& demuxer, int outputRate);

  Clock kind() const { return kind_; }

  /// The position of the next packet of the stream, or nothing where it follows
  /// on what came before.
  std::optional<std::int64_t> position(const AVPacket& packet);

  /// The next packet need not follow on the last one.
  void forget() {
    following_ = std::nullopt;
    early_ = 0;
  }

  /// With Clock::durations: the next packet begins at a position.
  void restart(std::int64_t position) { next_ = position; }

  /// Frames of the packet that position() was last asked about, if it states them.
  std::optional<std::int64_t> duration() const { return duration_; }

 private:
  // Where a packet of Vorbis in Ogg lies, if its stated time is not where the last one
  // ended. FFmpeg makes the first short block behind a long one shorter than it is, and its time
  // later by as much: only its end is true. And the last page comes early by what is cut off its
  // end, if it is not marked as the last. Any other time is true: something was lost.
  std::int64_t oggVorbisPosition(const AVPacket& packet, std::int64_t stated);

  Clock kind_;
  AVRational timeBase_;
  int codedRate_;
  int outputRate_;
  PacketDuration durationOf_;
  bool isOggVorbis_;
  std::optional<std::int64_t> duration_;
  std::optional<std::int64_t> following_;  ///< of Vorbis in Ogg: the end of the last packet
  std::int64_t early_ = 0;                 ///< of Vorbis in Ogg: how much its page is
  std::int64_t next_ = 0;
};

/// A stream's decoded frames with their positions: demuxer, clock and decoder in one.
class FrameSource {
 public:
  enum class Status { frame, end, error };

  /// How a stream is to be decoded.
  struct Plan {
    Clock clock = Clock::timestamps;
    int outputRate = 0;          ///< frames per second of what is delivered
    int channels = 0;            ///< of what is delivered; 0 to leave everything as it is decoded
    std::uint64_t speakers = 0;  ///< theirs, as in platform::AudioFormat
    std::shared_ptr<const PacketIndex> index = nullptr;  ///< with Clock::durations, if any

    friend bool operator==(const Plan&, const Plan&) = default;
  };

  static platform::Result<FrameSource> open(std::shared_ptr<Input> input,
                                            std::unique_ptr<Demuxer> demuxer, const Plan& plan);

  /// Decodes on to the next frame. An error is one of reading (Input::failure
  /// states it); packets that do not decode are passed over.
  Status next();

  /// The frame that next() delivered, valid until it is called again.
  const AVFrame& frame() const { return *delivered_; }

  /// The same before any conversion: the form in which the codec delivers.
  const AVFrame& decodedFrame() const { return *frame_; }

  /// Its first sample's position.
  std::int64_t position() const { return position_; }

  /// Whether any packet has been read since the beginning.
  bool anyPacket() const { return firstPacketPosition_.has_value(); }

  /// Where the first packet lies in the file, in bytes; 0 where that is unknown.
  std::int64_t firstPacketPosition() const { return firstPacketPosition_.value_or(0); }

  /// Moves so that decoding from there on delivers exact samples from the coded
  /// position `target` on. What next() then delivers may begin before it. False
  /// where that is not possible: this source is then of no more use.
  bool seek(std::int64_t target);

  /// Whether seek() goes to any place without decoding everything before it.
  bool seeks() const;

  const Demuxer& demuxer() const { return *demuxer_; }

 private:
  FrameSource(std::shared_ptr<Input> input, std::unique_ptr<Demuxer> demuxer, const Plan& plan,
              Decoder decoder);

  enum class Fed { packet, end, error };
  bool acceptFrame();
  Fed feed();
  bool readPositionedPacket();
  bool seekByTime(std::int64_t target, std::int64_t lead);
  bool seekByIndex(std::int64_t position);
  bool skipTo(std::int64_t position);
  void forget();

  std::shared_ptr<Input> input_;
  std::unique_ptr<Demuxer> demuxer_;
  Plan plan_;
  Decoder decoder_;
  PacketClock clock_;
  SectionConverter converter_;
  PacketPointer packet_;
  FramePointer frame_;
  const AVFrame* delivered_ = nullptr;
  bool isConverting_ = false;
  bool packetIsPending_ = false;  ///< packet_ was read, and not yet sent
  std::optional<std::int64_t> pendingPosition_;
  std::optional<std::int64_t> sentEnd_;  ///< where the packet ended that was sent last
  std::optional<std::int64_t> firstPacketPosition_;
  bool ended_ = false;
  std::int64_t position_ = 0;
  std::int64_t next_ = 0;  ///< where the next frame begins unless it says otherwise
};

}  // namespace quibel::song
