#include "song/formats/Formats.h"

#include <array>
#include <string_view>
#include <utility>

namespace quibel::song {

const char* const allowedFormats =
    "aac,ac3,aiff,amr,amrnb,amrwb,ape,asf,au,avi,caf,dsf,dts,dtshd,eac3,flac,flv,gsm,iff,ircam,"
    "loas,matroska,mlp,mov,mp3,mpc,mpc8,mpeg,mpegts,nut,ogg,oma,qcp,rm,rso,shn,sox,tak,truehd,tta,"
    "voc,w64,wav,wv,xwma";

const char* const allowedCodecs =
    "aac,aac_latm,ac3,eac3,alac,als,amrnb,amrwb,ape,atrac1,atrac3,atrac3al,atrac3plus,"
    "atrac3plusal,cook,dca,dsd_lsbf,dsd_lsbf_planar,dsd_msbf,dsd_msbf_planar,flac,g722,g726,g726le,"
    "g729,gsm,gsm_ms,ilbc,mace3,mace6,mlp,mp1,mp1float,mp2,mp2float,mp3float,mpc7,mpc8,nellymoser,"
    "opus,"
    "libopus,qcelp,qdm2,qdmc,ra_144,ra_288,real_144,real_288,shorten,sipr,speex,libspeex,tak,"
    "truehd,tta,vorbis,wavpack,wmalossless,wmapro,wmav1,wmav2,wmavoice,"
    "adpcm_adx,adpcm_ct,adpcm_g722,adpcm_g726,adpcm_g726le,adpcm_ima_qt,adpcm_ima_wav,adpcm_ms,"
    "adpcm_swf,adpcm_yamaha,8svx_exp,8svx_fib,"
    "pcm_alaw,pcm_mulaw,pcm_bluray,pcm_dvd,pcm_s8,pcm_s8_planar,pcm_u8,pcm_s16be,pcm_s16be_planar,"
    "pcm_s16le,pcm_s16le_planar,pcm_u16be,pcm_u16le,pcm_s24be,pcm_s24le,pcm_s24le_planar,pcm_u24be,"
    "pcm_u24le,pcm_s32be,pcm_s32le,pcm_s32le_planar,pcm_u32be,pcm_u32le,pcm_s64be,pcm_s64le,"
    "pcm_f16le,pcm_f24le,pcm_f32be,pcm_f32le,pcm_f64be,pcm_f64le";

namespace {

// Where FFmpeg's first choice is the decoder in integers.
constexpr std::array preferredDecoders{
    std::pair{AV_CODEC_ID_MP1, "mp1float"},
    std::pair{AV_CODEC_ID_MP2, "mp2float"},
};

bool contains(std::string_view list, std::string_view name) {
  while (!list.empty()) {
    const auto comma = list.find(',');
    if (list.substr(0, comma) == name) return true;
    if (comma == std::string_view::npos) break;
    list.remove_prefix(comma + 1);
  }
  return false;
}

}  // namespace

bool isAllowedFormat(const AVInputFormat& format) {
  // A demuxer of several containers carries all their names, first name first.
  const std::string_view names(format.name);
  return contains(allowedFormats, names.substr(0, names.find(',')));
}

bool isAllowedCodec(const AVCodec& codec) { return contains(allowedCodecs, codec.name); }

const AVCodec* decoderFor(AVCodecID codec) {
  for (const auto& [id, name] : preferredDecoders) {
    if (id != codec) continue;
    if (const AVCodec* decoder = avcodec_find_decoder_by_name(name)) return decoder;
  }
  const AVCodec* decoder = avcodec_find_decoder(codec);
  return decoder != nullptr && isAllowedCodec(*decoder) ? decoder : nullptr;
}

int chooseStream(std::span<const StreamTraits> streams) {
  int best = -1;
  int bestRank = -1;
  for (std::size_t i = 0; i < streams.size(); ++i) {
    const StreamTraits& stream = streams[i];
    if (!stream.isAudio) continue;
    const int rank = 2 * stream.isDecodable + stream.isDefault;
    if (rank > bestRank) {
      best = static_cast<int>(i);
      bestRank = rank;
    }
  }
  return best;
}

}  // namespace quibel::song
