#include "song/decoding/Decoder.h"

#include <new>
#include <span>

#include "song/file/Errors.h"
#include "song/formats/Codecs.h"
#include "song/formats/FlacChecksum.h"
#include "song/formats/Formats.h"

namespace quibel::song {

platform::Result<Decoder> Decoder::open(const AVCodecParameters& parameters, int sampleRate,
                                        bool trims) {
  const AVCodec* const kind = decoderFor(parameters.codec_id);
  if (kind == nullptr) {
    const bool isNamed = parameters.codec_id != AV_CODEC_ID_NONE;
    return std::unexpected(
        makeError(Failure::noCodec, isNamed ? avcodec_get_name(parameters.codec_id) : ""));
  }
  CodecPointer codec(avcodec_alloc_context3(kind));
  if (!codec || avcodec_parameters_to_context(codec.get(), &parameters) < 0) throw std::bad_alloc();
  codec->pkt_timebase = {1, sampleRate};
  codec->max_samples = maximumFramesPerPacket;
  if (!trims) codec->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL;
  codec->thread_count = 1;
  AVDictionary* settings = nullptr;
  av_dict_set(&settings, "codec_whitelist", allowedCodecs, 0);
  const int code = avcodec_open2(codec.get(), kind, &settings);
  const DictionaryPointer unused(settings);
  if (code < 0) return std::unexpected(codeError(code, Failure::damaged));
  return Decoder(std::move(codec), trims);
}

bool Decoder::send(AVPacket& packet) {
  const bool isNoted = (codec_->flags2 & AV_CODEC_FLAG2_SKIP_MANUAL) != 0;
  if (!trims_ && !isNoted) {
    // A note of no bytes says nothing: the decoder leaves the frame whole. There may be none.
    static_cast<void>(av_packet_shrink_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, 0));
  }
  if (codec_->codec_id == AV_CODEC_ID_FLAC) {
    // A damaged frame mostly decodes, to noise at full scale, unless its checksum is
    // looked at. The decoder knows better where a frame ends than the packet does.
    const bool isWhole =
        hasValidChecksum(std::span(packet.data, static_cast<std::size_t>(packet.size)));
    codec_->err_recognition = isWhole ? 0 : AV_EF_CRCCHECK | AV_EF_EXPLODE;
  }
  const int code = avcodec_send_packet(codec_.get(), &packet);
  if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
  return code >= 0;
}

void Decoder::sendEnd() {
  // Refused only if the end was sent before.
  static_cast<void>(avcodec_send_packet(codec_.get(), nullptr));
}

Decoder::Status Decoder::receive(AVFrame& frame) {
  const int code = avcodec_receive_frame(codec_.get(), &frame);
  if (code >= 0) {
    // Noting on every frame what is not to be skipped costs 2 % of decoding MP3: the
    // first frame has all that there is.
    codec_->flags2 &= ~AV_CODEC_FLAG2_SKIP_MANUAL;
    return Status::frame;
  }
  if (code == AVERROR(EAGAIN)) return Status::again;
  if (code == AVERROR_EOF) return Status::end;
  if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
  return Status::error;
}

void Decoder::flush() { avcodec_flush_buffers(codec_.get()); }

}  // namespace quibel::song
