#include "song/ringtone/MovieWriter.h"

#include <new>

#include "song/file/Errors.h"

namespace quibel::song {

namespace {

// The index holds four bytes a packet, a few a chunk of a megabyte, and boxes of
// fixed sizes that come to less than two thousand.
std::int64_t roomForIndex(std::int64_t frames, int framesPerPacket) {
  constexpr std::int64_t fixedBoxes = 2048;
  constexpr std::int64_t bytesPerPacket = 5;
  return fixedBoxes + bytesPerPacket * (frames / framesPerPacket + 4);
}

}  // namespace

platform::Result<MovieWriter> MovieWriter::open(OutputFile& output, const AVCodecParameters& codec,
                                                std::int64_t frames) {
  AVFormatContext* created = nullptr;
  const int code = avformat_alloc_output_context2(&created, nullptr, "ipod", nullptr);
  if (code < 0) return std::unexpected(codeError(code, Failure::noEncoder));
  OutputFormatPointer format(created);
  format->pb = output.io();
  format->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
  // Nobody reads along: a system call for each buffer, not for each packet.
  format->flush_packets = 0;

  AVStream* const stream = avformat_new_stream(format.get(), nullptr);
  if (stream == nullptr || avcodec_parameters_copy(stream->codecpar, &codec) < 0) {
    throw std::bad_alloc();
  }
  const AVRational frame{1, codec.sample_rate};
  stream->time_base = frame;

  AVDictionary* settings = nullptr;
  // Durations to the frame, not to a thousandth of a second.
  av_dict_set_int(&settings, "movie_timescale", codec.sample_rate, 0);
  // Room for the index at the front.
  av_dict_set_int(&settings, "moov_size", roomForIndex(frames, codec.frame_size), 0);
  const int begun = avformat_write_header(format.get(), &settings);
  const DictionaryPointer unused(settings);
  if (begun < 0) return std::unexpected(output.failure(begun));
  return MovieWriter(output, std::move(format), frame);
}

platform::Result<void> MovieWriter::write(AVPacket& packet) {
  const AVStream& stream = *format_->streams[0];
  packet.stream_index = stream.index;
  av_packet_rescale_ts(&packet, packetTimeBase_, stream.time_base);
  const int code = av_write_frame(format_.get(), &packet);
  if (code < 0) return std::unexpected(output_->failure(code));
  return {};
}

platform::Result<void> MovieWriter::finish() {
  const int code = av_write_trailer(format_.get());
  if (code < 0) return std::unexpected(output_->failure(code));
  return {};
}

}  // namespace quibel::song
