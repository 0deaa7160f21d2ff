#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Error.h"
#include "song/decoding/FrameSource.h"
#include "song/formats/SongRange.h"

namespace quibel::song {

/// Everything that a pass over a stream's packets gathers.
struct PacketCount {
  PacketTotals totals;
  std::vector<std::int64_t> firstDurations;  ///< of the first packets, as many as a page may end
  std::optional<std::int64_t> secondPosition;
  std::int64_t packets = 0;
  std::int64_t durations = 0;  ///< their sum
  bool isCountable = true;     ///< every packet told its length
  bool changes = false;        ///< the stream starts again, changes its rate, or runs backwards

  /// Whether packets' times leave out more than the packets hold: then they are
  /// no times of this stream.
  bool leavesOutMost() const { return totals.packetEnd - totals.begin > 2 * durations; }
};

/// Reads a stream's packets, at most `limit`, without decoding them. Throws
/// std::bad_alloc.
platform::Result<PacketCount> countPackets(const Input& input, Demuxer& demuxer, PacketClock& clock,
                                           std::int64_t limit);

}  // namespace quibel::song
