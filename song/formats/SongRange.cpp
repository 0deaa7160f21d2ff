#include "song/formats/SongRange.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "song/file/Pointers.h"

namespace quibel::song {

namespace {

constexpr AVRational rational(std::int64_t timescale) { return {1, static_cast<int>(timescale)}; }

}  // namespace

SongRange songRangeOf(const PacketTotals& totals, std::optional<std::int64_t> headerLength) {
  SongRange range;
  range.origin = totals.begin + totals.skip;
  std::int64_t end = totals.end;
  if (headerLength) {
    const std::int64_t headerEnd = totals.begin + *headerLength;
    const bool isWithinLastPacket = headerEnd < end && end - headerEnd < totals.lastPacket;
    if (isWithinLastPacket && totals.end == totals.packetEnd) end = headerEnd;
  }
  range.length = std::max<std::int64_t>(0, end - range.origin);
  return range;
}

SongRange movieRange(const SongRange& packets, const MovieTrack& track, int outputRate) {
  const AVRational output{1, outputRate};
  const std::int64_t mediaEnd = packets.origin + packets.length;

  std::optional<std::int64_t> gaplessEnd;
  if (track.gapless && packets.origin + track.gapless->delay < mediaEnd) {
    // Of a file that was cut there is less than its note says.
    const std::int64_t noted = track.gapless->delay + track.gapless->length;
    gaplessEnd = std::min(packets.origin + noted, mediaEnd);
  }

  // From the first edit's beginning to the last one's end; empty edits are silence
  // before a film, and no part of a song.
  constexpr std::int64_t unlimited = std::numeric_limits<std::int64_t>::max();
  std::int64_t editBegin = unlimited;
  std::int64_t editEnd = unlimited;
  for (const Edit& edit : track.edits) {
    if (edit.mediaTime < 0) continue;
    const auto edited =
        packets.origin + av_rescale_q(edit.mediaTime, rational(track.mediaTimescale), output);
    editBegin = std::min(editBegin, edited);
    editEnd = edit.duration > 0
                  ? edited + av_rescale_q(edit.duration, rational(track.movieTimescale), output)
                  : unlimited;
  }

  std::int64_t begin = packets.origin;
  std::int64_t end = mediaEnd;
  if (editBegin < mediaEnd && editEnd > editBegin) {
    begin = editBegin;
    end = std::min(mediaEnd, editEnd);
    // Edits are told in the movie's coarser units: a frame count that rounds to
    // the same is meant.
    const std::int64_t unit = outputRate / track.movieTimescale + 1;
    const auto isMeant = [&](std::int64_t other) { return std::abs(other - end) <= unit; };
    if (gaplessEnd && isMeant(*gaplessEnd)) {
      end = *gaplessEnd;
    } else if (isMeant(mediaEnd)) {
      end = mediaEnd;
    }
  }
  // Without an edit of any effect, iTunes' own note counts.
  if (gaplessEnd && begin == packets.origin && end == mediaEnd) {
    begin = packets.origin + track.gapless->delay;
    end = *gaplessEnd;
  }
  return {packets.clock, begin, end - begin};
}

std::int64_t firstGranule(const OggGranules& granules, std::int64_t framesOnFirstPage) {
  return granules.isOnlyPage ? 0 : granules.first - framesOnFirstPage;
}

}  // namespace quibel::song
