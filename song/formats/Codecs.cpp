#include "song/formats/Codecs.h"

#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <string_view>
#include <utility>

#include "song/formats/MpegFrames.h"

namespace quibel::song {

namespace {

struct CodecTraits {
  AVCodecID codec;
  bool packetsTellTheirLength;
  std::optional<std::int64_t> preroll;
};

// The prerolls: MP3's bit reservoir reaches back 511 bytes, 29 frames at its
// lowest bit rates, and its filter bank one frame more; the other transform
// codecs overlap by a packet, of 8,192 frames at most in Vorbis and 2,048 in
// AAC; Opus predicts from packet to packet, and its errors fade below hearing
// in 80 ms (RFC 7845, 4.6) but below one part in a million only in a second.
// AC-3 fills in noise from a generator that runs on from the first packet.
constexpr std::array codecTraits{
    CodecTraits{AV_CODEC_ID_MP1, true, 2 * 384},
    CodecTraits{AV_CODEC_ID_MP2, true, 2 * 1152},
    CodecTraits{AV_CODEC_ID_MP3, true, 36 * 1152},
    CodecTraits{AV_CODEC_ID_AAC, true, 8 * 2048},
    CodecTraits{AV_CODEC_ID_AC3, true, std::nullopt},
    CodecTraits{AV_CODEC_ID_VORBIS, true, 4 * 8192},
    CodecTraits{AV_CODEC_ID_OPUS, true, 48'000},
    CodecTraits{AV_CODEC_ID_FLAC, true, 0},
    CodecTraits{AV_CODEC_ID_ALAC, false, 0},
    CodecTraits{AV_CODEC_ID_WAVPACK, false, 0},
    CodecTraits{AV_CODEC_ID_TTA, false, 0},
    CodecTraits{AV_CODEC_ID_APE, false, 0},
    CodecTraits{AV_CODEC_ID_ADPCM_IMA_WAV, true, 0},
    CodecTraits{AV_CODEC_ID_ADPCM_MS, true, 0},
};

bool isPCM(AVCodecID codec) {
  return codec >= AV_CODEC_ID_FIRST_AUDIO && codec < AV_CODEC_ID_ADPCM_IMA_QT;
}

std::optional<CodecTraits> traitsOf(AVCodecID codec) {
  if (isPCM(codec)) return CodecTraits{codec, true, 0};
  const auto* const found = std::ranges::find(codecTraits, codec, &CodecTraits::codec);
  if (found == codecTraits.end()) return std::nullopt;
  return *found;
}

bool isExact(AVRational timeBase, int sampleRate) {
  // A container may count at half the rate that the codec delivers, as with HE-AAC.
  const std::int64_t framesPerUnit = std::int64_t{timeBase.num} * sampleRate;
  return framesPerUnit > 0 &&
         (timeBase.den % framesPerUnit == 0 || framesPerUnit == 2 * std::int64_t{timeBase.den});
}

}  // namespace

Clock chooseClock(const AVInputFormat& format, AVCodecID codec, AVRational timeBase,
                  int sampleRate) {
  const auto traits = traitsOf(codec);
  // AVI cuts sound without regard to the codec's frames.
  if (!traits || std::string_view(format.name) == "avi") return Clock::decoding;
  // ADPCM in WAV has no times after a seek but those of a mean bit rate.
  const bool isADPCM = codec == AV_CODEC_ID_ADPCM_IMA_WAV || codec == AV_CODEC_ID_ADPCM_MS;
  if (isExact(timeBase, sampleRate) && !isADPCM) return Clock::timestamps;
  return traits->packetsTellTheirLength ? Clock::durations : Clock::decoding;
}

std::optional<std::int64_t> preroll(AVCodecID codec) {
  const auto traits = traitsOf(codec);
  return traits ? traits->preroll : std::nullopt;
}

std::optional<std::int64_t> opusPacketFrames(const std::uint8_t* data, int size) {
  if (size < 1) return std::nullopt;
  const unsigned configuration = data[0] >> 3U;
  const unsigned step = configuration & 3U;
  std::int64_t frames = 0;
  if (configuration < 12) {
    frames = step == 3 ? 2880 : 480LL << step;  // SILK: 10, 20, 40, 60 ms
  } else if (configuration < 16) {
    frames = 480LL << (configuration & 1U);  // hybrid: 10, 20 ms
  } else {
    frames = 120LL << step;  // CELT: 2.5, 5, 10, 20 ms
  }
  switch (data[0] & 3U) {
    case 0:
      return frames;
    case 1:
    case 2:
      return 2 * frames;
    default:
      if (size < 2) return std::nullopt;
      return frames * (data[1] & 63U);
  }
}

namespace {

// Two 32-bit numbers, least significant byte first.
Padding parsePadding(const std::uint8_t* data, std::size_t size) {
  if (data == nullptr || size < 8) return {};
  const auto number = [&](int at) {
    return std::int64_t{data[at]} | std::int64_t{data[at + 1]} << 8 |
           std::int64_t{data[at + 2]} << 16 | std::int64_t{data[at + 3]} << 24;
  };
  return {number(0), number(4)};
}

}  // namespace

Padding paddingOf(const AVPacket& packet) {
  std::size_t size = 0;
  const auto* const data = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size);
  return parsePadding(data, size);
}

Padding paddingOf(const AVFrame& frame) {
  const auto* const note = av_frame_get_side_data(&frame, AV_FRAME_DATA_SKIP_SAMPLES);
  return note != nullptr ? parsePadding(note->data, note->size) : Padding{};
}

PacketDuration::PacketDuration(const AVStream& stream)
    : parameters_(avcodec_parameters_alloc()),
      timeBase_(stream.time_base),
      timesAreExact_(isExact(stream.time_base, stream.codecpar->sample_rate)) {
  if (!parameters_ || avcodec_parameters_copy(parameters_.get(), stream.codecpar) < 0) {
    throw std::bad_alloc();
  }
  if (parameters_->codec_id == AV_CODEC_ID_VORBIS) {
    vorbis_.reset(av_vorbis_parse_init(parameters_->extradata, parameters_->extradata_size));
  }
  if (parameters_->codec_id == AV_CODEC_ID_FLAC && !timesAreExact_) {
    flacParser_.reset(av_parser_init(AV_CODEC_ID_FLAC));
    flacContext_.reset(avcodec_alloc_context3(nullptr));
    if (!flacParser_ || !flacContext_ ||
        avcodec_parameters_to_context(flacContext_.get(), parameters_.get()) < 0) {
      throw std::bad_alloc();
    }
    flacParser_->flags |= PARSER_FLAG_COMPLETE_FRAMES;
  }
}

std::optional<std::int64_t> PacketDuration::operator()(const AVPacket& packet) {
  const auto stated = statedFrames(packet);
  return stated && *stated <= maximumFramesPerPacket ? stated : std::nullopt;
}

std::optional<std::int64_t> PacketDuration::statedFrames(const AVPacket& packet) {
  if (parameters_->codec_id == AV_CODEC_ID_VORBIS) return vorbisFrames(packet);
  if (parameters_->codec_id == AV_CODEC_ID_OPUS) return opusPacketFrames(packet.data, packet.size);
  if (flacParser_) return flacFrames(packet);
  if (parameters_->codec_id == AV_CODEC_ID_MP3) return mpegFrames(packet);
  if (timesAreExact_ && packet.duration > 0) {
    return av_rescale_q(packet.duration, timeBase_, {1, parameters_->sample_rate});
  }
  const int frames = av_get_audio_frame_duration2(parameters_.get(), packet.size);
  if (frames > 0) return frames;
  return std::nullopt;
}

std::optional<std::int64_t> PacketDuration::vorbisFrames(const AVPacket& packet) {
  if (!vorbis_) return std::nullopt;
  const int frames = av_vorbis_parse_frame(vorbis_.get(), packet.data, packet.size);
  if (frames < 0) return std::nullopt;
  // The first packet gives its second half to the next one, and no sound yet.
  if (!std::exchange(anyVorbis_, true)) return 0;
  return frames;
}

// Where frames' headers were lost, a packet holds all that lay between two that
// were not: as many frames as would fill it.
std::optional<std::int64_t> PacketDuration::mpegFrames(const AVPacket& packet) {
  const auto header =
      parseMpegHeader(std::span(packet.data, static_cast<std::size_t>(packet.size)));
  if (header && header->size == packet.size) {
    mpegPacketSize_ = packet.size;
    return header->frames;
  }
  const int frames = header ? header->frames : parameters_->frame_size;
  if (frames <= 0) return std::nullopt;
  if (mpegPacketSize_ == 0) return frames;
  const std::int64_t packets = (packet.size + mpegPacketSize_ / 2) / mpegPacketSize_;
  return std::max<std::int64_t>(1, packets) * frames;
}

std::optional<std::int64_t> PacketDuration::flacFrames(const AVPacket& packet) {
  std::uint8_t* data = nullptr;
  int size = 0;
  av_parser_parse2(flacParser_.get(), flacContext_.get(), &data, &size, packet.data, packet.size,
                   AV_NOPTS_VALUE, AV_NOPTS_VALUE, -1);
  if (flacParser_->duration <= 0) return std::nullopt;
  return flacParser_->duration;
}

}  // namespace quibel::song
