#pragma once

#include <cstdint>
#include <span>

namespace quibel::song {

/// Whether the last two bytes of a FLAC frame are the checksum of all before them (RFC
/// 9639, 9.3). Any thread.
///
/// The decoder can look at it too, but a byte at a time: that is a tenth of its work.
bool hasValidChecksum(std::span<const std::uint8_t> frame);

}  // namespace quibel::song
