#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "song/file/Input.h"
#include "song/formats/SongRange.h"

namespace quibel::song {

/// The header of an MPEG audio frame, layers I to III (ISO/IEC 11172-3, 2.4.1.3
/// and 13818-3), with the lower rates of version 2.5.
struct MpegHeader {
  int layer = 0;
  int sampleRate = 0;
  bool isMono = false;
  bool isVersion1 = false;
  int frames = 0;  ///< audio frames that it holds
  int size = 0;    ///< bytes, header and all

  /// Whether a frame may follow another in one stream.
  bool isLike(const MpegHeader& other) const {
    return layer == other.layer && sampleRate == other.sampleRate;
  }
};

/// Nothing for what is no header, and for the format without a stated bit rate.
std::optional<MpegHeader> parseMpegHeader(std::span<const std::uint8_t> bytes);

/// Whether a tag of a song begins here, as stands before, behind and between songs.
bool beginsTag(std::span<const std::uint8_t> bytes);

/// What the tag in a file's first frame ("Xing" or "Info") says.
struct MpegTag {
  std::int64_t position = 0;  ///< of its frame in the file, in bytes
  std::int64_t packets = 0;   ///< frames of the stream, without the tag's own
  std::int64_t delay = 0;     ///< audio frames that the encoder put before the song
  std::int64_t padding = 0;   ///< and behind it
  bool hasDelays = false;
};

/// Nothing where the file begins otherwise.
std::optional<MpegTag> readMpegTag(Input& input);

/// The header of the file's first frame, behind any tags.
std::optional<MpegHeader> readFirstMpegHeader(Input& input);

/// The packets of an unbroken stream from a byte position to the last frame,
/// whatever comes behind it. Nothing where the stream is broken or changes its rate.
std::optional<PacketIndex> indexMpegPackets(Input& input, std::int64_t position);

/// The song in a stream of `packets` packets of `packetFrames` frames.
SongRange mpegRange(std::int64_t packets, int packetFrames, const std::optional<MpegTag>& tag);

}  // namespace quibel::song
