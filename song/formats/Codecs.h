#pragma once

#include <cstdint>
#include <optional>

#include "song/file/Pointers.h"

namespace quibel::song {

/// How the place of a packet in its stream is known.
enum class Clock {
  timestamps,  ///< the container's times are exact to the frame
  durations,   ///< each packet states its length: the sum of those before it
  decoding,    ///< a packet's length is known only by decoding it
};

/// The clock of a stream whose container cuts it into packets and gives them
/// times in units of `timeBase`.
Clock chooseClock(const AVInputFormat& format, AVCodecID codec, AVRational timeBase,
                  int sampleRate);

/// How many frames before a position decoding must begin for the samples from
/// that position on to be those of a decode from the beginning. Nothing where
/// no number of frames is enough.
std::optional<std::int64_t> preroll(AVCodecID codec);

/// No packet holds more frames: Monkey's Audio at its most thorough has 1,179,648
/// in one. What says so lies.
constexpr std::int64_t maximumFramesPerPacket = std::int64_t{1} << 21;

/// Frames that the decoder delivers for an Opus packet, at 48 kHz (RFC 6716, 3.1 and 3.2).
std::optional<std::int64_t> opusPacketFrames(const std::uint8_t* data, int size);

/// Frames to drop at the beginning and at the end of a packet or frame.
struct Padding {
  std::int64_t skip = 0;
  std::int64_t discard = 0;
};

/// What a demuxer noted on a packet.
Padding paddingOf(const AVPacket& packet);

/// What the demuxer or the decoder noted on a frame.
Padding paddingOf(const AVFrame& frame);

/// The lengths of a stream's packets, in frames at the stream's own rate, asked
/// for in the order of the stream.
class PacketDuration {
 public:
  explicit PacketDuration(const AVStream& stream);

  /// Nothing where the packet does not tell.
  std::optional<std::int64_t> operator()(const AVPacket& packet);

 private:
  std::optional<std::int64_t> statedFrames(const AVPacket& packet);
  std::optional<std::int64_t> vorbisFrames(const AVPacket& packet);
  std::optional<std::int64_t> flacFrames(const AVPacket& packet);
  std::optional<std::int64_t> mpegFrames(const AVPacket& packet);

  struct FreeVorbisParser {
    void operator()(AVVorbisParseContext* parser) const { av_vorbis_parse_free(&parser); }
  };
  struct FreeParser {
    void operator()(AVCodecParserContext* parser) const { av_parser_close(parser); }
  };

  ParametersPointer parameters_;
  AVRational timeBase_;
  bool timesAreExact_;
  std::unique_ptr<AVVorbisParseContext, FreeVorbisParser> vorbis_;
  bool anyVorbis_ = false;
  int mpegPacketSize_ = 0;  ///< of the last undamaged packet
  std::unique_ptr<AVCodecParserContext, FreeParser> flacParser_;
  CodecPointer flacContext_;
};

}  // namespace quibel::song
