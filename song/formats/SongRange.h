#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "song/formats/Codecs.h"

namespace quibel::song {

/// Where some of a stream's packets lie, for a stream whose packets all hold as
/// many frames and can be read from any of them on.
struct PacketIndex {
  /// Packets from one place to the next: fewer than are decoded before a place that
  /// is gone to, so that finding them costs less than that.
  static constexpr std::int64_t step = 32;

  std::vector<std::int64_t> places;  ///< of every step-th packet, in bytes of the file
  std::int64_t packets = 0;          ///< in all
  std::int64_t packetFrames = 0;     ///< at the output's rate
};

/// Which part of a coded stream is the song. Positions and lengths are in
/// frames at the output's rate.
struct SongRange {
  Clock clock = Clock::timestamps;
  std::int64_t origin = 0;  ///< coded position of the song's first frame
  std::int64_t length = 0;
  std::shared_ptr<const PacketIndex> index = nullptr;  ///< null where the container finds packets

  friend bool operator==(const SongRange&, const SongRange&) = default;
};

/// What counting a stream's packets found.
struct PacketTotals {
  std::int64_t begin = 0;       ///< coded position of the first packet
  std::int64_t skip = 0;        ///< frames to drop from there, as the packets say
  std::int64_t end = 0;         ///< one past the last frame, less the padding that the packets say
  std::int64_t packetEnd = 0;   ///< the same with that padding
  std::int64_t lastPacket = 0;  ///< the longest packet's frames
};

/// The song in a stream whose packets say their own delay and padding. A
/// header that says somewhat less than the packets hold, by less than a packet,
/// knows of padding in the last one.
SongRange songRangeOf(const PacketTotals& totals, std::optional<std::int64_t> headerLength);

/// One entry of an MP4 edit list; a negative media time is an empty edit.
struct Edit {
  std::int64_t duration = 0;   ///< in units of the movie's timescale; 0 for all there is
  std::int64_t mediaTime = 0;  ///< in units of the track's timescale
};

/// The encoder's delay and the song's own length, as iTunes writes them.
struct GaplessInfo {
  std::int64_t delay = 0;
  std::int64_t length = 0;
};

/// What an MP4 file says about its track.
struct MovieTrack {
  std::int64_t movieTimescale = 0;  ///< units per second
  std::int64_t mediaTimescale = 0;  ///< units per second
  std::span<const Edit> edits;
  std::optional<GaplessInfo> gapless;
};

/// The song in a track of which `packets` holds what its packets deliver.
SongRange movieRange(const SongRange& packets, const MovieTrack& track, int outputRate);

/// What an Ogg stream's pages say: granule positions.
struct OggGranules {
  std::int64_t first = 0;      ///< of the first page with sound
  int packetsOnFirstPage = 0;  ///< packets that end on it
  bool isOnlyPage = false;     ///< it ends the stream too
  std::int64_t last = 0;       ///< of the stream's last page
};

/// The granule position at which an Ogg stream's first packet begins, from the
/// frames of the packets that end on its first page. A stream of one page
/// begins at 0: its granule position then cuts the end, not the beginning.
std::int64_t firstGranule(const OggGranules& granules, std::int64_t framesOnFirstPage);

}  // namespace quibel::song
