#include "song/decoding/Demuxer.h"

#include <mutex>
#include <span>
#include <string_view>
#include <vector>

#include "song/file/Errors.h"
#include "song/formats/Formats.h"
#include "song/formats/MpegFrames.h"

namespace quibel::song {

namespace {

// Bounds for files that lie: no song has more streams, and no allocation of a
// song's size, than these.
constexpr int maximumStreams = 64;
constexpr std::size_t maximumAllocation = std::size_t{512} << 20;

// How much of a file may be looked at to find out what its streams hold. A
// picture at the front does not count against it.
constexpr std::int64_t probeSize = std::int64_t{1} << 20;

void setUpLibrary() {
  static std::once_flag once;
  std::call_once(once, [] {
    av_log_set_level(AV_LOG_QUIET);
    av_max_alloc(maximumAllocation);
  });
}

int refuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
  return AVERROR(EACCES);
}

int isInterrupted(void* input) { return static_cast<Input*>(input)->stopRequested() ? 1 : 0; }

const AVInputFormat* probe(AVIOContext* io) {
  const AVInputFormat* format = nullptr;
  // By its content alone: a name may say anything.
  if (av_probe_input_buffer2(io, &format, "", nullptr, 0, 0) < 0) return nullptr;
  return format != nullptr && isAllowedFormat(*format) ? format : nullptr;
}

int chooseStreamOf(const AVFormatContext& format) {
  std::vector<StreamTraits> traits;
  for (const AVStream* stream : std::span(format.streams, format.nb_streams)) {
    const AVCodecParameters& parameters = *stream->codecpar;
    traits.push_back({.isAudio = parameters.codec_type == AVMEDIA_TYPE_AUDIO,
                      .isDefault = (stream->disposition & AV_DISPOSITION_DEFAULT) != 0,
                      .isDecodable = decoderFor(parameters.codec_id) != nullptr});
  }
  return chooseStream(traits);
}

}  // namespace

platform::Result<std::unique_ptr<Demuxer>> Demuxer::open(const std::shared_ptr<Input>& input) {
  setUpLibrary();
  std::unique_ptr<Demuxer> demuxer(new Demuxer(input));
  const auto failed = [&](int code, Failure otherwise) {
    const auto reason = input->failure();
    return std::unexpected(reason ? *reason : codeError(code, otherwise));
  };

  const AVInputFormat* const kind = probe(demuxer->io_.io());
  if (kind == nullptr) return failed(AVERROR_INVALIDDATA, Failure::unknownFormat);

  AVFormatContext* format = avformat_alloc_context();
  if (format == nullptr) throw std::bad_alloc();
  format->pb = demuxer->io_.io();
  format->flags |= AVFMT_FLAG_CUSTOM_IO;
  format->io_open = refuseToOpen;
  format->interrupt_callback = {.callback = isInterrupted, .opaque = input.get()};
  format->max_streams = maximumStreams;
  format->probesize = probeSize;

  AVDictionary* options = nullptr;
  av_dict_set(&options, "protocol_whitelist", "", 0);
  av_dict_set(&options, "format_whitelist", allowedFormats, 0);
  av_dict_set(&options, "codec_whitelist", allowedCodecs, 0);
  // Edit lists are applied to the frame by this program itself.
  av_dict_set(&options, "ignore_editlist", "1", 0);
  const int opened = avformat_open_input(&format, "", kind, &options);
  const DictionaryPointer unused(options);
  if (opened < 0) return failed(opened, Failure::damaged);
  demuxer->format_.reset(format);

  const int found = avformat_find_stream_info(format, nullptr);
  if (found < 0) return failed(found, Failure::damaged);

  const int chosen = chooseStreamOf(*format);
  if (chosen < 0) return std::unexpected(makeError(Failure::noSound));
  for (unsigned i = 0; i < format->nb_streams; ++i) {
    if (static_cast<int>(i) != chosen) format->streams[i]->discard = AVDISCARD_ALL;
  }
  demuxer->stream_ = format->streams[chosen];
  if (demuxer->stream_->codecpar->ch_layout.nb_channels > maximumChannels) {
    return std::unexpected(makeError(Failure::damaged));
  }
  // Of a raw stream that changes its rate, FFmpeg takes the last one it looked at.
  demuxer->isOgg_ = std::string_view(kind->name) == "ogg";
  demuxer->isMpeg_ = std::string_view(kind->name) == "mp3";
  if (demuxer->isMpeg_) {
    if (const auto header = readFirstMpegHeader(*input)) {
      demuxer->stream_->codecpar->sample_rate = header->sampleRate;
    }
  }
  return demuxer;
}

Demuxer::Status Demuxer::read(AVPacket& packet) {
  while (true) {
    av_packet_unref(&packet);
    const std::int64_t begin = avio_tell(io_.io());
    const int code = av_read_frame(format_.get(), &packet);
    if (code == AVERROR(EAGAIN)) continue;
    // Ogg's demuxer gives up after 64 KB without a page, and goes on if it is asked again.
    if (code == AVERROR_INVALIDDATA && isOgg_ && avio_tell(io_.io()) > begin) continue;
    if (code == AVERROR_EXIT || code == AVERROR(ENOMEM)) return Status::error;
    // What a demuxer cannot make sense of is the end of what it can deliver. It may take
    // a failed read for the end too, so that is asked of the input itself.
    if (code < 0)
      return input_->hasReadError() || input_->stopRequested() ? Status::error : Status::end;
    if (packet.stream_index != stream_->index) continue;
    // Songs joined behind each other have tags between them, which are no lost sound.
    const auto bytes = std::span(packet.data, static_cast<std::size_t>(packet.size));
    if (isMpeg_ && beginsTag(bytes)) continue;
    return Status::packet;
  }
}

bool Demuxer::seek(std::int64_t time) {
  return av_seek_frame(format_.get(), stream_->index, time, AVSEEK_FLAG_BACKWARD) >= 0;
}

bool Demuxer::seekToByte(std::int64_t position) {
  return av_seek_frame(format_.get(), stream_->index, position, AVSEEK_FLAG_BYTE) >= 0;
}

}  // namespace quibel::song
