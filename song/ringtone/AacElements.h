#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace quibel::song {

/// Encoded AAC, as far as it takes to put single channels together: a block of 1,024 frames
/// is a raw_data_block of ISO/IEC 14496-3, table 4.3, here of one single_channel_element
/// and nothing else. A step of gain is 2^(1/4), the standard's own (4.6.2.3).

/// A block of one channel, louder by `steps`. Empty if `block` is none, or has no gain left.
std::vector<std::uint8_t> amplified(std::span<const std::uint8_t> block, int steps);

/// One block that holds two such blocks as a channel_pair_element, each with a window of
/// its own, louder by `steps`. Empty under the same conditions.
std::vector<std::uint8_t> channelPair(std::span<const std::uint8_t> left,
                                      std::span<const std::uint8_t> right, int steps);

}  // namespace quibel::song
