#pragma once

#include <span>

#include "song/file/Pointers.h"

namespace quibel::song {

/// The containers that may be opened, as FFmpeg's comma-separated list. Those
/// that name other files or addresses (playlists, SDP, image sequences) are not
/// in it, nor is anything that is text.
extern const char* const allowedFormats;

/// The codecs that may be opened, in the same form: sound only.
extern const char* const allowedCodecs;

bool isAllowedFormat(const AVInputFormat& format);
bool isAllowedCodec(const AVCodec& codec);

/// The decoder of a codec, or null where there is none or it is not allowed.
const AVCodec* decoderFor(AVCodecID codec);

/// What the choice among a file's streams depends on.
struct StreamTraits {
  bool isAudio = false;
  bool isDefault = false;
  bool isDecodable = false;
};

/// The stream to be heard: the first default audio stream, or else the first
/// one; one that can be decoded goes before one that cannot. -1 if none is audio.
int chooseStream(std::span<const StreamTraits> streams);

}  // namespace quibel::song
