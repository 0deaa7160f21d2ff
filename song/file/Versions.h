#pragma once

#include <cstdint>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

// What differs between the versions of FFmpeg's libraries, 5.1 to 7.1, and
// nowhere else: under one name each, as the newest version has it.

namespace quibel::song {

/// What a write callback of AVIOContext is given.
#if LIBAVFORMAT_VERSION_MAJOR >= 61
using WrittenBytes = const std::uint8_t*;
#else
using WrittenBytes = std::uint8_t*;
#endif

#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(60, 30, 100)
inline constexpr int aacLowComplexity = AV_PROFILE_AAC_LOW;
#else
inline constexpr int aacLowComplexity = FF_PROFILE_AAC_LOW;
#endif

}  // namespace quibel::song
